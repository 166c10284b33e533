import type { Parameter } from "../engine/Parameter.js";
import { Control, type ControlCares } from "./Control.js";
import type { Session } from "./Session.js";
import { field, make, section } from "./element.js";

const mostRows = 40;

function named({ title }: Parameter, whole: string): number {
    return title.toLowerCase() === whole ? 1 : 0;
}

/** All parameters, found by words of their names. */
export class SearchPanel {
    readonly element: HTMLElement;
    private readonly words = make("input", {
        type: "search",
        placeholder: "reverb decay, macro 1, step 3 …",
        autocomplete: "off",
    });
    private readonly rows = make("div", { class: "rows" });
    private readonly count = make("p", { class: "hint", role: "status" });
    private controls: Control[] = [];
    private readonly settings: readonly (readonly [string, Parameter])[];

    constructor(
        private readonly session: Session,
        private readonly cares: ControlCares,
    ) {
        this.settings = session.catalog.parameters
            .filter(({ role, kind }) => role === "setting" && kind !== "binary")
            .map((one) => [`${one.title} ${one.name}`.toLowerCase(), one] as const);
        this.element = section(
            "All settings",
            "all",
            field("Search by name", this.words),
            this.count,
            this.rows,
        );
        this.words.addEventListener("input", () => this.find());
        session.onMove.listen((index) => {
            for (const control of this.controls)
                if (index < 0 || control.parameter.index === index) control.update();
        });
        this.find();
    }

    refresh(): void {
        for (const control of this.controls) control.update();
    }

    private find(): void {
        const words = this.words.value.toLowerCase().split(/\s+/).filter(Boolean);
        const hits = words.length === 0
            ? []
            : this.settings.filter(([text]) => words.every((word) => text.includes(word)));
        // One that is called just so comes ahead of those whose names hold it.
        const whole = this.words.value.trim().toLowerCase();
        hits.sort(([, one], [, other]) => named(other, whole) - named(one, whole));
        this.controls = hits
            .slice(0, mostRows)
            .map(([, one]) => new Control(one, this.session, this.cares, one.title));
        this.rows.replaceChildren(...this.controls.map(({ element }) => element));
        this.count.textContent =
            words.length === 0
                ? `${this.settings.length} settings have a name.`
                : hits.length === 0
                  ? "Nothing is called so."
                  : hits.length > mostRows
                    ? `${hits.length} settings, the first ${mostRows} shown.`
                    : `${hits.length} ${hits.length === 1 ? "setting" : "settings"}`;
    }
}
