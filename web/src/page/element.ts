type Child = Node | string;

/**
 * An element with attributes and children. Attributes of value true stand without one, those that are
 * false or undefined not at all.
 */
export function make<Tag extends keyof HTMLElementTagNameMap>(
    tag: Tag,
    attributes: Readonly<Record<string, string | number | boolean | undefined>> = {},
    ...children: readonly Child[]
): HTMLElementTagNameMap[Tag] {
    const element = document.createElement(tag);
    for (const [name, value] of Object.entries(attributes))
        if (value === true) element.setAttribute(name, "");
        else if (value !== false && value !== undefined) element.setAttribute(name, String(value));
    element.append(...children);
    return element;
}

export function button(label: string, onClick: () => void, kind = ""): HTMLButtonElement {
    const element = make("button", { type: "button", class: kind || undefined }, label);
    element.addEventListener("click", onClick);
    return element;
}

/** A button that does nothing at present keeps the focus that it has. */
export function enable(element: HTMLButtonElement, isOn: boolean): void {
    element.setAttribute("aria-disabled", String(!isOn));
}

/** A label with its field beside or above it. */
export function field(label: string, input: HTMLElement, kind = ""): HTMLLabelElement {
    return make("label", { class: `field ${kind}`.trim() }, make("span", {}, label), input);
}

/** A part of the page with a heading of its own. */
export function section(heading: string, id: string, ...children: readonly Child[]): HTMLElement {
    const title = make("h2", { id: `${id}-heading` }, heading);
    return make("section", { id, "aria-labelledby": `${id}-heading` }, title, ...children);
}

export function sentenceOf(problem: unknown): string {
    return problem instanceof Error ? problem.message : String(problem);
}

/** Hands a file to the browser's downloads. */
export function download(file: Blob, name: string): void {
    const address = URL.createObjectURL(file);
    make("a", { href: address, download: name }).click();
    // The browser has taken it by then.
    setTimeout(() => URL.revokeObjectURL(address), 10_000);
}

/** A name that every file system takes. */
export function fileName(name: string, ending: string): string {
    const plain = name.replace(/[^\p{L}\p{N} _-]+/gu, " ").trim().replace(/\s+/g, "-");
    return `${plain || "tesserae"}${ending}`;
}
