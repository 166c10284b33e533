#include "plugins/ui/panels/GrainViews.h"

#include <cmath>
#include <deque>

#include "granular/GrainKernels.h"
#include "granular/GrainShape.h"
#include "granular/GranularTables.h"
#include "plugins/ui/help/HelpTable.h"
#include "plugins/ui/model/ParameterControl.h"

namespace Quorvan::Ui {

namespace {

constexpr int kReach = 36;  ///< semitones either way

bool IsBlackKey(int semitone) {
    const int key = ((semitone % 12) + 12) % 12;
    return key == 1 || key == 3 || key == 6 || key == 8 || key == 10;
}

double KeyX(const Rect& box, double semitones) {
    return box.x + box.width * (semitones + kReach + 0.5) / (2.0 * kReach + 1.0);
}

bool IsAllowed(uint32_t scale, int semitone) {
    if (scale == 0)
        return true;
    for (const float allowed : dsp::ScaleSemitones(scale))
        if (std::lround(allowed) == semitone)
            return true;
    return false;
}

void DrawKeys(Painter& painter, const Rect& box, uint32_t scale, double pitch) {
    const double width = box.width / (2.0 * kReach + 1.0);
    for (int semitone = -kReach; semitone <= kReach; ++semitone) {
        const bool black = IsBlackKey(semitone), allowed = IsAllowed(scale, semitone);
        const Rect key{KeyX(box, semitone) - 0.5 * width + 0.4, box.y, width - 0.8,
                       box.height * (black ? 0.62 : 1.0)};
        const Colour lit = Theme::Pitch(semitone);
        painter.Fill(key, !allowed     ? Theme::kRaised.Faded(0.55)
                          : scale == 0 ? (black ? Theme::kTrack : Theme::kDim.Faded(0.75))
                                       : lit.Faded(black ? 0.65 : 0.85));
    }
    const double x = KeyX(box, pitch);
    painter.Arrow({x, box.y - 6.0}, 5.0, 0.5, Theme::kText);
    painter.Fill({x - 1.0, box.y - 6.0, 2.0, box.height + 6.0}, Theme::kText);
    for (const int octave : {-36, -24, -12, 0, 12, 24, 36}) {
        const std::string name = std::to_string(octave);
        painter.Text({KeyX(box, octave) - 16.0, box.Bottom() + 2.0, 32.0, 14.0}, name,
                     {Theme::kSmall, Theme::kDim}, Align::Centre);
    }
}

constexpr double kNudge = 0.02;  ///< of the travel, for a notch of the wheel or an arrow

/// A step of the beat pattern: off, or as many times the clock.
class BeatStep final : public Control {
public:
    BeatStep(FaceModel& faceModel, uint32_t step)
        : model(faceModel),
          times(*model.Catalog().Find("MoteWeaver_StepSequencerGranular_StepVal1") + step),
          on(*model.Catalog().Find("MoteWeaver_StepSequencerGranular_StepOnOff1") + step),
          number(step + 1) {}

    float Position() const override { return At(model.Position(on), model.Position(times)); }
    float Default() const override { return At(model.Default(on), model.Default(times)); }
    uint32_t Steps() const override { return static_cast<uint32_t>(kChoices.size()); }
    std::span<const std::string> Choices() const override { return kChoices; }
    std::string Name() const override { return "Beat Sequencer Step " + std::to_string(number); }
    std::string Text() const override { return kChoices[Choice()]; }
    std::string Help() const override { return std::string(HelpOn("Beat Sequencer Step")); }
    void Begin() override { model.Begin(times); }
    void End() override { model.End(times); }
    void Move(float position) override {
        const double wanted = std::round(3.0 * static_cast<double>(position));
        model.Edit(on, wanted > 0.0 ? 1.0f : 0.0f);
        if (wanted > 0.0)
            model.Edit(times, model.Catalog().PositionOfValue(times, wanted - 1.0));
    }
    std::string Type(std::string_view text) override {
        for (uint32_t i = 0; i < Steps(); ++i)
            if (text == kChoices[i] || text == std::to_string(i)) {
                MoveOnce(PositionOfChoice(i));
                return {};
            }
        return "A step is Off, 1x, 2x or 3x.";
    }
    std::optional<uint32_t> Index() const override { return times; }

private:
    float At(float switched, float multiplier) const {
        return switched < 0.5f
                   ? 0.0f
                   : static_cast<float>((1.0 + model.Catalog().Value(times, multiplier)) / 3.0);
    }

