/** What a fine drag moves. */
export interface FinelyMoved {
    position(): number;
    begin(): void;
    move(position: number): void;
    end(): void;
}

const fineness = 10;

/** A drag that begins with Shift counts from where the slider stands, and a tenth of its way. */
export function dragFinely(slider: HTMLElement, target: FinelyMoved): void {
    slider.addEventListener("mousedown", (event) => {
        if (!event.shiftKey || event.button !== 0) return;
        // The browser's own drag would put the slider under the pointer.
        event.preventDefault();
        slider.focus();
        const follow = new AbortController();
        const [from, start] = [event.clientX, target.position()];
        target.begin();
        const { signal } = follow;
        addEventListener(
            "mousemove",
            ({ clientX }) =>
                target.move(start + (clientX - from) / fineness / Math.max(1, slider.clientWidth)),
            { signal },
        );
        addEventListener(
            "mouseup",
            () => {
                follow.abort();
                target.end();
            },
            { signal },
        );
    });
}
