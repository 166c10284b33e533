import { EnginePlayer } from "../engine/EnginePlayer.js";
import type { RenderOrder } from "../engine/RenderMessages.js";

const piece = 4096;
const mostChannels = 2;

/** Renders a whole file; the output begins where the input does. Throws what the engine throws. */
export function renderFile(
    order: RenderOrder,
    onProgress: (share: number) => void,
): Float32Array<ArrayBuffer>[] {
    const { channels, sampleRate, tailSeconds } = order;
    const player = new EnginePlayer(order, sampleRate, piece);
    const late = player.latencyFrames;
    const frames = (channels[0]?.length ?? 0) + Math.round(Math.max(0, tailSeconds) * sampleRate);
    const outputs = [new Float32Array(frames), new Float32Array(frames)];
    const scratch = [new Float32Array(piece), new Float32Array(piece)];
    let told = 0;
    for (let at = 0; at < frames + late; at += piece) {
        const inputs = channels.slice(0, mostChannels).map((channel) => pieceOf(channel, at));
        player.process(inputs, scratch, piece);
        outputs.forEach((output, side) => place(scratch[side] ?? output, output, at - late));
        const share = Math.min(1, (at + piece) / (frames + late));
        if (share - told >= 0.01) onProgress((told = share));
    }
    return outputs;
}

/** The piece from there on, with silence behind the end. */
function pieceOf(channel: Float32Array, at: number): Float32Array {
    const part = channel.subarray(at, at + piece);
    if (part.length === piece) return part;
    const padded = new Float32Array(piece);
    padded.set(part);
    return padded;
}

/** Puts a piece at a place of output, as far as it reaches into it. */
function place(from: Float32Array, output: Float32Array, at: number): void {
    const [first, last] = [Math.max(0, -at), Math.min(piece, output.length - at)];
    if (first < last) output.set(from.subarray(first, last), at + first);
}
