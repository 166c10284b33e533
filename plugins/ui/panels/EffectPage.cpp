#include "plugins/ui/model/ParameterControl.h"
#include "plugins/ui/panels/EffectViews.h"
#include "plugins/ui/panels/GrainViews.h"
#include "plugins/ui/panels/Layout.h"
#include "plugins/ui/panels/Pages.h"
#include "plugins/ui/widgets/RoadView.h"
#include "plugins/ui/widgets/Toggle.h"

namespace Quorvan::Ui {

namespace {

using Kind = PlacedControl::Kind;

// Knobs in columns of 80 and two rows, fields below them; what is free belongs to the picture.
constexpr double kX0 = 0.0, kX1 = 80.0, kX2 = 160.0, kX3 = 240.0, kX4 = 320.0;
constexpr double kRow1 = 32.0, kRow2 = 112.0, kFoot = 216.0, kFields = 200.0;
constexpr double kWide = 80.0;

constexpr PlacedControl kHead[]{
    {Kind::Field, "Effect", "Effect", 48.0, 8.0, 120.0, 24.0},
};
constexpr PlacedControl kMix{Kind::Slider, "Dry / Wet", "Mix", 264.0, 8.0, 120.0, 24.0};
constexpr PlacedControl kFilter[]{
    {Kind::Knob, "Filter Freq", "Cutoff", kX0, kRow1},
    {Kind::Knob, "Filter Resonance", "Resonance", kX1, kRow1},
    {Kind::Choice, "Filter Mode", "Mode", 16.0, kFields, 128.0, 40.0},
    {Kind::Choice, "Filter Slope", "Slope", 152.0, kFields, 104.0, 40.0},
};
constexpr PlacedControl kDistortion[]{
    {Kind::Knob, "Distortion Drive", "Drive", kX0, kRow1},
    {Kind::Knob, "Distortion Output Gain", "Output", kX1, kRow1},
    {Kind::Choice, "Distortion Curve", "Curve", 16.0, kFields, 112.0, 40.0},
    {Kind::Toggle, "Distortion Level Compensation", "Even level", 136.0, kFoot, 96.0, 24.0},
};
constexpr PlacedControl kCompressor[]{
    {Kind::Knob, "Compressor Threshold", "Threshold", kX0, kRow1},
    {Kind::Knob, "Compressor Ratio", "Ratio", kX1, kRow1},
    {Kind::Knob, "Compressor Knee", "Knee", kX2, kRow1},
    {Kind::Bipolar, "Compressor Input Gain", "Input", kX3, kRow1},
    {Kind::Bipolar, "Compressor Output Gain", "Output", kX4, kRow1},
    {Kind::Knob, "Compressor Attack", "Attack", kX0, kRow2},
    {Kind::Knob, "Compressor Release", "Release", kX1, kRow2},
    {Kind::Toggle, "Compressor Makeup Gain", "Makeup", 16.0, kFoot, kWide, 24.0},
    {Kind::Toggle, "Compressor Linked Channels", "Linked", 104.0, kFoot, kWide, 24.0},
};
constexpr PlacedControl kDelay[]{
    {Kind::Knob, "Delay Time", "Time", kX0, kRow1},
    {Kind::Knob, "Delay Feedback", "Feedback", kX1, kRow1},
    {Kind::Bipolar, "Delay Fine Time", "Fine Time", kX2, kRow1},
    {Kind::Knob, "Delay Stereo Offset", "Offset", kX3, kRow1},
    {Kind::Knob, "Delay Ping-Pong Width", "Ping-Pong", kX4, kRow1},
    {Kind::Knob, "Delay Low Cut", "Low Cut", kX0, kRow2},
    {Kind::Knob, "Delay High Cut", "High Cut", kX1, kRow2},
    {Kind::Choice, "Delay Time Sync", "Time in", 16.0, kFields, kWide, 40.0},
    {Kind::Choice, "Delay Stereo Mode", "Stereo", 104.0, kFields, 88.0, 40.0},
};
constexpr PlacedControl kOctaver[]{
    {Kind::Knob, "Octaver Time", "Time", kX0, kRow1},
    {Kind::Knob, "Octaver Feedback", "Feedback", kX1, kRow1},
    {Kind::Bipolar, "Octaver Pitch", "Pitch", kX2, kRow1},
    {Kind::Bipolar, "Octaver Detune", "Detune", kX3, kRow1},
    {Kind::Knob, "Octaver Spray", "Spray", kX4, kRow1},
    {Kind::Knob, "Octaver Low Cut", "Low Cut", kX0, kRow2},
    {Kind::Knob, "Octaver High Cut", "High Cut", kX1, kRow2},
    {Kind::Bipolar, "Octaver Stereo Offset", "Offset", kX2, kRow2},
    {Kind::Choice, "Octaver Time Sync", "Time in", 16.0, kFields, kWide, 40.0},
    {Kind::Choice, "Octaver Mode", "Mode", 104.0, kFields, 104.0, 40.0},
    {Kind::Choice, "Octaver Window", "Window", 216.0, kFields, 112.0, 40.0},
};
constexpr PlacedControl kTapeEcho[]{
    {Kind::Knob, "Tape Echo Time", "Time", kX0, kRow1},
    {Kind::Knob, "Tape Echo Intensity", "Intensity", kX1, kRow1},
    {Kind::Bipolar, "Tape Echo Fine Time", "Fine Time", kX2, kRow1},
    {Kind::Bipolar, "Tape Echo Input Volume", "Input", kX3, kRow1},
    {Kind::Knob, "Tape Echo Stereo Offset", "Offset", kX4, kRow1},
    {Kind::Knob, "Tape Echo Low Cut", "Low Cut", kX0, kRow2},
    {Kind::Knob, "Tape Echo High Cut", "High Cut", kX1, kRow2},
    {Kind::Knob, "Tape Echo Ping-Pong Width", "Ping-Pong", kX2, kRow2},
    {Kind::Choice, "Tape Echo Time Sync", "Time in", 16.0, kFields, kWide, 40.0},
    {Kind::Choice, "Tape Echo Stereo Mode", "Stereo", 104.0, kFields, 88.0, 40.0},
};
constexpr PlacedControl kChorus[]{
    {Kind::Knob, "Chorus Rate", "Rate", kX0, kRow1},
    {Kind::Knob, "Chorus Depth", "Depth", kX1, kRow1},
    {Kind::Knob, "Chorus Delay", "Delay", kX2, kRow1},
    {Kind::Knob, "Chorus Feedback", "Feedback", kX3, kRow1},
    {Kind::Knob, "Chorus Low Cut", "Low Cut", kX0, kRow2},
    {Kind::Knob, "Chorus High Cut", "High Cut", kX1, kRow2},
    {Kind::Toggle, "Chorus Low Cut On", "Cut lows", 320.0, 48.0, 64.0, 24.0},
    {Kind::Toggle, "Chorus High Cut On", "Cut highs", 320.0, 80.0, 64.0, 24.0},
    {Kind::Choice, "Chorus Voices", "Voices", 16.0, kFields, 56.0, 40.0},
    {Kind::Choice, "Chorus Waveform", "Wave", 80.0, kFields, kWide, 40.0},
    {Kind::Choice, "Chorus Channels", "Channels", 168.0, kFields, kWide, 40.0},
    {Kind::Choice, "Chorus Feedback Polarity", "Polarity", 256.0, kFields, 88.0, 40.0},
};
constexpr PlacedControl kFlanger[]{
    {Kind::Knob, "Flanger Rate", "Rate", kX0, kRow1},
    {Kind::Knob, "Flanger Depth", "Depth", kX1, kRow1},
    {Kind::Knob, "Flanger Delay", "Delay", kX2, kRow1},
    {Kind::Knob, "Flanger Feedback", "Feedback", kX3, kRow1},
    {Kind::Knob, "Flanger Low Cut", "Low Cut", kX0, kRow2},
    {Kind::Knob, "Flanger High Cut", "High Cut", kX1, kRow2},
    {Kind::Toggle, "Flanger Low Cut On", "Cut lows", 320.0, 48.0, 64.0, 24.0},
    {Kind::Toggle, "Flanger High Cut On", "Cut highs", 320.0, 80.0, 64.0, 24.0},
    {Kind::Choice, "Flanger Voices", "Voices", 16.0, kFields, 56.0, 40.0},
    {Kind::Choice, "Flanger Rate Sync", "Rate in", 80.0, kFields, kWide, 40.0},
    {Kind::Choice, "Flanger Channels", "Channels", 168.0, kFields, kWide, 40.0},
    {Kind::Choice, "Flanger Feedback Polarity", "Polarity", 256.0, kFields, 88.0, 40.0},
};
constexpr PlacedControl kReverb[]{
    {Kind::Knob, "Reverb Decay", "Decay", kX0, kRow1},
    {Kind::Knob, "Reverb Size", "Size", kX1, kRow1},
    {Kind::Knob, "Reverb Predelay", "Predelay", kX2, kRow1},
    {Kind::Knob, "Reverb Damping", "Damping", kX3, kRow1},
    {Kind::Bipolar, "Reverb Output Gain", "Output", kX4, kRow1},
    {Kind::Knob, "Reverb Low Cut", "Low Cut", kX0, kRow2},
    {Kind::Knob, "Reverb High Cut", "High Cut", kX1, kRow2},
    {Kind::Knob, "Reverb Side Level", "Sides", kX2, kRow2},
    {Kind::Knob, "Reverb Early Size", "Early Size", kX3, kRow2},
    {Kind::Knob, "Reverb Early Mix", "Early Mix", kX4, kRow2},
    {Kind::Toggle, "Reverb Early Reflections", "Early", 16.0, kFoot, kWide, 24.0},
    {Kind::Toggle, "Reverb Freeze", "Freeze", 104.0, kFoot, kWide, 24.0},
};
/// By the choice of "Effect"; the first is none.
constexpr std::span<const PlacedControl> kEffects[]{
    {}, kFilter, kDistortion, kCompressor, kDelay, kOctaver, kTapeEcho, kChorus, kFlanger, kReverb};

class SlotPanel final : public TablePanel {
public:
    SlotPanel(const Rect& place, const std::string& slot, FaceModel& faceModel, Stage& face)
        : TablePanel(place, slot, faceModel, face, kHead, {}, slot + " "),
          selector(slot + " Effect") {
        bypass = &Add<Toggle>(At(176.0, 8.0, 80.0, 24.0), face,
                              std::make_unique<ParameterControl>(faceModel, slot + " Bypass"),
                              "Bypass", Theme::kAlarm);
        mix = &Place(kMix);
        DrawnView::Actions hint;
        hint.tick = [](double) { return false; };
        hint.draw = [](Painter& painter, const Rect& all) {
            painter.Text(all, "An empty slot lets everything pass. Choose an effect above.",
                         {Theme::kBody, Theme::kDim}, Align::Centre);
        };
        empty = &Add<DrawnView>(At(16.0, 112.0, place.width - 32.0, 24.0), std::move(hint));
    }
    /// The title stands in a line with the controls beside it.
    void DrawGround(Painter& painter) const override {
        painter.Round(box, 8.0, Theme::kPanel);
        painter.Text(At(16.0, 8.0, 32.0, 24.0), title, {Theme::kBody, Theme::kText, true});
    }
    void Update() override {
        const bool isEmpty = model.ChoiceOf(selector) == 0;
        empty->Show(isEmpty);
        bypass->Show(!isEmpty);
        mix->Show(!isEmpty);
    }

private:
    std::string selector;
    Widget* empty = nullptr;
    Widget* bypass = nullptr;
    Widget* mix = nullptr;
};

/// The controls of one effect in one slot and its picture, shown while the slot holds it.
class EffectPanel final : public TablePanel {
public:
    EffectPanel(const Rect& place, const std::string& slot, uint32_t itsChoice,
                FaceModel& faceModel, Stage& face)
        : TablePanel(place, "", faceModel, face, kEffects[itsChoice], {}, slot + " "),
          selector(slot + " Effect"),
          choice(itsChoice) {
        if (const EffectView* const view = ViewOfEffect(choice))
            AddView<DrawnView>(
                view->help, At(view->place.x, view->place.y, view->place.width, view->place.height),
                EffectPicture(faceModel, slot, *view));
    }
    bool IsShown() const override { return model.ChoiceOf(selector) == choice; }

private:
    std::string selector;
    uint32_t choice;
};

/// Where the slots stand on the road of the sound.
class RoadPanel final : public Panel {
public:
    RoadPanel(const Rect& place, FaceModel& faceModel, Stage& face)
        : Panel(place), model(faceModel), stage(face) {
        for (uint32_t slot = 0; slot < RoadView::kSlots; ++slot)
            controls[slot] = std::make_unique<ParameterControl>(model, Name(slot) + "Position");
        RoadView::Actions actions;
        actions.place = [this](uint32_t slot) { return PlaceOf(slot); };
        actions.name = [this](uint32_t slot) { return model.EffectIn(slot == 0 ? "FX1" : "FX2"); };
        actions.works = [this](uint32_t slot) {
            return model.ChoiceOf(Name(slot) + "Effect") != 0 &&
                   model.PositionOf(Name(slot) + "Bypass") < 0.5f;
        };
        actions.move = [this](uint32_t slot, uint32_t to) { Move(slot, to); };
        actions.control = [this](uint32_t slot) { return controls[slot].get(); };
        AddView<RoadView>("Road", At(0.0, 0.0, place.width, place.height), std::move(actions));
    }

private:
    static std::string Name(uint32_t slot) { return slot == 0 ? "FX1 " : "FX2 "; }
    /// The choices run against the road. FX2 is never ahead of FX1.
    uint32_t PlaceOf(uint32_t slot) const {
        const uint32_t own = 2 - std::min(2u, controls[slot]->Choice());
        return slot == 0 ? own : std::max(own, PlaceOf(0));
    }
    void Move(uint32_t slot, uint32_t to) {
        if (slot == 1 && to < PlaceOf(0))
            return stage.Say("FX2 is never ahead of FX1: move FX1 there first.");
        controls[slot]->MoveOnce(controls[slot]->PositionOfChoice(2 - to));
    }

