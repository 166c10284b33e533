import { OfflineRenderer } from "../engine/OfflineRenderer.js";
import { writeWav } from "../record/writeWav.js";
import type { Player } from "./Player.js";
import type { Session } from "./Session.js";
import { button, download, enable, fileName, make, section, sentenceOf } from "./element.js";

const tickMs = 250;

/** Recording what is heard, and rendering the whole source faster than it plays. */
export class RecordPanel {
    readonly element: HTMLElement;
    private readonly recordButton: HTMLButtonElement;
    private readonly renderButton: HTMLButtonElement;
    private readonly cancelButton: HTMLButtonElement;
    private readonly progress = make("progress", { max: 1, "aria-label": "Render", hidden: true });
    private readonly now = make("p", { class: "hint", role: "status" });
    /** Apart, because what changes all the time is not to be read out. */
    private readonly time = make("span", { class: "time" });
    private readonly renderer: OfflineRenderer;
    private abort: AbortController | null = null;
    private tick = 0;

    constructor(
        module: WebAssembly.Module,
        private readonly session: Session,
        private readonly player: Player,
        private readonly say: (sentence: string) => void,
    ) {
        this.renderer = new OfflineRenderer(module, "render.js");
        this.recordButton = button("Record", () => void this.toggle());
        this.renderButton = button("Render the whole source", () => void this.render());
        this.cancelButton = button("Cancel", () => this.abort?.abort());
        this.cancelButton.hidden = true;
        this.element = section(
            "Keep it",
            "record",
            make(
                "div",
                { class: "row" },
                this.recordButton,
                this.renderButton,
                this.cancelButton,
                this.progress,
                this.time,
            ),
            this.now,
        );
        // A page that is left takes its recording with it.
        addEventListener("beforeunload", (event) => {
            if (player.record?.isRecording) event.preventDefault();
        });
        this.now.textContent = "Both become a WAV file of 32-bit floats among your downloads.";
    }

    async toggle(): Promise<void> {
        const { player } = this;
        try {
            if (player.record?.isRecording) return await this.finish();
            if (!player.isPlaying) await player.play();
            const { record } = player;
            if (!record) return;
            record.onFull = () => void this.finish();
            record.start();
            this.recordButton.textContent = "Stop and download";
            this.recordButton.classList.add("is-on");
            this.now.textContent = "Recording";
            window.clearInterval(this.tick);
            this.tick = window.setInterval(() => {
                this.time.textContent = `${record.seconds.toFixed(0)} s`;
            }, tickMs);
        } catch (problem) {
            this.say(sentenceOf(problem));
        }
    }

    private async finish(): Promise<void> {
        window.clearInterval(this.tick);
        this.time.textContent = "";
        const { record } = this.player;
        if (!record) return;
        const { seconds } = record;
        const file = await record.stop();
        this.recordButton.textContent = "Record";
        this.recordButton.classList.remove("is-on");
        download(file, fileName(this.session.name, ".wav"));
        this.now.textContent = `${seconds.toFixed(1)} s were recorded.`;
    }

    private async render(): Promise<void> {
        if (this.abort) return;
        const { session } = this;
        const source = this.player.wholeSource();
        if (!source) return this.say("The microphone has no end to render to. Record it instead.");
        const seed = session.seed ?? session.fixSeed();
        this.abort = new AbortController();
        this.work(true);
        const start = performance.now();
        try {
            const made = await this.renderer.render(source.channels, source.sampleRate, {
                sound: session.sound,
                seed,
                transport: { tempo: session.tempo, beat: 0, playing: true },
                tailSeconds: session.catalog.tailSeconds(session.positions, session.tempo),
                onProgress: (share) => (this.progress.value = share),
                signal: this.abort.signal,
            });
            download(writeWav(made, source.sampleRate), fileName(`${session.name} ${seed}`, ".wav"));
            const seconds = (made[0]?.length ?? 0) / source.sampleRate;
            const times = (1000 * seconds) / (performance.now() - start);
            this.now.textContent =
                `${seconds.toFixed(1)} s were rendered with seed ${seed}, ` +
                `${times.toFixed(0)} times as fast as they play.`;
        } catch (problem) {
            const isGivenUp = problem instanceof DOMException && problem.name === "AbortError";
            this.now.textContent = isGivenUp ? "The render was given up." : "";
            if (!isGivenUp) this.say(sentenceOf(problem));
        } finally {
            this.work(false);
            this.abort = null;
        }
    }

    private work(isOn: boolean): void {
        enable(this.renderButton, !isOn);
        if (!isOn && document.activeElement === this.cancelButton) this.renderButton.focus();
        this.cancelButton.hidden = this.progress.hidden = !isOn;
        this.progress.value = 0;
        if (isOn) this.now.textContent = "Rendering";
    }
}
