import type { Sound } from "../engine/Sound.js";

const mostSteps = 200;

/** A sound as it was, with the name of the preset that it came from, and what it was played with. */
export interface Step {
    readonly sound: Sound;
    readonly isModified: boolean;
    readonly tempo: number;
    readonly seed: number | null;
}

/** Two hundred steps back, and forward again until something else is done. */
export class History {
    private past: Step[] = [];
    private future: Step[] = [];

    get canUndo(): boolean {
        return this.past.length > 0;
    }
    get canRedo(): boolean {
        return this.future.length > 0;
    }

    /** before: what stands, ahead of what is about to be done. */
    push(before: Step): void {
        this.past.push(before);
        if (this.past.length > mostSteps) this.past.shift();
        this.future = [];
    }
    /** The step to go back to; null where there is none. */
    undo(now: Step): Step | null {
        return History.move(this.past, this.future, now);
    }
    redo(now: Step): Step | null {
        return History.move(this.future, this.past, now);
    }

    private static move(from: Step[], to: Step[], now: Step): Step | null {
        const step = from.pop();
        if (!step) return null;
        to.push(now);
        return step;
    }
}
