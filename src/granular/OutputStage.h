#pragma once

#include <cstdint>

#include "framework/ProcessBlock.h"
#include "granular/CrushPresets.h"

namespace Quorvan::dsp {

class BitCrusher;

/// Last step of the granular render: the lo-fi treatment that "BitCrushPreset" selects, on the sum
/// of the grains. Its own gain is taken off again behind it.
class OutputStage {
public:
    /// Takes a preset, 0..5; the presets that use the crusher set its bit depth and divisor.
    void SetPreset(int32_t index, BitCrusher& crusher);
    /// Treats the two outputs of block in place.
    void Apply(const ProcessBlock& block, BitCrusher& crusher) const;

    /// Whether the grains interpolate between the samples of the tape.
    bool Interpolates() const { return preset.interpolates; }

private:
    static void Scale(const ProcessBlock& block, float gain);

    CrushPreset preset;
    float outGain = 1.0f;
};

}  // namespace Quorvan::dsp
