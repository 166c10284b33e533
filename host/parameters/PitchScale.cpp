#include "host/parameters/PitchScale.h"

#include <algorithm>
#include <cmath>
#include <span>

#include "granular/GranularTables.h"

namespace Quorvan::Host {

uint32_t PitchScale::ScaleAt(float position) {
    constexpr auto kCount = static_cast<float>(dsp::kScaleCount);
    return static_cast<uint32_t>(std::clamp(std::floor(position * kCount), 0.0f, kCount - 1.0f));
}

PitchScale::PitchScale(uint32_t chosen) : scale(std::clamp(chosen, 1u, dsp::kScaleCount - 1)) {}

double PitchScale::SemitonesAt(float position) const {
    const std::span<const float> allowed = dsp::ScaleSemitones(scale);
    const auto count = static_cast<float>(allowed.size());
    const float step = std::clamp(std::floor(position * count), 0.0f, count - 1.0f);
    return static_cast<double>(allowed[static_cast<size_t>(step)]);
}

float PitchScale::PositionOf(double semitones) const {
    const std::span<const float> allowed = dsp::ScaleSemitones(scale);
    const auto nearest =
        std::min_element(allowed.begin(), allowed.end(), [semitones](float a, float b) {
            return std::abs(static_cast<double>(a) - semitones) <
                   std::abs(static_cast<double>(b) - semitones);
        });
    return static_cast<float>(nearest - allowed.begin()) / static_cast<float>(allowed.size() - 1);
}

}  // namespace Quorvan::Host
