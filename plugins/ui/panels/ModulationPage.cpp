#include <algorithm>
#include <cmath>
#include <deque>

#include "host/parameters/ModulationNames.h"
#include "plugins/ui/model/FunctionCurve.h"
#include "plugins/ui/model/ParameterControl.h"
#include "plugins/ui/panels/Layout.h"
#include "plugins/ui/panels/Pages.h"
#include "plugins/ui/panels/Scopes.h"
#include "plugins/ui/widgets/BarEditor.h"
#include "plugins/ui/widgets/CurveEditor.h"
#include "plugins/ui/widgets/RouteList.h"

namespace Quorvan::Ui {

namespace {

using Kind = PlacedControl::Kind;

constexpr Rect kEditor{Layout::kPage.x, Layout::kPage.y, 752.0, Layout::kPage.height};
constexpr Rect kRoutes{Layout::kPage.x + 760.0, Layout::kPage.y, 320.0, Layout::kPage.height};
constexpr Rect kDrawing{kEditor.x + 12.0, kEditor.y + 30.0, kEditor.width - 24.0, 154.0};
constexpr uint32_t kFollower = 0, kSteps = 4, kMacros = 5;

constexpr PlacedControl kFunctionControls[]{
    {Kind::Knob, "Rate", "Rate", 12.0, 196.0},
    {Kind::Choice, "Rate Sync", "Rate in", 92.0, 216.0, 88.0, 40.0},
    {Kind::Choice, "Run Mode", "Runs", 196.0, 216.0, 96.0, 40.0},
    {Kind::Bipolar, "Scale", "Scale", 308.0, 196.0},
    {Kind::Knob, "Smoothing", "Smoothing", 388.0, 196.0},
    {Kind::Knob, "Start Phase", "Start Phase", 468.0, 196.0},
    {Kind::Knob, "Random Amount", "Random", 548.0, 196.0},
    {Kind::Toggle, "Bipolar", "Bipolar", 640.0, 212.0, 96.0, 26.0},
    {Kind::Toggle, "Gate In", "Gate", 640.0, 246.0, 96.0, 26.0},
};
constexpr PlacedControl kStepControls[]{
    {Kind::Knob, "Rate", "Rate", 12.0, 196.0},
    {Kind::Choice, "Rate Sync", "Rate in", 92.0, 216.0, 80.0, 40.0},
    {Kind::Choice, "Steps", "Steps", 184.0, 216.0, 64.0, 40.0},
    {Kind::Choice, "Loop Mode", "Runs", 260.0, 216.0, 112.0, 40.0},
    {Kind::Knob, "Glide", "Glide", 380.0, 196.0},
    {Kind::Knob, "Swing", "Swing", 456.0, 196.0},
    {Kind::Knob, "Random Amount", "Random", 532.0, 196.0},
    {Kind::Knob, "Scale", "Scale", 608.0, 196.0, 64.0, 0.0},
    {Kind::Toggle, "Bipolar", "Bipolar", 676.0, 230.0, 64.0, 26.0},
};
constexpr PlacedControl kFollowerControls[]{
    {Kind::Choice, "Source", "Listens to", 12.0, 60.0, 128.0, 40.0},
    {Kind::Bipolar, "Gain", "Gain", 176.0, 36.0},
    {Kind::Knob, "Attack", "Attack", 264.0, 36.0},
    {Kind::Knob, "Release", "Release", 352.0, 36.0},
};
constexpr PlacedControl kMacroControls[]{
    {Kind::Knob, "Macro 1", "Macro 1", 16.0, 48.0},
    {Kind::Knob, "Macro 2", "Macro 2", 16.0, 168.0},
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
        actions.menu = [this](Point at) { OfferShapes(at); };
        actions.level = [this] { return ShownLevel(); };
        actions.place = [this] {
            return model.IsAlive() && model.Frame().moments > 0
                       ? static_cast<double>(model.Frame().functionPhases[own])
                       : -1.0;
        };
        Add<CurveEditor>(kDrawing, Theme::Source(source), std::move(actions));
    }

private:
    FunctionCurve& Curve() { return curves[own]; }
    /// On the curve's own scale, where its height alone decides the output.
    double ShownLevel() const {
        const double level = Level();
        const bool bipolar = model.PositionOf(std::string("Function ") + std::to_string(own + 1) +
                                              " Bipolar") > 0.5f;
        return level < -1.0 ? level : std::clamp(bipolar ? 0.5 + 0.5 * level : level, 0.0, 1.0);
    }
    void OfferShapes(Point at) {
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
        stage.OpenMenu({at.x, at.y, 1.0, 1.0}, std::move(items));
    }

    std::array<FunctionCurve, 3> curves;
    size_t own;
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
        Add<BarEditor>(kDrawing, "Steps", "Draw over the bars to set the value of each step.",
                       std::move(actions));
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
        Add<DrawnView>(At(12.0, 128.0, box.width - 24.0, box.height - 140.0), "Follower",
                       "The last three seconds: what it hears, and what it gives.",
                       FollowerScope(faceModel));
    }
};

class MacroEditor final : public SourceEditor {
public:
    MacroEditor(const ChosenSource& chosenSource, FaceModel& faceModel, Stage& face)
        : SourceEditor(kMacros, kMacroControls, "", chosenSource, faceModel, face) {
        title = "Macros";
        for (uint32_t i = 0; i < 2; ++i)
            Add<DrawnView>(At(104.0, 40.0 + 120.0 * i, box.width - 116.0, 112.0),
                           Host::SourceName(kMacros + i), "The last three seconds of it.",
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
        actions.begin = [&model, chosen](uint32_t row) { model.BeginRoute(*chosen, row); };
        actions.end = [&model] { model.EndRoute(); };
        actions.set = [&model, chosen](uint32_t row, double amount) {
            model.Route(*chosen, row, static_cast<float>(amount));
        };
        actions.remove = [&model, chosen](uint32_t row) { model.Unroute(*chosen, row); };
        actions.colour = [chosen] { return Theme::Source(*chosen); };
        Add<RouteList>(At(12.0, 32.0, box.width - 24.0, box.height - 44.0), std::move(actions));
    }
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
