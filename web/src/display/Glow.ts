const size = 40;

/** Light around a head, drawn once for each colour. */
export class Glow {
    private readonly spots = new Map<string, HTMLCanvasElement>();

    draw(
        pen: CanvasRenderingContext2D,
        x: number,
        y: number,
        level: number,
        colour: string,
        isDark: boolean,
    ): void {
        if (level < 0.05) return;
        // On a light ground light cannot be added; a haze stands for it.
        pen.globalAlpha = (isDark ? 0.5 : 0.35) * level;
        pen.drawImage(this.spot(colour), x - size / 2, y - size / 2, size, size);
    }

    private spot(colour: string): HTMLCanvasElement {
        const known = this.spots.get(colour);
        if (known) return known;
        const spot = document.createElement("canvas");
        spot.width = spot.height = size;
        const pen = spot.getContext("2d");
        const middle = size / 2;
        const fade = pen?.createRadialGradient(middle, middle, 0, middle, middle, middle);
        if (pen && fade) {
            const faded = (share: number) => colour.replace(")", ` / ${share})`);
            [0.9, 0.4, 0.12, 0].forEach((share, i) => fade.addColorStop(i / 3, faded(share)));
            pen.fillStyle = fade;
            pen.fillRect(0, 0, size, size);
        }
        this.spots.set(colour, spot);
        return spot;
    }
}
