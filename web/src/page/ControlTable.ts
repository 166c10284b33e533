/** A choice and where it has to stand, counted from 0. */
export interface Condition {
    readonly choice: string;
    readonly is: number | readonly number[];
}

/** Controls that stand together, by the full names of their parameters. */
export interface ControlGroup {
    readonly heading: string;
    readonly controls: readonly PlacedControl[];
}

export interface PlacedControl {
    readonly name: string;
    /** Where that is shorter than the parameter's own. */
    readonly label?: string;
    /** A button with this on it, for what happens each time it is moved. */
    readonly press?: string;
    /** It is shown only where all of these hold, because it does nothing elsewhere. */
    readonly when?: readonly Condition[];
}

const mode = "MoteWeaver_GranularMode";
const playHead = "MoteWeaver_PlaybackMode";
const starts = "MoteWeaver_PlaybackQuantizationMode";
const [classic, texture, beat] = [0, 1, 2].map((is) => ({ choice: mode, is })) as [
    Condition,
    Condition,
    Condition,
];
const noTexture: Condition = { choice: mode, is: [0, 2] };
const noBeat: Condition = { choice: mode, is: [0, 1] };
const [scan, follow, manual] = [0, 1, 2].map((is) => ({ choice: playHead, is })) as [
    Condition,
    Condition,
    Condition,
];
const transients: Condition = { choice: starts, is: 1 };
const spatializer: Condition = { choice: "Spatializer Enable", is: 1 };
const grid: Condition = { choice: starts, is: 2 };

function grain(name: string, ...when: Condition[]): PlacedControl {
    return { name: `MoteWeaver_${name}`, when };
}
function named(name: string, label: string, ...when: Condition[]): PlacedControl {
    return { name, label, when };
}
function slot(number: number): PlacedControl[] {
    const type = `FX${number}_ModuleType`;
    const filled: Condition = { choice: type, is: Array.from({ length: 31 }, (_, k) => k + 1) };
    return [
        named(type, `FX${number}`),
        named(`FX${number}_Position`, `FX${number} place`, filled),
        named(`FX${number}_Dry / Wet`, `FX${number} dry / wet`, filled),
    ];
}

/**
 * What people reach for, grouped as the manual explains it. Of parameters that stand for each other,
 * such as a size in milliseconds and in notes, the one in force is shown.
 */
export const controlGroups: readonly ControlGroup[] = [
    {
        heading: "Grains",
        controls: [
            grain("GranularMode"),
            grain("DensityType", classic),
            grain("BeatDensityType", beat),
            grain("GranularPhaseHelper_RateUnSynced", noTexture),
            grain("GranularPhaseHelper_RateSynced", noTexture),
            grain("TextureDensity", texture),
            grain("RandomDensity", noTexture),
            grain("RandomLayers", texture),
            grain("GrainSizeMode", noTexture),
            grain("TextureSizeMidiSync", texture),
            grain("GrainSizeAbsolute", noTexture),
            grain("GrainSizeSynced", noTexture),
            grain("GrainSizeRatio", noTexture),
            grain("TextureSizeAbsolute", texture),
            grain("TextureSizeSynced", texture),
            grain("RandomSize"),
            grain("RandomDirection"),
        ],
    },
    {
        heading: "Pitch and shape",
        controls: [
            grain("Pitch"),
            grain("Scale"),
            grain("RandomPitch"),
            grain("RandomFine"),
            grain("Shape"),
            grain("ShapeParam"),
            grain("BitCrushPreset"),
        ],
    },
    {
        heading: "Space",
        controls: [
            grain("RandomPan"),
            grain("Width"),
            grain("Distance"),
            grain("RandomDistance"),
            named("Spatializer Enable", "Spatializer"),
            named("Spatializer Trajectory", "Path", spatializer),
            named("Spatializer Rate UnSynced", "Path rate", spatializer),
            named("Spatializer Rate Synced", "Path rate", spatializer),
            named("Spatializer Amount", "Path size", spatializer),
            named("Spatializer Distance", "Path distance", spatializer),
        ],
    },
    {
        heading: "Tape and play head",
        controls: [
            grain("BufferFreeze"),
            { name: "MoteWeaver_BufferClear", label: "Tape", press: "Clear" },
            grain("BufferLengthSynced"),
            grain("BufferPersistence"),
            grain("PlaybackMode"),
            grain("Speed", scan),
            grain("OffsetType", follow, noBeat),
            grain("BeatOffsetType", follow, beat),
            grain("Offset", follow),
            grain("OffsetSynced", follow),
            grain("ManualScanPosition", manual),
            grain("Spray"),
            grain("PlaybackQuantizationMode"),
            grain("GridSize", grid),
            grain("TransientSensitivity", transients),
        ],
    },
    {
        heading: "Mix",
        controls: [
            { name: "Feedback" },
            { name: "Dry / Wet" },
            { name: "Granular Volume" },
            { name: "Master Volume" },
            { name: "Macro 1" },
            { name: "Macro 2" },
        ],
    },
    { heading: "Effects", controls: [...slot(1), ...slot(2)] },
];
