import type { Parameter } from "../engine/Parameter.js";
import type { Session } from "./Session.js";
import { dragFinely } from "./fineDrag.js";
import { button, make } from "./element.js";

/** What the page does for a control, beside moving its parameter. */
export interface ControlCares {
    say(sentence: string): void;
    /** Asks for its MIDI menu. */
    learn(index: number): void;
    /** Whether instruments are connected, so that learning makes sense. */
    readonly canLearn: boolean;
    /** What moves it, or null. */
    assigned(index: number): string | null;
}

const wheelSteps = 100;
const fineWheelSteps = 1000;
let made = 0;

/**
 * One parameter as a row of label, handle and value: a slider for what moves in steps too small to
 * count, a list for choices, a switch. Whatever moves the parameter, the row follows.
 */
export class Control {
    readonly element: HTMLElement;
    private readonly handle: HTMLInputElement | HTMLSelectElement | HTMLButtonElement;
    private readonly value: HTMLInputElement | null = null;
    private readonly id = `control-${++made}`;
    private readonly midi: HTMLButtonElement;

    constructor(
        readonly parameter: Parameter,
        private readonly session: Session,
        private readonly cares: ControlCares,
        label = parameter.label.replace(/ \(.*\)$/, ""),
        press?: string,
    ) {
        const name = make("label", { for: this.id, class: "control-name" }, label);
        this.midi = make("button", {
            type: "button",
            class: "control-midi",
            "aria-label": `MIDI for ${label}`,
        });
        this.midi.addEventListener("click", () => cares.learn(parameter.index));
        if (press !== undefined) this.handle = this.lever(press);
        else if (parameter.kind === "choice") this.handle = this.list();
        else if (parameter.kind === "switch") this.handle = this.toggle();
        else {
            this.handle = this.slider();
            this.value = this.typed(label);
        }
        const parts = this.value ? [this.handle, this.value] : [this.handle];
        this.element = make("div", { class: `control ${parameter.kind}` }, name, ...parts, this.midi);
        this.update();
    }

    /** Shows where the parameter stands. */
    update(): void {
        const { handle, parameter, session, value } = this;
        const position = session.position(parameter.index);
        if (handle instanceof HTMLSelectElement)
            handle.selectedIndex = Math.round(position * (parameter.choices.length - 1));
        else if (handle instanceof HTMLInputElement && parameter.kind === "switch")
            handle.checked = position >= 0.5;
        else if (handle instanceof HTMLInputElement) {
            const text = session.text(parameter.index);
            handle.value = String(position);
            handle.style.setProperty("--share", `${100 * position}%`);
            handle.setAttribute("aria-valuetext", text);
            if (value && document.activeElement !== value) value.value = text;
        }
        const source = this.cares.assigned(parameter.index);
        // Without an instrument it would only take room, and a stop of the Tab key.
        this.midi.hidden = source === null && !this.cares.canLearn;
        this.midi.textContent = source === null ? "" : "M";
        this.midi.title = source === null ? "Learn from MIDI" : `Moved by ${source}`;
        this.element.classList.toggle("has-midi", source !== null);
    }

    /** What it does; read out as its description. */
    private get tip(): string {
        const { help, kind, title } = this.parameter;
        const back = kind === "continuous" ? "Double click or Delete: as in a fresh sound." : "";
        return [help || `${title}.`, back].filter(Boolean).join(" ");
    }

