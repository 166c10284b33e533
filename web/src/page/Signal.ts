/** Tells its listeners that something has happened, in the order in which they came. */
export class Signal<Value = void> {
    private readonly listeners: ((value: Value) => void)[] = [];

    listen(listener: (value: Value) => void): void {
        this.listeners.push(listener);
    }
    tell(value: Value): void {
        for (const listener of this.listeners) listener(value);
    }
}
