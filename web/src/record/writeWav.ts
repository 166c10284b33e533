const headBytes = 58;

/** What stands ahead of the samples in a WAV file of 32-bit floats. */
export function wavHead(channels: number, frames: number, sampleRate: number): ArrayBuffer {
    const [sampleBytes, floatFormat] = [4, 3];
    const dataBytes = frames * channels * sampleBytes;
    const head = new DataView(new ArrayBuffer(headBytes));
    let at = 0;
    const name = (text: string) => {
        for (const letter of text) head.setUint8(at++, letter.charCodeAt(0));
    };
    const short = (value: number) => head.setUint16((at += 2) - 2, value, true);
    const long = (value: number) => head.setUint32((at += 4) - 4, value, true);
    name("RIFF"), long(headBytes - 8 + dataBytes), name("WAVE");
    name("fmt "), long(18), short(floatFormat), short(channels), long(sampleRate);
    long(sampleRate * channels * sampleBytes), short(channels * sampleBytes), short(32), short(0);
    name("fact"), long(4), long(frames);
    name("data"), long(dataBytes);
    return head.buffer;
}

/** The channels, one frame after the other. */
export function interleaved(channels: readonly Float32Array[]): Float32Array<ArrayBuffer> {
    const count = channels.length;
    const all = new Float32Array(count * (channels[0]?.length ?? 0));
    channels.forEach((channel, c) => channel.forEach((sample, i) => (all[i * count + c] = sample)));
    return all;
}

/** A WAV file of 32-bit floats, to the bit; the channels are of equal length. */
export function writeWav(channels: readonly Float32Array[], sampleRate: number): Blob {
    const frames = channels[0]?.length ?? 0;
    const head = wavHead(channels.length, frames, sampleRate);
    return new Blob([head, interleaved(channels)], { type: "audio/wav" });
}
