import type { Sound } from "../engine/Sound.js";

/** All that it takes to hear on another machine what is heard on this one. */
export interface SharedSound {
    readonly sound: Sound;
    /** Of all chance; null leaves it to the clock. */
    readonly seed: number | null;
    /** Beats per minute of the transport. */
    readonly tempo: number;
}

/** What came of reading one: the sound, or a sentence that says why there is none. */
export type SharedReading = { readonly shared: SharedSound } | { readonly problem: string };
