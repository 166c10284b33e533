import type { Catalog } from "../engine/Catalog.js";
import type { DisplayFrame } from "../engine/DisplayFrame.js";
import { LiveEngine } from "../engine/LiveEngine.js";
import { Recorder } from "../record/Recorder.js";
import type { Session } from "./Session.js";
import { Signal } from "./Signal.js";
import { type Piece, pieces } from "./pieces.js";

/** What goes into the engine. */
export type Source =
    | { readonly kind: "piece"; readonly piece: Piece }
    | { readonly kind: "file"; readonly name: string; readonly buffer: AudioBuffer }
    | { readonly kind: "microphone"; readonly stream: MediaStream };

const firstPiece = pieces[0] as Piece;

/** The live engine with its source, in an audio context that is made when it is needed first. */
export class Player {
    readonly onState = new Signal();
    readonly onProblem = new Signal<string>();
    onPicture: ((picture: DisplayFrame) => void) | null = null;
    private made: AudioContext | null = null;
    private engine: LiveEngine | null = null;
    private input: AudioNode | null = null;
    private level: GainNode | null = null;
    private recorder: Recorder | null = null;
    private current: Source = { kind: "piece", piece: firstPiece };
    private making: Promise<LiveEngine> | null = null;
    private playing = false;
    private loops = true;
    private gain = 1;
    private resting = 0;
    private filesTaken = 0;

    constructor(
        private readonly module: WebAssembly.Module,
        private readonly catalog: Catalog,
        private readonly session: Session,
    ) {
        session.onTempo.listen((tempo) => this.engine?.setTempo(tempo));
    }

    get source(): Source {
        return this.current;
    }
    get isPlaying(): boolean {
        return this.playing;
    }
    get isLooping(): boolean {
        return this.loops;
    }
    /** Null until something has been played. */
    get record(): Recorder | null {
        return this.recorder;
    }

    async play(): Promise<void> {
        window.clearTimeout(this.resting);
        const { context } = this;
        await context.resume();
        // With a seed each start sounds as the first one did.
        if (this.session.seed !== null) this.engine?.setSeed(this.session.seed);
        const engine = (this.engine ??= await this.onlyEngine());
        this.connectSource();
        engine.setTransport({ tempo: this.session.tempo, beat: 0, playing: true });
        this.playing = true;
        this.onState.tell();
    }
    /** The input ends; what the engine still plays dies away. */
    stop(): void {
        if (!this.playing) return;
        this.disconnectSource();
        this.engine?.setTransport({ tempo: this.session.tempo, beat: 0, playing: false });
        this.playing = false;
        this.restLater();
        this.onState.tell();
    }
    panic(): void {
        this.engine?.panic();
    }

    usePiece(piece: Piece): void {
        this.use({ kind: "piece", piece });
    }
    /** Rejects with a sentence where the browser cannot read it. */
    async useFile(file: File): Promise<void> {
        const number = ++this.filesTaken;
        try {
            const buffer = await this.context.decodeAudioData(await file.arrayBuffer());
            // One that takes long to decode does not come after the one that was chosen later.
            if (number === this.filesTaken) this.use({ kind: "file", name: file.name, buffer });
        } catch {
            throw new Error(
                `"${file.name}" is no sound that this browser can read. WAV, FLAC, MP3 and Ogg are.`,
            );
        }
    }
    /** Rejects with a sentence where there is none, or it is refused. */
    async useMicrophone(): Promise<void> {
        const untouched = {
            echoCancellation: false,
            noiseSuppression: false,
            autoGainControl: false,
            channelCount: { ideal: 2 },
        };
        const stream = await openMicrophone(untouched);
        for (const track of stream.getTracks())
            track.onended = () => {
                this.usePiece(firstPiece);
                this.stop();
                this.onProblem.tell("The microphone is gone: it was unplugged, or closed by the browser.");
            };
        this.use({ kind: "microphone", stream });
    }
    setLoop(on: boolean): void {
        this.loops = on;
        if (this.input instanceof AudioBufferSourceNode) this.input.loop = on;
        this.onState.tell();
    }
    /** Of the source, linear. */
    setLevel(gain: number): void {
        this.gain = gain;
        if (this.level) this.level.gain.value = gain;
    }

