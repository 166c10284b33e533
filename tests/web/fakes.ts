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
    const kept = new Map<string, string>();
    return {
        get length() {
            return kept.size;
        },
        key: (k) => [...kept.keys()][k] ?? null,
        getItem: (key) => kept.get(key) ?? null,
        setItem: (key, text) => void kept.set(key, text),
        removeItem: (key) => void kept.delete(key),
        clear: () => kept.clear(),
    };
}
