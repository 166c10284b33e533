#include <algorithm>
#include <array>
#include <cmath>
#include <deque>
#include <memory>
#include <numbers>
#include <utility>

#include "plugins/ui/model/ParameterControl.h"
#include "plugins/ui/panels/GrainViews.h"
#include "processor/ProcessorTables.h"

namespace Quorvan::Ui {

namespace {

constexpr double kNudge = 0.02;  ///< of the travel, for a notch of the wheel or an arrow

/// The whole figure that the spatialiser draws with its present settings.
class Figure {
public:
    explicit Figure(FaceModel& faceModel)
        : model(faceModel),
          controls{ParameterControl(model, "Spatializer On"),
                   ParameterControl(model, "Spatializer Trajectory"),
                   ParameterControl(model, "Spatializer Invert"),
                   ParameterControl(model, "Spatializer Amount"),
                   ParameterControl(model, "Spatializer Distance"),
                   ParameterControl(model, "Stereo Position"),
                   ParameterControl(model, "Distance")} {}

    /// Answers whether it is another one now.
    bool Look() {
        std::array<double, kSettings> now;
        for (size_t i = 0; i < kSettings; ++i) {
            const float present = controls[i].Influences().present;
            // Reach and distance are bent on their way from the knob.
            const bool isBent = i == 3 || i == 4 || i == 6;
            now[i] = isBent ? 0.01 * model.Catalog().Value(*controls[i].Index(), present)
                            : static_cast<double>(present);
        }
        return std::exchange(settings, now) != now;
    }
    /// Of a chance walk and of what stands still there is none.
    std::vector<Point> Line() const {
        const Processor::Trajectory& figure = Processor::kTrajectories[controls[1].Choice()];
        std::vector<Point> line;
        if (settings[0] < 0.5 || figure.ratio == Processor::kRandomWalk)
            return line;
        constexpr int kSteps = 240;
        // Rounds of X until both begin anew: the ratios are wholes, a half and two thirds.
        const double ratio = static_cast<double>(figure.ratio);
        const double rounds = ratio >= 1.0 || ratio == 0.0 ? 1.0 : ratio == 0.5 ? 2.0 : 3.0;
        const double phase =
            static_cast<double>(settings[2] > 0.5 ? figure.invertedPhase : figure.phase);
        const auto sine = [](double turns) { return std::sin(2.0 * std::numbers::pi * turns); };
        for (int i = 0; i <= kSteps; ++i) {
            const double turn = rounds * i / kSteps;
            const double depth = 0.5 + 0.5 * sine(ratio * turn + phase);
            line.push_back({std::clamp(settings[5] + 0.5 * settings[3] * sine(turn), 0.0, 1.0),
                            std::clamp(settings[6] + settings[4] * depth, 0.0, 1.0)});
        }
        return line;
    }

private:
    static constexpr size_t kSettings = 7;
    FaceModel& model;
    std::array<ParameterControl, kSettings> controls;
    std::array<double, kSettings> settings{};
};

/// Where a point has been lately, however slowly it goes.
class Trail {
public:
    /// Answers whether the point is elsewhere now.
    bool Take(Point p, double seconds) {
        constexpr double kApart = 0.012;
        if (last.x == p.x && last.y == p.y)
            return false;
        last = p;
        if (kept.empty() || std::hypot(p.x - kept.back().at.x, p.y - kept.back().at.y) > kApart)
            kept.push_back({p, seconds});
        return true;
    }
    /// Answers whether something is gone.
    bool Forget(double seconds) {
        constexpr double kSeconds = 22.0;  // a turn of the slowest that an eye follows
        constexpr size_t kMost = 500;
        const size_t before = kept.size();
        while (!kept.empty() && (kept.size() > kMost || seconds - kept.front().since > kSeconds))
            kept.pop_front();
        return kept.size() != before;
    }
    /// The newest is where the point is.
    std::vector<Point> Places() const {
        std::vector<Point> places;
        for (const Kept& one : kept)
            places.push_back(one.at);
        places.push_back(last);
        return places;
    }

private:
    struct Kept {
        Point at;
        double since = 0.0;
    };
    std::deque<Kept> kept;
    Point last{0.5, 0.0};
};

}  // namespace

DrawnView::Actions SpacePad(FaceModel& model) {
    DrawnView::Actions actions;
    const auto x = std::make_shared<ParameterControl>(model, "Stereo Position");
    const auto y = std::make_shared<ParameterControl>(model, "Distance");
    const auto figure = std::make_shared<Figure>(model);
    const auto trail = std::make_shared<Trail>();
    const auto heard = std::make_shared<uint64_t>(0);
    actions.tick = [&model, figure, trail, heard](double seconds) {
        const bool isOther = figure->Look();
        if (!model.IsFrameNew())
            return isOther;
        bool moved = trail->Forget(seconds) || isOther;
        model.Listen(*heard, [&](const Host::DisplayMoment& moment) {
            moved |= trail->Take(
                {static_cast<double>(moment.space[0]), static_cast<double>(moment.space[1])},
                seconds);
        });
        return moved;
    };
    actions.draw = [figure, trail, x, y](Painter& painter, const Rect& box) {
        painter.Round(box, 4.0, Theme::kWell);
        const Rect inner = box.Inset(10.0);
        painter.Fill({painter.Snap(inner.Centre().x), inner.y, 1.0, inner.height}, Theme::kLine);
        painter.Fill({inner.x, painter.Snap(inner.Bottom()), inner.width, 1.0}, Theme::kLine);
        painter.Text({inner.x, inner.y, 60.0, 14.0}, "far", {Theme::kSmall, Theme::kDim});
        painter.Text({inner.x, inner.Bottom() - 15.0, 20.0, 14.0}, "L",
                     {Theme::kSmall, Theme::kDim});
        painter.Text({inner.Right() - 20.0, inner.Bottom() - 15.0, 20.0, 14.0}, "R",
                     {Theme::kSmall, Theme::kDim}, Align::Right);
        const auto place = [&](Point p) {
            return Point{inner.x + inner.width * p.x, inner.Bottom() - inner.height * p.y};
        };
        const Point centre =
            place({static_cast<double>(x->Position()), static_cast<double>(y->Position())});
        painter.Ring(centre, 6.0, Theme::kDim, 1.5);
        const auto placed = [&](std::vector<Point> line) {
            for (Point& p : line)
                p = place(p);
            return line;
        };
        const std::vector<Point> whole = placed(figure->Line());
        if (!whole.empty())
            painter.Path(whole, Theme::kDim.Faded(0.45), 1.0);
        const std::vector<Point> line = placed(trail->Places());
        const size_t half = line.size() / 2;
        if (line.size() > 4) {
            painter.Path(std::span(line).first(half + 1), Theme::kOn.Faded(0.25), 1.5);
            painter.Path(std::span(line).subspan(half), Theme::kOn.Faded(0.7), 1.5);
        }
        if (!line.empty()) {
            painter.Disc(line.back(), 8.0, Theme::kOn.Faded(0.25));
            painter.Disc(line.back(), 4.0, Theme::kText);
        }
    };
    actions.begin = [x] { x->Begin(); };
    actions.end = [x] { x->End(); };
    actions.drag = [x, y](const PointerEvent& event, Point way, const Rect&) {
        const double fine = event.modifiers.shift ? 0.1 : 1.0;
        const auto to = [fine](const Control& control, double step) {
            return static_cast<float>(
                std::clamp(static_cast<double>(control.Position()) + step * fine, 0.0, 1.0));
        };
        if (way.x != 0.0)
            x->Move(to(*x, way.x / 148.0));
        if (way.y != 0.0)
            y->Move(to(*y, -way.y / 100.0));
    };
    actions.doubleClick = [x, y] {
        x->Begin();
        x->Move(x->Default());
        y->Move(y->Default());
        x->End();
    };
    actions.nudge = [x, y](Point way, bool fine) {
        ParameterControl& moved = way.x != 0.0 ? *x : *y;
        moved.MoveOnce(moved.Nudged(kNudge * (way.x + way.y), fine));
    };
    // About the middle line it is the depth that is meant.
    actions.control = [x, y](Point at, const Rect& box) {
        constexpr double kNear = 12.0;
        return std::abs(at.x - box.Centre().x) < kNear && at.y < box.Bottom() - 2.0 * kNear
                   ? y.get()
                   : x.get();
    };
    return actions;
}

}  // namespace Quorvan::Ui
