import type { EngineExports } from "./EngineExports.js";
import { systemCalls } from "./systemCalls.js";

/**
 * One instance of tesserae.wasm with texts and positions as JavaScript has them. The page, the
 * audio thread and the worker each make one of their own.
 */
export class EngineModule {
    readonly exports: EngineExports;

    /** Throws where the module is none of ours or memory lacks. */
    constructor(module: WebAssembly.Module) {
        let exports: EngineExports | null = null;
        const imports = systemCalls(() => (exports as EngineExports).memory);
        const instance = new WebAssembly.Instance(module, imports);
        this.exports = exports = instance.exports as unknown as EngineExports;
        this.exports._initialize();
    }

    /** Puts a text into room for the next call; answers its bytes. */
    putText(text: string): number {
        const bytes = new TextEncoder().encode(text);
        const at = this.exports.tesserae_room(bytes.length);
        new Uint8Array(this.exports.memory.buffer, at, bytes.length).set(bytes);
        return bytes.length;
    }
    /** The text that the last call left. */
    takeText(): string {
        const { memory, tesserae_text_at, tesserae_text_bytes } = this.exports;
        const [at, count] = [tesserae_text_at(), tesserae_text_bytes()];
        const bytes = new Uint8Array(memory.buffer, at, count);
        // Not every browser has the decoder on its audio thread, where texts are plain ones.
        return typeof TextDecoder === "undefined"
            ? String.fromCharCode(...bytes)
            : new TextDecoder().decode(bytes);
    }
    /** Positions in the module's memory, until it grows. */
    get positions(): Float32Array {
        const { memory, tesserae_positions_at, tesserae_parameter_count } = this.exports;
        // The first call may make memory grow, and memory that has grown is another buffer.
        const [at, count] = [tesserae_positions_at(), tesserae_parameter_count()];
        return new Float32Array(memory.buffer, at, count);
    }
}
