#include "tools/picture/LevelScale.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>

namespace Quorvan::Tools {

namespace {

constexpr double kQuiet = -36.0;      // dB
constexpr double kReach = 80.0;       // dB from the top to the floor
constexpr double kLowestTop = -60.0;  // dB
constexpr double kSilence = -200.0;   // dB

Waveform::Bin Whole(const Waveform& waveform) {
    Waveform::Bin whole;
    for (const Waveform::Bin& bin : waveform.Bins())
        whole.Join(bin);
    return whole;
}

double PeakOf(const Waveform::Bin& bin) {
    return static_cast<double>(std::max(-bin.lowest, bin.highest));
}

/// Too quiet for a linear scale to show it beside something loud. Silence is shown by both.
bool IsQuiet(const Waveform::Bin& bin) {
    return PeakOf(bin) > 0.0 && LevelDecibels(static_cast<double>(bin.Rms()), kSilence) < kQuiet;
}

/// A round reach of samples.
double ReachFor(double peak) {
    constexpr std::array kReaches{0.01, 0.02, 0.05, 0.1, 0.2, 0.5, 1.0, 2.0, 5.0};
    const auto* const reach =
        std::find_if(kReaches.begin(), kReaches.end(), [peak](double one) { return peak <= one; });
    return reach != kReaches.end() ? *reach : std::max(10.0, std::ceil(peak));
}

}  // namespace

double LevelDecibels(double level, double floor) {
    return level > 0.0 ? std::max(floor, 20.0 * std::log10(level)) : floor;
}

LevelScale LevelScale::For(const Waveform& a, const Waveform& b, LevelForm form) {
    const Waveform::Bin wholes[] = {Whole(a), Whole(b)};
    const double peak = std::max(PeakOf(wholes[0]), PeakOf(wholes[1]));
    const bool isQuiet = std::any_of(std::begin(wholes), std::end(wholes), IsQuiet);
    if (form == LevelForm::Linear || (form == LevelForm::Auto && !isQuiet)) {
        const double reach = ReachFor(peak);
        return {false, {-reach, reach}};
    }
    const double top = std::max(kLowestTop, 10.0 * std::ceil(0.1 * LevelDecibels(peak, kSilence)));
    return {true, {top - kReach, top}};
}

}  // namespace Quorvan::Tools
