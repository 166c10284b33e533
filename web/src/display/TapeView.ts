import type { Colours } from "./Colours.js";
import { Flashes } from "./Flashes.js";
import { GrainView } from "./GrainView.js";
import type { Box } from "./Layout.js";
import type { Picture } from "./Picture.js";
import type { Surface } from "./Surface.js";
import { TapeGround } from "./TapeGround.js";
import { TapeWave } from "./TapeWave.js";

/** The tape: its sound, its heads and marks, and every grain. */
export class TapeView {
    private readonly ground = new TapeGround();
    private readonly wave = new TapeWave();
    private readonly grains = new GrainView();
    private readonly flashes = new Flashes();

    drawGround(surface: Surface, box: Box, beats: number, colours: Colours): void {
        this.ground.draw(surface, box, beats, colours);
        this.wave.resize(box, surface.ratio, colours);
        this.flashes.clear();
    }

    /** Answers whether it goes on moving without a new picture. */
    draw(
        surface: Surface,
        box: Box,
        picture: Picture,
        colours: Colours,
        now: number,
        isCalm: boolean,
    ): boolean {
        if (picture.number === 0) return false;
        const { pen } = surface;
        pen.save();
        pen.beginPath();
        pen.roundRect(box.x + 1, box.y + 1, box.width - 2, box.height - 2, 7);
        pen.clip();
        this.wave.draw(pen, box, picture);
        this.drawMarkers(surface, box, picture, colours);
        this.grains.draw(pen, box, picture, colours);
        if (!isCalm) this.flashes.note(picture, box, colours, now);
        const moves = this.flashes.draw(pen, box, colours, now);
        this.drawHead(surface, box, picture.writePlace, colours.writeHead, 1);
        this.drawHead(surface, box, picture.playPlace, colours.playHead, -1);
        pen.restore();
        return moves;
    }

    private drawMarkers(surface: Surface, box: Box, picture: Picture, colours: Colours): void {
        const { pen } = surface;
        pen.fillStyle = colours.text;
        pen.globalAlpha = 0.4;
        for (let m = 0; m < picture.markerCount; ++m) {
            const x = surface.snap(box.x + (picture.markers[m] ?? 0) * box.width);
            pen.fillRect(x, box.y + 0.5 * box.height - 24, 1, 48);
        }
        pen.globalAlpha = 1;
    }

    /** The arrow is at the lower edge (1) or the upper one (-1), so that shapes tell them apart. */
    private drawHead(surface: Surface, box: Box, place: number, colour: string, edge: 1 | -1): void {
        const { pen } = surface;
        const x = surface.snap(box.x + place * box.width);
        pen.fillStyle = colour;
        pen.globalAlpha = 0.9;
        pen.fillRect(x - 1, box.y, 2, box.height);
        pen.globalAlpha = 1;
        const y = edge > 0 ? box.y + box.height : box.y;
        pen.beginPath();
        pen.moveTo(x - 6, y);
        pen.lineTo(x + 6, y);
        pen.lineTo(x, y - 10 * edge);
        pen.fill();
    }
}
