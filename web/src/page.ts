import { Catalog } from "./engine/Catalog.js";
import { EngineModule } from "./engine/EngineModule.js";
import { LiveEngine } from "./engine/LiveEngine.js";
import { loadEngine } from "./engine/loadEngine.js";
import { keepOffline } from "./offline/keepOffline.js";

/** Plays the built-in piece through a preset, and shows the meters. */
async function begin(page: HTMLElement, status: HTMLElement): Promise<void> {
    const module = await loadEngine("tesserae.wasm");
    const catalog = new Catalog(new EngineModule(module));
    const presets = document.createElement("select");
    presets.setAttribute("aria-label", "Preset");
    for (const { id, name } of catalog.presets) presets.append(new Option(name, id));
    const play = document.createElement("button");
    play.textContent = "Play";
    const level = document.createElement("meter");
    level.setAttribute("aria-label", "Output level");
    page.append(presets, play, level);
    status.textContent = "Ready";

    let engine: LiveEngine | null = null;
    presets.onchange = () => engine?.load(catalog.factorySound(presets.value));
    play.onclick = async () => {
        play.disabled = true;
        const context = new AudioContext();
        const sound = catalog.factorySound(presets.value);
        engine = await LiveEngine.make(context, { module, workletUrl: "audio.js", sound });
        engine.onPicture = (picture) => (level.value = Math.max(...picture.output));
        engine.watch(true);
        const [left, right] = catalog.demoSound(context.sampleRate);
        if (!left || !right) return;
        const buffer = new AudioBuffer({
            length: left.length,
            numberOfChannels: 2,
            sampleRate: context.sampleRate,
        });
        buffer.copyToChannel(left, 0);
        buffer.copyToChannel(right, 1);
        const source = new AudioBufferSourceNode(context, { buffer, loop: true });
        source.connect(engine.node).connect(context.destination);
        source.start();
        status.textContent = "Playing";
    };
}

const page = document.getElementById("page");
const status = document.getElementById("status");
if (page && status)
    begin(page, status).catch((problem: unknown) => (status.textContent = String(problem)));
void keepOffline("offline.js");
