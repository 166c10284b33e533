#include "tools/picture/Picture.h"

#include <algorithm>

#include "tools/picture/Canvas.h"
#include "tools/picture/GrainPanel.h"
#include "tools/picture/ModulationPanel.h"
#include "tools/picture/SpectrogramPanel.h"
#include "tools/picture/TimeTicks.h"
#include "tools/picture/WaveformPanel.h"

namespace Quorvan::Tools {

namespace {

constexpr int kWidth = 1600;  // pixels
constexpr int kHeight = 1200;
constexpr double kModulationHeight = 196.0;  // that its panel adds to the page
constexpr double kLeft = 96.0;               // of the diagrams
constexpr double kAcross = 1250.0;           // their width
constexpr double kRightMargin = 32.0;
constexpr double kEffectsWidth = 560.0;
constexpr size_t kTimeTicks = 12;
constexpr size_t kBarTicks = 20;
constexpr double kLegends = kLeft + kAcross + 32.0;

Box Place(double y, double height) { return {kLeft, y, kAcross, height}; }

/// The section, as far as there is sound in it.
TimeScale TimeOf(const PictureData& data) {
    const uint64_t first = data.section.from;
    const uint64_t end = std::max(std::min(data.section.to, data.outputFrames), first + 1);
    const double from = static_cast<double>(first) / data.rate;
    const double to = static_cast<double>(end) / data.rate;
    TimeScale time{{from, to}, ClockTicks(from, to, kTimeTicks), {}};
    if (data.song != nullptr)
        time.bars = BarTicks(*data.song, data.meter, from, to, kBarTicks);
    return time;
}

/// Names may be of any length and script: each is fitted by itself, so that a line that reads from
/// the right stays inside its own.
void DrawHead(Canvas& page, const PictureData& data) {
    constexpr Canvas::Type kTitle{25.0, true, Palette::kInk};
    constexpr Canvas::Type kText{15.0, false, Palette::kQuietInk};
    const std::string arrow = "  \xe2\x86\x92  ";
    const double right = kWidth - kRightMargin;
    const double effects = page.FittedText(right, 44.0, kEffectsWidth, data.effects,
                                           {15.0, false, Palette::kInk}, Canvas::Align::Right);
    const double room =
        right - kLeft - (effects > 0.0 ? effects + 40.0 : 0.0) - page.TextWidth(arrow, kTitle);
    const double outputWidth = page.TextWidth(data.outputName, kTitle);
    const double inputRoom = std::max(0.5 * room, room - outputWidth);
    double x = kLeft;
    const double inputWidth = page.FittedText(x, 44.0, inputRoom, data.inputName, kTitle);
    x += inputWidth;
    page.Text(x, 44.0, arrow, kTitle);
    x += page.TextWidth(arrow, kTitle);
    page.FittedText(x, 44.0, room - inputWidth, data.outputName, kTitle);

    const double rest = page.TextWidth(data.subtitle, kText);
    const double preset =
        page.FittedText(kLeft, 72.0, std::max(120.0, right - kLeft - rest), data.preset, kText);
    page.FittedText(kLeft + preset, 72.0, right - kLeft - preset, data.subtitle, kText);
}

void DrawWaveforms(Canvas& page, const PictureData& data, const TimeScale& time) {
    const LevelScale levels = LevelScale::For(data.input, data.output, data.levels);
    const Panel inputFrame(page, Place(116.0, 124.0), time, levels.axis);
    const WaveformPanel input(inputFrame, data.input, data.rate, Palette::kInput,
                              levels.inDecibels);
    input.Draw("Input");
    input.DrawLegend(kLegends);
    const double inputEnd = static_cast<double>(data.inputFrames) / data.rate;
    if (inputEnd > time.axis.Low() && inputEnd < time.axis.High())
        inputFrame.DrawMoment(inputEnd, "input ends", Palette::kQuietInk);
    const Panel outputFrame(page, Place(282.0, 124.0), time, levels.axis);
    const WaveformPanel output(outputFrame, data.output, data.rate, Palette::kOutput,
                               levels.inDecibels);
    output.Draw("Output");
    output.DrawLegend(kLegends);
}

void DrawSpectrogram(Canvas& page, const PictureData& data, const TimeScale& time) {
    const Axis frequency(data.spectrogram.LowestHertz(), data.spectrogram.HighestHertz(),
                         Axis::Scale::Logarithmic);
    const Panel frame(page, Place(448.0, 296.0), time, frequency);
    const SpectrogramPanel levels(frame, data.spectrogram, data.rate);
    levels.Draw("Output spectrogram");
    levels.DrawLegend(kLegends);
}

void DrawModulation(Canvas& page, const PictureData& data, const TimeScale& time) {
    const Axis reach = ModulationPanel::Reach(*data.modulation, data.sources);
    const Panel frame(page, Place(788.0, 154.0), time, reach);
    const ModulationPanel sources(frame, *data.modulation, data.sources, data.rate);
    sources.Draw("Modulation sources");
    sources.DrawLegend(kLegends);
}

void DrawGrains(Canvas& page, const PictureData& data, const TimeScale& time, double top) {
    const Axis tape(0.0, GrainPanel::TapeSeconds(data));
    const Panel frame(page, Place(top, 350.0), time, tape);
    const GrainPanel grains(frame, data);
    grains.Draw("Grains");
    grains.DrawLegend(kLegends);
}

}  // namespace

void DrawPicture(const PictureData& data, AtomicOutput& output) {
    const bool hasModulation = data.modulation != nullptr && !data.sources.empty();
    const double extra = hasModulation ? kModulationHeight : 0.0;
    Canvas page(kWidth, kHeight + static_cast<int>(extra));
    const TimeScale time = TimeOf(data);
    DrawHead(page, data);
    DrawWaveforms(page, data, time);
    DrawSpectrogram(page, data, time);
    if (hasModulation)
        DrawModulation(page, data, time);
    DrawGrains(page, data, time, 788.0 + extra);
    page.Save(output);
}

}  // namespace Quorvan::Tools
