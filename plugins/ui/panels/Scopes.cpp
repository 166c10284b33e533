#include "plugins/ui/panels/Scopes.h"

#include <memory>

#include "plugins/ui/widgets/RunningLine.h"

namespace Quorvan::Ui {

namespace {

constexpr size_t kKept = 360;

struct Traces {
    RunningLine heard{kKept}, made{kKept};
    uint64_t taken = 0;
    std::vector<float> newlyHeard, newlyMade;
};

}  // namespace

DrawnView::Actions FollowerScope(FaceModel& model) {
    DrawnView::Actions actions;
    const auto traces = std::make_shared<Traces>();
    actions.tick = [&model, traces](double) {
        Traces& all = *traces;
        all.newlyHeard.clear();
        all.newlyMade.clear();
        model.Listen(all.taken, [&](const Host::DisplayMoment& moment) {
            all.newlyHeard.push_back(moment.follower);
            all.newlyMade.push_back(moment.sources[0]);
        });
        const bool heardMoved = all.heard.Take(all.newlyHeard);
        return all.made.Take(all.newlyMade) || heardMoved;
    };
    actions.draw = [traces](Painter& painter, const Rect& box) {
        const Rect well{box.x, box.y + 20.0, box.width, box.height - 20.0};
        painter.Round(well, 4.0, Theme::kWell);
        const Rect inner = well.Inset(8.0);
        const std::vector<Point> heard = traces->heard.Line(inner, inner.Bottom(), inner.height);
        const std::vector<Point> made = traces->made.Line(inner, inner.Bottom(), inner.height);
        if (heard.size() > 1)
            painter.Area(heard, inner.Bottom(), Theme::kWave);
        if (made.size() > 1)
            painter.Path(made, Theme::Source(0), 1.5);
        painter.Round({box.x + 2.0, box.y + 5.0, 10.0, 6.0}, 2.0, Theme::kWave);
        painter.Text({box.x + 18.0, box.y, 72.0, 16.0}, "what it hears",
                     {Theme::kSmall, Theme::kDim});
        painter.Round({box.x + 102.0, box.y + 7.0, 10.0, 2.0}, 1.0, Theme::Source(0));
        painter.Text({box.x + 118.0, box.y, 96.0, 16.0}, "what it gives",
                     {Theme::kSmall, Theme::kDim});
    };
    return actions;
}

DrawnView::Actions SourceScope(FaceModel& model, uint32_t source) {
    DrawnView::Actions actions;
    const auto trace = std::make_shared<RunningLine>(kKept);
    actions.tick = [&model, trace, source, heard = uint64_t{0},
                    fresh = std::vector<float>()](double) mutable {
        fresh.clear();
        model.Listen(heard, [&](const Host::DisplayMoment& moment) {
            fresh.push_back(moment.sources[source]);
        });
        return trace->Take(fresh);
    };
    actions.draw = [trace, source](Painter& painter, const Rect& box) {
        painter.Round(box, 4.0, Theme::kWell);
        const Rect inner = box.Inset(8.0);
        const std::vector<Point> line = trace->Line(inner, inner.Bottom(), inner.height);
        if (line.size() < 2)
            return;
        painter.Area(line, inner.Bottom(), Theme::Source(source).Faded(0.15));
        painter.Path(line, Theme::Source(source), 1.5);
    };
    return actions;
}

}  // namespace Quorvan::Ui
