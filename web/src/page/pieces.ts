import type { Catalog } from "../engine/Catalog.js";

/** A piece of music that the page can make by itself, eight seconds long: four bars at 120. */
export interface Piece {
    readonly id: string;
    readonly name: string;
    /** Left and right, ready to be looped. */
    make(sampleRate: number, catalog: Catalog): Float32Array<ArrayBuffer>[];
}

const seconds = 8;
const loudest = 0.5;

type Channels = readonly [Float32Array<ArrayBuffer>, Float32Array<ArrayBuffer>];

/** Adds a note whose end runs on at the beginning of the loop. pan: 0 left, 1 right. */
function addNote(
    [left, right]: Channels,
    sampleRate: number,
    at: number,
    pan: number,
    note: { readonly seconds: number; value(time: number): number },
): void {
    const first = Math.round(at * sampleRate);
    for (let i = 0; i < note.seconds * sampleRate; ++i) {
        const place = (first + i) % left.length;
        const value = note.value(i / sampleRate);
        left[place] = (left[place] ?? 0) + value * Math.cos((pan * Math.PI) / 2);
        right[place] = (right[place] ?? 0) + value * Math.sin((pan * Math.PI) / 2);
    }
}

function empty(sampleRate: number): Channels {
    const frames = Math.round(seconds * sampleRate);
    return [new Float32Array(frames), new Float32Array(frames)];
}

function levelled(channels: Channels): Float32Array<ArrayBuffer>[] {
    const peak = Math.max(...channels.map((one) => one.reduce((a, b) => Math.max(a, Math.abs(b)), 0)));
    return channels.map((one) => one.map((sample) => (sample * loudest) / peak));
}

/** Partials of a struck bar, each with a decay of its own. */
function bell(frequency: number) {
    const partials = [
        [1, 1, 2.6],
        [2.76, 0.5, 1.3],
        [5.4, 0.25, 0.6],
        [8.93, 0.12, 0.3],
    ] as const;
    return {
        seconds: 4,
        value: (time: number) =>
            partials.reduce(
                (sum, [ratio, level, decay]) =>
                    sum +
                    level *
                        Math.exp((-3 * time) / decay) *
                        Math.sin(2 * Math.PI * frequency * ratio * time),
                0,
            ),
    };
}

function bells(sampleRate: number): Float32Array<ArrayBuffer>[] {
    const channels = empty(sampleRate);
    const semitones = [0, 7, 12, 3, 10, 15, 5, 12, 17, 2, 7, 14];
    semitones.forEach((semitone, k) => {
        const at = (k * seconds) / semitones.length;
        addNote(channels, sampleRate, at, (k % 4) / 3, bell(294 * 2 ** (semitone / 12)));
    });
    return levelled(channels);
}

/** Noise that is the same each time. */
function noise(): () => number {
    let state = 1;
    return () => {
        state = (Math.imul(state, 1664525) + 1013904223) >>> 0;
        return state / 2 ** 31 - 1;
    };
}

function beat(sampleRate: number): Float32Array<ArrayBuffer>[] {
    const channels = empty(sampleRate);
    const chance = noise();
    const kick = {
        seconds: 0.35,
        value: (time: number) =>
            Math.exp(-9 * time) * Math.sin(2 * Math.PI * (48 * time - 4 * Math.exp(-28 * time))),
    };
    const snare = {
        seconds: 0.25,
        value: (time: number) =>
            0.5 * Math.exp(-18 * time) * chance() + 0.3 * Math.exp(-14 * time) * Math.sin(1180 * time),
    };
    const hat = { seconds: 0.08, value: (time: number) => 0.22 * Math.exp(-60 * time) * chance() };
    for (let eighth = 0; eighth < 32; ++eighth) {
        const at = eighth * 0.25;
        if ([0, 5, 6].includes(eighth % 8)) addNote(channels, sampleRate, at, 0.5, kick);
        if (eighth % 4 === 2) addNote(channels, sampleRate, at, 0.45, snare);
        addNote(channels, sampleRate, at, eighth % 2 === 0 ? 0.35 : 0.65, hat);
    }
    return levelled(channels);
}

export const pieces: readonly Piece[] = [
    { id: "chords", name: "Chords", make: (rate, catalog) => catalog.demoSound(rate) },
    { id: "bells", name: "Bells", make: bells },
    { id: "beat", name: "Beat", make: beat },
];
