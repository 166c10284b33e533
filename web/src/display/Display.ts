import type { Catalog } from "../engine/Catalog.js";
import type { DisplayFrame } from "../engine/DisplayFrame.js";
import { Colours } from "./Colours.js";
import { Description } from "./Description.js";
import { layoutFor } from "./Layout.js";
import { MetersView } from "./MetersView.js";
import { Picture } from "./Picture.js";
import { ScopeView } from "./ScopeView.js";
import { Surface } from "./Surface.js";
import { TapeView } from "./TapeView.js";

const leastWidth = 280;
/** Where somebody wants less motion: ten pictures a second, and no flashes. */
const calmMs = 95;

/**
 * All that moves in the engine: the tape with its heads and every grain, the seven sources, levels.
 * Fills the width of its host and says by itself how tall it is. It draws when the browser does,
 * which is not at all in a hidden page, and only where something has changed.
 *
 * The host's CSS may set its colours: `--display-well`, `-panel`, `-line`, `-text`, `-dim`, `-wave`,
 * `-write-head`, `-play-head`, `-level`, `-alarm`, and lists in `-sources` (7) and `-pitches` (#rrggbb).
 */
export class Display {
    private readonly root = document.createElement("div");
    /** What stands still lies below what moves. */
    private readonly ground = new Surface();
    private readonly front = new Surface();
    private readonly picture = new Picture();
    private readonly description = new Description(this.root, this.picture);
    private readonly tape = new TapeView();
    private readonly meters = new MetersView();
    private readonly scopes: readonly ScopeView[];
    private readonly light = matchMedia("(prefers-color-scheme: light)");
    private readonly calm = matchMedia("(prefers-reduced-motion: reduce)");
    private readonly sizes = new ResizeObserver(() => this.arrange());
    private layout = layoutFor(leastWidth);
    private colours: Colours;
    private beats = 0;
    private asked = 0;
    private drawnAt = -Infinity;

    constructor(
        private readonly host: HTMLElement,
        catalog: Catalog,
    ) {
        this.scopes = catalog.sources.map((name, row) => new ScopeView(row, name));
        this.colours = new Colours(host, !this.light.matches);
        this.root.style.position = "relative";
        for (const { canvas } of [this.ground, this.front]) {
            canvas.style.cssText = "position: absolute; inset: 0; width: 100%; height: 100%";
            this.root.append(canvas);
        }
        host.append(this.root);
        this.light.addEventListener("change", this.arrange);
        this.sizes.observe(this.root);
        this.arrange();
    }

    /** Takes what it needs of a picture, and draws it when the browser draws next. */
    show(frame: DisplayFrame): void {
        if (!this.picture.take(frame)) return;
        this.description.note();
        this.ask();
    }

    /** Takes it off the page. */
    close(): void {
        cancelAnimationFrame(this.asked);
        this.light.removeEventListener("change", this.arrange);
        this.sizes.disconnect();
        this.description.close();
        this.root.remove();
    }

    /** Anew for another width, another screen or other colours. */
    private readonly arrange = (): void => {
        this.layout = layoutFor(Math.max(leastWidth, this.root.clientWidth));
        const { width, height } = this.layout;
        this.root.style.height = `${height}px`;
        this.colours = new Colours(this.host, !this.light.matches);
        for (const surface of [this.ground, this.front]) {
            surface.resize(width, height, devicePixelRatio);
            surface.pen.font = `11px ${getComputedStyle(this.host).fontFamily}`;
        }
        this.drawGround();
        this.draw(performance.now());
    };

    private ask(): void {
        this.asked ||= requestAnimationFrame((now) => {
            this.asked = 0;
            if (this.calm.matches && now - this.drawnAt < calmMs) return this.ask();
            if (devicePixelRatio !== this.front.ratio) return this.arrange();
            if (Math.abs(this.beatsNow() - this.beats) > 1e-3) this.drawGround();
            this.draw(now);
        });
    }

    private beatsNow(): number {
        return (this.picture.tapeSeconds * this.picture.tempo) / 60;
    }

    private drawGround(): void {
        const { ground, layout, colours } = this;
        this.beats = this.beatsNow();
        ground.clear();
        this.tape.drawGround(ground, layout.tape, this.beats, colours);
        this.meters.drawGround(ground, layout, colours);
        this.scopes.forEach((scope, i) => {
            const box = layout.scopes[i];
            if (box) scope.drawGround(ground, box, colours);
        });
    }

    private draw(now: number): void {
        const { front, layout, picture, colours } = this;
        this.drawnAt = now;
        front.clear();
        let moves = this.tape.draw(front, layout.tape, picture, colours, now, this.calm.matches);
        moves = this.meters.draw(front.pen, layout, picture, colours, now) || moves;
        this.scopes.forEach((scope, i) => {
            const box = layout.scopes[i];
            if (box) scope.draw(front.pen, box, picture.scopes, colours);
        });
        if (moves) this.ask();
    }
}
