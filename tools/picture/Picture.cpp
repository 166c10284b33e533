#include "tools/picture/Picture.h"

#include <algorithm>

#include "tools/picture/Canvas.h"
#include "tools/picture/GrainPanel.h"
#include "tools/picture/ModulationPanel.h"
#include "tools/picture/SpectrogramPanel.h"
#include "tools/picture/WaveformPanel.h"

namespace Quorvan::Tools {

namespace {

constexpr int kWidth = 1600;  // pixels
constexpr int kHeight = 1200;
constexpr double kModulationHeight = 196.0;  // that its panel adds to the page
constexpr double kLeft = 96.0;               // of the diagrams
constexpr double kAcross = 1250.0;           // their width
constexpr double kRightMargin = 32.0;
constexpr double kLegends = kLeft + kAcross + 32.0;

Box Place(double y, double height) { return {kLeft, y, kAcross, height}; }

void DrawHead(Canvas& page, const PictureData& data) {
    page.Text(kLeft, 44.0, data.title, {25.0, true, Palette::kInk});
    page.Text(kLeft, 72.0, data.subtitle, {15.0, false, Palette::kQuietInk});
    page.Text(kWidth - kRightMargin, 44.0, data.effects, {15.0, false, Palette::kInk},
              Canvas::Align::Right);
}

void DrawWaveforms(Canvas& page, const PictureData& data, const Axis& time) {
    const double reach = WaveformPanel::ReachFor(data.input, data.output);
    const Axis amplitude(-reach, reach);
    const Panel inputFrame(page, Place(116.0, 124.0), time, amplitude);
    const WaveformPanel input(inputFrame, data.input, data.rate, Palette::kInput);
    input.Draw("Input");
    input.DrawLegend(kLegends);
    if (data.outputFrames > data.inputFrames)
        inputFrame.DrawMoment(static_cast<double>(data.inputFrames) / data.rate, "input ends",
                              Palette::kQuietInk);
    const Panel outputFrame(page, Place(282.0, 124.0), time, amplitude);
    const WaveformPanel output(outputFrame, data.output, data.rate, Palette::kOutput);
    output.Draw("Output");
    output.DrawLegend(kLegends);
}

void DrawSpectrogram(Canvas& page, const PictureData& data, const Axis& time) {
    const Axis frequency(data.spectrogram.LowestHertz(), data.spectrogram.HighestHertz(),
                         Axis::Scale::Logarithmic);
    const Panel frame(page, Place(448.0, 296.0), time, frequency);
    const SpectrogramPanel levels(frame, data.spectrogram, data.rate);
    levels.Draw("Output spectrogram");
    levels.DrawLegend(kLegends);
}

void DrawModulation(Canvas& page, const PictureData& data, const Axis& time) {
    const Axis reach = ModulationPanel::Reach(*data.modulation, data.sources);
    const Panel frame(page, Place(788.0, 154.0), time, reach);
    const ModulationPanel sources(frame, *data.modulation, data.sources, data.rate);
    sources.Draw("Modulation sources");
    sources.DrawLegend(kLegends);
}

void DrawGrains(Canvas& page, const PictureData& data, const Axis& time, double top) {
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
    const auto frames = static_cast<double>(std::max<uint64_t>(data.outputFrames, 1));
    const Axis time(0.0, frames / data.rate);
    DrawHead(page, data);
    DrawWaveforms(page, data, time);
    DrawSpectrogram(page, data, time);
    if (hasModulation)
        DrawModulation(page, data, time);
    DrawGrains(page, data, time, 788.0 + extra);
    page.Save(output);
}

}  // namespace Quorvan::Tools
