#pragma once

#include <cstdint>
#include <string>

#include "host/engine/ParameterReach.h"

namespace Quorvan::Host {

/// The choices of "ModuleType" of an effect slot.
enum class SlotEffect : uint32_t {
    None,
    Filter,
    Distortion,
    Compressor,
    Delay,
    Octaver,
    TapeEcho,
    Chorus,
    Flanger,
    Reverb
};

/// The choices of "Position".
enum class SlotPlace : uint32_t { BehindMix, WetSignal, Loop };

/// Rows of the matrix for the first slot.
namespace SlotRow {
inline constexpr uint32_t kDryWet = 35, kFilterFrequency = 36, kFilterResonance = 37, kDrive = 38,
                          kThreshold = 40, kDelayTime = 42, kDelayFeedback = 43, kDelayWidth = 44,
                          kDelayFine = 45, kOctaverTime = 46, kOctaverFeedback = 47,
                          kOctaverSpray = 49, kEchoTime = 52, kEchoFine = 53, kEchoIntensity = 54,
                          kEchoInput = 55, kEchoWidth = 56, kChorusFeedback = 58,
                          kFlangerFeedback = 60, kReverbDecay = 61, kReverbSize = 62,
                          kPredelay = 63;
}

/// The parameters of slot 1 or 2, by their names behind "FX1_", as far as modulation moves them.
class SlotReach {
public:
    SlotReach(const ParameterReach& parameters, uint32_t slot)
        : reach(parameters),
          prefix("FX" + std::to_string(slot) + "_"),
          rowShift((slot - 1) * kSlotRows) {}

    /// An empty or bypassed slot, or one without any wet signal, is None.
    SlotEffect Effect() const {
        if (IsOn("Bypass") || Highest("Dry / Wet", SlotRow::kDryWet) <= 0.0)
            return SlotEffect::None;
        return static_cast<SlotEffect>(Choice("ModuleType"));
    }
    SlotPlace Place() const { return static_cast<SlotPlace>(Choice("Position")); }

    double Value(const char* name) const { return reach.Value(prefix + name); }
    uint32_t Choice(const char* name) const { return reach.Choice(prefix + name); }
    bool IsOn(const char* name) const { return reach.IsOn(prefix + name); }
    double Highest(const char* name, uint32_t row) const {
        return reach.Highest(prefix + name, row + rowShift);
    }
    double Lowest(const char* name, uint32_t row) const {
        return reach.Lowest(prefix + name, row + rowShift);
    }
    double HighestPosition(const char* name, uint32_t row) const {
        return reach.HighestPosition(prefix + name, row + rowShift);
    }

private:
    static constexpr uint32_t kSlotRows = 30;  ///< those of the second slot are so many behind

    const ParameterReach& reach;
    std::string prefix;
    uint32_t rowShift;
};

}  // namespace Quorvan::Host
