import type { Catalog } from "../engine/Catalog.js";
import type { Sound } from "../engine/Sound.js";
import type { SharedSound } from "../share/SharedSound.js";
import { History, type Step } from "./History.js";
import { Signal } from "./Signal.js";

/** What hears of every move; the engine, where one plays. */
export interface Listener {
    set(index: number, position: number): void;
    load(sound: Sound): void;
}

const slowest = 1;
const fastest = 999;
/** What is done to the same thing with shorter pauses is one step to undo. */
const pauseMs = 1200;
/** More than these at once are another sound. */
const mostMoves = 32;
/** The longest whole number that people still like to type. */
const mostSeed = 999_999;

/**
 * What is being worked on: a sound with its name, seed and tempo, and the way back. Knows no page and
 * no audio.
 */
export class Session {
    /** A parameter has moved; -1: all of them may have. */
    readonly onMove = new Signal<number>();
    /** Name, modified mark or the way back have changed. */
    readonly onState = new Signal();
    readonly onTempo = new Signal<number>();
    readonly onSeed = new Signal<number | null>();
    engine: Listener | null = null;
    /** Where everything stands in a fresh sound, the preset "init". */
    private readonly fresh: Float32Array;
    private current: Sound;
    private modified = false;
    private ownTempo: number;
    private ownSeed: number | null = null;
    private readonly history = new History();
    /** What stood before the gesture that is going on. */
    private before: Step | null = null;

    /** What was moved in a small step last, and when. */
    private nudged: number | "tempo" | null = null;
    private nudgedAt = 0;

    constructor(
        readonly catalog: Catalog,
        /** In milliseconds. */
        private readonly clock: () => number = () => performance.now(),
    ) {
        this.current = catalog.factorySound("init");
        this.ownTempo = this.current.tempo ?? 120;
        this.fresh = this.current.positions.slice();
    }

    get sound(): Sound {
        return this.current;
    }
    get positions(): Float32Array {
        return this.current.positions;
    }
    get name(): string {
        return this.current.name || "Untitled";
    }
    get isModified(): boolean {
        return this.modified;
    }
    get tempo(): number {
        return this.ownTempo;
    }
    get seed(): number | null {
        return this.ownSeed;
    }
    get canUndo(): boolean {
        return this.history.canUndo;
    }
    get canRedo(): boolean {
        return this.history.canRedo;
    }

    position(index: number): number {
        return this.positions[index] ?? 0;
    }
    text(index: number): string {
        const { catalog, positions } = this;
        return catalog.text(index, this.position(index), catalog.scale(positions));
    }

    /** All moves until the end are one step. */
    beginGesture(): void {
        this.before ??= this.step();
    }
    endGesture(): void {
        const { before } = this;
        this.before = null;
        this.nudged = null;
        if (!before || before.sound.positions.every((one, i) => one === this.positions[i])) return;
        this.history.push(before);
        this.onState.tell();
    }
    /** Moves a parameter, as a part of the gesture, or as a step of its own where there is none. */
    set(index: number, position: number): void {
        const alone = this.before === null;
        if (alone) this.beginGesture();
        this.move(index, Math.min(1, Math.max(0, position)));
        if (alone) this.endGesture();
    }
    /** A small step, as of a key or the wheel: those that follow each other closely are one. */
    nudge(index: number, by: number): void {
        const wanted = Math.fround(Math.min(1, Math.max(0, this.position(index) + by)));
        if (wanted !== this.position(index)) this.together(index, () => this.move(index, wanted));
    }
    /** Puts it where a fresh sound has it. */
    reset(index: number): void {
        this.set(index, this.fresh[index] ?? 0);
    }
    /** Moves it to what a text asks for; answers a sentence where that is nothing. */
    setText(index: number, text: string): string | null {
        const scale = this.catalog.scale(this.positions);
        const wanted = this.catalog.position(index, text, scale);
        if (wanted.position === null) return wanted.problem;
        this.set(index, wanted.position);
        return null;
    }

