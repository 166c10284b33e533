import type { Transport } from "./Transport.js";

/** A whole file for the worker to render. */
export interface RenderOrder {
    readonly module: WebAssembly.Module;
    readonly seed: number;
    readonly positions: Float32Array;
    readonly transport: Transport;
    /** One or two channels of equal length, handed over. */
    readonly channels: readonly Float32Array[];
    readonly sampleRate: number;
    /** Seconds that the output goes on after the input. */
    readonly tailSeconds: number;
}

/** What the worker answers, progress again and again and one of the others at last. */
export type RenderAnswer =
    /** Share that is done, 0 to 1. */
    | { readonly kind: "progress"; readonly share: number }
    /** Left and right. */
    | { readonly kind: "done"; readonly channels: readonly Float32Array[] }
    | { readonly kind: "failed"; readonly problem: string };
