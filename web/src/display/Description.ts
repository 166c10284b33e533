import { decibels } from "./decibels.js";
import type { Picture } from "./Picture.js";

const milliseconds = 2000;

/** The picture as a sentence for who does not see it; another one every two seconds at most. */
export class Description {
    private last = -Infinity;
    private timer = 0;
    private loudest = 0;

    constructor(
        private readonly element: HTMLElement,
        private readonly picture: Picture,
    ) {
        element.setAttribute("role", "img");
        element.setAttribute("aria-label", "Live display: no sound yet");
    }

    /** Hears of a new picture. */
    note(): void {
        const { levels } = this.picture;
        const side = levels.length - 2;
        this.loudest = Math.max(this.loudest, levels[side] ?? 0, levels[side + 1] ?? 0);
        if (this.timer !== 0) return;
        const wait = Math.max(0, this.last + milliseconds - performance.now());
        this.timer = window.setTimeout(() => this.tell(), wait);
    }

    close(): void {
        clearTimeout(this.timer);
    }

    private tell(): void {
        this.timer = 0;
        this.last = performance.now();
        const { grainCount, tapeSeconds } = this.picture;
        const grains = `${grainCount} ${grainCount === 1 ? "grain" : "grains"}`;
        const level = decibels(this.loudest);
        const output = level < -90 ? "output silent" : `output ${Math.round(level)} dB`;
        this.loudest = 0;
        const text = `${grains}, tape ${tapeSeconds.toFixed(1)} s, ${output}`;
        if (this.element.getAttribute("aria-label") !== text)
            this.element.setAttribute("aria-label", text);
    }
}
