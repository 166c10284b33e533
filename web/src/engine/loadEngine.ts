/**
 * Fetches and compiles tesserae.wasm, the one time that it is fetched: the others get the compiled
 * module. Rejects where the server does not have it.
 */
export async function loadEngine(url: string): Promise<WebAssembly.Module> {
    const response = await fetch(url).catch(() => null);
    if (!response?.ok)
        throw new Error(
            `The engine could not be loaded (${response ? response.status : "no answer"}). ` +
                "Load the page again when the network is there.",
        );
    try {
        // Not every static server knows the type that compileStreaming insists on.
        return await WebAssembly.compile(await response.arrayBuffer());
    } catch {
        throw new Error(
            "This browser cannot run the engine. Any from 2023 on can, with WebAssembly and its vectors.",
        );
    }
}
