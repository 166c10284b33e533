import { type FromTap, tapChannels, tapName, type ToTap } from "./RecordMessages.js";
import { wavHead } from "./writeWav.js";

/** A context that has been closed answers nothing any more. */
const patienceMs = 1000;

/**
 * Records what a node plays, every frame of it, in stereo. The context must have loaded the script of
 * the audio thread, as it has where a LiveEngine was made in it.
 */
export class Recorder {
    /** Hears that the longest recording has been reached; stop() then gives it. */
    onFull: (() => void) | null = null;
    private readonly tap: AudioWorkletNode;
    private parts: Blob[] = [];
    private frames = 0;
    private isOpen = false;
    private ending: Promise<void> | null = null;
    private onEnd: (() => void) | null = null;

    constructor(
        private readonly context: BaseAudioContext,
        private readonly node: AudioNode,
        /** What fits into the memory of most machines: 700 MB at 48 kHz. */
        private readonly mostSeconds = 1800,
    ) {
        this.tap = new AudioWorkletNode(context, tapName, {
            channelCount: tapChannels,
            channelCountMode: "explicit",
        });
        this.tap.port.onmessage = ({ data }: MessageEvent<FromTap>) => this.take(data);
    }

    get isRecording(): boolean {
        return this.isOpen;
    }
    /** Length of what has come so far. */
    get seconds(): number {
        return this.frames / this.context.sampleRate;
    }

    /** Begins a new recording, with one of the next frames. */
    start(): void {
        if (this.isOpen) return;
        this.parts = [];
        this.frames = 0;
        this.isOpen = true;
        this.node.connect(this.tap);
        // Silent, but what leads nowhere is not asked for its sound.
        this.tap.connect(this.context.destination);
        this.tell({ kind: "start" });
    }

    /** Ends it; a WAV file of 32-bit floats, of no length where nothing was recorded. */
    async stop(): Promise<Blob> {
        if (this.isOpen) await (this.ending ??= this.end());
        const head = wavHead(tapChannels, this.frames, this.context.sampleRate);
        const file = new Blob([head, ...this.parts], { type: "audio/wav" });
        this.parts = [];
        return file;
    }

    private async end(): Promise<void> {
        const ended = new Promise<void>((resolve) => {
            this.onEnd = resolve;
            setTimeout(resolve, patienceMs);
        });
        this.tell({ kind: "stop" });
        await ended;
        this.isOpen = false;
        this.ending = null;
        this.tap.disconnect();
        try {
            this.node.disconnect(this.tap);
        } catch {
            // The node has been disconnected from everything meanwhile.
        }
    }

    private take(message: FromTap): void {
        if (message.kind === "end") return this.onEnd?.();
        const { samples } = message;
        const room = Math.floor(this.mostSeconds * this.context.sampleRate) - this.frames;
        const frames = Math.min(message.frames, room);
        if (!this.isOpen || room <= 0) return;
        // A Blob may lie on the disk, which so many numbers in the page's memory could not.
        this.parts.push(new Blob([samples.subarray(0, tapChannels * frames)]));
        this.frames += frames;
        this.tell({ kind: "recycle", samples }, [samples.buffer]);
        if (frames < room || this.ending) return;
        this.ending = this.end();
        void this.ending.then(() => this.onFull?.());
    }

    private tell(message: ToTap, transfer: Transferable[] = []): void {
        this.tap.port.postMessage(message, transfer);
    }
}
