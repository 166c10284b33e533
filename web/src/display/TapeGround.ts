import type { Colours } from "./Colours.js";
import type { Box } from "./Layout.js";
import { heightOf } from "./pitchHeight.js";
import type { Surface } from "./Surface.js";

const octaves = [-24, -12, 0, 12, 24];

/** Beats from one line to the next, so that they stand apart and are no more than 64. */
function beatStep(beats: number, width: number): number {
    let step = 0.125;
    while ((step / beats) * width < 36 || beats / step > 64) step *= 2;
    return step;
}

/** What lies still behind the tape: beats across, octaves up. */
export class TapeGround {
    draw(surface: Surface, box: Box, beats: number, colours: Colours): void {
        const { pen } = surface;
        pen.fillStyle = colours.well;
        pen.beginPath();
        pen.roundRect(box.x, box.y, box.width, box.height, 8);
        pen.fill();
        pen.save();
        pen.clip();
        if (beats > 0) this.drawBeats(surface, box, beats, colours);
        this.drawOctaves(surface, box, colours);
        pen.restore();
        pen.globalAlpha = 1;
        pen.strokeStyle = colours.line;
        pen.lineWidth = 1;
        pen.beginPath();
        pen.roundRect(box.x + 0.5, box.y + 0.5, box.width - 1, box.height - 1, 8);
        pen.stroke();
    }

    private drawBeats(surface: Surface, box: Box, beats: number, colours: Colours): void {
        const { pen } = surface;
        const step = beatStep(beats, box.width);
        pen.textAlign = "left";
        pen.textBaseline = "top";
        for (let i = 0; i * step < beats - 0.001; ++i) {
            const beat = i * step;
            const x = surface.snap(box.x + (beat / beats) * box.width);
            pen.globalAlpha = beat % 4 === 0 ? 1 : beat % 1 === 0 ? 0.7 : 0.35;
            pen.fillStyle = colours.line;
            if (i > 0) pen.fillRect(x, box.y, 1, box.height);
            if (beat % 1 !== 0) continue;
            pen.globalAlpha = 1;
            pen.fillStyle = colours.dim;
            const bar = `${Math.floor(beat / 4) + 1}`;
            pen.fillText(beat % 4 === 0 ? bar : `${bar}.${(beat % 4) + 1}`, x + 8, box.y + 8);
        }
    }

    private drawOctaves(surface: Surface, box: Box, colours: Colours): void {
        const { pen } = surface;
        pen.textAlign = "right";
        pen.textBaseline = "bottom";
        for (const octave of octaves) {
            const y = surface.snap(box.y + heightOf(octave, box.height));
            pen.globalAlpha = octave === 0 ? 0.9 : 0.4;
            pen.fillStyle = colours.line;
            pen.fillRect(box.x, y, box.width, 1);
            pen.globalAlpha = 1;
            pen.fillStyle = colours.brightPitch(colours.pitchStep(octave));
            pen.fillText(`${octave > 0 ? "+" : ""}${octave} st`, box.x + box.width - 8, y - 1);
        }
    }
}
