#include <cmath>

#include "plugins/ui/panels/GrainViews.h"

namespace Quorvan::Ui {

namespace {

/// What is counted, a few times in a second so that it can be read.
struct Count {
    uint64_t starts = 0;  ///< at the last look
    double time = 0.0;    ///< of sound, seconds
    uint32_t sounding = 0;
    double perSecond = 0.0;
};

}  // namespace

DrawnView::Actions GrainCount(FaceModel& model) {
    const auto count = std::make_shared<Count>();
    DrawnView::Actions actions;
    actions.tick = [&model, count](double) {
        const Host::DisplayFrame& frame = model.Frame();
        const double time =
            frame.sampleRate > 0.0 ? static_cast<double>(frame.time) / frame.sampleRate : 0.0;
        const double passed = time - count->time;
        if (!model.IsFrameNew() || (passed >= 0.0 && passed < 0.5))
            return false;
        const uint64_t starts =
            frame.pairsStarted >= count->starts ? frame.pairsStarted - count->starts : 0;
        count->perSecond = passed > 0.0 ? static_cast<double>(starts) / passed : 0.0;
        count->starts = frame.pairsStarted;
        count->time = time;
        count->sounding = frame.grainCount;
        return true;
    };
    actions.draw = [count](Painter& painter, const Rect& box) {
        const auto line = [&](double y, const std::string& number, const char* what) {
            painter.Text({box.x, box.y + y, 44.0, 24.0}, number,
                         {Theme::kTitle, Theme::kText, true}, Align::Right);
            painter.Text({box.x + 52.0, box.y + y, box.width - 52.0, 24.0}, what,
                         {Theme::kSmall, Theme::kDim});
        };
        line(4.0, std::to_string(count->sounding), "grains sound");
        line(32.0, std::to_string(std::lround(count->perSecond)), "starts a second");
    };
    return actions;
}

}  // namespace Quorvan::Ui
