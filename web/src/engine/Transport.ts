/** Where the song stands. */
export interface Transport {
    /** Beats per minute, held to 1 to 999. */
    readonly tempo: number;
    /** Song position in quarter notes, negative in a pre-roll. */
    readonly beat: number;
    /** Whether the position moves on by itself. */
    readonly playing: boolean;
}

/** A new engine's: 120, standing at the beginning. */
export const restingTransport: Transport = { tempo: 120, beat: 0, playing: false };
