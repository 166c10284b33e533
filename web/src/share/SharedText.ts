import type { Catalog } from "../engine/Catalog.js";
import type { Parameter } from "../engine/Parameter.js";
import type { SharedReading, SharedSound } from "./SharedSound.js";

/**
 * What a link holds, as JSON. Parameters are called by their full names, which stay for ever, and
 * only those that do not stand where a new processor has them are there.
 */
interface Content {
    readonly name?: string;
    readonly description?: string;
    readonly tags?: readonly string[];
    /** Tempo that the sound was made at. */
    readonly made?: number;
    readonly seed?: number;
    readonly tempo: number;
    readonly positions: Readonly<Record<string, number>>;
}

const longestTitle = 200;
const longestText = 4000;
const mostTags = 32;
const damaged = "The link is damaged: it may have been cut off where it was copied.";

const shortTag = (tag: string): string => tag.slice(0, longestTitle);

/** Settings and "Bypass"; reports of the engine are nobody's to share. */
const isShared = ({ role, kind, name }: Parameter): boolean =>
    (role === "setting" && kind !== "binary") || name === "Bypass";

/** The shortest decimal number that is the same 32-bit float. */
function shortest(float: number): number {
    for (let digits = 1; digits < 9; ++digits) {
        const short = Number(float.toPrecision(digits));
        if (Math.fround(short) === float) return short;
    }
    return float;
}

export function writeShared({ sound, seed, tempo }: SharedSound, catalog: Catalog): string {
    const positions: Record<string, number> = {};
    for (const parameter of catalog.parameters.filter(isShared)) {
        const position = sound.positions[parameter.index] ?? parameter.defaultPosition;
        if (position !== Math.fround(parameter.defaultPosition))
            positions[parameter.name] = shortest(position);
    }
    const content: Content = {
        ...(sound.name && { name: sound.name.slice(0, longestTitle) }),
        ...(sound.description && { description: sound.description.slice(0, longestText) }),
        ...(sound.tags.length > 0 && { tags: sound.tags.slice(0, mostTags).map(shortTag) }),
        ...(sound.tempo !== null && { made: sound.tempo }),
        ...(seed !== null && { seed }),
        tempo,
        positions,
    };
    return JSON.stringify(content);
}

const isObject = (value: unknown): value is Record<string, unknown> =>
    typeof value === "object" && value !== null && !Array.isArray(value);
const isIn = (value: unknown, least: number, most: number): value is number =>
    typeof value === "number" && value >= least && value <= most;
const isText = (value: unknown, longest: number): value is string =>
    typeof value === "string" && value.length <= longest;

/** A sentence about what is wrong ahead of the positions, or null. */
function wrongTexts(content: Record<string, unknown>): string | null {
    const { name = "", description = "", tags = [], made = 120, seed = 0, tempo } = content;
    if (!isText(name, longestTitle) || !isText(description, longestText))
        return "The name or the description in the link is no text, or too long.";
    if (!Array.isArray(tags) || tags.length > mostTags || !tags.every((tag) => isText(tag, longestTitle)))
        return "The tags in the link are none.";
    if (!isIn(tempo, 1, 999) || !isIn(made, 1, 999))
        return "The tempo in the link is none: it goes from 1 to 999 beats per minute.";
    if (!isIn(seed, 0, Number.MAX_SAFE_INTEGER) || !Number.isInteger(seed))
        return "The seed in the link is none: it is a whole number from 0 on.";
    return null;
}

/** Fills in `positions`; answers a sentence where that cannot be. */
function readPositions(from: unknown, catalog: Catalog, positions: Float32Array): string | null {
    if (!isObject(from)) return damaged;
    const named = new Map(catalog.parameters.filter(isShared).map((one) => [one.name, one.index]));
    for (const [name, position] of Object.entries(from)) {
        const index = named.get(name);
        const called = JSON.stringify(name.slice(0, 60));
        if (index === undefined)
            return `The link sets ${called}, which this version (${catalog.version}) does not have. A newer one may.`;
        if (!isIn(position, 0, 1)) return `The link puts ${called} where it cannot stand.`;
        positions[index] = position;
    }
    return null;
}

function parsed(text: string): unknown {
    try {
        return JSON.parse(text);
    } catch {
        return null;
    }
}

export function readShared(text: string, catalog: Catalog): SharedReading {
    const content = parsed(text);
    if (!isObject(content)) return { problem: damaged };
    const positions = Float32Array.from(catalog.parameters, (one) => one.defaultPosition);
    const problem = wrongTexts(content) ?? readPositions(content["positions"], catalog, positions);
    if (problem !== null) return { problem };
    const { name = "", description = "", tags = [], made = null, seed = null, tempo } =
        content as unknown as Content;
    return { shared: { sound: { positions, name, description, tags, tempo: made }, seed, tempo } };
}
