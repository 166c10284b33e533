/** Where every parameter stands: a whole sound. */
export interface Sound {
    /** One position 0 to 1 for each parameter, by its number. */
    readonly positions: Float32Array;
    /** What the text says about it; empty where it says nothing, as states do. */
    readonly name: string;
    readonly description: string;
    readonly tags: readonly string[];
    /** Beats per minute that it was made at, a hint that nothing follows by itself. */
    readonly tempo: number | null;
}

/** What came of reading the text of a preset or a state. */
export type Reading =
    | {
          readonly sound: Sound;
          /** "preset" or "state", as the text calls itself. */
          readonly kind: "preset" | "state";
          /** Sentences about what made no sense in the text and was left out or mended. */
          readonly warnings: readonly string[];
      }
    | {
          readonly sound: null;
          /** A sentence that says why the text is no sound and what would do. */
          readonly problem: string;
      };

/** A position that a text asks for, or a sentence that says why there is none and what would do. */
export type Position =
    | { readonly position: number }
    | { readonly position: null; readonly problem: string };

/** A preset that comes with the program. */
export interface FactoryPreset {
    /** "dense-cloud" */
    readonly id: string;
    readonly name: string;
    readonly description: string;
    readonly tags: readonly string[];
    readonly tempo: number | null;
}

/** What a preset's text says beside its positions. */
export interface PresetTexts {
    readonly name: string;
    readonly description?: string;
    readonly tags?: readonly string[];
    readonly tempo?: number | null;
}
