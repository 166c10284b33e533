import type { Catalog } from "../engine/Catalog.js";
import { fromBase64Url, toBase64Url } from "./base64url.js";
import { deflate, inflate } from "./compress.js";
import type { SharedReading, SharedSound } from "./SharedSound.js";
import { readShared, writeShared } from "./SharedText.js";

/** "s" and the version of what stands behind the sign of equality. */
const version = 1;
/** A sound of which every parameter stands anywhere makes some 32 000 letters. */
const longestFragment = 100_000;
const mostBytes = 1 << 20;

/** The part of a link behind its address, "#s1=...", that holds a whole sound. */
export async function writeFragment(shared: SharedSound, catalog: Catalog): Promise<string> {
    const bytes = new TextEncoder().encode(writeShared(shared, catalog));
    return `#s${version}=${toBase64Url(await deflate(bytes))}`;
}

/** Reads one, wherever it comes from. Never rejects; unpacks a megabyte at most. */
export async function readFragment(fragment: string, catalog: Catalog): Promise<SharedReading> {
    if (fragment.length > longestFragment)
        return { problem: "The link is too long to be one of a sound." };
    const parts = /^#?s(\d{1,9})=(.*)$/s.exec(fragment);
    if (!parts) return { problem: "The link holds no sound." };
    if (Number(parts[1]) !== version)
        return { problem: `The link was made by another version than this one (${catalog.version}).` };
    const bytes = fromBase64Url(parts[2] ?? "");
    if (!bytes) return { problem: "The link holds letters that do not belong there." };
    try {
        return readShared(new TextDecoder().decode(await inflate(bytes, mostBytes)), catalog);
    } catch (problem) {
        return problem instanceof RangeError
            ? { problem: "The link holds more than any sound does." }
            : { problem: "The link is damaged: it may have been cut off where it was copied." };
    }
}
