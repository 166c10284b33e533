import { isSameSource, isSource, type MidiSource, readMessage } from "./MidiSource.js";

const storageKey = "tesserae.midi";
const askBrowser = (): Promise<MIDIAccess> => navigator.requestMIDIAccess();

/**
 * Moves parameters from MIDI instruments: controllers of 7 bits and the pitch bend, of all instruments
 * that are plugged in, whenever that is. A source moves one parameter and a parameter has one source;
 * which is kept in this browser.
 */
export class MidiInput {
    /** Hears where a parameter is moved to, 0 to 1. */
    onMove: ((index: number, position: number) => void) | null = null;
    /** Hears what a parameter has been learnt to follow. */
    onLearned: ((index: number, source: MidiSource) => void) | null = null;
    private readonly map: Map<number, MidiSource>;
    private learner: number | null = null;
    private access: MIDIAccess | null = null;

    constructor(
        private readonly request: () => Promise<MIDIAccess> = askBrowser,
        private readonly storage: () => Storage = () => localStorage,
    ) {
        this.map = this.kept();
    }

    /** Asks the browser, which asks its user. Rejects with a sentence where nothing comes of it. */
    async connect(): Promise<void> {
        if (this.access) return;
        if (this.request === askBrowser && !("requestMIDIAccess" in navigator))
            throw new Error("This browser has no MIDI. Chrome, Edge and Firefox have.");
        try {
            this.access = await this.request();
        } catch {
            throw new Error("The browser did not give access to MIDI. Its settings for this page may.");
        }
        this.access.onstatechange = () => this.listen();
        this.listen();
    }

    /** The next source that moves is the one of this parameter. */
    learn(index: number): void {
        this.learner = index;
    }
    cancelLearn(): void {
        this.learner = null;
    }
    /** The parameter that waits for its source. */
    get learning(): number | null {
        return this.learner;
    }
    forget(index: number): void {
        if (this.map.delete(index)) this.keep();
    }
    /** By the number of the parameter. */
    get assignments(): ReadonlyMap<number, MidiSource> {
        return this.map;
    }
    /** Names of the instruments that are plugged in. */
    get instruments(): string[] {
        return this.inputs().map((input) => input.name ?? "MIDI");
    }

    /** Instruments come and go; one that is back is another object. */
    private listen(): void {
        for (const input of this.inputs())
            input.onmidimessage = ({ data }) => {
                if (data) this.take(data);
            };
    }

    private inputs(): MIDIInput[] {
        return [...(this.access?.inputs.values() ?? [])].filter(({ state }) => state === "connected");
    }

    private take(data: Uint8Array): void {
        const message = readMessage(data);
        if (!message) return;
        const { source, position } = message;
        if (this.learner !== null) this.assign(this.learner, source);
        for (const [index, its] of this.map)
            if (isSameSource(its, source)) this.onMove?.(index, position);
    }

    private assign(index: number, source: MidiSource): void {
        for (const [other, its] of this.map) if (isSameSource(its, source)) this.map.delete(other);
        this.map.set(index, source);
        this.learner = null;
        this.keep();
        this.onLearned?.(index, source);
    }

    private keep(): void {
        try {
            this.storage().setItem(storageKey, JSON.stringify([...this.map]));
        } catch {
            // It holds until the page is closed, then.
        }
    }

    private kept(): Map<number, MidiSource> {
        try {
            const pairs = JSON.parse(this.storage().getItem(storageKey) ?? "[]") as unknown[];
            const isPair = (pair: unknown): pair is [number, MidiSource] =>
                Array.isArray(pair) && Number.isInteger(pair[0]) && isSource(pair[1]);
            return new Map(pairs.filter(isPair));
        } catch {
            return new Map();
        }
    }
}
