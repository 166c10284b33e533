/** Numbers that repeat from run to run. */
export function chance(seed: number): (below: number) => number {
    let state = seed;
    return (below) => {
        state = (Math.imul(state, 1664525) + 1013904223) >>> 0;
        return Math.floor((state / 2 ** 32) * below);
    };
}

/** As a browser's, as far as it is used. */
export function storage(): Storage {
    const kept: Record<string, string> = {};
    return Object.defineProperties(kept, {
        length: { get: () => Object.keys(kept).length },
        key: { value: (k: number) => Object.keys(kept)[k] },
        getItem: { value: (key: string) => kept[key] ?? null },
        setItem: { value: (key: string, text: string) => (kept[key] = text) },
        removeItem: { value: (key: string) => delete kept[key] },
    }) as unknown as Storage;
}
