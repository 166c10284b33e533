import { EnginePlayer } from "../engine/EnginePlayer.js";
import type { FromWorklet, ToWorklet, WorkletOptions } from "../engine/WorkletMessages.js";
import { PicturePost } from "./PicturePost.js";

const quantum = 128;

/** The engine on the audio thread. Its one input and its one output are stereo. */
export class TesseraeProcessor extends AudioWorkletProcessor {
    private player: EnginePlayer | null = null;
    private readonly pictures = new PicturePost((message, transfer) => this.tell(message, transfer));
    private readonly positions: Float32Array;
    private tempo: number;
    private playing: boolean;
    private isAlive = true;

    constructor(options: AudioWorkletNodeOptions) {
        super();
        const wanted = options.processorOptions as WorkletOptions;
        this.positions = wanted.positions.slice();
        this.tempo = wanted.transport.tempo;
        this.playing = wanted.transport.playing;
        this.port.onmessage = ({ data }: MessageEvent<ToWorklet>) =>
            this.attempt(() => this.take(data));
        this.attempt(() => {
            const player = new EnginePlayer(wanted, sampleRate, quantum);
            this.player = player;
            this.tell({ kind: "ready", latencyFrames: player.latencyFrames });
        });
    }

    process(inputs: readonly Float32Array[][], outputs: readonly Float32Array[][]): boolean {
        const [input, output] = [inputs[0], outputs[0]];
        if (this.player && input && output && this.isAlive) {
            try {
                this.player.process(input, output, quantum);
                this.pictures.send(this.player);
            } catch (problem) {
                this.fail(problem);
            }
        }
        return this.isAlive;
    }

    private take(message: ToWorklet): void {
        const { player } = this;
        if (!player || !this.isAlive) return;
        switch (message.kind) {
            case "set":
                this.positions[message.index] = message.position;
                return player.set(message.index, message.position);
            case "load":
                this.positions.set(message.positions);
                return player.load(message.positions);
            case "transport":
                this.tempo = message.transport.tempo;
                this.playing = message.transport.playing;
                return player.setTransport(message.transport);
            case "tempo":
                this.tempo = message.tempo;
                return player.setTempo(message.tempo);
            case "panic":
                return player.panic();
            case "seed":
                return this.startAgain(player, message.seed);
            case "watch":
                this.pictures.isWatched = message.on;
                return player.watch(message.on);
            case "recycle":
                return this.pictures.recycle(message.picture);
            case "close":
                this.isAlive = false;
        }
    }

    private startAgain(player: EnginePlayer, seed: number | null): void {
        const { tempo, playing } = this;
        player.start(seed, this.positions, { tempo, beat: player.beat, playing });
        player.watch(this.pictures.isWatched);
    }

    private attempt(action: () => void): void {
        try {
            action();
        } catch (problem) {
            this.fail(problem);
        }
    }

    /** What an engine has left half done may not run on. */
    private fail(problem: unknown): void {
        this.isAlive = false;
        this.tell({ kind: "failed", problem: `The engine has stopped: ${String(problem)}` });
    }

    private tell(message: FromWorklet, transfer: Transferable[] = []): void {
        this.port.postMessage(message, transfer);
    }
}
