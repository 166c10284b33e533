#include <algorithm>
#include <cmath>
#include <deque>
#include <map>

#include "host/parameters/ModulationNames.h"
#include "plugins/ui/model/FunctionCurve.h"
#include "plugins/ui/model/ParameterControl.h"
#include "plugins/ui/model/RouteControl.h"
#include "plugins/ui/panels/Layout.h"
#include "plugins/ui/panels/Pages.h"
#include "plugins/ui/panels/Scopes.h"
#include "plugins/ui/widgets/ActionButton.h"
#include "plugins/ui/widgets/BarEditor.h"
#include "plugins/ui/widgets/CurveEditor.h"
#include "plugins/ui/widgets/RouteList.h"

namespace Quorvan::Ui {

namespace {

using Kind = PlacedControl::Kind;

constexpr Rect kEditor{Layout::kPage.x, Layout::kPage.y, 752.0, Layout::kPage.height};
constexpr Rect kRoutes{Layout::kPage.x + 760.0, Layout::kPage.y, 320.0, Layout::kPage.height};
constexpr Rect kDrawing{kEditor.x + 16.0, kEditor.y + 40.0, kEditor.width - 32.0, 144.0};
constexpr uint32_t kFollower = 0, kSteps = 4, kMacros = 5;

constexpr PlacedControl kFunctionControls[]{
    {Kind::Knob, "Rate", "Rate", 8.0, 192.0},
    {Kind::Choice, "Rate Sync", "Rate in", 96.0, 208.0, 88.0, 40.0},
    {Kind::Choice, "Run Mode", "Runs", 200.0, 208.0, 96.0, 40.0},
    {Kind::Bipolar, "Scale", "Scale", 304.0, 192.0},
    {Kind::Knob, "Smoothing", "Smoothing", 384.0, 192.0},
    {Kind::Knob, "Start Phase", "Start Phase", 464.0, 192.0},
    {Kind::Chance, "Random Amount", "Random", 544.0, 192.0},
    {Kind::Toggle, "Bipolar", "Bipolar", 640.0, 208.0, 96.0, 24.0},
    {Kind::Toggle, "Gate In", "Gate", 640.0, 240.0, 96.0, 24.0},
};
constexpr PlacedControl kStepControls[]{
    {Kind::Knob, "Rate", "Rate", 8.0, 192.0},
    {Kind::Choice, "Rate Sync", "Rate in", 96.0, 208.0, 80.0, 40.0},
    {Kind::Choice, "Steps", "Steps", 184.0, 208.0, 64.0, 40.0},
    {Kind::Choice, "Loop Mode", "Runs", 256.0, 208.0, 112.0, 40.0},
    {Kind::Knob, "Glide", "Glide", 376.0, 192.0, 72.0},
    {Kind::Knob, "Swing", "Swing", 448.0, 192.0, 72.0},
    {Kind::Chance, "Random Amount", "Random", 520.0, 192.0, 72.0},
    {Kind::Knob, "Scale", "Scale", 592.0, 192.0, 72.0},
    {Kind::Toggle, "Bipolar", "Bipolar", 672.0, 224.0, 64.0, 24.0},
};
constexpr PlacedControl kFollowerControls[]{
    {Kind::Choice, "Source", "Listens to", 16.0, 56.0, 128.0, 40.0},
    {Kind::Bipolar, "Gain", "Gain", 168.0, 40.0},
    {Kind::Knob, "Attack", "Attack", 256.0, 40.0},
    {Kind::Knob, "Release", "Release", 344.0, 40.0},
};
constexpr PlacedControl kMacroControls[]{
    {Kind::Knob, "Macro 1", "Macro 1", 8.0, 48.0},
    {Kind::Knob, "Macro 2", "Macro 2", 8.0, 168.0},
};

/// One source's editor; shown while that source is chosen.
class SourceEditor : public TablePanel {
public:
    SourceEditor(uint32_t itsSource, std::span<const PlacedControl> controls, std::string names,
                 const ChosenSource& chosenSource, FaceModel& faceModel, Stage& face)
        : TablePanel(kEditor, Host::SourceName(itsSource), faceModel, face, controls, {},
                     std::move(names)),
          source(itsSource),
          chosen(chosenSource) {}
    bool IsShown() const override {
        return source == *chosen || (source == kMacros && *chosen == kMacros + 1);
    }

protected:
    double Level() const {
        if (!model.IsAlive() || model.Frame().moments == 0)
            return -1.0;
        const Host::DisplayFrame& frame = model.Frame();
        return static_cast<double>(frame.At(frame.moments - 1).sources[source]);
    }
    uint32_t source;

private:
    ChosenSource chosen;
};

class FunctionEditor final : public SourceEditor {
public:
    FunctionEditor(uint32_t number, const ChosenSource& chosenSource, FaceModel& faceModel,
                   Stage& face)
        : SourceEditor(number, kFunctionControls,
                       std::string("Function ") + std::to_string(number) + " ", chosenSource,
                       faceModel, face),
          curves{FunctionCurve(faceModel, 1), FunctionCurve(faceModel, 2),
                 FunctionCurve(faceModel, 3)},
          own(number - 1) {
        CurveEditor::Actions actions;
        actions.points = [this] { return Curve().Points(); };
        actions.height = [this](double x) { return Curve().HeightAt(x); };
        actions.begin = [this] { Curve().Begin(); };
        actions.end = [this] { Curve().End(); };
        actions.move = [this](size_t point, Point to) { Curve().Move(point, to); };
        actions.add = [this](Point at) { Curve().Add(at); };
        actions.remove = [this](size_t point) { Curve().Remove(point); };
        actions.bend = [this](size_t segment, double by) { Curve().Bend(segment, by); };
        actions.control = [this](size_t point) -> Control& { return Heights(point); };
        actions.menu = [this](Point at, size_t point) {
            point == CurveEditor::Actions::kNoPoint ? OfferShapes({at.x, at.y, 1.0, 1.0})
                                                    : OfferPoint({at.x, at.y, 1.0, 1.0}, point);
        };
        actions.snaps = [this] { return snaps; };
        actions.level = [this] { return ShownLevel(); };
        actions.place = [this] {
            return model.IsAlive() && model.Frame().moments > 0
                       ? static_cast<double>(model.Frame().functionPhases[own])
                       : -1.0;
        };
        AddView<CurveEditor>("Curve", kDrawing, Theme::Source(source), std::move(actions));
        AddView<ActionButton>(
            "Shapes", At(568.0, 8.0, 80.0, 24.0),
            [] {
                return ActionButton::Look{"Shapes\u2026", true, false};
            },
            [this](const Rect& anchor) { OfferShapes(anchor); });
        AddView<ActionButton>(
            "Snap", At(656.0, 8.0, 80.0, 24.0),
            [this] {
                return ActionButton::Look{"Snap", true, snaps};
            },
            [this](const Rect&) { snaps = !snaps; });
    }

private:
    FunctionCurve& Curve() { return curves[own]; }
    ParameterControl& Coordinate(size_t point, const char* which) {
        const std::string name = "Function " + std::to_string(own + 1) + " Point " +
                                 std::to_string(point + 1) + " " + which;
        return coordinates.try_emplace(name, model, name).first->second;
    }
    ParameterControl& Heights(size_t point) { return Coordinate(point, "Level"); }
    void OfferPoint(const Rect& anchor, size_t point) {
        const auto type = [this, anchor](ParameterControl& control) {
            return [this, anchor, &control] { TypeValue(stage, control, anchor); };
        };
        const std::vector<Point> points = Curve().Points();
        ParameterControl& height = Heights(point);
        const std::string time = model.Catalog().Text(*Coordinate(point, "Time").Index(),
                                                      static_cast<float>(points[point].x), {});
        std::vector<MenuItem> items{
            {"Point " + std::to_string(point + 1) + "   " + time + ", " + height.Text(), {}},
            {"Type its height\u2026", type(height)},
            {"Type its random height\u2026", type(Coordinate(point, "Random Level"))},
            {"Type its random time\u2026", type(Coordinate(point, "Random Time"))}};
        if (point > 0 && point + 1 < points.size()) {
            items.push_back({"Type its time\u2026", [this, anchor, point, time] {
                                 stage.OpenEntry(anchor, time, [this, point](const auto& text) {
                                     return TypeTime(point, text);
                                 });
                             }});
            items.push_back({"Remove it", [this, point] {
                                 Curve().Begin();
                                 Curve().Remove(point);
                                 Curve().End();
                             }});
        }
        stage.OpenMenu(anchor, std::move(items));
    }
    /// Between its neighbours.
    std::string TypeTime(size_t point, const std::string& text) {
        const Host::TextResult read =
            model.Catalog().Position(*Coordinate(point, "Time").Index(), text, {});
        if (!read.position)
            return read.problem;
        Curve().Begin();
        Curve().Move(point, {static_cast<double>(*read.position), Curve().Points()[point].y});
        Curve().End();
        return {};
    }
    /// On the curve's own scale, where its height alone decides the output.
    double ShownLevel() const {
        const double level = Level();
        const bool bipolar = model.PositionOf(std::string("Function ") + std::to_string(own + 1) +
                                              " Bipolar") > 0.5f;
        return level < -1.0 ? level : std::clamp(bipolar ? 0.5 + 0.5 * level : level, 0.0, 1.0);
    }
    void OfferShapes(const Rect& anchor) {
        std::vector<Point> sine;
        for (int i = 0; i <= 16; ++i)
            sine.push_back({i / 16.0, 0.5 + 0.5 * std::sin(2.0 * 3.14159265358979 * i / 16.0)});
        const std::vector<std::pair<const char*, std::vector<Point>>> shapes{
            {"Triangle", {{0.0, 0.0}, {0.5, 1.0}, {1.0, 0.0}}},
            {"Rising", {{0.0, 0.0}, {1.0, 1.0}}},
            {"Falling", {{0.0, 1.0}, {1.0, 0.0}}},
            {"Square", {{0.0, 1.0}, {0.5, 1.0}, {0.5, 0.0}, {1.0, 0.0}}},
            {"Sine", sine}};
        std::vector<MenuItem> items;
        for (const auto& [name, points] : shapes) {
            MenuItem item;
            item.text = name;
            item.action = [this, drawn = points] {
                Curve().Begin();
                Curve().Draw(drawn);
                Curve().End();
            };
            items.push_back(std::move(item));
        }
        for (size_t other = 0; other < curves.size(); ++other) {
            if (other == own)
                continue;
            MenuItem item;
            item.text = std::string("Copy from Function ") + std::to_string(other + 1);
            item.startsGroup = items.size() == shapes.size();
            item.action = [this, other] {
                Curve().Begin();
                Curve().CopyFrom(curves[other]);
                Curve().End();
            };
            items.push_back(std::move(item));
        }
        stage.OpenMenu(anchor, std::move(items));
    }

