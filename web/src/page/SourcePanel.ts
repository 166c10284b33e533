import type { Player } from "./Player.js";
import { button, field, make, section, sentenceOf } from "./element.js";
import { pieces } from "./pieces.js";

const loudestDb = 12;
const softestDb = -36;

/** What goes in: a piece of the page's own, a file, the microphone; and how loud. */
export class SourcePanel {
    readonly element: HTMLElement;
    private readonly now = make("p", { class: "hint", role: "status" });
    private readonly files = make("input", {
        type: "file",
        accept: "audio/*",
        class: "visually-hidden",
        "aria-label": "Choose a sound file",
        tabindex: -1,
    });
    private readonly pieceButtons = new Map<string, HTMLButtonElement>();
    private readonly microphone: HTMLButtonElement;
    private readonly file: HTMLButtonElement;

    constructor(
        private readonly player: Player,
        private readonly say: (sentence: string) => void,
    ) {
        for (const piece of pieces)
            this.pieceButtons.set(
                piece.id,
                button(piece.name, () => this.use(() => this.player.usePiece(piece))),
            );
        this.file = button("File …", () => this.files.click());
        this.microphone = button("Microphone", () => this.use(() => player.useMicrophone()));
        this.files.addEventListener("change", () => {
            const [file] = this.files.files ?? [];
            this.files.value = "";
            if (file) void this.use(() => player.useFile(file));
        });
        this.element = section(
            "Source",
            "source",
            make(
                "div",
                { class: "row", role: "group", "aria-label": "Where the sound comes from" },
                ...this.pieceButtons.values(),
                this.file,
                this.microphone,
            ),
            this.files,
            make("div", { class: "row" }, this.level(), this.loop()),
            this.now,
        );
        player.onState.listen(() => this.show());
        this.show();
    }

    /** Takes a file as if it had been chosen. */
    async take(file: File): Promise<void> {
        await this.use(() => this.player.useFile(file));
    }

    private async use(action: () => void | Promise<void>): Promise<void> {
        try {
            await action();
            this.say("");
            if (!this.player.isPlaying) await this.player.play();
        } catch (problem) {
            this.say(sentenceOf(problem));
        }
    }

    private level(): HTMLElement {
        const slider = make("input", { type: "range", min: softestDb, max: loudestDb, step: 0.5, value: 0 });
        const show = () => {
            const decibels = Number(slider.value);
            const isOff = decibels <= softestDb;
            slider.setAttribute("aria-valuetext", isOff ? "off" : `${decibels.toFixed(1)} dB`);
            slider.style.setProperty(
                "--share",
                `${(100 * (decibels - softestDb)) / (loudestDb - softestDb)}%`,
            );
            this.player.setLevel(isOff ? 0 : 10 ** (decibels / 20));
        };
        slider.addEventListener("input", show);
        slider.addEventListener("dblclick", () => {
            slider.value = "0";
            show();
        });
        show();
        return field("Level", slider);
    }
    private loop(): HTMLElement {
        const box = make("input", { type: "checkbox", role: "switch", checked: true });
        box.addEventListener("change", () => this.player.setLoop(box.checked));
        return field("Loop", box, "inline");
    }

    private show(): void {
        const { source } = this.player;
        for (const [id, one] of this.pieceButtons)
            press(one, source.kind === "piece" && source.piece.id === id);
        press(this.file, source.kind === "file");
        press(this.microphone, source.kind === "microphone");
        this.now.textContent =
            source.kind === "file"
                ? `${source.name}, ${source.buffer.duration.toFixed(1)} s. Other files may be dropped anywhere.`
                : source.kind === "microphone"
                  ? "The microphone is open. Headphones keep it from hearing the loudspeakers."
                  : "Drop a sound file anywhere on the page.";
    }
}

function press(one: HTMLButtonElement, isPressed: boolean): void {
    one.setAttribute("aria-pressed", String(isPressed));
}
