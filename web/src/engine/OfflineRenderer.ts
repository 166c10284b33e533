import type { RenderAnswer, RenderOrder } from "./RenderMessages.js";
import type { Sound } from "./Sound.js";
import { restingTransport, type Transport } from "./Transport.js";

/** What a whole file is rendered with. */
export interface RenderOptions {
    readonly sound: Sound;
    /** A whole number from 0 on. The same seed gives the same render, here and anywhere. */
    readonly seed: number;
    readonly transport?: Transport;
    /** Seconds that the output goes on after the input; 4 where it is left out. */
    readonly tailSeconds?: number;
    /** Hears the share that is done, 0 to 1. */
    readonly onProgress?: (share: number) => void;
    /** Gives the render up; it then rejects with an AbortError. */
    readonly signal?: AbortSignal;
}

/** Renders whole files as fast as the machine can, on a thread of its own. */
export class OfflineRenderer {
    /** workerUrl: address of the worker's script. */
    constructor(
        private readonly module: WebAssembly.Module,
        private readonly workerUrl: string,
    ) {}

    /**
     * One or two channels of equal length go in, left and right come out, as long as the input and
     * its tail and without the engine's latency. Rejects where it was given up or has failed.
     */
    render(
        channels: readonly Float32Array[],
        sampleRate: number,
        options: RenderOptions,
    ): Promise<Float32Array[]> {
        const worker = new Worker(this.workerUrl, { type: "module" });
        const order: RenderOrder = {
            module: this.module,
            seed: options.seed,
            positions: options.sound.positions,
            transport: options.transport ?? restingTransport,
            channels,
            sampleRate,
            tailSeconds: options.tailSeconds ?? 4,
        };
        return new Promise<Float32Array[]>((resolve, reject) => {
            options.signal?.throwIfAborted();
            options.signal?.addEventListener("abort", () => reject(options.signal?.reason));
            worker.onerror = (event) => reject(new Error(event.message || "The renderer could not be loaded."));
            worker.onmessage = ({ data }: MessageEvent<RenderAnswer>) => {
                if (data.kind === "progress") options.onProgress?.(data.share);
                else if (data.kind === "done") resolve([...data.channels]);
                else reject(new Error(data.problem));
            };
            worker.postMessage(order);
        }).finally(() => worker.terminate());
    }
}
