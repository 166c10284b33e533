/** What the audio thread has of its own; the compiler's library of the page does not know it. */
declare class AudioWorkletProcessor {
    readonly port: MessagePort;
}
declare function registerProcessor(
    name: string,
    processor: new (options: AudioWorkletNodeOptions) => AudioWorkletProcessor,
): void;
declare const sampleRate: number;
