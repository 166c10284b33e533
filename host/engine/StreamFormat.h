#pragma once

#include <cstdint>

namespace Quorvan::Host {

/// What an engine is prepared for: the rate and the channels that every call of Process brings.
struct StreamFormat {
    double sampleRate = 44100.0;   ///< hertz, from 1000 to 768000
    uint32_t inputs = 2;           ///< main inputs: 1 or 2
    uint32_t outputs = 2;          ///< main outputs: 1 or 2
    uint32_t sideChainInputs = 0;  ///< 0, 1 or 2
    bool sendsFeedback = true;     ///< false: the processor makes no user interface feedback
};

/// Auxiliary outputs of the processor: the signal ahead of the envelope follower, the envelope, and
/// the present X and Y of the spatialiser.
inline constexpr uint32_t kAuxOutputs = 4;

/// The memory that one call of Process works on. Outputs may lie on top of inputs. A null channel
/// is silence where it would be read, and left out where it would be written.
struct AudioBuffers {
    const float* const* inputs = nullptr;     ///< StreamFormat::inputs channels
    float* const* outputs = nullptr;          ///< StreamFormat::outputs channels
    const float* const* sideChain = nullptr;  ///< StreamFormat::sideChainInputs channels, or null
    float* const* aux = nullptr;              ///< kAuxOutputs channels, or null: not wanted
    uint32_t frames = 0;                      ///< samples in each channel, any number
};

}  // namespace Quorvan::Host
