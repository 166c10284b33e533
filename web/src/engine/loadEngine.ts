/**
 * Fetches and compiles tesserae.wasm, the one time that it is fetched: the others get the compiled
 * module. Rejects where the server does not have it.
 */
export async function loadEngine(url: string): Promise<WebAssembly.Module> {
    const response = await fetch(url);
    if (!response.ok) throw new Error(`The engine could not be loaded (${response.status}).`);
    // Not every static server knows the type that compileStreaming insists on.
    return WebAssembly.compile(await response.arrayBuffer());
}