    private slider(): HTMLInputElement {
        const { parameter, session } = this;
        const slider = make("input", {
            type: "range",
            id: this.id,
            min: 0,
            max: 1,
            step: 0.001,
            title: this.tip,
        });
        slider.addEventListener("input", () => {
            session.beginGesture();
            session.set(parameter.index, Number(slider.value));
        });
        slider.addEventListener("change", () => session.endGesture());
        // A thumb that lands here and scrolls the page has not meant to move it.
        let landed = 0;
        slider.addEventListener("pointerdown", () => (landed = session.position(parameter.index)));
        slider.addEventListener("pointercancel", () => {
            session.set(parameter.index, landed);
            session.endGesture();
        });
        slider.addEventListener("dblclick", () => this.reset());
        slider.addEventListener("keydown", (event) => this.key(event));
        dragFinely(slider, {
            position: () => session.position(parameter.index),
            begin: () => session.beginGesture(),
            move: (position) => session.set(parameter.index, position),
            end: () => session.endGesture(),
        });
        slider.addEventListener("wheel", (event) => this.wheel(event), { passive: false });
        return slider;
    }
    private list(): HTMLSelectElement {
        const { parameter, session } = this;
        const options = parameter.choices.map((choice) => new Option(choice));
        const list = make("select", { id: this.id, title: this.tip }, ...options);
        const last = Math.max(1, parameter.choices.length - 1);
        list.addEventListener("change", () => session.set(parameter.index, list.selectedIndex / last));
        list.addEventListener("keydown", ({ key }) => {
            if (key === "Delete") this.reset();
        });
        return list;
    }
    private toggle(): HTMLInputElement {
        const { parameter, session } = this;
        const toggle = make("input", {
            type: "checkbox",
            role: "switch",
            id: this.id,
            title: this.tip,
        });
        toggle.addEventListener("change", () => session.set(parameter.index, toggle.checked ? 1 : 0));
        return toggle;
    }
    /** Moves the parameter to its other end each time. */
    private lever(label: string): HTMLButtonElement {
        const { index } = this.parameter;
        const { session } = this;
        const lever = button(label, () => session.set(index, session.position(index) < 0.5 ? 1 : 0));
        lever.id = this.id;
        return lever;
    }
    /** The value, which may be typed over as it reads. */
    private typed(label: string): HTMLInputElement {
        const value = make("input", {
            type: "text",
            class: "control-value",
            "aria-label": `${label}, typed`,
            spellcheck: "false",
            // The slider's Enter leads here.
            tabindex: -1,
            autocomplete: "off",
        });
        const take = () => {
            const wanted = value.value.trim();
            const now = this.session.text(this.parameter.index);
            const problem =
                wanted === "" || wanted === now
                    ? null
                    : this.session.setText(this.parameter.index, wanted);
            if (problem !== null) this.cares.say(problem);
            value.value = this.session.text(this.parameter.index);
        };
        value.addEventListener("focus", () => value.select());
        value.addEventListener("change", take);
        value.addEventListener("keydown", ({ key }) => {
            if (key === "Enter") {
                take();
                this.handle.focus();
            }
            if (key === "Escape") {
                value.value = this.session.text(this.parameter.index);
                this.handle.focus();
            }
        });
        return value;
    }

    private reset(): void {
        this.session.reset(this.parameter.index);
    }
    private key(event: KeyboardEvent): void {
        const isArrow = event.key.startsWith("Arrow");
        if (event.key === "Delete" || event.key === "Backspace") this.reset();
        else if (isArrow && event.shiftKey)
            this.move(["ArrowUp", "ArrowRight"].includes(event.key) ? 1 : -1, fineWheelSteps);
        else if (isArrow)
            this.move(["ArrowUp", "ArrowRight"].includes(event.key) ? 1 : -1, wheelSteps);
        else if (event.key === "Enter") this.value?.focus();
        else if (/^[0-9.-]$/.test(event.key)) this.typeFrom(event.key);
        else return;
        event.preventDefault();
    }
    private typeFrom(first: string): void {
        if (!this.value) return;
        this.value.focus();
        this.value.value = first;
        this.value.setSelectionRange(1, 1);
    }
    /** Only where it has the focus, so that a page that is scrolled moves nothing. */
    private wheel(event: WheelEvent): void {
        if (document.activeElement !== this.handle) return;
        event.preventDefault();
        const up = event.deltaY + event.deltaX < 0;
        this.move(up ? 1 : -1, event.shiftKey ? fineWheelSteps : wheelSteps);
    }
    private move(direction: number, steps: number): void {
        this.session.nudge(this.parameter.index, direction / steps);
    }
}