    std::array<FunctionCurve, 3> curves;
    size_t own;
    bool snaps = false;
    std::map<std::string, ParameterControl> coordinates;  ///< those that were asked for
};

class StepEditor final : public SourceEditor {
public:
    StepEditor(const ChosenSource& chosenSource, FaceModel& faceModel, Stage& face)
        : SourceEditor(kSteps, kStepControls, "Step Sequencer ", chosenSource, faceModel, face),
          first(*faceModel.Catalog().Find("StepSeq_StepVal1")) {
        BarEditor::Actions actions;
        actions.count = [this] { return model.ChoiceOf("Step Sequencer Steps") + 1; };
        actions.value = [this](uint32_t i) {
            return static_cast<double>(model.Position(first + i));
        };
        actions.text = [](uint32_t i) { return std::to_string(i + 1); };
        actions.played = [this] {
            return model.IsAlive() ? static_cast<int>(model.Frame().sequencerStep) : -1;
        };
        actions.begin = [this](uint32_t i) { model.Begin(first + i); };
        actions.set = [this](uint32_t i, double value) {
            model.Edit(first + i, static_cast<float>(value));
        };
        actions.end = [this](uint32_t i) { model.End(first + i); };
        actions.nudge = [this](uint32_t i, double by, bool fine) {
            steps[i].Move(steps[i].Nudged(0.02 * by, fine));
        };
        for (uint32_t i = 0; i < 16; ++i)
            steps.emplace_back(model, model.Catalog()[first + i].title);
        actions.control = [this](uint32_t i) { return &steps[i]; };
        AddView<BarEditor>("Steps", kDrawing, Theme::Source(kSteps), std::move(actions));
    }

private:
    uint32_t first;
    std::deque<ParameterControl> steps;
};

class FollowerEditor final : public SourceEditor {
public:
    FollowerEditor(const ChosenSource& chosenSource, FaceModel& faceModel, Stage& face)
        : SourceEditor(kFollower, kFollowerControls, "Envelope Follower ", chosenSource, faceModel,
                       face) {
        AddView<DrawnView>("Follower", At(16.0, 128.0, box.width - 32.0, 144.0),
                           FollowerScope(faceModel));
    }
};

class MacroEditor final : public SourceEditor {
public:
    MacroEditor(const ChosenSource& chosenSource, FaceModel& faceModel, Stage& face)
        : SourceEditor(kMacros, kMacroControls, "", chosenSource, faceModel, face) {
        title = "Macros";
        for (uint32_t i = 0; i < 2; ++i)
            AddView<DrawnView>("Macro", At(104.0, 40.0 + 120.0 * i, box.width - 120.0, 112.0),
                               SourceScope(faceModel, kMacros + i));
    }
};

/// What the chosen source moves.
class RoutesPanel final : public Panel {
public:
    RoutesPanel(FaceModel& model, const ChosenSource& chosen) : Panel(kRoutes, "Moves") {
        RouteList::Actions actions;
        actions.routes = [&model, chosen] {
            std::vector<RouteList::Route> routes;
            for (uint32_t row = 0; row < Host::kModulationDestinations; ++row)
                if (model.IsRouted(*chosen, row))
                    routes.push_back({row, Host::DestinationName(row),
                                      static_cast<double>(model.Amount(*chosen, row))});
            return routes;
        };
        actions.control = [this, &model, chosen](uint32_t row) -> Control& {
            const std::pair cell{*chosen, row};
            return controls.try_emplace(cell, model, *chosen, row).first->second;
        };
        actions.remove = [&model, chosen](uint32_t row) { model.Unroute(*chosen, row); };
        actions.colour = [chosen] { return Theme::Source(*chosen); };
        AddView<RouteList>("Routes", At(16.0, 32.0, box.width - 32.0, 240.0), std::move(actions));
    }

private:
    std::map<std::pair<uint32_t, uint32_t>, RouteControl> controls;  ///< that were asked for
};

}  // namespace

Panels MakeModulationPage(FaceModel& model, Stage& stage, const ChosenSource& chosen) {
    Panels panels;
    panels.push_back(std::make_unique<FollowerEditor>(chosen, model, stage));
    for (uint32_t number = 1; number <= 3; ++number)
        panels.push_back(std::make_unique<FunctionEditor>(number, chosen, model, stage));
    panels.push_back(std::make_unique<StepEditor>(chosen, model, stage));
    panels.push_back(std::make_unique<MacroEditor>(chosen, model, stage));
    panels.push_back(std::make_unique<RoutesPanel>(model, chosen));
    return panels;
}

}  // namespace Quorvan::Ui
