import { DisplayFrame } from "./DisplayFrame.js";
import type { Sound } from "./Sound.js";
import { restingTransport, type Transport } from "./Transport.js";
import { type FromWorklet, processorName, type ToWorklet } from "./WorkletMessages.js";

/** What a live engine is made with. */
export interface LiveOptions {
    readonly module: WebAssembly.Module;
    /** Address of the script of the audio thread. */
    readonly workletUrl: string;
    readonly sound: Sound;
    /** A whole number from 0 on: all chance repeats from the start. */
    readonly seed?: number | null;
    readonly transport?: Transport;
}

/**
 * The engine in an audio context: connect sources to `node`, and `node` to where it is heard. The
 * positions that it keeps are the ones that it was told, by load and set; the engine never moves
 * them by itself.
 *
 * A context that was made without a gesture of the user is suspended: resume it in one.
 */
export class LiveEngine {
    /** Hears every picture, some sixty in a second of sound; the picture holds until it returns. */
    onPicture: ((picture: DisplayFrame) => void) | null = null;
    /** Hears the sentence where the engine has died. The output is silent from there on. */
    onFailure: ((problem: string) => void) | null = null;
    /** Where every parameter stands. Read only. */
    readonly positions: Float32Array;
    latencyFrames = 0;

    private constructor(
        readonly context: BaseAudioContext,
        /** One input and one output, stereo. */
        readonly node: AudioWorkletNode,
        positions: Float32Array,
    ) {
        this.positions = positions.slice();
    }

    /** Whether this browser has what it takes. */
    static isPossible(): boolean {
        return typeof AudioWorkletNode !== "undefined" && typeof WebAssembly === "object";
    }

    /** Rejects where the script cannot be loaded or the engine cannot start. */
    static async make(context: BaseAudioContext, options: LiveOptions): Promise<LiveEngine> {
        const { module, seed = null, transport = restingTransport, sound } = options;
        await context.audioWorklet.addModule(options.workletUrl);
        const node = new AudioWorkletNode(context, processorName, {
            numberOfInputs: 1,
            numberOfOutputs: 1,
            outputChannelCount: [2],
            channelCount: 2,
            channelCountMode: "explicit",
            processorOptions: { module, seed, transport, positions: sound.positions },
        });
        const engine = new LiveEngine(context, node, sound.positions);
        await engine.listen();
        return engine;
    }

    /** Puts a parameter at a position 0 to 1, from the next quantum on. */
    set(index: number, position: number): void {
        this.positions[index] = position;
        this.tell({ kind: "set", index, position });
    }
    /** Replaces every setting; what sounds is cleared. Takes some 20 microseconds there. */
    load(sound: Sound): void {
        this.positions.set(sound.positions);
        this.tell({ kind: "load", positions: this.positions });
    }
    /** Puts the song somewhere else, or starts and stops it. */
    setTransport(transport: Transport): void {
        this.tell({ kind: "transport", transport });
    }
    /** Another tempo; the song goes on where it stands. */
    setTempo(tempo: number): void {
        this.tell({ kind: "tempo", tempo });
    }
    /** Clears all that sounds. */
    panic(): void {
        this.tell({ kind: "panic" });
    }
    /** A new engine at the same settings and transport, whose chance begins with the seed. */
    setSeed(seed: number | null): void {
        this.tell({ kind: "seed", seed });
    }
    /** Whether pictures come; none do at first. */
    watch(on: boolean): void {
        this.tell({ kind: "watch", on });
    }
    /** The end of this engine. */
    close(): void {
        this.tell({ kind: "close" });
        this.node.disconnect();
    }

    private tell(message: ToWorklet, transfer: Transferable[] = []): void {
        this.node.port.postMessage(message, transfer);
    }

    private listen(): Promise<void> {
        return new Promise((resolve, reject) => {
            this.node.onprocessorerror = () => reject(new Error("The engine did not start."));
            this.node.port.onmessage = ({ data }: MessageEvent<FromWorklet>) => {
                if (data.kind === "ready") {
                    this.latencyFrames = data.latencyFrames;
                    resolve();
                } else if (data.kind === "picture") {
                    this.onPicture?.(new DisplayFrame(new Float32Array(data.picture)));
                    this.tell({ kind: "recycle", picture: data.picture }, [data.picture]);
                } else {
                    this.onFailure?.(data.problem);
                    reject(new Error(data.problem));
                }
            };
        });
    }
}
