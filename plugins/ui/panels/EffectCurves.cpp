#include <array>
#include <cmath>
#include <complex>
#include <numbers>

#include "effects/CompressionCurve.h"
#include "effects/DistortionCurves.h"
#include "effects/MultiModeFilter.h"
#include "plugins/ui/panels/EffectViews.h"

namespace Quorvan::Ui {

namespace {

using Filter = dsp::MultiModeFilter;

constexpr double kLowest = 20.0, kHighest = 20000.0;  // hertz
constexpr Type kSmallDim{Theme::kSmall, Theme::kDim};

double Decibels(double gain) { return 20.0 * std::log10(std::max(gain, 1e-6)); }

double GainOf(double decibels) { return std::pow(10.0, decibels / 20.0); }

/// A section's response is that of an analogue one with its frequencies bent.
double SectionGain(uint32_t mode, double hertz, double corner, double q, double rate) {
    const double x = std::tan(std::numbers::pi * std::min(hertz / rate, 0.499)) /
                     std::tan(std::numbers::pi * std::min(corner / rate, 0.49));
    const double below = std::hypot(1.0 - x * x, x / q);
    return (mode == Filter::kHighPass ? x * x : mode == Filter::kBandPass ? x : 1.0) / below;
}

double CombGainAt(uint32_t mode, double hertz, double pitch, double depth, double rate) {
    const double turn = -2.0 * std::numbers::pi * hertz * std::floor(rate / pitch) / rate;
    const std::complex<double> late = std::polar(depth, turn);
    return mode == Filter::kCombFeedForward
               ? std::abs(1.0 + late)
               : static_cast<double>(Filter::CombGain(static_cast<float>(depth))) /
                     std::abs(1.0 - late);
}

void DrawFrequencyGrid(Painter& painter, const Rect& inner, double zero) {
    painter.Fill({inner.x, painter.Snap(zero), inner.width, 1.0}, Theme::kLine);
    for (const auto& [hertz, name] :
         {std::pair(100.0, "100"), std::pair(1000.0, "1k"), std::pair(10000.0, "10k")}) {
        const double x =
            inner.x + inner.width * std::log(hertz / kLowest) / std::log(kHighest / kLowest);
        painter.Fill({painter.Snap(x), inner.y, 1.0, inner.height - 14.0}, Theme::kLine);
        painter.Text({x - 20.0, inner.Bottom() - 13.0, 40.0, 13.0}, name, kSmallDim, Align::Centre);
    }
}

}  // namespace

void DrawFilter(const EffectNow& now, Painter& painter, const Rect& inner) {
    constexpr size_t kPoints = 420;
    constexpr double kTop = 18.0, kRange = 66.0;  // decibels
    const uint32_t mode = now.Choice(0), stages = now.Choice(3) + 1;
    const double corner = now.values[1], q = now.values[2];
    const double depth = static_cast<double>(Filter::kDeepestComb) * now.positions[2];
    const double even = static_cast<double>(Filter::OutputGain(
        static_cast<int32_t>(mode), static_cast<int32_t>(stages), static_cast<float>(q)));
    const double height = inner.height - 14.0;
    const auto y = [&](double decibels) {
        return inner.y + height * std::clamp((kTop - decibels) / kRange, 0.0, 1.0);
    };
    DrawFrequencyGrid(painter, inner, y(0.0));
    std::vector<Point> line;
    for (size_t i = 0; i < kPoints; ++i) {
        const double share = static_cast<double>(i) / (kPoints - 1);
        const double hertz = kLowest * std::pow(kHighest / kLowest, share);
        const double gain =
            mode >= Filter::kCombFeedback
                ? CombGainAt(mode, hertz, corner, depth, now.sampleRate)
                : even * std::pow(SectionGain(mode, hertz, corner, q, now.sampleRate), stages);
        line.push_back({inner.x + inner.width * share, y(Decibels(gain))});
    }
    painter.Area(line, inner.y + height, Theme::kOn.Faded(0.12));
    painter.Path(line, Theme::kOn, mode >= Filter::kCombFeedback ? 1.0 : 2.0);
}

void DrawDistortion(const EffectNow& now, Painter& painter, const Rect& inner) {
    constexpr size_t kPoints = 200;
    const auto gain = static_cast<float>(GainOf(now.values[0]));
    std::array<float, kPoints> samples{};
    for (size_t i = 0; i < kPoints; ++i)
        samples[i] = gain * (2.0f * static_cast<float>(i) / (kPoints - 1) - 1.0f);
    dsp::DistortionCurves::Instance().Apply(static_cast<int32_t>(now.Choice(1)), samples.data(),
                                            kPoints);
    const Point middle = inner.Centre();
    painter.Fill({painter.Snap(middle.x), inner.y, 1.0, inner.height}, Theme::kLine);
    painter.Fill({inner.x, painter.Snap(middle.y), inner.width, 1.0}, Theme::kLine);
    std::vector<Point> line;
    for (size_t i = 0; i < kPoints; ++i) {
        const double y = std::clamp(static_cast<double>(samples[i]), -1.0, 1.0);
        line.push_back({inner.x + inner.width * static_cast<double>(i) / (kPoints - 1),
                        middle.y - 0.5 * inner.height * y});
    }
    painter.Path(line, Theme::kOn, 2.0);
}

void DrawCompressor(const EffectNow& now, Painter& painter, const Rect& inner) {
    constexpr double kQuietest = -60.0;
    constexpr size_t kPoints = 120;
    const double slope = now.Choice(2) != 0 ? 0.0 : 1.0 / now.values[1];
    const dsp::CompressionCurve curve(static_cast<float>(now.values[0]), static_cast<float>(slope),
                                      static_cast<float>(now.values[3]));
    const double makeup =
        now.Choice(7) != 0 ? Decibels(static_cast<double>(curve.MakeupGain())) : 0.0;
    const auto at = [&](double in, double out) {
        return Point{inner.x + inner.width * (1.0 - in / kQuietest),
                     inner.y + inner.height * std::clamp(out / kQuietest, 0.0, 1.0)};
    };
    for (const double level : {-48.0, -36.0, -24.0, -12.0}) {
        painter.Fill({painter.Snap(at(level, 0.0).x), inner.y, 1.0, inner.height}, Theme::kLine);
        painter.Fill({inner.x, painter.Snap(at(0.0, level).y), inner.width, 1.0}, Theme::kLine);
    }
    painter.Line(at(kQuietest, kQuietest), at(0.0, 0.0), Theme::kDim.Faded(0.6));
    std::vector<Point> line;
    for (size_t i = 0; i < kPoints; ++i) {
        const double in = kQuietest * (1.0 - static_cast<double>(i) / (kPoints - 1));
        // The threshold counts behind the gains that go ahead.
        const double level = in + now.values[4] + now.values[6];
        auto change = static_cast<float>(GainOf(level));
        curve.LevelsToGainsDb(&change, 1);
        line.push_back(
            at(in, in + now.values[4] + static_cast<double>(change) + makeup + now.values[5]));
    }
    painter.Path(line, Theme::kOn, 2.0);
    painter.Text({inner.x, inner.y, 80.0, 13.0}, "-60 .. 0 dB", kSmallDim);
}

}  // namespace Quorvan::Ui
