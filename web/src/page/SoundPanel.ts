import type { SavedSounds } from "../share/SavedSounds.js";
import { readFragment, writeFragment } from "../share/ShareLink.js";
import type { PresetPanel } from "./PresetPanel.js";
import type { Session } from "./Session.js";
import { button, download, field, fileName, make, section, sentenceOf } from "./element.js";

const ending = ".json";
/** No preset comes near it. */
const mostBytes = 4 << 20;

/** Saving, sharing, and preset files. */
export class SoundPanel {
    readonly element: HTMLElement;
    private readonly name = make("input", { type: "text", autocomplete: "off", maxlength: 100 });
    private readonly seed = make("input", {
        type: "number",
        min: 0,
        max: Number.MAX_SAFE_INTEGER,
        step: 1,
        placeholder: "by chance",
        title: "With a seed all chance is the same from each start; without one the clock decides.",
    });
    private readonly link = make("input", { type: "text", readonly: true, class: "link" });
    private readonly linkField: HTMLElement;
    private readonly remove: HTMLButtonElement;
    private readonly files = make("input", {
        type: "file",
        accept: ".json,application/json",
        class: "visually-hidden",
        "aria-label": "Choose a preset file",
        tabindex: -1,
    });

    constructor(
        private readonly session: Session,
        private readonly saved: SavedSounds,
        private readonly presets: PresetPanel,
        private readonly say: (sentence: string) => void,
        private readonly tell: (sentence: string) => void,
    ) {
        this.remove = button("Remove", () => this.attempt(() => this.removeSaved()));
        this.linkField = field("Link", this.link);
        this.linkField.hidden = true;
        this.files.addEventListener("change", () => {
            const [file] = this.files.files ?? [];
            this.files.value = "";
            if (file) void this.take(file);
        });
        this.element = section(
            "Your sound",
            "sound",
            make(
                "div",
                { class: "row" },
                field("Name", this.name),
                button("Save here", () => this.attempt(() => this.save())),
                this.remove,
            ),
            field("Seed", this.seed),
            make(
                "div",
                { class: "row" },
                button("Share a link", () => void this.share()),
                button("Export preset", () => this.attempt(() => this.export())),
                button("Import preset …", () => this.files.click()),
            ),
            this.linkField,
            this.files,
        );
        this.seed.addEventListener("change", () => this.takeSeed());
        session.onState.listen(() => this.show());
        session.onSeed.listen(() => this.show());
        this.show();
    }

    /** Reads a preset file; one that is broken changes nothing. */
    async take(file: File): Promise<void> {
        if (file.size > mostBytes)
            return this.say(`"${file.name}" is too large to be a preset.`);
        const reading = this.session.catalog.readSound(await file.text());
        if (!reading.sound) return this.say(`"${file.name}" was not taken. ${reading.problem}`);
        this.presets.setCurrent("");
        this.session.load(reading.sound);
        this.tell([`"${this.session.name}" was imported.`, ...reading.warnings].join(" "));
    }

    /** Opens the sound of a link, if its fragment holds one; answers whether it did. */
    async open(fragment: string): Promise<void> {
        const reading = await readFragment(fragment, this.session.catalog);
        if ("problem" in reading) return this.say(reading.problem);
        this.presets.setCurrent("");
        this.session.open(reading.shared);
        this.tell(`"${this.session.name}" came with the link.`);
    }

    private save(): void {
        const name = this.name.value.trim();
        const isThere = this.saved.has(name);
        this.saved.save(name, this.session.presetText(name));
        this.session.rename(name);
        this.presets.setCurrent(`saved ${name}`);
        this.presets.refresh();
        const instead = isThere ? ", in place of the one that was there" : "";
        this.tell(`"${name}" is saved in this browser${instead}.`);
    }
    private removeSaved(): void {
        const name = this.name.value.trim();
        this.saved.remove(name);
        this.name.focus();
        this.presets.refresh();
        this.show();
        this.tell(`"${name}" is no longer saved here.`);
    }
    private export(): void {
        const text = this.session.presetText();
        download(
            new Blob([text], { type: "application/json" }),
            fileName(this.session.name, ending),
        );
    }

    /** The link holds the sound with a seed, so that it is the same one wherever it is opened. */
    private async share(): Promise<void> {
        this.session.fixSeed();
        const fragment = await writeFragment(this.session.shared(), this.session.catalog);
        history.replaceState(null, "", fragment);
        this.link.value = location.href;
        this.linkField.hidden = false;
        this.link.select();
        try {
            await navigator.clipboard.writeText(location.href);
            this.tell("The link is on the clipboard, and in the address bar.");
        } catch {
            this.tell("The link stands below, and in the address bar.");
        }
    }

    private takeSeed(): void {
        const { value } = this.seed;
        const wanted = Number(value);
        const isSeed = value !== "" && Number.isSafeInteger(wanted) && wanted >= 0;
        this.session.setSeed(isSeed ? wanted : null);
        const isMeant = value !== "" || this.seed.validity.badInput;
        if (isMeant && !isSeed) this.say("A seed is a whole number from 0 on.");
    }

    private attempt(action: () => void): void {
        try {
            action();
        } catch (problem) {
            this.say(sentenceOf(problem));
        }
    }
    private show(): void {
        this.seed.value = this.session.seed === null ? "" : String(this.session.seed);
        if (document.activeElement !== this.name) this.name.value = this.session.name;
        try {
            const name = this.name.value.trim();
            this.remove.hidden = !this.presets.isSaved(name) || !this.saved.has(name);
        } catch {
            this.remove.hidden = true;
        }
    }
}
