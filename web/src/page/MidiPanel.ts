import type { MidiInput } from "../midi/MidiInput.js";
import { sourceText } from "../midi/MidiSource.js";
import type { Session } from "./Session.js";
import { button, make, section, sentenceOf } from "./element.js";

const pauseMs = 500;

/** Connecting instruments, and what each moves. */
export class MidiPanel {
    readonly element: HTMLElement;
    private readonly list = make("ul", { class: "midi-list" });
    private readonly now = make("p", { class: "hint", role: "status" });
    private readonly connectButton: HTMLButtonElement;
    private pause = 0;
    private connected = false;

    constructor(
        private readonly session: Session,
        private readonly midi: MidiInput,
        private readonly say: (sentence: string) => void,
        private readonly changed: () => void,
    ) {
        this.connectButton = button("Connect", () => void this.connect());
        this.element = section(
            "MIDI",
            "midi",
            make("div", { class: "row" }, this.connectButton),
            this.now,
            this.list,
        );
        midi.onMove = (index, position) => this.move(index, position);
        midi.onLearned = (index, source) => {
            this.now.textContent = `${this.title(index)} follows ${sourceText(source)}.`;
            this.show();
        };
        this.now.textContent = "Connect, then press the M beside a control and move something.";
        this.show();
    }

    get isConnected(): boolean {
        return this.connected;
    }

    /** The next thing that moves on an instrument is what moves this parameter. */
    async learn(index: number): Promise<void> {
        if (!(await this.connect())) return;
        if (this.midi.learning === index) {
            this.midi.cancelLearn();
            this.now.textContent = "Nothing is learnt.";
            return;
        }
        this.midi.learn(index);
        this.now.textContent = `Move a controller for ${this.title(index)}. The same M gives it up.`;
        this.say("");
        this.element.scrollIntoView({ block: "nearest" });
    }

    /** What moves without a pause is one step to undo. */
    private move(index: number, position: number): void {
        this.session.beginGesture();
        this.session.set(index, position);
        window.clearTimeout(this.pause);
        this.pause = window.setTimeout(() => this.session.endGesture(), pauseMs);
    }

    private async connect(): Promise<boolean> {
        try {
            await this.midi.connect();
        } catch (problem) {
            this.say(sentenceOf(problem));
            return false;
        }
        const names = this.midi.instruments;
        this.connectButton.textContent = "Connected";
        if (!this.connected) {
            this.connected = true;
            this.changed();
        }
        this.now.textContent =
            names.length > 0 ? `Listening to ${names.join(", ")}.` : "Connected; nothing is plugged in yet.";
        return true;
    }

    private show(): void {
        const rows = [...this.midi.assignments].map(([index, source]) => {
            const title = this.title(index);
            const forget = button("Forget", () => {
                this.midi.forget(index);
                this.show();
                this.connectButton.focus();
            });
            forget.setAttribute("aria-label", `Forget what moves ${title}`);
            return make("li", {}, make("span", {}, `${title}: ${sourceText(source)}`), forget);
        });
        this.list.replaceChildren(...rows);
        this.changed();
    }
    private title(index: number): string {
        return this.session.catalog.parameters[index]?.title ?? "";
    }
}
