// Runs inside a page: what the engine costs there, and how soon it is heard.
import { Catalog } from "../src/engine/Catalog.js";
import { EngineModule } from "../src/engine/EngineModule.js";
import { EnginePlayer } from "../src/engine/EnginePlayer.js";
import { LiveEngine } from "../src/engine/LiveEngine.js";
import { loadEngine } from "../src/engine/loadEngine.js";

const rate = 48000;
const quantum = 128;
const transport = { tempo: 120, beat: 0, playing: true };
type Settings = readonly (readonly [name: string, position: number])[];

/** A second of noise that falls eight times, as that of bench/Scenarios.h. */
function beats(): Float32Array<ArrayBuffer> {
    let state = 1;
    return Float32Array.from({ length: rate - (rate % quantum) }, (_, i) => {
        state = (Math.imul(state, 1664525) + 1013904223) >>> 0;
        const fall = Math.exp((-12 * (i % (rate / 8))) / (rate / 8));
        return 0.8 * (state / 2 ** 31 - 1) * fall;
    });
}

/**
 * Percent of the quantum's time behind three seconds to settle: the least of thirty runs of a second,
 * because whatever else the machine does meanwhile comes on top.
 */
async function cost(settings: Settings): Promise<number> {
    const module = await loadEngine("tesserae.wasm");
    const catalog = new Catalog(new EngineModule(module));
    const { positions } = catalog.factorySound("init");
    for (const [name, position] of settings) positions[catalog.parameter(name).index] = position;
    const player = new EnginePlayer({ module, seed: 1, positions, transport }, rate, quantum);
    const input = beats();
    const output = [new Float32Array(quantum), new Float32Array(quantum)];
    const play = (seconds: number) => {
        const quanta = Math.round((seconds * rate) / quantum);
        for (let q = 0; q < quanta; ++q) {
            const at = (q * quantum) % input.length;
            player.process([input.subarray(at, at + quantum)], output, quantum);
        }
    };
    play(3);
    const percents = Array.from({ length: 30 }, () => {
        const start = performance.now();
        play(1);
        return (performance.now() - start) / 10;
    });
    return Math.min(...percents);
}

/** Seconds from the opening of the page to the first picture with sound in its output. */
async function firstSound(): Promise<number> {
    const module = await loadEngine("tesserae.wasm");
    const catalog = new Catalog(new EngineModule(module));
    const context = new AudioContext({ sampleRate: rate });
    const sound = catalog.factorySound("init");
    const workletUrl = "audio.js";
    const engine = await LiveEngine.make(context, { module, workletUrl, sound, seed: 1, transport });
    const samples = beats();
    const buffer = new AudioBuffer({ length: samples.length, sampleRate: rate });
    buffer.copyToChannel(samples, 0);
    const source = new AudioBufferSourceNode(context, { buffer, loop: true });
    source.connect(engine.node).connect(context.destination);
    source.start();
    engine.watch(true);
    await new Promise<void>((resolve) => {
        engine.onPicture = (picture) => {
            if (Math.max(...picture.output) > 1e-3) resolve();
        };
    });
    const seconds = performance.now() / 1000;
    await context.close();
    return seconds;
}

const bench = { cost, firstSound };
export type Bench = typeof bench;
Object.assign(globalThis, { bench });
