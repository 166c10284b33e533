/** In CSS pixels. */
export interface Box {
    readonly x: number;
    readonly y: number;
    readonly width: number;
    readonly height: number;
}

/** Where everything stands, and how tall the whole is. */
export interface Layout {
    readonly width: number;
    readonly height: number;
    readonly tape: Box;
    readonly meters: Box;
    /** Meters of levels beside each other. */
    readonly meterColumns: number;
    readonly scopes: readonly Box[];
}

const gap = 8;
const meterHeight = 36;
export const meterCount = 5;
export const sourceCount = 7;

function clamp(value: number, least: number, most: number): number {
    return Math.min(most, Math.max(least, value));
}

/** Rows of boxes; the last row is as wide as the others, however few are in it. */
function grid(count: number, columns: number, top: number, width: number, height: number): Box[] {
    return Array.from({ length: count }, (_, i) => {
        const row = Math.floor(i / columns);
        const inRow = Math.min(columns, count - row * columns);
        const each = (width - gap * (inRow - 1)) / inRow;
        const x = (i % columns) * (each + gap);
        return { x, y: top + row * (height + gap), width: each, height };
    });
}

/** The tape is the largest thing there is; meters stand beside it, or below where it is narrow. */
export function layoutFor(width: number): Layout {
    const isWide = width >= 800;
    const tapeHeight = Math.round(clamp(0.26 * width, 216, 520) / gap) * gap;
    const metersWidth = isWide ? clamp(0.14 * width, 160, 264) : width;
    const tapeWidth = isWide ? width - metersWidth - gap : width;
    const tape = { x: 0, y: 0, width: tapeWidth, height: tapeHeight };
    const meterColumns = isWide ? 1 : width >= 560 ? 3 : 2;
    const rows = Math.ceil(meterCount / meterColumns);
    const meters = isWide
        ? { x: tapeWidth + gap, y: 0, width: metersWidth, height: tapeHeight }
        : { x: 0, y: tapeHeight + gap, width, height: rows * meterHeight + 14 };
    const top = meters.y + meters.height + gap;
    const columns = width >= 1000 ? 7 : width >= 560 ? 4 : 2;
    const scopeHeight = clamp(Math.round(0.05 * width), 56, 96);
    const scopes = grid(sourceCount, columns, top, width, scopeHeight);
    const height = top + Math.ceil(sourceCount / columns) * (scopeHeight + gap) - gap;
    return { width, height, tape, meters, meterColumns, scopes };
}