    /** Puts another sound in the place of this one. */
    load(sound: Sound): void {
        this.endGesture();
        this.replace({ ...this.shared(), sound, tempo: sound.tempo ?? this.ownTempo });
    }
    /** It is kept under this name now. */
    rename(name: string): void {
        this.current = { ...this.current, name };
        this.modified = false;
        this.onState.tell();
    }
    undo(): void {
        this.endGesture();
        const step = this.history.undo(this.step());
        if (step) this.put(step);
    }
    redo(): void {
        this.endGesture();
        const step = this.history.redo(this.step());
        if (step) this.put(step);
    }

    setTempo(tempo: number): void {
        const wanted = Math.min(fastest, Math.max(slowest, tempo));
        if (wanted !== this.ownTempo) this.together("tempo", () => this.takeTempo(wanted));
    }
    setSeed(seed: number | null): void {
        if (seed === this.ownSeed) return;
        this.endGesture();
        this.history.push(this.step());
        this.takeSeed(seed);
        this.onState.tell();
    }
    /** A seed in any case; the one that is in force from now on. */
    fixSeed(): number {
        if (this.ownSeed === null) this.setSeed(Math.floor(Math.random() * (mostSeed + 1)));
        return this.ownSeed ?? 0;
    }

    shared(): SharedSound {
        return { sound: this.current, seed: this.ownSeed, tempo: this.ownTempo };
    }
    open(shared: SharedSound): void {
        this.endGesture();
        this.replace(shared);
    }
    /** The text of a preset file, for the renderer and the plug-ins too. */
    presetText(name = this.name): string {
        const { description, tags } = this.current;
        return this.catalog.writePreset(this.positions, {
            name,
            description,
            tags,
            tempo: this.ownTempo,
        });
    }

    private step(): Step {
        const { current, modified } = this;
        const positions = current.positions.slice();
        return { ...this.shared(), sound: { ...current, positions }, isModified: modified };
    }
    private together(what: number | "tempo", action: () => void): void {
        const now = this.clock();
        if (what !== this.nudged || now - this.nudgedAt > pauseMs) {
            this.endGesture();
            this.history.push(this.step());
        }
        action();
        this.nudged = what;
        this.nudgedAt = now;
        this.onState.tell();
    }
    private replace({ sound, seed, tempo }: SharedSound): void {
        this.history.push(this.step());
        const copy = { ...sound, positions: sound.positions.slice() };
        this.put({ sound: copy, isModified: false, tempo, seed }, 0);
    }
    private takeTempo(tempo: number): void {
        this.ownTempo = Math.min(fastest, Math.max(slowest, tempo));
        this.onTempo.tell(this.ownTempo);
    }
    private takeSeed(seed: number | null): void {
        this.ownSeed = seed;
        this.onSeed.tell(seed);
    }
    private move(index: number, position: number): void {
        this.positions[index] = position;
        this.engine?.set(index, this.position(index));
        if (!this.modified) {
            this.modified = true;
            this.onState.tell();
        }
        this.onMove.tell(index);
    }
    /** Up to `most` moves leave sounding what sounds; another sound clears it. */
    private tellEngine(before: Float32Array, most: number): void {
        const { engine, positions } = this;
        if (!engine) return;
        const moved = [...positions.keys()].filter((index) => before[index] !== positions[index]);
        if (most === 0 || moved.length > most) engine.load(this.current);
        else for (const index of moved) engine.set(index, this.position(index));
    }
    private put({ sound, isModified, tempo, seed }: Step, most = mostMoves): void {
        const before = this.current;
        this.current = sound;
        this.modified = isModified;
        this.tellEngine(before.positions, most);
        if (tempo !== this.ownTempo) this.takeTempo(tempo);
        if (seed !== this.ownSeed) this.takeSeed(seed);
        this.onMove.tell(-1);
        this.onState.tell();
    }
}
