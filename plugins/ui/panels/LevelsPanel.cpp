#include <algorithm>
#include <cmath>
#include <cstdio>

#include "plugins/ui/panels/Layout.h"
#include "plugins/ui/panels/Pages.h"
#include "plugins/ui/widgets/DrawnView.h"
#include "plugins/ui/widgets/LevelMeter.h"

namespace Quorvan::Ui {

namespace {

using Kind = PlacedControl::Kind;

constexpr PlacedControl kControls[]{
    {Kind::Knob, "Feedback", "Feedback", 0.0, 24.0},
    {Kind::Knob, "Granular Volume", "Grains", 80.0, 24.0},
    {Kind::Knob, "Dry / Wet", "Dry / Wet", 0.0, 112.0},
    {Kind::Knob, "Master Volume", "Master", 80.0, 112.0},
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
        double y = 216.0;
        for (const Line& line : kLines) {
            LevelMeter& meter =
                Add<LevelMeter>(At(16.0, y, 128.0, 32.0), line.name, [this, levels = line.levels] {
                    return model.IsFrameNew() ? model.Frame().*levels : std::array<float, 2>{};
                });
            meter.Explain(std::string(line.name) + " level", HelpOnView("Level").sentence);
            y += 40.0;
        }
        AddLimiter(y);
    }

private:
    /// Decibels that the processor's meter stands for: its curve, turned round by halving.
    static double ReductionOf(double share) {
        double low = 0.0, high = 60.0;
        for (int i = 0; i < 24; ++i) {
            const double m = 0.5 * (low + high);
            const double meter = ((m * 3.465e-06 - 0.000511) * m + 0.03486) * m;
            (meter < share ? low : high) = m;
        }
        return low;
    }
    void AddLimiter(double y) {
        DrawnView::Actions actions;
        actions.tick = [this](double seconds) {
            const double wanted = model.IsFrameNew() && model.IsAlive()
                                      ? ReductionOf(static_cast<double>(model.Frame().limiter))
                                      : 0.0;
            const double before = reduction;
            reduction = std::max(wanted, reduction - 20.0 * (seconds - lastTick));
            lastTick = seconds;
            return std::lround(10.0 * before) != std::lround(10.0 * reduction);
        };
        actions.draw = [this](Painter& painter, const Rect& place) {
            constexpr double kMost = 24.0;
            char text[32];
            std::snprintf(text, sizeof text, "%.1f dB", reduction < 0.05 ? 0.0 : -reduction);
            painter.Text({place.x, place.y, 60.0, 14.0}, "Limiter", {Theme::kSmall, Theme::kDim});
            painter.Text({place.x + 60.0, place.y, place.width - 60.0, 14.0}, text,
                         {Theme::kSmall, Theme::kText}, Align::Right);
            const Rect bar{place.x, place.y + 17.0, place.width, 6.0};
            painter.Fill(bar, Theme::kWell);
            const double width = bar.width * std::min(1.0, reduction / kMost);
            painter.Fill({bar.Right() - width, bar.y, width, bar.height}, Theme::kPlayHead);
        };
        AddView<DrawnView>("Limiter", At(16.0, y, 128.0, 32.0), std::move(actions));
    }

    double reduction = 0.0;  ///< decibels
    double lastTick = 0.0;
};

}  // namespace

std::unique_ptr<Panel> MakeLevels(FaceModel& model, Stage& stage) {
    return std::make_unique<LevelsPanel>(model, stage);
}

}  // namespace Quorvan::Ui
