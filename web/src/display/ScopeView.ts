import type { Colours } from "./Colours.js";
import type { Box } from "./Layout.js";
import { type Scopes, scopePoints } from "./Scopes.js";
import type { Surface } from "./Surface.js";
import { fitted } from "./fitted.js";

/** What one of the seven sources has been doing for a second or so. */
export class ScopeView {
    constructor(
        private readonly row: number,
        private readonly name: string,
    ) {}

    drawGround(surface: Surface, box: Box, colours: Colours): void {
        const { pen } = surface;
        pen.fillStyle = colours.panel;
        pen.beginPath();
        pen.roundRect(box.x, box.y, box.width, box.height, 8);
        pen.fill();
        pen.fillStyle = this.colour(colours);
        pen.beginPath();
        pen.arc(box.x + 14, box.y + 14, 4, 0, 2 * Math.PI);
        pen.fill();
        pen.fillStyle = colours.text;
        pen.textAlign = "left";
        pen.textBaseline = "middle";
        pen.fillText(fitted(pen, this.name, box.width - 36), box.x + 24, box.y + 14.5);
        pen.fillStyle = colours.line;
        const scope = this.scope(box);
        const middle = surface.snap(scope.y + 0.5 * scope.height);
        pen.fillRect(scope.x, middle, scope.width, 1);
    }

    draw(pen: CanvasRenderingContext2D, box: Box, scopes: Scopes, colours: Colours): void {
        const { count } = scopes;
        if (count < 2) return;
        const { x, y, width, height } = this.scope(box);
        const middle = y + 0.5 * height;
        const xOf = (point: number) => x + (width * (scopePoints - count + point)) / (scopePoints - 1);
        const yOf = (point: number) => middle - 0.5 * height * scopes.at(this.row, point);
        pen.beginPath();
        for (let point = 0; point < count; ++point) pen.lineTo(xOf(point), yOf(point));
        pen.strokeStyle = pen.fillStyle = this.colour(colours);
        pen.lineWidth = 1.5;
        pen.lineJoin = "round";
        pen.stroke();
        pen.lineTo(xOf(count - 1), middle);
        pen.lineTo(xOf(0), middle);
        pen.globalAlpha = 0.14;
        pen.fill();
        pen.globalAlpha = 1;
        pen.beginPath();
        pen.arc(xOf(count - 1), yOf(count - 1), 2.5, 0, 2 * Math.PI);
        pen.fill();
    }

    private colour(colours: Colours): string {
        return colours.sources[this.row] ?? colours.text;
    }
    private scope(box: Box): Box {
        return { x: box.x + 10, y: box.y + 28, width: box.width - 22, height: box.height - 36 };
    }
}
