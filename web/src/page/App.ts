import { Display } from "../display/Display.js";
import { Catalog } from "../engine/Catalog.js";
import { EngineModule } from "../engine/EngineModule.js";
import { MidiInput } from "../midi/MidiInput.js";
import { sourceText } from "../midi/MidiSource.js";
import { SavedSounds } from "../share/SavedSounds.js";
import type { ControlCares } from "./Control.js";
import { ControlsPanel } from "./ControlsPanel.js";
import { takeDrops } from "./FileDrop.js";
import type { Messages } from "./Messages.js";
import { MidiPanel } from "./MidiPanel.js";
import { Player } from "./Player.js";
import { PresetPanel } from "./PresetPanel.js";
import { RecordPanel } from "./RecordPanel.js";
import { SearchPanel } from "./SearchPanel.js";
import { Session } from "./Session.js";
import { type Shortcut, Shortcuts } from "./Shortcuts.js";
import { SoundPanel } from "./SoundPanel.js";
import { SourcePanel } from "./SourcePanel.js";
import { TransportBar } from "./TransportBar.js";
import { make, section } from "./element.js";

/** The whole page, around one session and one player. */
export class App {
    private readonly catalog: Catalog;
    private readonly session: Session;
    private readonly player: Player;
    private readonly saved: SavedSounds;
    private readonly midi = new MidiInput();
    private readonly presets: PresetPanel;
    private readonly transport: TransportBar;
    private readonly source: SourcePanel;
    private readonly sound: SoundPanel;
    private readonly record: RecordPanel;

    constructor(
        module: WebAssembly.Module,
        page: HTMLElement,
        private readonly messages: Messages,
    ) {
        this.catalog = new Catalog(new EngineModule(module));
        this.session = new Session(this.catalog);
        this.player = new Player(module, this.catalog, this.session);
        this.saved = new SavedSounds(this.catalog);
        const say = (sentence: string) => messages.say(sentence);
        const tell = (sentence: string) => messages.tell(sentence);
        const { session, player } = this;
        player.onProblem.listen(say);
        this.presets = new PresetPanel(session, this.saved, say);
        this.transport = new TransportBar(session, player, this.presets, say);
        this.source = new SourcePanel(player, say);
        this.sound = new SoundPanel(session, this.saved, this.presets, say, tell);
        this.record = new RecordPanel(module, session, player, say);
        this.build(page);
        takeDrops(
            document.body,
            (file) => void this.source.take(file),
            (file) => void this.sound.take(file),
        );
        if (location.hash !== "") void this.sound.open(location.hash);
        addEventListener("hashchange", () => {
            // Back at the bare address there is nothing to open.
            if (location.hash !== "") void this.sound.open(location.hash);
        });
    }

    private build(page: HTMLElement): void {
        const { session, messages } = this;
        let midi: MidiPanel | null = null;
        const cares: ControlCares = {
            get canLearn() {
                return midi?.isConnected ?? false;
            },
            say: (sentence) => messages.say(sentence),
            learn: (index) => void midi?.learn(index),
            assigned: (index) => {
                const source = this.midi.assignments.get(index);
                return source ? sourceText(source) : null;
            },
        };
        const controls = new ControlsPanel(session, cares);
        const all = new SearchPanel(session, cares);
        midi = new MidiPanel(session, this.midi, cares.say, () => {
            controls.refresh();
            all.refresh();
        });
        const host = make("div", { class: "display" });
        const shortcuts = new Shortcuts(this.shortcuts());
        page.append(
            this.transport.element,
            messages.element,
            host,
            make(
                "div",
                { class: "columns" },
                make("div", { class: "side" }, this.source.element, this.presets.element),
                section("Controls", "controls", controls.element),
                make(
                    "div",
                    { class: "side" },
                    this.record.element,
                    this.sound.element,
                    midi.element,
                    all.element,
                ),
            ),
            shortcuts.dialog,
        );
        document.querySelector("header")?.append(shortcuts.element);
        const display = new Display(host, this.catalog);
        this.player.onPicture = (picture) => display.show(picture);
    }

    private shortcuts(): Shortcut[] {
        const { session } = this;
        return [
            {
                key: " ",
                label: "Space",
                does: "plays and stops",
                action: () => void this.transport.toggle(),
            },
            {
                key: "z",
                withControl: true,
                label: "Ctrl Z",
                does: "undoes",
                action: () => session.undo(),
            },
            {
                key: "z",
                withControl: true,
                withShift: true,
                label: "Ctrl Shift Z",
                does: "redoes",
                action: () => session.redo(),
            },
            { key: "t", label: "T", does: "taps the tempo", action: () => this.transport.tap() },
            { key: "n", label: "N", does: "next preset", action: () => this.presets.step(1) },
            { key: "p", label: "P", does: "previous preset", action: () => this.presets.step(-1) },
            {
                key: "r",
                label: "R",
                does: "records, and stops recording",
                action: () => void this.record.toggle(),
            },
        ];
    }
}
