#include <algorithm>
#include <cmath>
#include <complex>
#include <numbers>

#include "tools/manualpictures/DiagramSheet.h"
#include "tools/manualpictures/Pages.h"
#include "tools/manualpictures/Sounds.h"

/// Shapes, seams, lo-fi, feedback, slots, levels.
namespace Quorvan::Tools {

namespace {

using Settings = std::vector<std::string>;

/// One grain at a time on a steady tone, so that its envelope shows.
void AddShape(const Diagram& diagram, const std::string& shape, const std::string& amount,
              const Colour& colour) {
    constexpr double kHertz = 2000.0;
    constexpr size_t kQuarter = 6;                       // frames of a quarter of a period
    constexpr double kStart = 2.0 + 48.0 / Take::kRate;  // of the grain that is looked at
    Take take({"Density=0.5 Hz", "Grain Size=400 ms", "Spray=0 %", "Width=0 %",
               "Play Head Offset=500 ms", "Buffer Length=2/1", "Grain Shape=" + shape,
               "Grain Shape Amount=" + amount});
    take.Play(Tone(2.5, kHertz, 0.1));
    const std::vector<float>& sound = take.Output()[0];
    std::vector<double> x, y;
    for (size_t i = 0; i < 19200 && !take.Data().grains.Kept().empty(); i += 24) {
        const auto at = static_cast<size_t>(kStart * Take::kRate) + i;
        const auto real = static_cast<double>(sound[at]);
        const auto turned = static_cast<double>(sound[at + kQuarter]);
        x.push_back(static_cast<double>(i) / Take::kRate * 1000.0);
        y.push_back(5.0 * std::hypot(real, turned));  // a grain has a gain of 2
    }
    diagram.Curve(x, y, colour);
}

void DrawShapes(const std::string& file) {
    DiagramSheet sheet(3, 3, 120.0);
    bool first = true;
    for (const std::string shape : {"Triangle", "Trapezoid", "Raised Cosine", "Gaussian", "Sinc",
                                    "Exponential", "Percussive", "Reversed Percussive"}) {
        const Diagram diagram = sheet.Add(shape, {"Time (ms)", Axis(0.0, 400.0), 4},
                                          {first ? "Level" : "", Axis(0.0, 1.1), 3});
        size_t number = 0;
        for (const std::string amount : {"10 %", "50 %", "90 %"})
            AddShape(diagram, shape, amount, CurveColour(number++));
        first = false;
    }
    double y = 500.0;
    size_t number = 0;
    for (const char* const amount : {"Grain Shape Amount 10 %", "50 %", "90 %"}) {
        sheet.Page().Line(640.0, y - 4.0, 664.0, y - 4.0, CurveColour(number++), 3.0);
        sheet.Page().Text(674.0, y, amount, {13.0, false, Palette::kInk});
        y += 24.0;
    }
    sheet.Save(file);
}

/// A frozen second of a tone that does not fit into it: the seam at the write head.
void DrawSeams(const std::string& file) {
    DiagramSheet sheet(1, 2, 200.0);
    for (const std::string fade : {"Off", "On"}) {
        const Diagram diagram =
            sheet.Add("Write Head Crossfade " + fade, {"Time (ms)", Axis(0.0, 30.0), 6},
                      {"Amplitude", Axis(-0.5, 0.5), 4});
        Take take({"Buffer Length=1/2", "Density=2 Hz", "Spray=0 %", "Width=0 %",
                   "Grain Shape=Trapezoid", "Grain Shape Amount=10 %", "Play Head Mode=Manual",
                   "Play Head Position=40 %", "Write Head Crossfade=" + fade,
                   "Size Follows Density=On", "Grain Size=1x"});
        take.Change(1.6, "Freeze", "On");
        take.Play(Tone(3.5, 220.4, 0.15));
        std::vector<double> x, y;
        for (size_t i = 0; i < 1440; ++i) {
            x.push_back(static_cast<double>(i) / 48.0);
            y.push_back(static_cast<double>(
                take.Output()[0][static_cast<size_t>(2.7 * Take::kRate) - 720 + i]));
        }
        diagram.Curve(x, y, CurveColour(fade == "On" ? 0 : 1));
    }
    sheet.Save(file);
}

void DrawLoFi(const std::string& file) {
    DiagramSheet sheet(2, 3, 130.0);
    for (const std::string kind :
         {"Off", "Nearest Sample", "8 Bit Log", "8 Bit Quiet", "12 Bit", "10 Bit"}) {
        const Diagram diagram =
            sheet.Add(kind, {"Time (ms)", Axis(0.0, 6.0), 6}, {"Amplitude", Axis(-0.05, 0.05), 4});
        Take take({"Buffer Length=2/1", "Density=4 Hz", "Size Follows Density=On", "Grain Size=1x",
                   "Grain Shape=Trapezoid", "Grain Shape Amount=10 %", "Spray=0 %", "Width=0 %",
                   "Pitch=-24 st", "Play Head Offset=500 ms", "Lo-Fi=" + kind});
        take.Play(Tone(2.5, 1600.0, 0.02));
        std::vector<double> x, y;
        for (size_t i = 0; i < 288; ++i) {
            x.push_back(static_cast<double>(i) / 48.0);
            y.push_back(
                static_cast<double>(take.Output()[0][static_cast<size_t>(2.13 * Take::kRate) + i]));
        }
        diagram.Curve(x, y, CurveColour(0), 1.4);
    }
    sheet.Save(file);
}

double Level(const std::vector<float>& sound, double from, double to) {
    double sum = 1.0e-12;
    const auto first = static_cast<size_t>(from * Take::kRate);
    const auto last = std::min(sound.size(), static_cast<size_t>(to * Take::kRate));
    for (size_t i = first; i < last; ++i)
        sum += static_cast<double>(sound[i]) * static_cast<double>(sound[i]);
    return 10.0 * std::log10(sum / static_cast<double>(last - first));
}

/// A stream of grains that repeats what comes in half a second later.
Settings Echo(const Settings& more) {
    Settings all{
        "Buffer Length=2/1", "Density=40 Hz",           "Grain Size=50 ms",     "Spray=0 %",
        "Width=0 %",         "Play Head Offset=500 ms", "Granular Volume=-6 dB"};
    all.insert(all.end(), more.begin(), more.end());
    return all;
}

void DrawFeedback(const std::string& file) {
    DiagramSheet sheet(1, 1, 200.0);
    const Diagram diagram =
        sheet.Add("What comes back of a short note", {"Time (s)", Axis(0.0, 6.0), 6},
                  {"Level (dB)", Axis(-70.0, 0.0), 7});
    diagram.Key({"Feedback off",
                 "\xe2\x88\x92"
                 "12 dB",
                 "\xe2\x88\x92"
                 "6 dB",
                 "0 dB"});
    size_t number = 0;
    for (const std::string gain : {"-70 dB", "-12 dB", "-6 dB", "0 dB"}) {
        Take take(Echo({"Feedback=" + gain, "Pitch=0 st"}));
        take.Play(Tone(6.0, 440.0, 0.1, 0.0, 0.2));
        std::vector<double> x, y;
        for (uint32_t window = 0; window < 238; ++window) {
            const double time = 0.025 * window;
            x.push_back(time + 0.0125);
            y.push_back(std::max(-80.0, Level(take.Output()[0], time, time + 0.025)));
        }
        diagram.Curve(x, y, CurveColour(number++));
    }
    sheet.Save(file);
}

/// Level of one frequency in a stretch of sound, in dB.
double PartDb(const std::vector<float>& sound, double hertz, double from, double to) {
    std::complex<double> sum = 0.0;
    const auto first = static_cast<size_t>(from * Take::kRate);
    const auto last = static_cast<size_t>(to * Take::kRate);
    for (size_t i = first; i < last; ++i)
        sum +=
            static_cast<double>(sound[i]) *
            std::polar(1.0, -2.0 * std::numbers::pi * hertz * static_cast<double>(i) / Take::kRate);
    return 20.0 * std::log10(std::abs(sum) / static_cast<double>(last - first) + 1.0e-9);
}

/// How dull a low-pass makes the dry sound and its repeats in each of the three places of a slot.
void DrawSlots(const std::string& file) {
    constexpr double kLow = 400.0, kHigh = 4000.0;
    DiagramSheet sheet(1, 1, 200.0);
    const Diagram diagram = sheet.Add("Treble in the dry sound and in its repeats",
                                      {"Dry sound (0), repeats (1 to 5)", Axis(-0.2, 5.2), 6},
                                      {"Treble (dB)", Axis(-80.0, 5.0), 5});
    diagram.Key({"Feedback Loop", "Wet Signal", "After Mix"});
    size_t number = 0;
    for (const std::string place : {"Feedback Loop", "Wet Signal", "After Mix"}) {
        Take take(Echo({"Feedback=-11 dB", "Dry / Wet=60 %", "FX1_ModuleType=Filter",
                        "FX1_Position=" + place, "FX1_Dry / Wet=100 %",
                        "FX1_MultiModeFilter_Mode=Low-Pass", "FX1_MultiModeFilter_Freq=1500 Hz",
                        "FX1_MultiModeFilter_Q=0.7"}));
        Planes chord = Tone(4.0, kLow, 0.05, 0.0, 0.2);
        const Planes treble = Tone(4.0, kHigh, 0.05, 0.0, 0.2);
        for (uint32_t c = 0; c < 2; ++c)
            for (size_t i = 0; i < chord.Frames(); ++i)
                chord[c][i] += treble[c][i];
        take.Play(chord);
        std::vector<double> x, y;
        for (int repeat = 0; repeat <= 5; ++repeat) {
            const double from = 0.505 * repeat + 0.08;  // the loop adds 5 ms each time
            x.push_back(repeat);
            y.push_back(PartDb(take.Output()[0], kHigh, from, from + 0.1) -
                        PartDb(take.Output()[0], kLow, from, from + 0.1));
            diagram.HalfDot(x.back(), y.back(), false, CurveColour(number));
            diagram.HalfDot(x.back(), y.back(), true, CurveColour(number));
        }
        diagram.Curve(x, y, CurveColour(number++));
    }
    sheet.Save(file);
}

/// Level of the dry and of the wet sound along the way of the mix.
void DrawMix(const std::string& file) {
    DiagramSheet sheet(1, 1, 180.0);
    const Diagram diagram = sheet.Add("Dry / Wet", {"Dry / Wet (%)", Axis(0.0, 100.0), 10},
                                      {"Gain", Axis(0.0, 1.05), 4});
    diagram.Key({"dry", "wet"});
    std::vector<double> x, dry, wet;
    for (int percent = 0; percent <= 100; percent += 5) {
        Take take(Echo({"Dry / Wet=" + std::to_string(percent) + " %"}));
        take.Play(Tone(1.0, 440.0, 0.1, 0.0, 0.2));
        x.push_back(percent);
        dry.push_back(std::pow(10.0, PartDb(take.Output()[0], 440.0, 0.05, 0.15) / 20.0));
        wet.push_back(std::pow(10.0, PartDb(take.Output()[0], 440.0, 0.58, 0.68) / 20.0));
    }
    const double dryTop = dry.front(), wetTop = wet.back();
    for (size_t i = 0; i < x.size(); ++i) {
        dry[i] /= dryTop;
        wet[i] /= wetTop;
    }
    diagram.Curve(x, dry, CurveColour(0));
    diagram.Curve(x, wet, CurveColour(1));
    sheet.Save(file);
}

/// The dry sound behind the input, as a host hears it that makes up for nothing.
void DrawLatency(const std::string& file) {
    constexpr double kMilliseconds = 12.0;
    DiagramSheet sheet(1, 1, 160.0);
    const Diagram diagram =
        sheet.Add("Latency at 48 kHz", {"Time (ms)", Axis(0.0, kMilliseconds), 12},
                  {"Signal", Axis(-0.6, 0.6), 4});
    diagram.Key({"input", "output"});
    Take take({"Dry / Wet=0 %"});
    const Planes input = Tone(0.1, 1000.0, 0.5, 0.002, 0.005);
    take.Play(input);
    const double late = take.LatencyFrames();
    std::vector<double> x, in, out;
    for (size_t i = 0; static_cast<double>(i) < kMilliseconds * 0.001 * Take::kRate; ++i) {
        const double frame = static_cast<double>(i);
        x.push_back(frame / Take::kRate * 1000.0);
        in.push_back(static_cast<double>(input[0][i]));
        out.push_back(frame < late
                          ? 0.0
                          : static_cast<double>(take.Output()[0][i - static_cast<size_t>(late)]));
    }
    diagram.Curve(x, in, CurveColour(0));
    diagram.Curve(x, out, CurveColour(1));
    sheet.Save(file);
}

}  // namespace

void DrawSoundPages(const std::string& folder) {
    DrawShapes(folder + "/shapes.png");
    DrawSeams(folder + "/seams.png");
    DrawLoFi(folder + "/lo-fi.png");
    DrawFeedback(folder + "/feedback.png");
    DrawSlots(folder + "/slots.png");
    DrawMix(folder + "/mix.png");
    DrawLatency(folder + "/latency.png");
}

}  // namespace Quorvan::Tools
