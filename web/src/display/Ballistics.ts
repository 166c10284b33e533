/** Decibels a second. */
const fall = 30;
const holdMs = 1500;

/** One bar of a meter: up at once, down slowly, its highest held for a while. In decibels. */
export class Ballistics {
    shown: number;
    held: number;
    private heldSince = 0;
    private last = 0;

    constructor(private readonly floor: number) {
        this.shown = this.held = floor;
    }

    /** now: milliseconds. Answers whether it goes on moving where the value stays. */
    follow(value: number, now: number): boolean {
        const passed = Math.min(1, Math.max(0, (now - this.last) / 1000));
        this.last = now;
        this.shown = Math.max(this.floor, value, this.shown - fall * passed);
        if (this.shown >= this.held || now - this.heldSince > holdMs) {
            this.held = this.shown;
            this.heldSince = now;
        }
        return this.shown > Math.max(this.floor, value) || this.held > this.shown;
    }
}
