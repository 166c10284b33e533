import { type FromTap, pieceFrames, tapChannels, type ToTap } from "../record/RecordMessages.js";

/** Sends the page every frame that it hears between start and stop. Its output is silence. */
export class RecordTap extends AudioWorkletProcessor {
    private readonly free: Float32Array<ArrayBuffer>[] = [];
    private samples = this.takeMemory();
    private frames = 0;
    private isRecording = false;

    constructor() {
        super();
        this.port.onmessage = ({ data }: MessageEvent<ToTap>) => this.take(data);
    }

    process(inputs: readonly Float32Array[][]): boolean {
        if (!this.isRecording) return true;
        const [left, right = left] = inputs[0] ?? [];
        // An input that nothing is connected to has no channels: silence.
        const count = left?.length ?? 128;
        for (let i = 0; i < count; ++i) {
            const at = tapChannels * this.frames;
            this.samples[at] = left?.[i] ?? 0;
            this.samples[at + 1] = right?.[i] ?? 0;
            if (++this.frames === pieceFrames) this.send();
        }
        return true;
    }

    private take(message: ToTap): void {
        if (message.kind === "recycle") {
            this.free.push(message.samples);
        } else if (message.kind === "start") {
            this.isRecording = true;
        } else {
            this.isRecording = false;
            this.send();
            this.tell({ kind: "end" });
        }
    }

    private send(): void {
        const { samples, frames } = this;
        if (frames === 0) return;
        this.samples = this.takeMemory();
        this.frames = 0;
        this.tell({ kind: "piece", samples, frames }, [samples.buffer]);
    }

    private takeMemory(): Float32Array<ArrayBuffer> {
        return this.free.pop() ?? new Float32Array(tapChannels * pieceFrames);
    }

    private tell(message: FromTap, transfer: Transferable[] = []): void {
        this.port.postMessage(message, transfer);
    }
}