    static inline const std::array<std::string, 4> kChoices{"Off", "1x", "2x", "3x"};
    FaceModel& model;
    uint32_t times, on, number;
};

/// Has a view move one control: across by a drag, by wheel, arrows and a double click. travel:
/// pixels of a drag for all of it.
void MoveAcross(DrawnView::Actions& actions, const std::shared_ptr<ParameterControl>& control,
                double travel) {
    actions.begin = [control] { control->Begin(); };
    actions.end = [control] { control->End(); };
    actions.drag = [control, travel](const PointerEvent& event, Point way, const Rect&) {
        const double step = way.x / travel * (event.modifiers.shift ? 0.1 : 1.0);
        if (step != 0.0)
            control->Move(control->Held(static_cast<double>(control->Position()) + step));
    };
    actions.doubleClick = [control] { control->MoveOnce(control->Default()); };
    actions.nudge = [control](Point way, bool fine) {
        control->MoveOnce(control->Nudged(kNudge * (way.x + way.y), fine));
    };
    actions.control = [control](Point, const Rect&) { return control.get(); };
}

}  // namespace

DrawnView::Actions ScaleKeyboard(FaceModel& model) {
    DrawnView::Actions actions;
    const auto pitch = std::make_shared<ParameterControl>(model, "Pitch");
    const auto seen = std::make_shared<std::pair<float, uint32_t>>(-1.0f, ~0u);
    actions.tick = [&model, pitch, seen](double) {
        const std::pair now{pitch->Position(), model.ChoiceOf("Scale")};
        return std::exchange(*seen, now) != now || model.IsFrameNew();
    };
    actions.draw = [&model, pitch](Painter& painter, const Rect& box) {
        painter.Round(box, 4.0, Theme::kWell);
        const Rect inner = box.Inset(12.0, 0.0);
        const Rect keys{inner.x, box.Bottom() - 62.0, inner.width, 44.0};
        // Every grain that sounds rises from its key, by its level.
        const Host::DisplayFrame& frame = model.Frame();
        for (uint32_t i = 0; i < (model.IsAlive() ? frame.grainCount : 0); ++i) {
            const Host::ShownGrain& grain = frame.grains[i];
            const double light = static_cast<double>(grain.envelope * grain.gain);
            const double semitones = static_cast<double>(grain.semitones);
            const double height = (keys.y - box.y - 18.0) * std::clamp(light, 0.0, 1.0);
            painter.Fill({KeyX(keys, semitones) - 1.0, keys.y - 8.0 - height, 2.0, height},
                         Theme::Pitch(semitones).Faded(0.65));
        }
        DrawKeys(painter, keys, model.ChoiceOf("Scale"),
                 model.Catalog().Value(*pitch->Index(), pitch->Position(), model.Texts()));
    };
    actions.begin = [pitch] { pitch->Begin(); };
    actions.end = [pitch] { pitch->End(); };
    actions.drag = [&model, pitch](const PointerEvent& event, Point, const Rect& box) {
        const double share = (event.at.x - box.x - 12.0) / (box.width - 24.0);
        const double semitones = share * (2.0 * kReach + 1.0) - kReach - 0.5;
        pitch->Move(
            model.Catalog().PositionOfValue(*pitch->Index(), std::round(semitones), model.Texts()));
    };
    actions.doubleClick = [pitch] { pitch->MoveOnce(pitch->Default()); };
    actions.nudge = [&model, pitch](Point way, bool) {
        const double now = model.Catalog().Value(*pitch->Index(), pitch->Position(), model.Texts());
        pitch->MoveOnce(model.Catalog().PositionOfValue(
            *pitch->Index(), std::round(now) + std::copysign(1.0, way.x + way.y), model.Texts()));
    };
    actions.control = [pitch](Point, const Rect&) { return pitch.get(); };
    return actions;
}

DrawnView::Actions ShapeCurve(FaceModel& model) {
    DrawnView::Actions actions;
    const auto amount = std::make_shared<ParameterControl>(model, "Grain Shape Amount");
    const auto seen = std::make_shared<std::pair<float, uint32_t>>(-1.0f, ~0u);
    actions.tick = [&model, amount, seen](double) {
        const std::pair now{amount->Influences().present, model.ChoiceOf("Grain Shape")};
        return std::exchange(*seen, now) != now;
    };
    actions.draw = [&model, amount](Painter& painter, const Rect& box) {
        constexpr uint32_t kSteps = 160;
        // A grain of 100 ms, whose fixed attack of half a millisecond is a 200th of it.
        constexpr float kLength = static_cast<float>(kSteps);
        std::array<float, kSteps + 2 * dsp::GrainKernels::kMaxLanes> curve{};
        const auto shape = static_cast<int32_t>(model.ChoiceOf("Grain Shape"));
        const dsp::GrainShape bent = dsp::GrainShape::Of(shape, amount->Influences().present);
        const dsp::GrainKernels::Envelope envelope{shape, bent.a, bent.b, kLength,
                                                   kLength / 200.0f};
        dsp::GrainKernels::Baseline().envelope(envelope, 0.0, 1.0, kSteps, curve.data());
        painter.Round(box, 4.0, Theme::kWell);
        const Rect inner = box.Inset(8.0, 10.0);
        double lowest = 0.0;
        for (uint32_t i = 0; i < kSteps; ++i)
            lowest = std::min(lowest, static_cast<double>(curve[i]));
        std::vector<Point> line;
        const double base = inner.Bottom() + lowest * inner.height / (1.0 - lowest);
        for (uint32_t i = 0; i < kSteps; ++i)
            line.push_back({inner.x + inner.width * i / (kSteps - 1.0),
                            base - static_cast<double>(curve[i]) * (base - inner.y)});
        painter.Area(line, base, Theme::kOn.Faded(0.15));
        painter.Path(line, Theme::kOn, 2.0);
        painter.Fill({inner.x, painter.Snap(base), inner.width, 1.0}, Theme::kLine);
    };
    constexpr double kTravel = 144.0;
    MoveAcross(actions, amount, kTravel);
    return actions;
}

DrawnView::Actions StereoField(FaceModel& model) {
    DrawnView::Actions actions;
    const auto position = std::make_shared<ParameterControl>(model, "Stereo Position");
    actions.tick = [&model, seen = std::make_shared<uint32_t>(0)](double) {
        // Nothing that stood still stands still.
        const uint32_t now = model.IsAlive() ? model.Frame().grainCount : 0;
        return std::exchange(*seen, now) != now || (now > 0 && model.IsFrameNew());
    };
    actions.draw = [&model](Painter& painter, const Rect& box) {
        painter.Round(box, 4.0, Theme::kWell);
        const Rect inner = box.Inset(12.0, 8.0);
        painter.Fill({painter.Snap(inner.Centre().x), inner.y, 1.0, inner.height}, Theme::kLine);
        painter.Fill({inner.x, painter.Snap(inner.Bottom()), inner.width, 1.0}, Theme::kLine);
        const Host::DisplayFrame& frame = model.Frame();
        for (uint32_t i = 0; i < (model.IsAlive() ? frame.grainCount : 0); ++i) {
            const Host::ShownGrain& grain = frame.grains[i];
            const double light =
                std::clamp(static_cast<double>(grain.envelope * grain.gain), 0.0, 1.0);
            // Whole pixels are drawn several times as fast as discs.
            const double x = inner.x + inner.width * static_cast<double>(grain.pan);
            const double y = inner.Bottom() - (inner.height - 4.0) * light;
            painter.Fill({painter.Snap(x - 2.0), painter.Snap(y - 4.0), 4.0, 4.0},
                         Theme::Pitch(static_cast<double>(grain.semitones)).Faded(0.75));
        }
        painter.Text({inner.x - 4.0, inner.y - 4.0, 16.0, 14.0}, "L", {Theme::kSmall, Theme::kDim});
        painter.Text({inner.Right() - 12.0, inner.y - 4.0, 16.0, 14.0}, "R",
                     {Theme::kSmall, Theme::kDim}, Align::Right);
    };
    constexpr double kTravel = 152.0;
    MoveAcross(actions, position, kTravel);
    return actions;
}

BarEditor::Actions BeatSteps(FaceModel& model) {
    const auto steps = std::make_shared<std::deque<BeatStep>>();
    for (uint32_t i = 0; i < 16; ++i)
        steps->emplace_back(model, i);
    BarEditor::Actions actions;
    actions.count = [&model] { return model.ChoiceOf("Beat Sequencer Steps") + 1; };
    actions.value = [steps](uint32_t i) { return static_cast<double>((*steps)[i].Position()); };
    actions.text = [steps](uint32_t i) {
        const uint32_t times = (*steps)[i].Choice();
        return times == 0 ? std::string() : std::to_string(times);
    };
    actions.played = [&model] {
        return model.IsAlive() ? static_cast<int>(model.Frame().beatStep) : -1;
    };
    actions.begin = [steps](uint32_t i) { (*steps)[i].Begin(); };
    // A quarter of the height each: off is one too.
    actions.set = [steps](uint32_t i, double height) {
        (*steps)[i].Move(static_cast<float>((std::ceil(height * 4.0) - 1.0) / 3.0));
    };
    actions.end = [steps](uint32_t i) { (*steps)[i].End(); };
    actions.nudge = [steps](uint32_t i, double by, bool fine) {
        (*steps)[i].Move((*steps)[i].Nudged(by, fine));
    };
    actions.control = [steps](uint32_t i) { return &(*steps)[i]; };
    return actions;
}

}  // namespace Quorvan::Ui
