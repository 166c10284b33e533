#pragma once

#include <string>

#include "effects/Compressor.h"

namespace Quorvan::dsp {

/// Brick wall at -0.1 dB over both channels: a Compressor of infinite ratio whose gain falls within
/// its look-ahead and comes back with a time constant of 300 ms.
///
/// Latency     3 ms
class Limiter final : public Compressor {
public:
    explicit Limiter(std::string moduleName);
};

}  // namespace Quorvan::dsp
