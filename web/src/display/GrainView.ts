import type { Grain } from "../engine/DisplayFrame.js";
import type { Colours } from "./Colours.js";
import { Glow } from "./Glow.js";
import type { Box } from "./Layout.js";
import type { Picture } from "./Picture.js";
import { heightOf } from "./pitchHeight.js";

/** Of the height: grains of one pitch lie beside each other within it, to either side. */
const laneReach = 0.12;
/** Of the tape: what a grain has read lately, and shines still. */
const tail = 0.05;
/** Pixels of one channel's stripe. */
const stripe = 3;

/** Each keeps its lane; even over many numbers. */
function laneOf(number: number): number {
    const golden = 0.6180339887498949 * number;
    return 2 * (golden - Math.floor(golden)) - 1;
}

export function grainHeight(grain: Grain, box: Box): number {
    const y = box.y + heightOf(grain.semitones, box.height) + laneReach * box.height * laneOf(grain.number);
    return Math.min(box.y + box.height - 6, Math.max(box.y + 6, y));
}

/**
 * Every grain, as long as what it reads: place across, pitch up and as colour, light as level. The
 * upper half is its left channel, the lower its right one; a stroke is a head that runs forward, an
 * arrow one that runs backward.
 */
export class GrainView {
    private readonly glow = new Glow();
    private box: Box = { x: 0, y: 0, width: 0, height: 0 };

    draw(pen: CanvasRenderingContext2D, box: Box, picture: Picture, colours: Colours): void {
        this.box = box;
        for (let k = 0; k < picture.grainCount; ++k) {
            const grain = picture.grains[k];
            if (grain) this.drawGrain(pen, grain, colours);
        }
        pen.globalAlpha = 1;
    }

    private drawGrain(pen: CanvasRenderingContext2D, grain: Grain, colours: Colours): void {
        const y = Math.round(grainHeight(grain, this.box));
        const done = grain.progress * grain.length;
        const rest = grain.length - done;
        const way = grain.reversed ? -1 : 1;
        const light = Math.sqrt(Math.min(1, Math.max(0, grain.envelope)));
        const step = colours.pitchStep(grain.semitones);
        pen.fillStyle = colours.pitch(step);
        for (const side of [0, 1]) {
            const share = side === 0 ? 2 - 2 * grain.pan : 2 * grain.pan;
            const gain = Math.min(1, grain.gain * Math.min(1, share));
            const top = y + (side === 0 ? -stripe : 0.5);
            pen.globalAlpha = 0.1 + 0.18 * light * gain;
            this.stretch(pen, grain.place - way * done, grain.place + way * rest, top);
            pen.globalAlpha = 0.08 + 0.8 * light * gain;
            this.stretch(pen, grain.place - way * Math.min(done, tail), grain.place, top);
        }
        this.drawHead(pen, grain, y, light, step, colours);
    }

    private drawHead(
        pen: CanvasRenderingContext2D,
        grain: Grain,
        y: number,
        light: number,
        step: number,
        colours: Colours,
    ): void {
        const x = this.box.x + (grain.place - Math.floor(grain.place)) * this.box.width;
        const level = light * Math.min(1, grain.gain);
        this.glow.draw(pen, x, y, level, colours.pitch(step), colours.isDark);
        pen.fillStyle = colours.brightPitch(step);
        pen.globalAlpha = 0.25 + 0.75 * level;
        if (!grain.reversed) return pen.fillRect(x - 1.5, y - 4, 3, 8);
        pen.beginPath();
        pen.moveTo(x - 5, y);
        pen.lineTo(x + 3, y - 5);
        pen.lineTo(x + 3, y + 5);
        pen.fill();
    }

    /** From one place to another, round the end of the tape where it leads there. */
    private stretch(pen: CanvasRenderingContext2D, one: number, other: number, top: number): void {
        const { x, width } = this.box;
        const least = Math.min(one, other);
        const from = least - Math.floor(least);
        const to = from + Math.min(1, Math.abs(other - one));
        const height = stripe - 0.5;
        pen.fillRect(x + from * width, top, (Math.min(to, 1) - from) * width, height);
        if (to > 1) pen.fillRect(x, top, (to - 1) * width, height);
    }
}
