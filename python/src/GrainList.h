#pragma once

#include <cstdint>
#include <vector>

#include "host/engine/EngineListener.h"

namespace Quorvan::Python {

/// A grain as Python's array holds it. Times are in seconds from the start of the render.
struct GrainRow {
    double time;           ///< when it starts to sound
    float duration;        ///< seconds that it sounds, unless released early
    float tapePosition;    ///< seconds from the start of the tape to where it begins to read
    float tapeLength;      ///< seconds
    float sourceDuration;  ///< seconds of tape that it reads
    float semitones;
    float pan;   ///< 0 left to 1 right
    float gain;  ///< linear
    int32_t shape;
    bool right;
    bool reversed;
};

/// Keeps all grains of a render.
class GrainList final : public Host::EngineListener {
public:
    explicit GrainList(double sampleRate) : rate(sampleRate) {}
    void OnGrainStart(const Host::GrainStart& grain) override;
    /// Those that start ahead of a frame.
    std::vector<GrainRow> Ahead(uint64_t frame) const;

private:
    double rate;
    std::vector<GrainRow> rows;
};

}  // namespace Quorvan::Python
