import { tapeColumns } from "../engine/DisplayLayout.js";
import type { Colours } from "./Colours.js";
import type { Box } from "./Layout.js";
import type { Picture } from "./Picture.js";
import { Surface } from "./Surface.js";

/** Of half the tape's height. */
const reach = 0.84;
/** Grains have to be seen on it; the round before, ahead of the write head, is fainter still. */
const [clear, faint] = [0.8, 0.4];

/** The sound on the tape. Kept as drawn; only columns that the tape has changed are drawn again. */
export class TapeWave {
    private readonly surface = new Surface();
    private readonly lowest = new Float32Array(tapeColumns);
    private readonly highest = new Float32Array(tapeColumns);
    private readonly isOther = new Uint8Array(tapeColumns);
    private colour = "";

    /** Empties it, so that the next drawing draws all of it. */
    resize(box: Box, ratio: number, colours: Colours): void {
        this.surface.resize(box.width, box.height, ratio);
        // In pixels of the screen, so that none is shared between two columns.
        this.surface.pen.setTransform(1, 0, 0, 1, 0, 0);
        this.colour = colours.wave;
        this.lowest.fill(NaN);
    }

    draw(pen: CanvasRenderingContext2D, box: Box, picture: Picture): void {
        this.follow(picture);
        const { width, height } = this.surface.canvas;
        const border = Math.round(picture.writePlace * width);
        const part = (from: number, to: number, light: number) => {
            if (from >= to) return;
            const [x, wide] = [(from / width) * box.width, ((to - from) / width) * box.width];
            pen.globalAlpha = light;
            pen.drawImage(this.surface.canvas, from, 0, to - from, height, box.x + x, box.y, wide, box.height);
        };
        part(0, border, clear);
        part(border, width, faint);
        pen.globalAlpha = 1;
    }

    private follow(picture: Picture): void {
        for (let i = 0; i < tapeColumns; ++i) {
            const [low, high] = [picture.lowest[i] ?? 0, picture.highest[i] ?? 0];
            this.isOther[i] = +(low !== this.lowest[i] || high !== this.highest[i]);
            this.lowest[i] = low;
            this.highest[i] = high;
        }
        const { width } = this.surface.canvas;
        this.surface.pen.fillStyle = this.colour;
        for (let x = 0; x < width; ++x) this.drawColumn(x, width);
    }

    /** A pixel shows the extremes of all columns that lie on it. */
    private drawColumn(x: number, width: number): void {
        const first = Math.floor((x * tapeColumns) / width);
        const end = Math.max(first + 1, Math.floor(((x + 1) * tapeColumns) / width));
        let [low, high, isOther] = [1, -1, 0];
        for (let i = first; i < end; ++i) {
            low = Math.min(low, this.lowest[i] ?? 0);
            high = Math.max(high, this.highest[i] ?? 0);
            isOther |= this.isOther[i] ?? 0;
        }
        if (!isOther) return;
        const { pen, canvas } = this.surface;
        const middle = 0.5 * canvas.height;
        const top = Math.round(middle - reach * middle * Math.min(1, high));
        const bottom = Math.round(middle - reach * middle * Math.max(-1, low));
        pen.clearRect(x, 0, 1, canvas.height);
        pen.fillRect(x, top, 1, Math.max(1, bottom - top));
    }
}
