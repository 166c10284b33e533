import type { Catalog } from "../engine/Catalog.js";

export interface SavedSound {
    readonly name: string;
    /** It can be removed and exported, but no longer be heard. */
    readonly isBroken: boolean;
}

const prefix = "tesserae.sound.";
const longestName = 100;

/**
 * The sounds that somebody has saved in this browser: texts of presets under names of their own.
 * Every method throws an Error with a sentence where it cannot do what it is asked for.
 */
export class SavedSounds {
    constructor(
        private readonly catalog: Catalog,
        /** Asked for late, because a browser may refuse it. */
        private readonly storage: () => Storage = () => localStorage,
    ) {}

    /** By their names. */
    list(): SavedSound[] {
        return this.attempt("The saved sounds cannot be read", (storage) => {
            const keys = Array.from({ length: storage.length }, (_, i) => storage.key(i) ?? "");
            const names = keys.filter((key) => key.startsWith(prefix));
            return names
                .map((key) => ({
                    name: key.slice(prefix.length),
                    isBroken: !this.catalog.readSound(storage.getItem(key) ?? "").sound,
                }))
                .sort((one, other) => one.name.localeCompare(other.name));
        });
    }

    has(name: string): boolean {
        return this.attempt("The saved sounds cannot be read", (storage) => {
            return storage.getItem(prefix + name) !== null;
        });
    }

    /** In place of one of that name, where there is one. text: a preset. */
    save(name: string, text: string): void {
        const wanted = checked(name);
        this.attempt(`"${wanted}" was not saved`, (storage) => storage.setItem(prefix + wanted, text));
    }

    /** The preset's text, as it was saved. */
    read(name: string): string {
        const text = this.attempt("The saved sounds cannot be read", (storage) => {
            return storage.getItem(prefix + name);
        });
        if (text === null) throw new Error(`There is no saved sound "${name}".`);
        return text;
    }

    remove(name: string): void {
        this.attempt(`"${name}" was not removed`, (storage) => storage.removeItem(prefix + name));
    }

    rename(from: string, to: string): void {
        const wanted = checked(to);
        if (wanted === from) return;
        const text = this.read(from);
        if (this.has(wanted)) throw new Error(`There is a saved sound "${wanted}" already.`);
        this.save(wanted, text);
        this.remove(from);
    }

    private attempt<Answer>(what: string, action: (storage: Storage) => Answer): Answer {
        try {
            return action(this.storage());
        } catch (problem) {
            const isFull = problem instanceof Error && problem.name === "QuotaExceededError";
            const why = isFull ? "there is no more room" : "it is closed to this page";
            throw new Error(`${what}, because of the browser's storage: ${why}.`);
        }
    }
}

function checked(name: string): string {
    const wanted = name.trim();
    if (wanted === "") throw new Error("A sound needs a name to be saved under.");
    if (wanted.length > longestName)
        throw new Error(`A name has ${longestName} letters at most.`);
    return wanted;
}
