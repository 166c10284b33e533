import type { EngineModule } from "./EngineModule.js";
import type { CatalogText, ReadingText } from "./EngineExports.js";
import type { Parameter, ParameterKind, ParameterRole } from "./Parameter.js";
import type { FactoryPreset, Position, PresetTexts, Reading, Sound } from "./Sound.js";

const kinds: readonly ParameterKind[] = ["continuous", "choice", "switch", "binary"];
const roles: readonly ParameterRole[] = ["setting", "control", "output", "driven"];

/**
 * What parameters and presets there are, and texts for all of them, by the same code that the
 * plug-ins and the renderer use. On the page's own thread; sounds nothing.
 */
export class Catalog {
    /** "1.0.0" */
    readonly version: string;
    /** By their numbers. */
    readonly parameters: readonly Parameter[];
    /** Names of the seven modulation sources and the 95 destinations, in the display's order. */
    readonly sources: readonly string[];
    readonly destinations: readonly string[];
    /** In alphabetical order, but for "init", which is the first. */
    readonly presets: readonly FactoryPreset[];

    constructor(private readonly engine: EngineModule) {
        engine.exports.tesserae_catalog();
        const text = JSON.parse(engine.takeText()) as CatalogText;
        this.version = text.version;
        this.parameters = text.parameters.map(({ kind, role, position, ...rest }, index) => ({
            ...rest,
            index,
            kind: kinds[kind] ?? "binary",
            role: roles[role] ?? "output",
            defaultPosition: position,
        }));
        this.sources = text.sources;
        this.destinations = text.destinations;
        this.presets = text.presets;
    }

    /** The parameter of a full name, a title or a label; throws an Error that suggests others. */
    parameter(name: string): Parameter {
        const index = this.engine.exports.tesserae_find(this.engine.putText(name));
        const found = this.parameters[index];
        if (!found) throw new Error(this.engine.takeText());
        return found;
    }

    /**
     * Whether a parameter is the one in force among those that share its name, such as the three
     * that are called "Grain Size"; true for one that shares none.
     */
    isInForce(index: number, positions: Float32Array): boolean {
        this.engine.positions.set(positions);
        return this.engine.exports.tesserae_in_force(index) !== 0;
    }

    /** The scale that pitches step through with these positions; 0 is none. */
    scale(positions: Float32Array): number {
        this.engine.positions.set(positions);
        return this.engine.exports.tesserae_scale();
    }

    /** What a position reads as: "1.25 kHz", "-6.0 dB", "Texture". */
    text(index: number, position: number, scale = 0): string {
        this.engine.exports.tesserae_text_of_position(index, position, scale);
        return this.engine.takeText();
    }

    /** The position that a text asks for: what `text` writes, or shorter. */
    position(index: number, text: string, scale = 0): Position {
        const { engine } = this;
        const bytes = engine.putText(text);
        const position = engine.exports.tesserae_position_of_text(index, bytes, scale);
        return position < 0 ? { position: null, problem: engine.takeText() } : { position };
    }

    /** The number behind the text, in the parameter's unit; of a choice its place in the list. */
    value(index: number, position: number, scale = 0): number {
        return this.engine.exports.tesserae_value_of_position(index, position, scale);
    }

    /** The position of such a number, held to the range. */
    positionOfValue(index: number, value: number, scale = 0): number {
        return this.engine.exports.tesserae_position_of_value(index, value, scale);
    }

    /** Reads the text of a preset or a state, from wherever it comes. */
    readSound(text: string): Reading {
        this.engine.exports.tesserae_read_sound(this.engine.putText(text));
        return this.takeReading();
    }

    /** A factory preset by its id; throws a RangeError where there is none. */
    factorySound(id: string): Sound {
        const number = this.presets.findIndex((preset) => preset.id === id);
        if (number < 0 || this.engine.exports.tesserae_factory_sound(number) === 0)
            throw new RangeError(`There is no preset "${id}".`);
        const reading = this.takeReading();
        if (!reading.sound) throw new Error(reading.problem);
        return reading.sound;
    }

    /** A preset as the renderer and the plug-ins read it. */
    writePreset(positions: Float32Array, texts: PresetTexts): string {
        const bytes = this.engine.putText(JSON.stringify(texts));
        this.engine.positions.set(positions);
        this.engine.exports.tesserae_write_preset(bytes);
        return this.engine.takeText();
    }

    /** Every setting and "Bypass", to the bit. */
    writeState(positions: Float32Array): string {
        this.engine.positions.set(positions);
        this.engine.exports.tesserae_write_state();
        return this.engine.takeText();
    }

    /**
     * Seconds for which a sound goes on above -90 dB after its input, at most; 30 for one that may
     * hold or feed itself.
     */
    tailSeconds(positions: Float32Array, tempo: number): number {
        this.engine.positions.set(positions);
        return this.engine.exports.tesserae_tail(tempo);
    }

    /**
     * The piece of music that the renderer makes as "demo-sound", left and right: eight seconds,
     * four bars at 120, which may be looped.
     */
    demoSound(sampleRate: number): Float32Array<ArrayBuffer>[] {
        const { exports } = this.engine;
        const frames = exports.tesserae_demo(sampleRate);
        return [0, 1].map((side) => {
            const at = exports.tesserae_demo_at(side);
            return new Float32Array(exports.memory.buffer, at, frames).slice();
        });
    }

    private takeReading(): Reading {
        const { kind, problem, warnings, ...texts } = JSON.parse(
            this.engine.takeText(),
        ) as ReadingText;
        if (kind === null) return { sound: null, problem };
        return { sound: { ...texts, positions: this.engine.positions.slice() }, kind, warnings };
    }
}
