/** How a parameter moves. */
export type ParameterKind =
    | "continuous" // any number in its range
    | "choice" // one of a list of names
    | "switch" // "Off" or "On"
    | "binary"; // no number at all

/** Whose a parameter is. */
export type ParameterRole =
    | "setting" // the user's: presets and states hold it
    | "control" // a lever of the shell, such as "Bypass"
    | "output" // the processor's report: reading only
    | "driven"; // follows from other parameters: reading only

/** One parameter as a list shows it. Positions are 0 to 1, the whole travel of a parameter. */
export interface Parameter {
    /** Its number, from 0; the same for ever, as its name. */
    readonly index: number;
    /** Full name, unique, for files: "FX1_Delay_Feedback". */
    readonly name: string;
    /** For people: "FX1 Delay". */
    readonly group: string;
    /** For people, unique in its group: "Feedback". */
    readonly label: string;
    /** For people, where the group is not told: "FX1 Delay Feedback". */
    readonly title: string;
    /** "Hz", "dB", ...; empty for plain numbers. */
    readonly unit: string;
    readonly kind: ParameterKind;
    readonly role: ParameterRole;
    /** In the unit, as texts show it; of choices 0 and the last. */
    readonly minimum: number;
    readonly maximum: number;
    /** Position of a new processor. */
    readonly defaultPosition: number;
    /** Names of the choices, of a switch too; choice k of n stands at position k / (n - 1). */
    readonly choices: readonly string[];
    /** A sentence on what it does; empty where there is none. */
    readonly help: string;
}
