#pragma once

#include <cstdint>
#include <string>
#include <utility>

#include "basictools/math/mapping/PotardKind.h"
#include "basictools/math/mapping/PotardMappingVariant.h"
#include "framework/ProcessBlock.h"

namespace Quorvan::dsp {

namespace PotardKind = MappingTools::PotardKind;

/// One parameter with its two faces: the normalised position 0..1, which hosts and modulation see,
/// and the physical value in its unit. Whichever face is stale is converted when it is read.
class Parameter {
public:
    enum Freshness : uint32_t { kAgree = 0, kNormalizedNewer = 1, kValueNewer = 2 };

    Parameter() { curve = curveStorage.Get(); }
    Parameter(const Parameter& other) { *this = other; }
    Parameter(Parameter&& other) noexcept { *this = std::move(other); }
    Parameter& operator=(const Parameter& other);
    Parameter& operator=(Parameter&& other) noexcept;
    ~Parameter() = default;

    /// A choice of count things, counted from min in steps of 1.
    static Parameter MakeStepped(std::string name, uint32_t count, float min);
    /// A parameter on the curve that kind and x name, at its minimum.
    static Parameter MakeContinuous(std::string name, uint32_t kind, float min, float max, float x);

    /// Gives the parameter a kind, a curve and a range, and puts it at its minimum; the name stays.
    /// Throws CException for an unknown kind: for constructors only.
    void Configure(uint32_t newKind, float min, float max, float x = 0.5f, float y = 0.5f,
                   bool reverse = false);
    /// The stepped counterpart: count values from min, step apart; the name stays.
    void ConfigureStepped(uint32_t count, float min, float step = 1.0f);

    /// Physical value; converts and stores it where the position is newer.
    float GetValue() {
        if (freshness == kNormalizedNewer) {
            value = ValueOf(normalized);
            freshness = kAgree;
        }
        return value;
    }
    /// Position; converts and stores it where the value is newer.
    float GetNormalized() {
        if (freshness == kValueNewer) {
            normalized = PositionOf(value);
            freshness = kAgree;
        }
        return normalized;
    }
    /// Position to physical value; touches no state.
    float ValueOf(float position) const;
    /// Physical value to position; touches no state.
    float PositionOf(float physical) const;
    /// Physical value at the position moved by rowValue and held to 0..1.
    float GetModulatedValue(float rowValue);

    /// Value for this block: moved by the row's first sample where the row is active.
    float GetBlockValue(const ProcessBlock& block, uint32_t channel);
    /// Position for this block, likewise.
    float GetBlockNormalized(const ProcessBlock& block, uint32_t channel);
    /// One value a sample into out, which holds numFrames floats.
    void FillBlockValues(const ProcessBlock& block, uint32_t channel, float* out);
    /// Turns count positions into values, in place. The row's activity is the caller's business.
    void MapPositions(float* positions, uint32_t count) const;

    /// Stores a position. Answers whether the parameter counts as changed, given whether it did.
    bool WriteNormalized(float position, bool alreadyChanged);
    /// Stores a physical value, likewise.
    bool WriteValue(float physical, bool alreadyChanged);

    const MappingTools::IPotardMapping* curve = nullptr;  ///< points into curveStorage
    MappingTools::PotardMappingVariant curveStorage;      ///< the curve, by value
    float rangeMin = 0.0f, rangeMax = 1.0f;               ///< ends of the curve's output range
    bool reversed = false;                                ///< the position runs from 1 down to 0
    std::string name;                                     ///< short name
    uint32_t kind = PotardKind::kRaw;
    float steps = 2.0f;                      ///< stepped: number of steps
    float stepSize = 1.0f;                   ///< stepped: distance of one step, signed
    float minValue = 0.0f, maxValue = 1.0f;  ///< lowest and highest physical value
    float normalized = 0.0f;
    float value = 0.0f;
    uint32_t freshness = kAgree;

private:
    float SteppedValue(float position) const;
};

}  // namespace Quorvan::dsp
