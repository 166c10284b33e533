#include "tools/picture/WaveformPanel.h"

#include <algorithm>

namespace Quorvan::Tools {

namespace {

constexpr size_t kValueTicks = 4;
constexpr double kPeakOpacity = 0.45;
constexpr Canvas::Type kLegend{13.0, false, Palette::kInk};

}  // namespace

Waveform::Bin WaveformPanel::Under(double fromSeconds, double toSeconds) const {
    const std::vector<Waveform::Bin>& bins = waveform.Bins();
    const double binsPerSecond = sampleRate / static_cast<double>(waveform.FramesPerBin());
    const auto first = static_cast<size_t>(std::max(0.0, fromSeconds * binsPerSecond));
    const auto last = static_cast<size_t>(std::max(0.0, toSeconds * binsPerSecond));
    Waveform::Bin joined;
    for (size_t i = first; i < bins.size() && (i == first || i < last); ++i)
        joined.Join(bins[i]);
    return joined;
}

void WaveformPanel::DrawOutline() const {
    const Box& box = panel.Area();
    const double secondsPerPixel = (panel.Time().High() - panel.Time().Low()) / box.width;
    const int width = static_cast<int>(box.width);
    for (int x = 0; x < width; ++x) {
        const Waveform::Bin bin = Under(x * secondsPerPixel, (x + 1) * secondsPerPixel);
        if (bin.samples == 0)
            continue;
        DrawColumn(box.x + x, bin);
    }
}

void WaveformPanel::DrawColumn(double x, const Waveform::Bin& bin) const {
    const auto lowest = static_cast<double>(bin.lowest);
    const auto highest = static_cast<double>(bin.highest);
    const auto rms = static_cast<double>(bin.Rms());
    if (inDecibels) {
        const double floor = panel.Value().Low();
        const double peak = LevelDecibels(std::max(-lowest, highest), floor);
        DrawBar(x, floor, peak, colour.Faded(kPeakOpacity));
        DrawBar(x, floor, LevelDecibels(rms, floor), colour);
        return;
    }
    DrawBar(x, lowest, highest, colour.Faded(kPeakOpacity));
    DrawBar(x, std::max(-rms, lowest), std::min(rms, highest), colour);
}

void WaveformPanel::DrawBar(double x, double low, double high, const Colour& shade) const {
    const double top = panel.Y(high);
    panel.Page().Fill({x, top, 1.0, std::max(0.7, panel.Y(low) - top)}, shade);
}

void WaveformPanel::Draw(const std::string& title) const {
    panel.DrawGrid(kValueTicks);
    panel.Page().ClipTo(panel.Area());
    DrawOutline();
    panel.Page().ClipNothing();
    panel.DrawFrame(title, inDecibels ? "Level (dB)" : "Amplitude", kValueTicks, false);
}

void WaveformPanel::DrawLegend(double x) const {
    Canvas& page = panel.Page();
    const double y = panel.Area().y + 14.0;
    const auto entry = [&](double at, const Colour& shade, const char* text) {
        page.Fill({x, at - 10.0, 18.0, 12.0}, shade);
        page.Text(x + 28.0, at, text, kLegend);
    };
    entry(y, colour.Faded(kPeakOpacity), "peak");
    entry(y + 22.0, colour, "effective (RMS)");
}

}  // namespace Quorvan::Tools
