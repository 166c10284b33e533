import type { Colours } from "./Colours.js";
import { type Box, type Layout, meterCount } from "./Layout.js";
import { LimiterView } from "./LimiterView.js";
import { MeterView } from "./MeterView.js";
import { levelNames, type Picture } from "./Picture.js";
import type { Surface } from "./Surface.js";

const margin = 12;
const columnGap = 16;
/** What a row keeps free below its bars, which the last one needs not. */
const rowGap = 10;

/** The levels of the sound on its way, and what the limiter takes off at its end. */
export class MetersView {
    private readonly levels = levelNames.map((name) => new MeterView(name));
    private readonly limiter = new LimiterView();

    drawGround(surface: Surface, layout: Layout, colours: Colours): void {
        const { x, y, width, height } = layout.meters;
        surface.pen.fillStyle = colours.panel;
        surface.pen.beginPath();
        surface.pen.roundRect(x, y, width, height, 8);
        surface.pen.fill();
        this.levels.forEach((level, i) => level.drawGround(surface, this.box(layout, i), colours));
        this.limiter.drawGround(surface, this.box(layout, this.levels.length), colours);
    }

    /** Takes the levels up to now; answers whether something is still moving. */
    draw(
        pen: CanvasRenderingContext2D,
        layout: Layout,
        picture: Picture,
        colours: Colours,
        now: number,
    ): boolean {
        let moves = false;
        this.levels.forEach((level, i) => {
            const sides = [picture.levels[2 * i] ?? 0, picture.levels[2 * i + 1] ?? 0] as const;
            moves = level.draw(pen, this.box(layout, i), sides, colours, now) || moves;
        });
        picture.levels.fill(0);
        const box = this.box(layout, this.levels.length);
        return this.limiter.draw(pen, box, picture.limiter, colours, now) || moves;
    }

    private box({ meters, meterColumns }: Layout, number: number): Box {
        const inside = meters.width - 2 * margin;
        const width = (inside - columnGap * (meterColumns - 1)) / meterColumns;
        const rows = Math.ceil(meterCount / meterColumns);
        const row = Math.floor(number / meterColumns);
        const height = (meters.height - 2 * margin + rowGap) / rows;
        const x = meters.x + margin + (number % meterColumns) * (width + columnGap);
        return { x, y: meters.y + margin + row * height, width, height };
    }
}
