import { layout } from "./DisplayLayout.js";
import { EngineModule } from "./EngineModule.js";
import type { Transport } from "./Transport.js";

/** What an engine is started with. */
export interface Start {
    readonly module: WebAssembly.Module;
    /** A whole number from 0 on; null takes chance from the clock. */
    readonly seed: number | null;
    readonly positions: Float32Array;
    readonly transport: Transport;
}

const channelCount = 2;
const twoTo32 = 2 ** 32;

/**
 * An engine that sounds, in an instance of its own. For the audio thread and the worker. Once made,
 * it allocates in `takePicture` at most.
 */
export class EnginePlayer {
    private readonly engine: EngineModule;
    private inputs: Float32Array[] = [];
    private outputs: Float32Array[] = [];

    /** frames: the most that one call of process brings. Throws an Error with a sentence. */
    constructor(
        start: Start,
        private readonly sampleRate: number,
        private readonly frames: number,
    ) {
        this.engine = new EngineModule(start.module);
        this.start(start.seed, start.positions, start.transport);
    }

    /** Begins anew, as a new engine does. */
    start(seed: number | null, positions: Float32Array, transport: Transport): void {
        const { exports } = this.engine;
        const { tempo, beat, playing } = transport;
        const [low, high] = [(seed ?? 0) % twoTo32, Math.floor((seed ?? 0) / twoTo32)];
        this.engine.positions.set(positions);
        const has = seed === null ? 0 : 1;
        if (!exports.tesserae_start(this.sampleRate, has, low, high, tempo, beat, +playing))
            throw new Error(this.engine.takeText());
        this.view();
    }

    get latencyFrames(): number {
        return this.engine.exports.tesserae_latency();
    }

    /**
     * Takes and gives up to `frames` frames, left and right. A missing input is silence, one alone
     * goes to both sides; a missing output is not wanted.
     */
    process(inputs: readonly Float32Array[], outputs: readonly Float32Array[], frames: number): void {
        for (let side = 0; side < channelCount; ++side) {
            const input = inputs[side] ?? inputs[0];
            if (input) this.inputs[side]?.set(input);
            else this.inputs[side]?.fill(0);
        }
        this.engine.exports.tesserae_process(frames);
        for (let side = 0; side < channelCount; ++side) {
            const [from, to] = [this.outputs[side], outputs[side]];
            if (from && to) to.set(frames === this.frames ? from : from.subarray(0, frames));
        }
    }

    set(index: number, position: number): void {
        this.engine.exports.tesserae_set(index, position);
    }
    load(positions: Float32Array): void {
        this.engine.positions.set(positions);
        this.engine.exports.tesserae_load();
    }
    setTransport({ tempo, beat, playing }: Transport): void {
        this.engine.exports.tesserae_transport(tempo, beat, +playing);
    }
    setTempo(tempo: number): void {
        this.engine.exports.tesserae_tempo(tempo);
    }
    get beat(): number {
        return this.engine.exports.tesserae_beat();
    }
    panic(): void {
        this.engine.exports.tesserae_panic();
    }
    watch(on: boolean): void {
        this.engine.exports.tesserae_watch(+on);
    }

    /** The newest picture, in memory of the module that holds until the next call; else null. */
    takePicture(): Float32Array | null {
        const { tesserae_picture: picture, memory } = this.engine.exports;
        const at = picture();
        return at === 0 ? null : new Float32Array(memory.buffer, at, layout.length);
    }

    /** Views on the channels; what the engine allocates later could move them, but it does not. */
    private view(): void {
        const { exports } = this.engine;
        const places = [0, 1, 2, 3].map((c) => exports.tesserae_channel_at(c, this.frames));
        const views = places.map((at) => new Float32Array(exports.memory.buffer, at, this.frames));
        this.inputs = views.slice(0, channelCount);
        this.outputs = views.slice(channelCount);
    }
}
