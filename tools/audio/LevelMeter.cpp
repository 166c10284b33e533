#include "tools/audio/LevelMeter.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace Quorvan::Tools {

namespace {

constexpr size_t kSteps = 4;           // of a piece
constexpr double kOffsetDb = -0.691;   // by which a sine of 997 Hz on one side reads its level
constexpr double kRelativeGate = 0.1;  // of the mean power: 10 LU below

double PowerOf(double lufs) { return std::pow(10.0, (lufs - kOffsetDb) / 10.0); }

/// Mean of those above a gate; 0 where there is none.
double MeanAbove(const std::vector<double>& powers, double gate) {
    double sum = 0.0;
    size_t count = 0;
    for (const double power : powers)
        if (power >= gate) {
            sum += power;
            ++count;
        }
    return count > 0 ? sum / static_cast<double>(count) : 0.0;
}

}  // namespace

LevelMeter::LevelMeter(double rate, uint32_t channels)
    : channelCount(channels),
      step(static_cast<size_t>(std::lround(rate / 10.0))),
      weighting(rate) {}

void LevelMeter::Add(const float* const* channels, size_t frames) {
    float highest = peak;
    for (uint32_t c = 0; c < channelCount; ++c)
        for (size_t i = 0; i < frames; ++i)
            highest = std::max(highest, std::abs(channels[c][i]));
    peak = highest;
    for (size_t at = 0; at < frames;) {
        const size_t count = std::min(frames - at, step - filled);
        energy += weighting.Energy(channels[0] + at, channelCount > 1 ? channels[1] + at : nullptr,
                                   count);
        at += count;
        filled += count;
        if (filled == step)
            EndStep();
    }
}

void LevelMeter::EndStep() {
    recent.push_back(energy);
    if (recent.size() == kSteps) {
        static const double kAbsoluteGate = PowerOf(-70.0);
        const double power =
            std::accumulate(recent.begin(), recent.end(), 0.0) / static_cast<double>(kSteps * step);
        if (power >= kAbsoluteGate)
            powers.push_back(power);
        recent.erase(recent.begin());
    }
    filled = 0;
    energy = 0.0;
}

std::optional<double> LevelMeter::Loudness() const {
    const double power = MeanAbove(powers, kRelativeGate * MeanAbove(powers, 0.0));
    if (power <= 0.0)
        return std::nullopt;
    return 10.0 * std::log10(power) + kOffsetDb;
}

}  // namespace Quorvan::Tools
