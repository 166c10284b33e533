const mostSemitones = 36;
const edge = 40;

/** Pixels below the tape's upper edge; small intervals get more room than large ones. */
export function heightOf(semitones: number, height: number): number {
    const share = Math.min(1, Math.max(-1, semitones / mostSemitones));
    const bent = Math.sign(share) * Math.abs(share) ** 0.62;
    return 0.5 * height - bent * (0.5 * height - edge);
}
