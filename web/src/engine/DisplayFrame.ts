import {
    destinationCount,
    grainFields,
    layout,
    momentsKept,
    sourceCount,
    tapeColumns,
} from "./DisplayLayout.js";

/** A grain as it sounds. Places are on the tape, 0 to 1 of its length. */
export interface Grain {
    /** Of its own, as long as it sounds; counts up from 1. */
    number: number;
    /** Where it reads. */
    place: number;
    /** Stretch of tape that it reads in all. */
    length: number;
    /** Share of that which it has read. */
    progress: number;
    /** 0 is the recorded pitch. */
    semitones: number;
    /** 0 left, 0.5 centre, 1 right. */
    pan: number;
    /** What its distance leaves. */
    gain: number;
    /** Present value of its envelope, 0 to 1. */
    envelope: number;
    reversed: boolean;
}

/** Left and right, linear: the highest level since the picture before. */
export type Levels = Float32Array;

/**
 * All that moves in a picture of the engine, at one moment: a view on the numbers that the engine
 * sent, which copies nothing. It holds until the listener that was given it returns, because its
 * memory goes back to the engine then.
 */
export class DisplayFrame {
    constructor(private readonly data: Float32Array) {
        if (data.length !== layout.length)
            throw new RangeError("This is no picture of this engine.");
    }

    /** Of pictures; 0: none has come yet. */
    get number(): number {
        return this.at(layout.number);
    }
    /** Of sound, since the engine was started. */
    get seconds(): number {
        return this.at(layout.seconds);
    }
    get tempo(): number {
        return this.at(layout.tempo);
    }
    /** In quarter notes. */
    get beat(): number {
        return this.at(layout.beat);
    }
    get playing(): boolean {
        return this.at(layout.playing) !== 0;
    }
    /** Length of the tape, the loop that records the input. */
    get tapeSeconds(): number {
        return this.at(layout.tapeSeconds);
    }
    /** Where the input is being recorded, 0 to 1 of the tape. */
    get writePlace(): number {
        return this.at(layout.writePlace);
    }
    /** Where new grains begin. */
    get playPlace(): number {
        return this.at(layout.playPlace);
    }
    /** Pairs of grains since somebody watches. */
    get pairsStarted(): number {
        return this.at(layout.pairsStarted);
    }
    /** Reduction of the limiter: 0 to 1, 0.5 at about 19 dB. */
    get limiter(): number {
        return this.at(layout.limiter);
    }
    get input(): Levels {
        return this.part(layout.input, 2);
    }
    /** What the grains make, ahead of the mix. */
    get wet(): Levels {
        return this.part(layout.wet, 2);
    }
    get feedback(): Levels {
        return this.part(layout.feedback, 2);
    }
    get output(): Levels {
        return this.part(layout.output, 2);
    }
    /** Lowest sample of each of 1024 stretches of the tape. */
    get tapeLowest(): Float32Array {
        return this.part(layout.tapeLowest, tapeColumns);
    }
    get tapeHighest(): Float32Array {
        return this.part(layout.tapeHighest, tapeColumns);
    }
    /** Positions of the modulation's destinations with all that moves them, 0 to 1. */
    get destinations(): Float32Array {
        return this.part(layout.destinations, destinationCount);
    }
    /** Places of transients or grid lines. */
    get markers(): Float32Array {
        return this.part(layout.markers, this.at(layout.markerCount));
    }

    /**
     * The scopes: a moment for each eighth block of about a millisecond. `moments` have been so far;
     * moment m stands at m % 64 of a row, so that the newest is at (moments - 1) % 64.
     */
    get moments(): number {
        return this.at(layout.moments);
    }
    /** Row of a modulation source, 0 to 6: its values, -1 to 1. */
    source(row: number): Float32Array {
        if (!(row >= 0 && row < sourceCount)) throw new RangeError("There are seven sources.");
        return this.part(layout.sources + row * momentsKept, momentsKept);
    }
    /** Level that the envelope follower hears. */
    get follower(): Float32Array {
        return this.part(layout.follower, momentsKept);
    }
    /** Where the spatialiser stands, 0 to 1. */
    get spaceX(): Float32Array {
        return this.part(layout.spaceX, momentsKept);
    }
    get spaceY(): Float32Array {
        return this.part(layout.spaceY, momentsKept);
    }

    get grainCount(): number {
        return this.at(layout.grainCount);
    }
    /** Grain k of grainCount; fills in `into` where that is given, so that a picture makes none. */
    grain(k: number, into: Grain = { ...silentGrain }): Grain {
        if (!(k >= 0 && k < this.grainCount)) throw new RangeError("There is no such grain.");
        const at = layout.grains + k * grainFields;
        into.number = this.at(at);
        into.place = this.at(at + 1);
        into.length = this.at(at + 2);
        into.progress = this.at(at + 3);
        into.semitones = this.at(at + 4);
        into.pan = this.at(at + 5);
        into.gain = this.at(at + 6);
        into.envelope = this.at(at + 7);
        into.reversed = this.at(at + 8) !== 0;
        return into;
    }

    private at(offset: number): number {
        return this.data[offset] ?? 0;
    }
    private part(offset: number, count: number): Float32Array {
        return this.data.subarray(offset, offset + count);
    }
}

const silentGrain: Grain = {
    number: 0,
    place: 0,
    length: 0,
    progress: 0,
    semitones: 0,
    pan: 0.5,
    gain: 0,
    envelope: 0,
    reversed: false,
};
