import { Ballistics } from "./Ballistics.js";
import type { Colours } from "./Colours.js";
import { decibels } from "./decibels.js";
import type { Box } from "./Layout.js";
import type { Surface } from "./Surface.js";

const bottom = -60;
const top = 6;
const bar = 5;

const shareOf = (value: number): number =>
    Math.min(1, Math.max(0, (value - bottom) / (top - bottom)));

/** A level, left above right, from -60 to 6 dB, and the highest of late as a number. */
export class MeterView {
    private readonly sides = [new Ballistics(bottom), new Ballistics(bottom)];

    constructor(private readonly name: string) {}

    drawGround({ pen }: Surface, box: Box, colours: Colours): void {
        pen.fillStyle = colours.dim;
        pen.textAlign = "left";
        pen.textBaseline = "middle";
        pen.fillText(this.name, box.x, box.y + 7);
        pen.fillStyle = colours.well;
        pen.fillRect(box.x, box.y + 16, box.width, 2 * bar + 1);
        pen.fillStyle = colours.line;
        pen.fillRect(box.x + box.width * shareOf(0), box.y + 15, 1, 2 * bar + 3);
    }

    /** Answers whether it is still moving. */
    draw(
        pen: CanvasRenderingContext2D,
        box: Box,
        levels: readonly [number, number],
        colours: Colours,
        now: number,
    ): boolean {
        let moves = false;
        this.sides.forEach((side, i) => {
            moves = side.follow(decibels(levels[i] ?? 0), now) || moves;
            this.drawBar(pen, box, box.y + 16 + i * (bar + 1), side, colours);
        });
        const held = Math.max(...this.sides.map((side) => side.held));
        pen.fillStyle = held > 0 ? colours.alarm : colours.text;
        pen.textAlign = "right";
        pen.textBaseline = "middle";
        const text = held > bottom ? `${held.toFixed(1).replace("-", "−")} dB` : "−∞ dB";
        pen.fillText(text, box.x + box.width, box.y + 7);
        return moves;
    }

    private drawBar(
        pen: CanvasRenderingContext2D,
        box: Box,
        y: number,
        { shown, held }: Ballistics,
        colours: Colours,
    ): void {
        const [zero, share] = [shareOf(0), shareOf(shown)];
        pen.fillStyle = colours.level;
        pen.fillRect(box.x, y, box.width * Math.min(share, zero), bar);
        pen.fillStyle = colours.alarm;
        if (share > zero) pen.fillRect(box.x + box.width * zero, y, box.width * (share - zero), bar);
        if (held <= bottom) return;
        pen.fillStyle = held > 0 ? colours.alarm : colours.text;
        pen.fillRect(box.x + Math.max(0, box.width * shareOf(held) - 2), y, 2, bar);
    }
}
