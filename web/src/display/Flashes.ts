import type { Colours } from "./Colours.js";
import { grainHeight } from "./GrainView.js";
import type { Box } from "./Layout.js";
import type { Picture } from "./Picture.js";

const milliseconds = 350;
const most = 64;
/** So many are shown at full light; where there are more, each has less. */
const few = 16;

interface Flash {
    readonly place: number;
    readonly y: number;
    readonly step: number;
    readonly since: number;
}

/** Rings that open where grains start. */
export class Flashes {
    private flashes: Flash[] = [];
    /** Number of the latest grain that was seen. */
    private newest = 0;

    /** Notes the grains that have started since the picture before. */
    note(picture: Picture, box: Box, colours: Colours, now: number): void {
        const seen = this.newest;
        let newest = 0;
        for (let k = 0; k < picture.grainCount; ++k) {
            const grain = picture.grains[k];
            if (!grain) continue;
            newest = Math.max(newest, grain.number);
            if (grain.number <= seen || this.flashes.length >= most) continue;
            const [y, step] = [grainHeight(grain, box), colours.pitchStep(grain.semitones)];
            this.flashes.push({ place: grain.place, y, step, since: now });
        }
        // Numbers of an engine that was started anew begin from 1 again.
        if (newest > 0) this.newest = newest;
    }

    clear(): void {
        this.flashes = [];
    }

    /** Answers whether one is still open. */
    draw(pen: CanvasRenderingContext2D, box: Box, colours: Colours, now: number): boolean {
        this.flashes = this.flashes.filter(({ since }) => now - since < milliseconds);
        pen.lineWidth = 1.5;
        const light = 0.8 * Math.min(1, few / this.flashes.length);
        const reach = Math.min(11, 0.035 * box.height);
        for (const { place, y, step, since } of this.flashes) {
            const age = Math.min(1, Math.max(0, (now - since) / milliseconds));
            pen.globalAlpha = light * (1 - age);
            pen.strokeStyle = colours.brightPitch(step);
            pen.beginPath();
            const x = box.x + (place - Math.floor(place)) * box.width;
            pen.arc(x, y, 3 + reach * age, 0, 2 * Math.PI);
            pen.stroke();
        }
        pen.globalAlpha = 1;
        return this.flashes.length > 0;
    }
}
