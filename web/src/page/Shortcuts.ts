import { button, make } from "./element.js";

/** A key and what it does. */
export interface Shortcut {
    /** As KeyboardEvent.key has it, in lower case. */
    readonly key: string;
    /** With Control, or Command. */
    readonly withControl?: boolean;
    readonly withShift?: boolean;
    readonly label: string;
    readonly does: string;
    action(): void;
}

/** Keys that work everywhere but where a text is being typed, and a list of them. */
export class Shortcuts {
    readonly element: HTMLButtonElement;
    readonly dialog: HTMLDialogElement;

    constructor(private readonly shortcuts: readonly Shortcut[]) {
        const rows = shortcuts.map(({ label, does }) =>
            make("div", {}, make("dt", {}, make("kbd", {}, label)), make("dd", {}, does)),
        );
        const hints = [
            ["Arrows", "move the control in focus; with Shift finely"],
            ["Digits, Enter", "type its value, such as 120 ms"],
            ["Delete", "puts it back to where a fresh sound has it"],
            ["?", "shows this list"],
        ].map(([label = "", does = ""]) =>
            make("div", {}, make("dt", {}, make("kbd", {}, label)), make("dd", {}, does)),
        );
        this.dialog = make(
            "dialog",
            { "aria-labelledby": "keys-heading" },
            make("h2", { id: "keys-heading" }, "Keys"),
            make("dl", { class: "keys" }, ...rows, ...hints),
            button("Close", () => this.dialog.close()),
        );
        this.element = button("Keys", () => this.dialog.showModal(), "quiet");
        document.addEventListener("keydown", (event) => this.take(event));
    }

    private take(event: KeyboardEvent): void {
        const control = event.ctrlKey || event.metaKey;
        if (this.dialog.open || isTyping(event.target, control)) return;
        // What is held down is meant once, but for the way back.
        if (event.altKey || (event.repeat && !control)) return;
        if (event.key === "?") return this.dialog.showModal();
        const found = this.shortcuts.find(
            ({ key, withControl = false, withShift = false }) =>
                key === event.key.toLowerCase() &&
                withControl === control &&
                (withShift === event.shiftKey || !control),
        );
        if (!found || (event.key === " " && isPressedBySpace(event.target))) return;
        event.preventDefault();
        found.action();
    }
}

function isTyping(target: EventTarget | null, withControl: boolean): boolean {
    if (target instanceof HTMLInputElement) return !["range", "checkbox"].includes(target.type);
    // A list takes letters for the choice that begins with them.
    return target instanceof HTMLSelectElement && !withControl;
}
function isPressedBySpace(target: EventTarget | null): boolean {
    return (
        target instanceof HTMLButtonElement ||
        (target instanceof HTMLInputElement && target.type === "checkbox")
    );
}
