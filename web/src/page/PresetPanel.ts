import type { FactoryPreset } from "../engine/Sound.js";
import type { SavedSounds } from "../share/SavedSounds.js";
import type { Session } from "./Session.js";
import { field, make, section, sentenceOf } from "./element.js";

/** A line of the list: a preset of the library, or a sound that was saved here. */
interface Entry {
    readonly id: string;
    readonly name: string;
    readonly text: string;
    readonly tags: readonly string[];
    readonly isSaved: boolean;
}

const savedTag = "saved here";

/** The library and the saved sounds, with words and tags to search by. */
export class PresetPanel {
    readonly element: HTMLElement;
    private readonly words = make("input", { type: "search", autocomplete: "off" });
    private readonly tags = make("select", {});
    private readonly list = make("ul", { class: "presets", role: "listbox", "aria-label": "Presets" });
    private readonly about = make("p", { class: "hint" });
    private readonly buttons = new Map<string, HTMLLIElement>();
    private entries: Entry[] = [];
    private current = "init";

    constructor(
        private readonly session: Session,
        private readonly saved: SavedSounds,
        private readonly say: (sentence: string) => void,
    ) {
        this.element = section(
            "Presets",
            "presets",
            make("div", { class: "row" }, field("Search", this.words), field("Tag", this.tags)),
            this.list,
            this.about,
        );
        this.words.addEventListener("input", () => this.show());
        this.tags.addEventListener("change", () => this.show());
        this.list.addEventListener("keydown", (event) => this.key(event));
        session.onState.listen(() => this.follow());
        this.refresh();
    }

    /** Looks again what there is. */
    refresh(): void {
        const factory = this.session.catalog.presets.map(entryOf);
        this.entries = [...this.savedEntries(), ...factory];
        const tags = [...new Set(this.entries.flatMap((entry) => entry.tags))].sort();
        const chosen = this.tags.value;
        this.tags.replaceChildren(new Option("All", ""), ...tags.map((tag) => new Option(tag, tag)));
        this.tags.value = tags.includes(chosen) ? chosen : "";
        this.show();
    }

    /** Which of the list is being played; empty for none. */
    setCurrent(id: string): void {
        this.current = id;
        this.mark();
    }

    /** Whether what is being played is the saved sound of that name. */
    isSaved(name: string): boolean {
        return this.current === `saved ${name}`;
    }

    step(direction: number): void {
        const shown = this.shown();
        if (shown.length === 0) return;
        const now = shown.findIndex(({ id }) => id === this.current);
        const next = now < 0 ? 0 : (now + direction + shown.length) % shown.length;
        this.choose(shown[next]);
    }

    private savedEntries(): Entry[] {
        try {
            return this.saved.list().map(({ name, isBroken }) => ({
                id: `saved ${name}`,
                name,
                text: isBroken ? "Broken: it can no longer be read." : "Saved in this browser.",
                tags: [savedTag],
                isSaved: true,
            }));
        } catch {
            return [];
        }
    }

    private shown(): Entry[] {
        const words = this.words.value.toLowerCase().split(/\s+/).filter(Boolean);
        const tag = this.tags.value;
        return this.entries.filter((entry) => {
            const text = [entry.name, entry.text, ...entry.tags].join(" ").toLowerCase();
            return (tag === "" || entry.tags.includes(tag)) && words.every((word) => text.includes(word));
        });
    }

    private show(): void {
        this.buttons.clear();
        const rows = this.shown().map((entry) => this.row(entry));
        const none = make("li", { class: "hint", role: "option", "aria-disabled": "true" });
        none.textContent = "No preset is called so.";
        this.list.replaceChildren(...(rows.length > 0 ? rows : [none]));
        this.mark();
    }

    private row(entry: Entry): HTMLLIElement {
        const row = make("li", {
            role: "option",
            tabindex: -1,
            "aria-selected": "false",
            "data-id": entry.id,
            title: entry.text,
        });
        row.append(
            make("span", { class: "preset-name" }, entry.name),
            make("span", { class: "preset-tags" }, entry.tags.join(" · ")),
        );
        row.addEventListener("click", () => this.choose(entry));
        this.buttons.set(entry.id, row);
        return row;
    }

    private choose(entry: Entry | undefined): void {
        if (!entry) return;
        try {
            this.load(entry);
        } catch (problem) {
            // Another window may have removed what was saved.
            this.say(sentenceOf(problem));
        }
    }
    private load(entry: Entry): void {
        const { catalog } = this.session;
        if (entry.isSaved) {
            const reading = catalog.readSound(this.saved.read(entry.name));
            if (!reading.sound) return this.say(reading.problem);
            this.current = entry.id;
            this.session.load({ ...reading.sound, name: entry.name });
        } else {
            this.current = entry.id;
            this.session.load(catalog.factorySound(entry.id));
        }
    }

    /** Undo and links bring sounds of other names. */
    private follow(): void {
        const { name } = this.session;
        const isStill = this.entries.some((one) => one.id === this.current && one.name === name);
        if (!isStill) this.current = this.entries.find((one) => one.name === name)?.id ?? "";
        this.mark();
    }

    private mark(): void {
        for (const [id, row] of this.buttons) {
            const isCurrent = id === this.current;
            row.setAttribute("aria-selected", String(isCurrent));
            row.tabIndex = isCurrent ? 0 : -1;
            if (isCurrent) this.reveal(row);
        }
        const first = this.list.firstElementChild;
        if (!this.buttons.has(this.current) && first instanceof HTMLElement) first.tabIndex = 0;
        this.about.textContent = this.session.sound.description;
    }

    /** Scrolls the list, and the list alone. */
    private reveal(row: HTMLElement): void {
        const { list } = this;
        const top = row.offsetTop - list.offsetTop;
        const bottom = top + row.offsetHeight;
        if (top < list.scrollTop) list.scrollTop = top;
        else if (bottom > list.scrollTop + list.clientHeight)
            list.scrollTop = bottom - list.clientHeight;
    }

    /** One stop of the Tab key, within which arrows go. */
    private key(event: KeyboardEvent): void {
        const rows = [...this.buttons.values()];
        const now = rows.findIndex((row) => row === document.activeElement);
        const to = {
            ArrowDown: now + 1,
            ArrowUp: now - 1,
            Home: 0,
            End: rows.length - 1,
        }[event.key];
        const row = rows[to === undefined ? now : Math.min(rows.length - 1, Math.max(0, to))];
        if (!row || (to === undefined && event.key !== "Enter" && event.key !== " ")) return;
        event.preventDefault();
        event.stopPropagation();
        row.focus();
        this.choose(this.entries.find(({ id }) => id === row.dataset["id"]));
    }
}

function entryOf({ id, name, description, tags }: FactoryPreset): Entry {
    return { id, name, text: description, tags, isSaved: false };
}