    /** What the source holds, as a render takes it; null for the microphone, which has no end. */
    wholeSource(): { channels: Float32Array<ArrayBuffer>[]; sampleRate: number } | null {
        const { current, gain } = this;
        if (current.kind === "microphone") return null;
        const buffer = this.bufferOf(current);
        const count = Math.min(2, buffer.numberOfChannels);
        const channels = Array.from({ length: count }, (_, side) =>
            buffer.getChannelData(side).map((sample) => sample * gain),
        );
        return { channels, sampleRate: buffer.sampleRate };
    }

    private get context(): AudioContext {
        return (this.made ??= new AudioContext({ latencyHint: "interactive" }));
    }

    private use(source: Source): void {
        this.disconnectSource();
        if (this.current.kind === "microphone")
            for (const track of this.current.stream.getTracks()) {
                track.onended = null;
                track.stop();
            }
        this.current = source;
        if (this.playing) this.connectSource();
        this.onState.tell();
    }

    /** One, however often it is asked for while it is being made. */
    private onlyEngine(): Promise<LiveEngine> {
        return (this.making ??= this.makeEngine().finally(() => (this.making = null)));
    }
    private async makeEngine(): Promise<LiveEngine> {
        const { context, module, session } = this;
        const engine = await LiveEngine.make(context, {
            module,
            workletUrl: "audio.js",
            sound: session.sound,
            seed: session.seed,
            transport: { tempo: session.tempo, beat: 0, playing: false },
        });
        engine.onPicture = (picture) => this.onPicture?.(picture);
        engine.onFailure = (problem) => this.fail(problem);
        engine.watch(true);
        engine.load(session.sound);
        session.engine = engine;
        this.level = new GainNode(context, { gain: this.gain });
        this.level.connect(engine.node).connect(context.destination);
        this.recorder = new Recorder(context, engine.node);
        return engine;
    }

    private fail(problem: string): void {
        this.session.engine = null;
        this.engine = null;
        this.stop();
        this.onProblem.tell(`The sound has stopped: ${problem} Play starts it anew.`);
    }

    private connectSource(): void {
        this.disconnectSource();
        if (!this.level) return;
        const { current } = this;
        this.input =
            current.kind === "microphone"
                ? new MediaStreamAudioSourceNode(this.context, { mediaStream: current.stream })
                : this.playedBuffer(current);
        this.input.connect(this.level);
    }
    private playedBuffer(source: Exclude<Source, { kind: "microphone" }>): AudioBufferSourceNode {
        const options = { buffer: this.bufferOf(source), loop: this.loops };
        const node = new AudioBufferSourceNode(this.context, options);
        node.onended = () => {
            if (this.input === node) this.stop();
        };
        node.start();
        return node;
    }
    private bufferOf(source: Exclude<Source, { kind: "microphone" }>): AudioBuffer {
        if (source.kind === "file") return source.buffer;
        const { sampleRate } = this.context;
        const channels = source.piece.make(sampleRate, this.catalog);
        const length = channels[0]?.length ?? 1;
        const buffer = new AudioBuffer({ length, numberOfChannels: 2, sampleRate });
        channels.forEach((channel, side) => buffer.copyToChannel(channel, side));
        return buffer;
    }
    private disconnectSource(): void {
        const { input } = this;
        this.input = null;
        if (input instanceof AudioBufferSourceNode) input.stop();
        input?.disconnect();
    }

    /** A context that plays nothing any more takes no time of the machine. */
    private restLater(): void {
        const seconds = this.catalog.tailSeconds(this.session.positions, this.session.tempo) + 2;
        this.resting = window.setTimeout(() => {
            if (!this.playing && !this.recorder?.isRecording) void this.made?.suspend();
        }, 1000 * seconds);
    }
}

async function openMicrophone(audio: MediaTrackConstraints): Promise<MediaStream> {
    const { mediaDevices } = navigator as Partial<Navigator>;
    if (!mediaDevices?.getUserMedia)
        throw new Error("This browser gives a page no microphone; over https or on this machine it may.");
    try {
        return await mediaDevices.getUserMedia({ audio });
    } catch (problem) {
        const name = problem instanceof Error ? problem.name : "";
        if (name === "NotAllowedError")
            throw new Error(
                "The microphone was refused. The browser's settings for this page allow it again.",
            );
        if (name === "NotFoundError") throw new Error("There is no microphone. Plug one in and try again.");
        throw new Error("The microphone cannot be opened. Another program may hold it.");
    }
}
