/** The text, or as much of it as fits, with dots at its end. */
export function fitted(pen: CanvasRenderingContext2D, text: string, width: number): string {
    if (pen.measureText(text).width <= width) return text;
    let end = text.length;
    while (end > 1 && pen.measureText(`${text.slice(0, end)}…`).width > width) --end;
    return `${text.slice(0, end).trimEnd()}…`;
}
