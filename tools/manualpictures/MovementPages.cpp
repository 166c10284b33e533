#include <cmath>

#include "tools/manualpictures/DiagramSheet.h"
#include "tools/manualpictures/Pages.h"
#include "tools/manualpictures/Sounds.h"

/// Modulation and the spatialiser.
namespace Quorvan::Tools {

namespace {

using Settings = std::vector<std::string>;

/// A column of the modulation over time: sources 0 to 6, then the destinations of the take.
void AddColumn(const Diagram& diagram, const Take& take, size_t column, const Colour& colour) {
    const ModulationLog& log = take.Modulation();
    std::vector<double> x, y;
    for (size_t i = 0; i < log.Samples(); ++i) {
        const double time = static_cast<double>(log.Frame(i)) / Take::kRate;
        const double value = log.Value(i, column);
        if (!y.empty() && std::abs(value - y.back()) > 0.2) {  // jumps stand upright
            x.push_back(time);
            y.push_back(y.back());
        }
        x.push_back(time);
        y.push_back(value);
    }
    diagram.Curve(x, y, colour);
}

constexpr size_t kFollower = 0, kFunction = 1, kSteps = 4, kMacro = 5, kDestination = 7;

/// A curve of four points: up fast, down to a half, and slowly to nothing.
Settings Curve(const Settings& more) {
    Settings all{"Function1_RateType=Straight",
                 "Function1_RateSynced=1/2",
                 "Function1_LastActivePointIndex=0.047619",  // 3, of 0 to 63
                 "Function1_PointX2=12 %",
                 "Function1_PointX3=40 %",
                 "Function1_PointY1=0 %",
                 "Function1_PointY2=100 %",
                 "Function1_PointY3=50 %",
                 "Function1_PointY4=0 %",
                 "Function1_Tension1=0.5",
                 "Function1_Tension2=0.5",
                 "Function1_Tension3=0.502"};
    all.insert(all.end(), more.begin(), more.end());
    return all;
}

void DrawFunctions(const std::string& file) {
    const Scale time{"Time (s)", Axis(0.0, 4.0), 4};
    const Scale level{"Function 1", Axis(-1.05, 1.05), 4};
    DiagramSheet sheet(1, 3, 160.0);
    const auto add = [&](const std::string& title, const Settings& more) {
        Take take(Curve(more));
        take.Play(Silence(4.1));
        AddColumn(sheet.Add(title, time, level), take, kFunction, CurveColour(0));
    };
    add("Free", {"Function1_Mode=Free"});
    add("One Shot", {"Function1_Mode=One Shot"});
    add("Free, Bipolar", {"Function1_Mode=Free", "Function1_Bipolar=On"});
    sheet.Save(file);
}

void DrawSteps(const std::string& file) {
    const Scale time{"Time (s)", Axis(0.0, 4.0), 4};
    const Scale level{"Step Sequencer", Axis(-0.05, 1.05), 4};
    DiagramSheet sheet(1, 3, 160.0);
    const auto add = [&](const std::string& title, const Settings& more) {
        Settings all{"StepSeq_Scale=100 %",    "StepSeq_RateType=Straight",
                     "StepSeq_RateSynced=1/8",
                     "StepSeq_NbSteps=0.2",  // 4, of 1 to 16
                     "StepSeq_StepVal1=100 %", "StepSeq_StepVal2=20 %",
                     "StepSeq_StepVal3=60 %",  "StepSeq_StepVal4=40 %"};
        all.insert(all.end(), more.begin(), more.end());
        Take take(all);
        take.Play(Silence(4.1));
        AddColumn(sheet.Add(title, time, level), take, kSteps, CurveColour(0));
    };
    add("Four steps", {});
    add("Glide 60 %", {"StepSeq_Smooth=60 %"});
    add("Random Amount 50 %", {"StepSeq_RandomAmount=50 %"});
    sheet.Save(file);
}

void DrawMatrix(const std::string& file) {
    const Scale time{"Time (s)", Axis(0.0, 4.0), 8};
    DiagramSheet sheet(2, 1, 130.0);
    Settings all{"Envelope Follower Attack=5 ms", "Envelope Follower Release=300 ms",
                 "Envelope Follower Gain=6 dB", "Grain Size=100 ms"};
    all.insert(all.end(),
               {"Modulations_Dst10_Src1_Amount=@0.75", "Modulations_Dst10_Src1_Activated=1"});
    Take take(all, {"Grain Size"});
    take.Play(Music(4.1));
    AddColumn(sheet.Add("The source: Envelope Follower", time, {"Level", Axis(0.0, 1.0), 4}), take,
              kFollower, CurveColour(0));
    AddColumn(sheet.Add("The destination: Grain Size, moved by half of its travel", time,
                        {"Knob", Axis(0.0, 1.0), 4}),
              take, kDestination, CurveColour(1));
    sheet.Save(file);
}

/// One turn of a macro and three knobs that it moves by different amounts.
void DrawMacro(const std::string& file) {
    const Scale time{"Time (s)", Axis(0.0, 4.0), 8};
    const Scale knob{"Knob", Axis(0.0, 1.0), 4};
    Take take({"Grain Size=100 ms", "Dry / Wet=30 %", "Random Pan=80 %",
               "Modulations_Dst10_Src6_Amount=@0.8", "Modulations_Dst10_Src6_Activated=1",
               "Modulations_Dst1_Src6_Amount=@0.65", "Modulations_Dst1_Src6_Activated=1",
               "Modulations_Dst16_Src6_Amount=@0.2", "Modulations_Dst16_Src6_Activated=1"},
              {"Grain Size", "Dry / Wet", "Random Pan"});
    for (int step = 0; step <= 100; ++step)
        take.Change(0.5 + 0.03 * step, "Macro 1", std::to_string(step) + " %");
    take.Play(Silence(4.1));
    DiagramSheet sheet(2, 1, 130.0);
    AddColumn(sheet.Add("The source: Macro 1", time, knob), take, kMacro, CurveColour(0));
    const Diagram moved = sheet.Add("What it moves", time, knob);
    moved.Key({"Grain Size", "Dry / Wet", "Random Pan"});
    for (size_t i = 0; i < 3; ++i)
        AddColumn(moved, take, kDestination + i, CurveColour(i));
    sheet.Save(file);
}

void DrawTrajectories(const std::string& file) {
    DiagramSheet sheet(3, 3, 150.0);
    for (const std::string name : {"Pendulum", "Slanted Eight", "Circle", "Eight", "Lying Eight",
                                   "Knot", "Diagonal", "Zigzag", "Random Walk"}) {
        const Diagram diagram = sheet.Add(name, {"Left to right", Axis(-1.1, 1.1), 4},
                                          {"Distance", Axis(-0.05, 1.05), 4});
        const bool walks = name == "Random Walk";
        Take take({"Spatializer On=On", "Spatializer Trajectory=" + name,
                   "Spatializer Amount=100 %", "Spatializer Distance=100 %",
                   walks ? "Spatializer Rate=3 Hz" : "Spatializer Rate=1 Hz"});
        take.Play(Silence(walks ? 2.0 : 8.5));
        diagram.Curve(take.PlaceX(), take.PlaceY(), CurveColour(0), 1.2);
    }
    sheet.Save(file);
}

}  // namespace

void DrawMovementPages(const std::string& folder) {
    DrawFunctions(folder + "/functions.png");
    DrawSteps(folder + "/steps.png");
    DrawMatrix(folder + "/matrix.png");
    DrawMacro(folder + "/macro.png");
    DrawTrajectories(folder + "/trajectories.png");
}

}  // namespace Quorvan::Tools