    FaceModel& model;
    Stage& stage;
    std::array<std::unique_ptr<ParameterControl>, RoadView::kSlots> controls;
};

constexpr PlacedControl kSpace[]{
    {Kind::Toggle, "Spatializer On", "On", 16.0, 32.0, 40.0, 24.0},
    {Kind::Field, "Spatializer Trajectory", "Trajectory", 64.0, 32.0, 104.0, 24.0},
    {Kind::Field, "Spatializer Rate Sync", "Rate in", 176.0, 32.0, 72.0, 24.0},
    {Kind::Toggle, "Spatializer Invert", "Invert", 192.0, 64.0, 56.0, 24.0},
    {Kind::Knob, "Spatializer Rate", "Rate", 8.0, 192.0},
    {Kind::Knob, "Spatializer Amount", "Sides", 88.0, 192.0},
    {Kind::Knob, "Spatializer Distance", "Depth", 168.0, 192.0},
};

class SpacePanel final : public TablePanel {
public:
    SpacePanel(const Rect& place, FaceModel& faceModel, Stage& face)
        : TablePanel(place, "Space", faceModel, face, kSpace) {
        AddView<DrawnView>("Space", At(16.0, 64.0, 168.0, 120.0), SpacePad(faceModel));
    }
};

}  // namespace

Panels MakeEffectPage(FaceModel& model, Stage& stage) {
    Panels panels;
    const Rect& page = Layout::kPage;
    constexpr double kRoad = 40.0;
    panels.push_back(std::make_unique<RoadPanel>(Rect{page.x, page.y, 808.0, kRoad}, model, stage));
    for (const uint32_t slot : {0u, 1u}) {
        const std::string name = slot == 0 ? "FX1" : "FX2";
        const Rect place{page.x + 408.0 * slot, page.y + kRoad, 400.0, page.height - kRoad};
        panels.push_back(std::make_unique<SlotPanel>(place, name, model, stage));
        for (uint32_t choice = 1; choice < std::size(kEffects); ++choice)
            panels.push_back(std::make_unique<EffectPanel>(place, name, choice, model, stage));
    }
    panels.push_back(std::make_unique<SpacePanel>(Rect{page.x + 816.0, page.y, 264.0, page.height},
                                                  model, stage));
    return panels;
}

}  // namespace Quorvan::Ui
