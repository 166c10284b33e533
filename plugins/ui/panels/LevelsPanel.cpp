#include <cmath>

#include "plugins/ui/panels/Layout.h"
#include "plugins/ui/panels/Pages.h"
#include "plugins/ui/widgets/LevelMeter.h"

namespace Quorvan::Ui {

namespace {

using Kind = PlacedControl::Kind;

constexpr PlacedControl kControls[]{
    {Kind::Knob, "Feedback", "Feedback", 4.0, 28.0, 76.0, 0.0},
    {Kind::Knob, "Granular Volume", "Grains", 80.0, 28.0, 76.0, 0.0},
    {Kind::Knob, "Dry / Wet", "Dry / Wet", 4.0, 120.0, 76.0, 0.0},
    {Kind::Knob, "Master Volume", "Master", 80.0, 120.0, 76.0, 0.0},
};

/// The four knobs of the mix, and what its stages carry.
class LevelsPanel final : public TablePanel {
public:
    LevelsPanel(FaceModel& faceModel, Stage& face)
        : TablePanel(Layout::kLevels, "Levels", faceModel, face, kControls) {
        using Levels = std::array<float, 2> Host::DisplayFrame::*;
        struct Line {
            const char* name;
            Levels levels;
        };
        static constexpr Line kLines[]{{"Input", &Host::DisplayFrame::input},
                                       {"Feedback", &Host::DisplayFrame::feedback},
                                       {"Grains", &Host::DisplayFrame::wet},
                                       {"Output", &Host::DisplayFrame::output}};
        double y = 220.0;
        for (const Line& line : kLines) {
            Add<LevelMeter>(At(12.0, y, 136.0, 28.0), line.name, [this, levels = line.levels] {
                return model.IsFrameNew() ? model.Frame().*levels : std::array<float, 2>{};
            });
            y += 36.0;
        }
        // Half of the meter is about 19 dB; it is shown as what it is, a share.
        Add<LevelMeter>(At(12.0, y, 136.0, 28.0), "Limiter", [this] {
            const float share = model.IsFrameNew() ? model.Frame().limiter : 0.0f;
            // On the meter's scale of decibels: no reduction is its bottom.
            const float level = std::pow(10.0f, (share * 66.0f - 60.0f) / 20.0f);
            return share > 0.001f ? std::array<float, 2>{level, level} : std::array<float, 2>{};
        });
    }
};

}  // namespace

std::unique_ptr<Panel> MakeLevels(FaceModel& model, Stage& stage) {
    return std::make_unique<LevelsPanel>(model, stage);
}

}  // namespace Quorvan::Ui
