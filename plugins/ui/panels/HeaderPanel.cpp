#include "plugins/ui/panels/HeaderPanel.h"

#include <array>
#include <charconv>
#include <cmath>

#include "host/instrument/DefaultMidiMap.h"
#include "host/parameters/ReadNumber.h"
#include "plugins/ui/model/MorphControl.h"
#include "plugins/ui/model/ParameterControl.h"
#include "plugins/ui/panels/Layout.h"
#include "plugins/ui/widgets/ActionButton.h"
#include "plugins/ui/widgets/Slider.h"
#include "plugins/ui/widgets/Toggle.h"

namespace Quorvan::Ui {

namespace {

constexpr double kTop = 8.0, kHeight = 24.0;
constexpr double kSlowest = 1.0, kFastest = 999.0;  // beats per minute, as far as the engine goes

ActionButton::Look Plain(const char* text, bool enabled = true, bool lit = false) {
    return {text, enabled, lit};
}

/// With as many decimals as it has.
std::string TempoText(double beatsPerMinute) {
    std::array<char, 32> text{};
    constexpr int kDigits = 6;
    const auto end = std::to_chars(text.data(), text.data() + text.size(), beatsPerMinute,
                                   std::chars_format::general, kDigits);
    return {text.data(), end.ptr};
}

}  // namespace

HeaderPanel::HeaderPanel(FaceModel& faceModel, Stage& face,
                         const std::function<void()>& openBrowser)
    : Panel(Layout::kHeader), model(faceModel), stage(face) {
    AddPreset(openBrowser);
    AddHistory();
    AddSounds();
    AddChance();
    AddMachine();
}

void HeaderPanel::DrawGround(Painter& painter) const {
    painter.Fill(box, Theme::kPanel);
    // Four tesserae, laid a little askew.
    for (int i = 0; i < 4; ++i)
        painter.Round({16.0 + 9.0 * (i % 2), 11.5 + (i < 2 ? 0.0 : 9.0), 7.5, 7.5}, 1.5,
                      Theme::Pitch(-18.0 + 12.0 * i));
    painter.Text({42.0, 0.0, 100.0, 40.0}, "Tesserae", {Theme::kTitle, Theme::kText, true});
}

void HeaderPanel::AddPreset(const std::function<void()>& openBrowser) {
    AddView<ActionButton>(
        "Previous preset", At(144.0, kTop, 24.0, kHeight), [] { return Plain("\u2039"); },
        [this](const Rect&) { model.StepPreset(-1); });
    AddView<ActionButton>(
        "Presets", At(176.0, kTop, 232.0, kHeight),
        [this] {
            std::string name = model.TheInstrument().PresetName();
            if (name.empty())
                name = "No preset";
            return ActionButton::Look{name + (model.IsModified() ? "  \u2022" : ""), true, false};
        },
        [openBrowser](const Rect&) { openBrowser(); });
    AddView<ActionButton>(
        "Next preset", At(416.0, kTop, 24.0, kHeight), [] { return Plain("\u203a"); },
        [this](const Rect&) { model.StepPreset(1); });
}

void HeaderPanel::AddHistory() {
    AddView<ActionButton>(
        "Undo (Ctrl-Z)", At(456.0, kTop, 56.0, kHeight),
        [this] { return Plain("Undo", model.TheInstrument().CanUndo()); },
        [this](const Rect&) { model.TheInstrument().Undo(); });
    AddView<ActionButton>(
        "Redo (Ctrl-Shift-Z)", At(520.0, kTop, 56.0, kHeight),
        [this] { return Plain("Redo", model.TheInstrument().CanRedo()); },
        [this](const Rect&) { model.TheInstrument().Redo(); });
}

void HeaderPanel::AddSounds() {
    for (const uint32_t which : {0u, 1u})
        AddView<ActionButton>(
            which == 0 ? "Sound A" : "Sound B", At(592.0 + 32.0 * which, kTop, 24.0, kHeight),
            [this, which] {
                return Plain(which == 0 ? "A" : "B", true,
                             model.TheInstrument().PlayedSound() == which);
            },
            [this, which](const Rect&) { model.TheInstrument().PlaySound(which); });
    AddView<ActionButton>(
        "Copy sound", At(656.0, kTop, 56.0, kHeight),
        [this] {
            return Plain(model.TheInstrument().PlayedSound() == 0 ? "A \u2192 B" : "B \u2192 A");
        },
        [this](const Rect&) { model.TheInstrument().CopySound(); });
    Add<Slider>(At(720.0, kTop, 128.0, kHeight), stage, std::make_unique<MorphControl>(model),
                "Morph");
}

void HeaderPanel::AddChance() {
    AddView<ActionButton>(
        "Randomise", At(864.0, kTop, 80.0, kHeight), [] { return Plain("Randomise"); },
        [this](const Rect& anchor) { OfferRandomise(anchor); });
    AddView<ActionButton>(
        "Seed", At(952.0, kTop, 88.0, kHeight),
        [this] {
            const auto seed = model.TheInstrument().Seed();
            return ActionButton::Look{seed ? "Seed " + std::to_string(*seed) : "Seed: none", true,
                                      false};
        },
        [this](const Rect& anchor) { AskSeed(anchor); });
}

void HeaderPanel::OfferRandomise(const Rect& anchor) {
    std::vector<MenuItem> items;
    std::vector<std::string> groups{"Granular"};
    for (const std::string slot : {"FX1", "FX2"})
        if (model.ChoiceOf(slot + " Effect") != 0)
            groups.push_back(slot + " " + model.EffectIn(slot));
    groups.emplace_back("Spatializer");
    for (const std::string& group : groups)
        for (const float amount : {0.1f, 0.5f}) {
            MenuItem item;
            item.text = group + (amount < 0.3f ? ", a little" : ", a lot");
            item.startsGroup = amount < 0.3f;
            item.action = [this, group, amount] {
                model.TheInstrument().Randomise(
                    group, amount, ++rolls + static_cast<uint64_t>(std::floor(model.Now() * 1e3)));
            };
            items.push_back(std::move(item));
        }
    stage.OpenMenu(anchor, std::move(items));
}

void HeaderPanel::AskSeed(const Rect& anchor) {
    // Below the button: a field is wider, and would hide half a neighbour.
    const Rect below{anchor.x, anchor.Bottom() + 8.0, anchor.width, anchor.height};
    const auto seed = model.TheInstrument().Seed();
    stage.OpenEntry(below, seed ? std::to_string(*seed) : std::string(),
                    [this](const std::string& text) -> std::string {
                        uint64_t number = 0;
                        const char* const end = text.data() + text.size();
                        const auto read = std::from_chars(text.data(), end, number);
                        if (!text.empty() && (read.ec != std::errc() || read.ptr != end))
                            return "A seed is a whole number. Leave it empty for none.";
                        model.TheInstrument().SetSeed(
                            text.empty() ? std::nullopt : std::optional<uint64_t>(number));
                        return {};
                    });
}

void HeaderPanel::OfferSong(const Rect& anchor) {
    std::vector<MenuItem> items;
    AddOwnSong(anchor, items);
    AddMidi(items);
    AddAssignments(anchor, items);
    stage.OpenMenu(anchor, std::move(items));
}

/// The song of hosts that have none; others lead it.
void HeaderPanel::AddOwnSong(const Rect& anchor, std::vector<MenuItem>& items) {
    Host::OwnTransport& song = model.TheInstrument().Song();
    MenuItem heading, run, tap, tempo;
    heading.text = "Song where the host has none";
    run.text = "Run";
    run.ticked = song.Runs();
    run.action = [&song] { song.Run(!song.Runs()); };
    tap.text = "Tap tempo";
    tap.action = [this, &song, anchor] {
        if (const auto found = taps.Tap(model.Now()))
            song.SetTempo(*found);
        OfferSong(anchor);  // for the next tap
    };
    tempo.text = "Tempo: " + TempoText(song.Tempo()) + "\u2026";
    tempo.action = [this, &song, anchor] {
        stage.OpenEntry(anchor, TempoText(song.Tempo()),
                        [&song](const std::string& text) -> std::string {
                            const auto wanted = Host::ReadNumber(text);
                            if (!wanted || !(*wanted >= kSlowest && *wanted <= kFastest))
                                return "Tempos are from 1 to 999 BPM.";
                            song.SetTempo(*wanted);
                            return "";
                        });
    };
    for (MenuItem* item : {&heading, &run, &tap, &tempo})
        items.push_back(std::move(*item));
}

void HeaderPanel::AddMidi(std::vector<MenuItem>& items) {
    MenuItem keep;
    keep.text = "Keep MIDI map for new instances";
    keep.startsGroup = true;
    keep.action = [this] {
        const std::string problem = Host::SaveDefaultMidiMap(model.TheInstrument());
        stage.Say(problem.empty() ? "New instances begin with this MIDI map." : problem);
    };
    items.push_back(std::move(keep));
}

void HeaderPanel::AddAssignments(const Rect& anchor, std::vector<MenuItem>& items) {
    MenuItem heading;
    heading.text = "Free controls for hosts";
    heading.startsGroup = true;
    items.push_back(std::move(heading));
    for (uint32_t number = 0; number < Host::kAssignments; ++number) {
        const uint32_t present = model.TheInstrument().Assignment(number);
        MenuItem item;
        item.text = std::string("Assign ") + std::to_string(number + 1) + ": " +
                    (present == Host::kUnassigned ? "free" : model.Catalog()[present].title);
        item.ticked = present != Host::kUnassigned;
        item.action = [this, anchor, number] { OfferAssignment(anchor, number); };
        items.push_back(std::move(item));
    }
}

void HeaderPanel::OfferAssignment(const Rect& anchor, uint32_t number) {
    MenuItem heading, clear, point;
    heading.text = "Assign " + std::to_string(number + 1);
    clear.text = "Clear";
    clear.action = [this, number] {
        model.TheInstrument().EditAssignment(number, Host::kUnassigned);
    };
    point.text = "Point at\u2026";
    point.action = [this, anchor, number] {
        stage.OpenEntry({anchor.x - 100.0, anchor.y, 240.0, anchor.height}, "",
                        [this, number](const std::string& name) -> std::string {
                            const auto index = model.Find(name);
                            if (!index)
                                return model.Catalog().UnknownName(name);
                            model.TheInstrument().EditAssignment(number, *index);
                            return model.TheInstrument().Assignment(number) == *index
                                       ? ""
                                       : "That can't be moved by a control.";
                        });
    };
    stage.OpenMenu(anchor, {heading, point, clear});
}

void HeaderPanel::AddMachine() {
    Add<Toggle>(At(1056.0, kTop, 56.0, kHeight), stage,
                std::make_unique<ParameterControl>(model, "Bypass"), "Bypass", Theme::kAlarm);
    AddView<ActionButton>(
        "Song", At(1120.0, kTop, 144.0, kHeight),
        [this] {
            if (!model.IsAlive())
                return ActionButton::Look{"No sound", true, false};
            const Host::DisplayFrame& frame = model.Frame();
            // Rounded to what the eye can follow.
            const int load = static_cast<int>(std::lround(100.0f * frame.load));
            const int tempo = static_cast<int>(std::lround(frame.transport.tempo));
            return ActionButton::Look{std::to_string(tempo) + " bpm   " +
                                          (frame.transport.playing ? "\u25b6" : "\u25a0") +
                                          "   CPU " + std::to_string(load) + " %",
                                      true, false};
        },
        [this](const Rect& anchor) { OfferSong(anchor); });
}

}  // namespace Quorvan::Ui
