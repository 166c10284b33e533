/** -120 at least. */
export function decibels(level: number): number {
    return 20 * Math.log10(Math.max(1e-6, level));
}

/** Decibels behind the limiter's meter, which goes from 0 to 1 and shows large ones closer together. */
export function reduction(meter: number): number {
    let [low, high] = [0, 60];
    for (let i = 0; i < 20; ++i) {
        const middle = 0.5 * (low + high);
        const shown = ((middle * 3.465e-6 - 0.000511) * middle + 0.03486) * middle;
        if (shown < meter) low = middle;
        else high = middle;
    }
    return low;
}
