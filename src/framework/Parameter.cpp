#include "framework/Parameter.h"

#include <algorithm>
#include <cmath>

#include "basictools/math/mapping/IPotardMapping.h"
#include "basictools/math/mapping/PotardMappingUtils.h"
#include "primitives/BlockTests.h"

namespace Quorvan::dsp {

namespace {

void CopyPlainFields(Parameter& to, const Parameter& from) {
    to.rangeMin = from.rangeMin;
    to.rangeMax = from.rangeMax;
    to.reversed = from.reversed;
    to.kind = from.kind;
    to.steps = from.steps;
    to.stepSize = from.stepSize;
    to.minValue = from.minValue;
    to.maxValue = from.maxValue;
    to.normalized = from.normalized;
    to.value = from.value;
    to.freshness = from.freshness;
}

/// x held to 0..1. What is not a number counts as 0: a step found from it would be a wild index.
float HoldPosition(float x) { return std::min(std::max(0.0f, x), 1.0f); }

}  // namespace

Parameter& Parameter::operator=(const Parameter& other) {
    if (this != &other) {
        curveStorage = other.curveStorage;
        curve = curveStorage.Get();
        name = other.name;
        CopyPlainFields(*this, other);
    }
    return *this;
}

Parameter& Parameter::operator=(Parameter&& other) noexcept {
    if (this != &other) {
        curveStorage = std::move(other.curveStorage);
        curve = curveStorage.Get();
        other.curve = other.curveStorage.Get();
        name = std::move(other.name);
        CopyPlainFields(*this, other);
    }
    return *this;
}

Parameter Parameter::MakeStepped(std::string name, uint32_t count, float min) {
    Parameter made;
    made.name = std::move(name);
    made.ConfigureStepped(count, min);
    return made;
}

Parameter Parameter::MakeContinuous(std::string name, uint32_t kind, float min, float max,
                                    float x) {
    Parameter made;
    made.name = std::move(name);
    made.Configure(kind, min, max, x);
    return made;
}

void Parameter::Configure(uint32_t newKind, float min, float max, float x, float y, bool reverse) {
    curveStorage = MappingTools::PotardMappingUtils::Create(newKind, x, y);
    curve = curveStorage.Get();
    kind = newKind;
    minValue = min;
    maxValue = max;
    rangeMin = newKind == PotardKind::kRaw ? 0.0f : min;
    rangeMax = newKind == PotardKind::kRaw ? 1.0f : max;
    reversed = reverse;
    value = min;
    normalized = 0.0f;
    freshness = kAgree;
}

void Parameter::ConfigureStepped(uint32_t count, float min, float step) {
    const float span = static_cast<float>(count - 1) * std::abs(step);
    Configure(PotardKind::kLinear, min, min + span);
    kind = PotardKind::kStepped;
    steps = static_cast<float>(count);
    stepSize = step;
    value = step >= 0.0f ? minValue : maxValue;
}

float Parameter::SteppedValue(float position) const {
    const float climbed =
        std::min(std::floor(position * steps) * std::abs(stepSize), maxValue - minValue);
    return stepSize >= 0.0f ? minValue + climbed : maxValue - climbed;
}

float Parameter::ValueOf(float position) const {
    if (kind == PotardKind::kRaw)
        return position;
    if (kind == PotardKind::kStepped)
        return SteppedValue(position);
    const float p = std::clamp(reversed ? 1.0f - position : position, 0.0f, 1.0f);
    const float mapped = curve->Map(p);
    return curve->IsAbsolute() ? mapped : mapped * (rangeMax - rangeMin) + rangeMin;
}

float Parameter::PositionOf(float physical) const {
    if (kind == PotardKind::kRaw)
        return physical;
    if (kind == PotardKind::kStepped) {
        const float climbed = stepSize >= 0.0f ? physical - minValue : maxValue - physical;
        // A choice of one thing has no travel: it rests at the bottom.
        return maxValue == minValue ? 0.0f : climbed / (maxValue - minValue);
    }
    float fraction = physical;
    if (!curve->IsAbsolute()) {
        const float low = std::min(rangeMin, rangeMax);
        const float high = std::max(rangeMin, rangeMax);
        fraction = rangeMin == rangeMax
                       ? 0.0f
                       : (std::clamp(physical, low, high) - rangeMin) / (rangeMax - rangeMin);
    }
    const float q = curve->Unmap(fraction);
    return std::clamp(reversed ? 1.0f - q : q, 0.0f, 1.0f);
}

float Parameter::GetModulatedValue(float rowValue) {
    return ValueOf(HoldPosition(GetNormalized() + rowValue));
}

float Parameter::GetBlockValue(const ProcessBlock& block, uint32_t channel) {
    return IsRowActive(block, channel) ? GetModulatedValue(block.inputs[channel][0]) : GetValue();
}

float Parameter::GetBlockNormalized(const ProcessBlock& block, uint32_t channel) {
    const float position = GetNormalized();
    return IsRowActive(block, channel) ? HoldPosition(position + block.inputs[channel][0])
                                       : position;
}

void Parameter::FillBlockValues(const ProcessBlock& block, uint32_t channel, float* out) {
    if (!IsRowActive(block, channel)) {
        std::fill_n(out, block.numFrames, GetValue());
        return;
    }
    const float* row = block.inputs[channel];
    const float position = GetNormalized();
    for (uint32_t i = 0; i < block.numFrames; ++i)
        out[i] = HoldPosition(row[i] + position);
    MapPositions(out, block.numFrames);
}

void Parameter::MapPositions(float* positions, uint32_t count) const {
    if (kind == PotardKind::kRaw)
        return;
    // Most rows stand still over a block: one sample stands for all.
    if (count > 1 && IsConstant(positions, count)) {
        MapPositions(positions, 1);
        std::fill_n(positions + 1, count - 1, positions[0]);
        return;
    }
    if (kind == PotardKind::kStepped) {
        for (uint32_t i = 0; i < count; ++i)
            positions[i] = SteppedValue(positions[i]);
        return;
    }
    for (uint32_t i = 0; i < count; ++i)
        positions[i] = std::clamp(reversed ? 1.0f - positions[i] : positions[i], 0.0f, 1.0f);
    curve->MapBlock(positions, count);
    if (curve->IsAbsolute())
        return;
    const float span = rangeMax - rangeMin;
    for (uint32_t i = 0; i < count; ++i)
        positions[i] = positions[i] * span + rangeMin;
}

bool Parameter::WriteNormalized(float position, bool alreadyChanged) {
    // The comparison converts without storing, so that a pending value stays pending.
    const bool nowChanged =
        alreadyChanged || position != (freshness == kValueNewer ? PositionOf(value) : normalized);
    normalized = position;
    freshness = kNormalizedNewer;
    return nowChanged;
}

bool Parameter::WriteValue(float physical, bool alreadyChanged) {
    bool nowChanged = alreadyChanged;
    if (!alreadyChanged) {
        if (freshness == kNormalizedNewer)
            value = ValueOf(normalized);
        nowChanged = physical != value;
    }
    value = physical;
    freshness = kValueNewer;
    return nowChanged;
}

}  // namespace Quorvan::dsp
