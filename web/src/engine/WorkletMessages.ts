import type { Transport } from "./Transport.js";

/** Name that the processor is registered by. */
export const processorName = "tesserae";

/** What a processor is made with, so that its first frame already has all of it. */
export interface WorkletOptions {
    readonly module: WebAssembly.Module;
    /** A whole number from 0 on repeats all chance to the bit; null takes it from the clock. */
    readonly seed: number | null;
    readonly positions: Float32Array;
    readonly transport: Transport;
}

/** What the page tells the processor. Each is done ahead of the next quantum. */
export type ToWorklet =
    | { readonly kind: "set"; readonly index: number; readonly position: number }
    /** All settings at once; what sounds is cleared. */
    | { readonly kind: "load"; readonly positions: Float32Array }
    | { readonly kind: "transport"; readonly transport: Transport }
    /** The song goes on where it stands. */
    | { readonly kind: "tempo"; readonly tempo: number }
    | { readonly kind: "panic" }
    /** A new engine with another seed, at the same settings and the same transport. */
    | { readonly kind: "seed"; readonly seed: number | null }
    /** Whether pictures are sent, some sixty in a second of sound. */
    | { readonly kind: "watch"; readonly on: boolean }
    /** The memory of a picture, given back to be filled again. */
    | { readonly kind: "recycle"; readonly picture: ArrayBuffer }
    /** The end: process answers that it is no longer needed. */
    | { readonly kind: "close" };

/** What the processor tells the page. */
export type FromWorklet =
    /** It runs; frames by which its output is late. */
    | { readonly kind: "ready"; readonly latencyFrames: number }
    | { readonly kind: "picture"; readonly picture: ArrayBuffer }
    /** The engine has died, and the output is silent from here on: a sentence. */
    | { readonly kind: "failed"; readonly problem: string };
