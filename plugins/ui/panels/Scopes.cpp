#include "plugins/ui/panels/Scopes.h"

#include <algorithm>
#include <memory>

namespace Quorvan::Ui {

namespace {

constexpr size_t kKept = 360;

/// One running line.
class Trace {
public:
    /// Answers whether it looks otherwise now.
    bool Take(std::span<const float> moments) {
        bool moved = false;
        for (const float moment : moments) {
            moved |= kept.size() < kKept || moment != kept.back() || moment != kept.front();
            kept.push_back(moment);
        }
        if (kept.size() > kKept)
            kept.erase(kept.begin(), kept.end() - static_cast<std::ptrdiff_t>(kKept));
        return moved;
    }
    std::vector<Point> Line(const Rect& box) const {
        std::vector<Point> line;
        for (size_t i = 0; i < kept.size(); ++i)
            line.push_back(
                {box.Right() - box.width * static_cast<double>(kept.size() - 1 - i) /
                                   static_cast<double>(kKept - 1),
                 box.Bottom() - box.height * std::clamp(static_cast<double>(kept[i]), 0.0, 1.0)});
        return line;
    }

private:
    std::vector<float> kept;
};

struct Traces {
    Trace heard, made;
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
        const std::vector<Point> heard = traces->heard.Line(inner);
        const std::vector<Point> made = traces->made.Line(inner);
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
    const auto trace = std::make_shared<Trace>();
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
        const std::vector<Point> line = trace->Line(inner);
        if (line.size() < 2)
            return;
        painter.Area(line, inner.Bottom(), Theme::Source(source).Faded(0.15));
        painter.Path(line, Theme::Source(source), 1.5);
    };
    return actions;
}

}  // namespace Quorvan::Ui
