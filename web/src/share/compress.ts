/** Bytes that are handed to the inflater at once: they make a thousand times as many at most. */
const piece = 256;

async function collect(stream: ReadableStream<Uint8Array>, most: number): Promise<Uint8Array[]> {
    const reader = stream.getReader();
    const parts: Uint8Array[] = [];
    let bytes = 0;
    for (let next = await reader.read(); !next.done; next = await reader.read()) {
        bytes += next.value.length;
        if (bytes > most) {
            await reader.cancel();
            throw new RangeError("There is more than that.");
        }
        parts.push(next.value);
    }
    return parts;
}

function joined(parts: readonly Uint8Array[]): Uint8Array<ArrayBuffer> {
    const all = new Uint8Array(parts.reduce((sum, part) => sum + part.length, 0));
    let at = 0;
    for (const part of parts) {
        all.set(part, at);
        at += part.length;
    }
    return all;
}

/** Piece by piece, each when the one before has been read, so that little is ever held. */
function pieces(bytes: Uint8Array<ArrayBuffer>): ReadableStream<Uint8Array<ArrayBuffer>> {
    let at = 0;
    return new ReadableStream(
        {
            pull(controller) {
                if (at < bytes.length) controller.enqueue(bytes.slice(at, (at += piece)));
                else controller.close();
            },
        },
        { highWaterMark: 0 },
    );
}

/** As zlib does, with a sum over it, by which a letter that was changed is found. */
export async function deflate(bytes: Uint8Array<ArrayBuffer>): Promise<Uint8Array<ArrayBuffer>> {
    return joined(await collect(pieces(bytes).pipeThrough(new CompressionStream("deflate")), Infinity));
}

/** Rejects where the bytes are damaged, and with a RangeError where there are more than `most`. */
export async function inflate(
    bytes: Uint8Array<ArrayBuffer>,
    most: number,
): Promise<Uint8Array<ArrayBuffer>> {
    return joined(await collect(pieces(bytes).pipeThrough(new DecompressionStream("deflate")), most));
}
