/** Letters that an address may hold as they are. */
export function toBase64Url(bytes: Uint8Array): string {
    let letters = "";
    for (const byte of bytes) letters += String.fromCharCode(byte);
    return btoa(letters).replaceAll("+", "-").replaceAll("/", "_").replaceAll("=", "");
}

/** The bytes, or null where `text` is not exactly what toBase64Url writes. */
export function fromBase64Url(text: string): Uint8Array<ArrayBuffer> | null {
    if (!/^[\w-]*$/.test(text)) return null;
    try {
        const letters = atob(text.replaceAll("-", "+").replaceAll("_", "/"));
        const bytes = Uint8Array.from(letters, (letter) => letter.charCodeAt(0));
        return toBase64Url(bytes) === text ? bytes : null;
    } catch {
        return null;
    }
}
