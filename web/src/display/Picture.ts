import type { DisplayFrame, Grain } from "../engine/DisplayFrame.js";
import { grainRoom, markerRoom, tapeColumns } from "../engine/DisplayLayout.js";
import { Scopes } from "./Scopes.js";

/** The places that a level is measured at. */
export const levelNames = ["Input", "Grains", "Feedback", "Output"] as const;

function silentGrain(): Grain {
    const at = { number: 0, place: 0, length: 0, progress: 0, semitones: 0 };
    return { ...at, pan: 0.5, gain: 0, envelope: 0, reversed: false };
}

/** What a display keeps of the newest picture, because the picture's own memory goes back. */
export class Picture {
    number = 0;
    seconds = 0;
    tempo = 120;
    tapeSeconds = 0;
    writePlace = 0;
    playPlace = 0;
    limiter = 0;
    grainCount = 0;
    markerCount = 0;
    readonly lowest = new Float32Array(tapeColumns);
    readonly highest = new Float32Array(tapeColumns);
    readonly markers = new Float32Array(markerRoom);
    readonly grains = Array.from({ length: grainRoom }, silentGrain);
    /** Highest since they were taken last, left and right of each of levelNames. */
    readonly levels = new Float32Array(2 * levelNames.length);
    readonly scopes = new Scopes();

    /** Whether it was another one than before. */
    take(frame: DisplayFrame): boolean {
        if (frame.number === this.number) return false;
        this.number = frame.number;
        this.seconds = frame.seconds;
        this.tempo = frame.tempo;
        this.tapeSeconds = frame.tapeSeconds;
        this.writePlace = frame.writePlace;
        this.playPlace = frame.playPlace;
        this.limiter = frame.limiter;
        this.lowest.set(frame.tapeLowest);
        this.highest.set(frame.tapeHighest);
        const { markers } = frame;
        this.markers.set(markers);
        this.markerCount = markers.length;
        this.grainCount = Math.min(frame.grainCount, grainRoom);
        for (let k = 0; k < this.grainCount; ++k) frame.grain(k, this.grains[k]);
        this.takeLevels([frame.input, frame.wet, frame.feedback, frame.output]);
        this.scopes.take(frame);
        return true;
    }

    /** The loudest between two drawings counts, however many pictures came. */
    private takeLevels(places: readonly Float32Array[]): void {
        places.forEach((sides, place) =>
            sides.forEach((level, side) => {
                const at = 2 * place + side;
                this.levels[at] = Math.max(this.levels[at] ?? 0, level);
            }),
        );
    }
}
