/** What a display is painted with; each can be set by the host's CSS property of that name. */
interface Palette {
    readonly "--display-well": string;
    readonly "--display-panel": string;
    readonly "--display-line": string;
    readonly "--display-text": string;
    readonly "--display-dim": string;
    readonly "--display-wave": string;
    readonly "--display-write-head": string;
    readonly "--display-play-head": string;
    readonly "--display-level": string;
    readonly "--display-alarm": string;
    /** Seven, one for each source. */
    readonly "--display-sources": string;
    /** Of pitches from two octaves down to two octaves up: lightness alone tells them, too. */
    readonly "--display-pitches": string;
}

const dark: Palette = {
    "--display-well": "#0a0c0f",
    "--display-panel": "#15181e",
    "--display-line": "#2a303b",
    "--display-text": "#e8eaee",
    "--display-dim": "#a0a8b6",
    "--display-wave": "#5a6577",
    "--display-write-head": "#6fe39a",
    "--display-play-head": "#ffc857",
    "--display-level": "#8fd6c4",
    "--display-alarm": "#ff7a6b",
    "--display-sources": "#f2a65a #5eb1f2 #6fd1a8 #b79bf5 #f5766a #f2d94e #ec86c0",
    "--display-pitches": "#7a4fd0 #4f7de8 #35b0c8 #58d68d #f8ec5c",
};

const light: Palette = {
    "--display-well": "#fbfcfd",
    "--display-panel": "#eef1f5",
    "--display-line": "#cfd6df",
    "--display-text": "#171b22",
    "--display-dim": "#4e5968",
    "--display-wave": "#93a0b2",
    "--display-write-head": "#128048",
    "--display-play-head": "#b45f00",
    "--display-level": "#1f8f78",
    "--display-alarm": "#c6281c",
    "--display-sources": "#a85a00 #1268b8 #0c7a50 #6b46c8 #c2382b #857000 #b03a80",
    "--display-pitches": "#3a1078 #3b4db4 #12808f #3a9a48 #b08a00",
};

const reach = 24;
const steps = 64;

type Rgb = readonly [number, number, number];

function rgb(hex: string): Rgb {
    const number = parseInt(hex.slice(1), 16);
    return [number >> 16, (number >> 8) & 255, number & 255];
}

function between(from: Rgb, to: Rgb, share: number): Rgb {
    const mixed = from.map((value, i) => Math.round(value + ((to[i] ?? 0) - value) * share));
    return [mixed[0] ?? 0, mixed[1] ?? 0, mixed[2] ?? 0];
}

const css = (colour: Rgb): string => `rgb(${colour.join(" ")})`;

/** Colours by the system's choice of dark or light, where the page's CSS has not set its own. */
export class Colours {
    readonly well: string;
    readonly panel: string;
    readonly line: string;
    readonly text: string;
    readonly dim: string;
    readonly wave: string;
    readonly writeHead: string;
    readonly playHead: string;
    readonly level: string;
    readonly alarm: string;
    readonly sources: readonly string[];
    private readonly pitches: readonly string[];
    private readonly brightPitches: readonly string[];

    constructor(
        host: HTMLElement,
        readonly isDark: boolean,
    ) {
        const set = getComputedStyle(host);
        const palette = isDark ? dark : light;
        const of = (name: keyof Palette) => set.getPropertyValue(name).trim() || palette[name];
        this.well = of("--display-well");
        this.panel = of("--display-panel");
        this.line = of("--display-line");
        this.text = of("--display-text");
        this.dim = of("--display-dim");
        this.wave = of("--display-wave");
        this.writeHead = of("--display-write-head");
        this.playHead = of("--display-play-head");
        this.level = of("--display-level");
        this.alarm = of("--display-alarm");
        this.sources = of("--display-sources").split(/\s+/);
        const stops = of("--display-pitches").split(/\s+/).map(rgb);
        const scale = Array.from({ length: steps }, (_, i) => scaleAt(stops, i / (steps - 1)));
        this.pitches = scale.map(css);
        const bright: Rgb = isDark ? [255, 255, 255] : [0, 0, 0];
        this.brightPitches = scale.map((colour) => css(between(colour, bright, 0.45)));
    }

    /** Number of the colour that a pitch has. */
    pitchStep(semitones: number): number {
        const share = 0.5 + (0.5 * semitones) / reach;
        return Math.round(Math.min(1, Math.max(0, share)) * (steps - 1));
    }
    pitch(step: number): string {
        return this.pitches[step] ?? this.text;
    }
    /** The same, as a light that hits the eye: nearer to white, or to black on a light ground. */
    brightPitch(step: number): string {
        return this.brightPitches[step] ?? this.text;
    }
}

function scaleAt(stops: readonly Rgb[], share: number): Rgb {
    const at = share * (stops.length - 1);
    const low = Math.min(Math.floor(at), stops.length - 2);
    const [from, to] = [stops[low], stops[low + 1]];
    return from && to ? between(from, to, at - low) : [128, 128, 128];
}
