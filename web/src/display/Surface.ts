/** A canvas that is drawn on in CSS pixels, as sharp as the screen is. */
export class Surface {
    readonly canvas = document.createElement("canvas");
    readonly pen: CanvasRenderingContext2D;
    /** Pixels of the screen for one of CSS. */
    ratio = 1;

    constructor() {
        const pen = this.canvas.getContext("2d");
        if (!pen) throw new Error("This browser draws on no canvas.");
        this.pen = pen;
    }

    /** Empties it, too. */
    resize(width: number, height: number, ratio: number): void {
        this.ratio = ratio;
        this.canvas.width = Math.max(1, Math.round(width * ratio));
        this.canvas.height = Math.max(1, Math.round(height * ratio));
        this.pen.setTransform(ratio, 0, 0, ratio, 0, 0);
    }

    clear(): void {
        this.pen.clearRect(0, 0, this.canvas.width / this.ratio, this.canvas.height / this.ratio);
    }

    /** The nearest edge between two pixels of the screen. */
    snap(at: number): number {
        return Math.round(at * this.ratio) / this.ratio;
    }
}
