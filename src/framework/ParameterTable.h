#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "framework/Parameter.h"

namespace Quorvan::dsp {

/// One row of a module's parameter table: short name, form, range, and where it starts. The row's
/// place in the table is the parameter's id.
struct ParameterSpec {
    enum class Start : uint8_t { kBottom, kPosition, kValue };

    std::string name;
    uint32_t kind = PotardKind::kRaw;
    float min = 0.0f, max = 1.0f;
    float curve = 0.5f;     ///< first argument of the curve
    uint32_t steps = 2;     ///< stepped parameters: number of values
    float stepSize = 1.0f;  ///< stepped parameters: distance of two values
    Start start = Start::kBottom;
    float startAt = 0.0f;

    /// Value and position are the same number, 0..1.
    static ParameterSpec Raw(std::string name) { return {.name = std::move(name)}; }
    static ParameterSpec Linear(std::string name, float min, float max) {
        return Curved(std::move(name), PotardKind::kLinear, min, max, 0.5f);
    }
    /// kind and curve as PotardMappingUtils::Create takes them.
    static ParameterSpec Curved(std::string name, uint32_t kind, float min, float max,
                                float curve) {
        return {.name = std::move(name), .kind = kind, .min = min, .max = max, .curve = curve};
    }
    /// A choice of count values from first on, step apart.
    static ParameterSpec Stepped(std::string name, uint32_t count, float first = 0.0f,
                                 float step = 1.0f) {
        return {.name = std::move(name),
                .kind = PotardKind::kStepped,
                .min = first,
                .steps = count,
                .stepSize = step};
    }
    /// The same row starting at a position in place of the bottom.
    ParameterSpec AtPosition(float position) const {
        return StartingAt(Start::kPosition, position);
    }
    /// The same row starting at a physical value.
    ParameterSpec AtValue(float value) const { return StartingAt(Start::kValue, value); }

    /// Gives parameter this row's form and start; its name stays.
    void ApplyTo(Parameter& parameter) const;
    Parameter Make() const;

private:
    ParameterSpec StartingAt(Start how, float where) const;
};

using ParameterTable = std::vector<ParameterSpec>;

/// The base table followed by the rows of more.
ParameterTable Join(ParameterTable base, const ParameterTable& more);
/// count rows alike, named stem and a number from 1 on.
ParameterTable Numbered(const std::string& stem, uint32_t count, const ParameterSpec& row);

}  // namespace Quorvan::dsp
