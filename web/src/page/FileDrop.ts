/** Files that are dropped anywhere on the page: sounds to one listener, presets to the other. */
export function takeDrops(
    page: HTMLElement,
    onSound: (file: File) => void,
    onPreset: (file: File) => void,
): void {
    const mark = (on: boolean) => page.classList.toggle("drop", on);
    page.addEventListener("dragover", (event) => {
        event.preventDefault();
        mark(true);
    });
    page.addEventListener("dragleave", (event) => {
        if (event.relatedTarget === null) mark(false);
    });
    page.addEventListener("drop", (event) => {
        event.preventDefault();
        mark(false);
        const [file] = event.dataTransfer?.files ?? [];
        if (!file) return;
        if (file.name.toLowerCase().endsWith(".json")) onPreset(file);
        else onSound(file);
    });
}
