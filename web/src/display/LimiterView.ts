import { Ballistics } from "./Ballistics.js";
import type { Colours } from "./Colours.js";
import { reduction } from "./decibels.js";
import type { Box } from "./Layout.js";
import type { Surface } from "./Surface.js";

const most = 24;
const bar = 5;

/** What the limiter takes off, from the right, as it is taken from the top. */
export class LimiterView {
    private readonly level = new Ballistics(0);

    drawGround({ pen }: Surface, box: Box, colours: Colours): void {
        pen.fillStyle = colours.dim;
        pen.textAlign = "left";
        pen.textBaseline = "middle";
        pen.fillText("Limiter", box.x, box.y + 7);
        pen.fillStyle = colours.well;
        pen.fillRect(box.x, box.y + 16, box.width, bar);
    }

    /** Answers whether it is still moving. */
    draw(
        pen: CanvasRenderingContext2D,
        box: Box,
        meter: number,
        colours: Colours,
        now: number,
    ): boolean {
        const moves = this.level.follow(reduction(meter), now);
        const { shown, held } = this.level;
        const width = box.width * Math.min(1, shown / most);
        pen.fillStyle = colours.playHead;
        pen.fillRect(box.x + box.width - width, box.y + 16, width, bar);
        pen.fillStyle = colours.text;
        pen.textAlign = "right";
        pen.textBaseline = "middle";
        pen.fillText(`${held < 0.05 ? "" : "−"}${held.toFixed(1)} dB`, box.x + box.width, box.y + 7);
        return moves;
    }
}
