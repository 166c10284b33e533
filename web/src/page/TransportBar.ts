import type { Player } from "./Player.js";
import type { PresetPanel } from "./PresetPanel.js";
import type { Session } from "./Session.js";
import { button, enable, field, make, sentenceOf } from "./element.js";

const longestPauseMs = 2500;
const mostTaps = 8;

/** Play, tempo, the way back, and what sound this is. */
export class TransportBar {
    readonly element: HTMLElement;
    private readonly play: HTMLButtonElement;
    private readonly undo: HTMLButtonElement;
    private readonly redo: HTMLButtonElement;
    private readonly name = make("p", { class: "sound-name" });
    private readonly tempo = make("input", {
        type: "number",
        min: 1,
        max: 999,
        step: 0.1,
        class: "short",
    });
    private taps: number[] = [];

    constructor(
        private readonly session: Session,
        private readonly player: Player,
        presets: PresetPanel,
        private readonly say: (sentence: string) => void,
    ) {
        this.play = button("Play", () => void this.toggle(), "primary");
        this.undo = button("Undo", () => session.undo());
        this.redo = button("Redo", () => session.redo());
        this.element = make(
            "div",
            { class: "transport", role: "toolbar", "aria-label": "Transport" },
            this.play,
            make(
                "div",
                { class: "sound" },
                iconButton("‹", "Previous preset", () => presets.step(-1)),
                this.name,
                iconButton("›", "Next preset", () => presets.step(1)),
            ),
            field("Tempo", this.tempo, "inline"),
            button("Tap", () => this.tap()),
            make("div", { class: "row" }, this.undo, this.redo, this.panic()),
        );
        this.tempo.addEventListener("change", () => {
            const wanted = Number(this.tempo.value);
            if (wanted > 0) session.setTempo(wanted);
            this.show();
            // Keys such as Space go to the page again.
            this.tempo.blur();
        });
        for (const signal of [session.onState, player.onState]) signal.listen(() => this.show());
        session.onTempo.listen(() => this.show());
        this.show();
    }

    private panic(): HTMLButtonElement {
        const panic = button("Panic", () => this.player.panic());
        panic.title = "Silences everything that sounds, and wipes the tape.";
        return panic;
    }

    async toggle(): Promise<void> {
        try {
            if (this.player.isPlaying) this.player.stop();
            else await this.player.play();
        } catch (problem) {
            this.say(sentenceOf(problem));
        }
    }

    /** The mean of the last taps, a pause begins anew. */
    tap(): void {
        const now = performance.now();
        const last = this.taps.at(-1);
        if (last === undefined || now - last > longestPauseMs) this.taps = [];
        this.taps = [...this.taps, now].slice(-mostTaps);
        const [first = now] = this.taps;
        const gaps = this.taps.length - 1;
        if (gaps > 0) this.session.setTempo(Math.round((600_000 * gaps) / (now - first)) / 10);
    }

    private show(): void {
        const { session, player } = this;
        this.play.textContent = player.isPlaying ? "Stop" : "Play";
        this.play.setAttribute("aria-pressed", String(player.isPlaying));
        enable(this.undo, session.canUndo);
        enable(this.redo, session.canRedo);
        this.name.textContent = session.isModified ? `${session.name} (changed)` : session.name;
        this.tempo.value = String(session.tempo);
    }
}

function iconButton(sign: string, label: string, onClick: () => void): HTMLButtonElement {
    const element = button(sign, onClick, "icon");
    element.setAttribute("aria-label", label);
    return element;
}
