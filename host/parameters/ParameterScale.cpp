#include "host/parameters/ParameterScale.h"

#include <algorithm>
#include <cmath>

namespace Quorvan::Host {

ParameterScale::ParameterScale(const dsp::Parameter& parameter, const ParameterForm& shown)
    : record(parameter), form(shown) {
    if (IsSwitch()) {
        steps = 2;
    } else if (IsChoice()) {
        steps = static_cast<uint32_t>(record.steps);
        maximum = static_cast<double>(steps) - 1.0;
    } else {
        const bool raw = record.kind == dsp::PotardKind::kRaw;
        minimum = form.factor * (raw ? 0.0 : static_cast<double>(record.minValue));
        maximum = form.factor * (raw ? 1.0 : static_cast<double>(record.maxValue));
    }
}

double ParameterScale::ValueOf(float position) const {
    if (IsSwitch())
        return position > 0.5f ? 1.0 : 0.0;
    if (IsChoice())
        return std::clamp(std::floor(static_cast<double>(position * record.steps)), minimum,
                          maximum);
    return form.factor * static_cast<double>(record.ValueOf(position));
}

float ParameterScale::PositionOf(double value) const {
    const double held = std::clamp(value, minimum, maximum);
    if (IsSwitch())
        return held > 0.5 ? 1.0f : 0.0f;
    if (IsChoice())
        return steps > 1 ? static_cast<float>(std::round(held) / maximum) : 0.0f;
    return std::clamp(record.PositionOf(static_cast<float>(held / form.factor)), 0.0f, 1.0f);
}

double ParameterScale::StepValue(uint32_t step) const {
    const float climbed = static_cast<float>(step) * record.stepSize;
    return static_cast<double>(record.stepSize >= 0.0f ? record.minValue + climbed
                                                       : record.maxValue + climbed);
}

}  // namespace Quorvan::Host
