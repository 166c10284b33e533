import type { DisplayFrame } from "../engine/DisplayFrame.js";
import { momentsKept, sourceCount } from "../engine/DisplayLayout.js";

/** Moments of the engine that are kept: about two seconds. */
export const scopePoints = 200;

/** What the seven sources have been doing lately. */
export class Scopes {
    private readonly rows = Array.from({ length: sourceCount }, () => new Float32Array(scopePoints));
    private moments = 0;
    /** Points so far; point p stands at p % scopePoints of a row. */
    private points = 0;

    take(frame: DisplayFrame): void {
        const now = frame.moments;
        // An engine that was started anew counts from the beginning.
        if (now < this.moments) this.moments = 0;
        const first = Math.max(this.moments, now - momentsKept);
        for (let moment = first; moment < now; ++moment) {
            for (let row = 0; row < sourceCount; ++row)
                this.row(row)[this.points % scopePoints] =
                    frame.source(row)[moment % momentsKept] ?? 0;
            ++this.points;
        }
        this.moments = now;
    }

    /** How many points there are to draw. */
    get count(): number {
        return Math.min(this.points, scopePoints);
    }
    /** The oldest is 0, the newest count - 1. */
    at(row: number, point: number): number {
        return this.row(row)[(this.points - this.count + point) % scopePoints] ?? 0;
    }

    private row(row: number): Float32Array {
        return this.rows[row] as Float32Array;
    }
}
