// Runs inside the page, and hands its engine to the tests.
import { Display } from "../../web/src/display/Display.js";
import { Catalog } from "../../web/src/engine/Catalog.js";
import { EngineModule } from "../../web/src/engine/EngineModule.js";
import { LiveEngine } from "../../web/src/engine/LiveEngine.js";
import { loadEngine } from "../../web/src/engine/loadEngine.js";
import { OfflineRenderer } from "../../web/src/engine/OfflineRenderer.js";
import { Recorder } from "../../web/src/record/Recorder.js";

const module = await loadEngine("tesserae.wasm");
const catalog = new Catalog(new EngineModule(module));

/** Left and right of a file of bare floats. */
async function readRaw(url: string): Promise<Float32Array<ArrayBuffer>[]> {
    const floats = new Float32Array(await (await fetch(url)).arrayBuffer());
    return [0, 1].map((side) => floats.filter((_, i) => i % 2 === side));
}

function largestDifference(one: Float32Array[], other: Float32Array[]): number {
    let largest = one[0]?.length === other[0]?.length ? 0 : Infinity;
    one.forEach((channel, side) =>
        channel.forEach((sample, i) => {
            const difference = Math.abs(sample - (other[side]?.[i] ?? NaN));
            largest = difference <= largest ? largest : difference;
        }),
    );
    return largest;
}

const settings = (preset: string) => {
    const sound = catalog.factorySound(preset);
    return { sound, seed: 7, transport: { tempo: sound.tempo ?? 120, beat: 0, playing: true } };
};

async function renderLive(
    input: Float32Array<ArrayBuffer>[],
    rate: number,
    preset: string,
    frames: number,
): Promise<Float32Array[]> {
    const context = new OfflineAudioContext(2, frames + rate, rate);
    const workletUrl = "audio.js";
    const engine = await LiveEngine.make(context, { module, workletUrl, ...settings(preset) });
    const buffer = context.createBuffer(2, input[0]?.length ?? 0, rate);
    input.forEach((channel, side) => buffer.copyToChannel(channel, side));
    const source = new AudioBufferSourceNode(context, { buffer });
    source.connect(engine.node).connect(context.destination);
    source.start();
    const made = await context.startRendering();
    const late = engine.latencyFrames;
    return [0, 1].map((side) => made.getChannelData(side).slice(late, late + frames));
}

const harness = {
    presets: catalog.presets.map((preset) => preset.id),

    /** Largest difference of the audio thread's render, and of the worker's, from a file. */
    async compare(input: string, rate: number, preset: string, wanted: string) {
        const [dry, native] = await Promise.all([readRaw(input), readRaw(wanted)]);
        const frames = native[0]?.length ?? 0;
        const live = await renderLive(dry, rate, preset, frames);
        const tailSeconds = (frames - (dry[0]?.length ?? 0)) / rate;
        const renderer = new OfflineRenderer(module, "render.js");
        const offline = await renderer.render(dry, rate, { ...settings(preset), tailSeconds });
        return [live, offline].map((render) => largestDifference(render, native));
    },

    /** What pictures show while a preset plays, for two seconds. */
    async watch(input: string, rate: number, preset: string, display?: Display) {
        const seen = { pictures: 0, grains: 0, output: 0, tape: 0, writePlace: 0 };
        const dry = await readRaw(input);
        const context = new AudioContext({ sampleRate: rate });
        const workletUrl = "audio.js";
        const engine = await LiveEngine.make(context, { module, workletUrl, ...settings(preset) });
        engine.onPicture = (picture) => {
            display?.show(picture);
            seen.pictures = picture.number;
            seen.grains = Math.max(seen.grains, picture.grainCount);
            seen.output = Math.max(seen.output, ...picture.output);
            seen.tape = Math.max(seen.tape, ...picture.tapeHighest);
            seen.writePlace = Math.max(seen.writePlace, picture.writePlace);
        };
        engine.watch(true);
        const buffer = context.createBuffer(2, dry[0]?.length ?? 0, rate);
        dry.forEach((channel, side) => buffer.copyToChannel(channel, side));
        const source = new AudioBufferSourceNode(context, { buffer, loop: true });
        source.connect(engine.node).connect(context.destination);
        source.start();
        await new Promise((resolve) => setTimeout(resolve, 2000));
        engine.close();
        await context.close();
        return seen;
    },

    /** What a display draws while a preset plays: pictures before and at two moments of it. */
    async draw(input: string, rate: number, preset: string) {
        const display = new Display(document.body, catalog);
        const look = () => [...document.querySelectorAll("canvas")].at(-1)?.toDataURL();
        const looks = [look()];
        setTimeout(() => looks.push(look()), 1000);
        await harness.watch(input, rate, preset, display);
        looks.push(look());
        const label = [...document.querySelectorAll("[role=img]")].at(-1)?.getAttribute("aria-label");
        display.close();
        return { looks, label };
    },

    /** A recording of a ramp that rises by one with each frame, for a second or up to `most`. */
    async record(rate: number, most?: number) {
        const context = new AudioContext({ sampleRate: rate });
        await context.audioWorklet.addModule("audio.js");
        const buffer = new AudioBuffer({ length: 4 * rate, sampleRate: rate });
        buffer.copyToChannel(Float32Array.from({ length: 4 * rate }, (_, i) => i), 0);
        const source = new AudioBufferSourceNode(context, { buffer });
        source.start();
        const recorder = new Recorder(context, source, most);
        recorder.start();
        await new Promise((resolve) => setTimeout(resolve, 1000));
        const isFull = !recorder.isRecording;
        const file = await recorder.stop();
        await context.close();
        return { isFull, bytes: [...new Uint8Array(await file.arrayBuffer())] };
    },
};
export type Harness = typeof harness;
Object.assign(globalThis, { harness });
