import type { Catalog } from "../engine/Catalog.js";
import { Control, type ControlCares } from "./Control.js";
import { type Condition, controlGroups, type PlacedControl } from "./ControlTable.js";
import type { Session } from "./Session.js";
import { make } from "./element.js";

/** The groups of controls that people reach for. */
export class ControlsPanel {
    readonly element = make("div", { class: "groups" });
    private readonly controls = new Map<number, Control>();
    private readonly placed = new Map<Control, PlacedControl>();
    private readonly indices: ReadonlyMap<string, number>;
    /** What decides which others are shown. */
    private readonly deciding = new Set<number>();

    constructor(
        private readonly session: Session,
        cares: ControlCares,
    ) {
        const { catalog } = session;
        this.indices = indicesOf(catalog);
        for (const { heading, controls } of controlGroups) {
            const rows = controls.map((one) => this.add(one, catalog, cares).element);
            const title = make("h3", {}, heading);
            this.element.append(make("fieldset", { class: "group" }, make("legend", {}, title), ...rows));
        }
        for (const parameter of catalog.parameters)
            if (parameter.kind === "choice" || parameter.kind === "switch")
                this.deciding.add(parameter.index);
        session.onMove.listen((index) => this.follow(index));
        this.arrange();
    }

    /** Shows again what moves each. */
    refresh(): void {
        for (const control of this.controls.values()) control.update();
    }

    private add(placed: PlacedControl, catalog: Catalog, cares: ControlCares): Control {
        const parameter = catalog.parameters[this.indices.get(placed.name) ?? -1];
        if (!parameter) throw new Error(`There is no parameter called "${placed.name}".`);
        const control = new Control(parameter, this.session, cares, placed.label, placed.press);
        this.controls.set(parameter.index, control);
        this.placed.set(control, placed);
        return control;
    }

    private follow(index: number): void {
        if (index < 0) this.refresh();
        else this.controls.get(index)?.update();
        if (index < 0 || this.deciding.has(index)) {
            this.arrange();
            // A scale changes what pitches read as.
            this.refresh();
        }
    }

    /** Shows what does something as things stand. */
    private arrange(): void {
        const { catalog, positions } = this.session;
        for (const [control, { when = [] }] of this.placed) {
            const { index } = control.parameter;
            const isShown = when.every((one) => this.holds(one)) && catalog.isInForce(index, positions);
            control.element.hidden = !isShown;
        }
    }

    private holds({ choice, is }: Condition): boolean {
        const parameter = this.session.catalog.parameters[this.indices.get(choice) ?? -1];
        if (!parameter) return false;
        const last = Math.max(1, parameter.choices.length - 1);
        const stands = Math.round(this.session.position(parameter.index) * last);
        return Array.isArray(is) ? is.includes(stands) : is === stands;
    }
}

function indicesOf(catalog: Catalog): ReadonlyMap<string, number> {
    return new Map(catalog.parameters.map(({ name, index }) => [name, index]));
}
