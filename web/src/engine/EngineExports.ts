/**
 * What tesserae.wasm exports (web/engine/Exports.cpp). One instance holds one engine. Numbers that
 * are called `at` are addresses in its memory, which may move whenever it grows: a view on it is
 * made anew for each use.
 */
export interface EngineExports {
    readonly memory: WebAssembly.Memory;
    _initialize(): void;

    /** Room of that many bytes that the caller may fill for the next call; one at a time. */
    tesserae_room(bytes: number): number;
    /** The text that the last call left, UTF-8 without a zero at its end. */
    tesserae_text_at(): number;
    tesserae_text_bytes(): number;
    /** One position for each parameter, in or out as stands beside the call. */
    tesserae_positions_at(): number;
    tesserae_parameter_count(): number;

    /** Leaves the whole catalog as a JSON text (CatalogText). */
    tesserae_catalog(): void;
    /** The name lies in room. -1: the text is a sentence that says why there is none. */
    tesserae_find(bytes: number): number;
    /** Whether the parameter is the one of those that share its name that positions put in force. */
    tesserae_in_force(index: number): number;
    /** Leaves what a position reads as. */
    tesserae_text_of_position(index: number, position: number, scale: number): void;
    /** The text lies in room. Below 0: the text is a sentence that says what is wrong. */
    tesserae_position_of_text(index: number, bytes: number, scale: number): number;
    /** The number behind the text. */
    tesserae_value_of_position(index: number, position: number, scale: number): number;
    tesserae_position_of_value(index: number, value: number, scale: number): number;
    /** The number of the scale that positions put in force; 0 is none. */
    tesserae_scale(): number;

    /** The text lies in room. Leaves positions, unless it is refused, and a ReadingText. */
    tesserae_read_sound(bytes: number): void;
    /** Leaves positions and a ReadingText; 0 where the library has no such preset. */
    tesserae_factory_sound(number: number): number;
    /** A PresetTexts as JSON lies in room. Leaves the preset of positions as a text. */
    tesserae_write_preset(bytes: number): void;
    tesserae_write_state(): void;
    /** Seconds for which positions let a sound go on after its input; an endless one counts 30. */
    tesserae_tail(tempo: number): number;

    /** Makes the demo sound for a rate; answers its frames. */
    tesserae_demo(sampleRate: number): number;
    tesserae_demo_at(side: number): number;

    /** A new engine, standing at positions. 0: the text is a sentence that says why not. */
    tesserae_start(
        sampleRate: number,
        hasSeed: number,
        seedLow: number,
        seedHigh: number,
        tempo: number,
        beat: number,
        playing: number,
    ): number;
    tesserae_latency(): number;
    /** Room for so many frames of each channel: 0 and 1 are in, 2 and 3 out. */
    tesserae_channel_at(channel: number, frames: number): number;
    /** Takes and gives that many frames of the channels. */
    tesserae_process(frames: number): void;
    tesserae_set(index: number, position: number): void;
    /** Puts all settings to positions; clears what sounds. */
    tesserae_load(): void;
    tesserae_transport(tempo: number, beat: number, playing: number): void;
    tesserae_tempo(tempo: number): void;
    tesserae_panic(): void;
    tesserae_watch(on: number): void;
    /** Address of a new picture; 0 where there is none since the last one. */
    tesserae_picture(): number;
    /** Quarter notes at which the song stands. */
    tesserae_beat(): number;
}

/** The catalog as tesserae_catalog writes it. */
export interface CatalogText {
    readonly version: string;
    readonly parameters: readonly {
        readonly name: string;
        readonly group: string;
        readonly label: string;
        readonly title: string;
        readonly unit: string;
        readonly kind: number;
        readonly role: number;
        readonly minimum: number;
        readonly maximum: number;
        readonly position: number;
        readonly choices: readonly string[];
        readonly help: string;
    }[];
    readonly sources: readonly string[];
    readonly destinations: readonly string[];
    readonly presets: readonly {
        readonly id: string;
        readonly name: string;
        readonly description: string;
        readonly tags: readonly string[];
        readonly tempo: number | null;
    }[];
}

/** What reading a sound leaves as a text beside the positions. */
export interface ReadingText {
    readonly kind: "preset" | "state" | null;
    readonly problem: string;
    readonly warnings: readonly string[];
    readonly name: string;
    readonly description: string;
    readonly tags: readonly string[];
    readonly tempo: number | null;
}
