/** What of a MIDI instrument moves a parameter. */
export interface MidiSource {
    readonly kind: "controller" | "bend";
    /** 0 to 15, which people count from 1. */
    readonly channel: number;
    /** Of a controller, 0 to 119; 0 for the bend. */
    readonly number: number;
}

/** "controller 74, channel 1" */
export function sourceText({ kind, channel, number }: MidiSource): string {
    const what = kind === "bend" ? "pitch bend" : `controller ${number}`;
    return `${what}, channel ${channel + 1}`;
}

export function isSameSource(one: MidiSource, other: MidiSource): boolean {
    return one.kind === other.kind && one.channel === other.channel && one.number === other.number;
}

/** Whether it came from storage as it went there. */
export function isSource(value: unknown): value is MidiSource {
    const { kind, channel, number } = (value ?? {}) as Partial<Record<string, unknown>>;
    const isCount = (count: unknown, end: number) =>
        typeof count === "number" && Number.isInteger(count) && count >= 0 && count < end;
    return (kind === "controller" || kind === "bend") && isCount(channel, 16) && isCount(number, 120);
}

/** The source that a message is from, and where it stands, 0 to 1; null for any other message. */
export function readMessage(
    data: Uint8Array,
): { readonly source: MidiSource; readonly position: number } | null {
    const [status = 0, first = 0, second = 0] = data;
    const channel = status & 15;
    if (data.length !== 3) return null;
    // From 120 on they are orders, such as "All Notes Off".
    if (status >> 4 === 0xb && first < 120)
        return { source: { kind: "controller", channel, number: first }, position: second / 127 };
    if (status >> 4 !== 0xe) return null;
    const bend = (second << 7) + first - 8192;
    // Rest is exactly the middle, though there is one step less above it.
    const position = 0.5 + bend / (bend < 0 ? 16384 : 16382);
    return { source: { kind: "bend", channel, number: 0 }, position };
}
