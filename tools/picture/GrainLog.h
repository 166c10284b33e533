#pragma once

#include <cstdint>
#include <limits>
#include <vector>

#include "host/engine/EngineListener.h"

namespace Quorvan::Tools {

/// The grains of a render for its picture. Counts all of them and keeps as many as can be drawn:
/// every pair at first, every second where they become too many, every fourth ...
class GrainLog final : public Host::EngineListener {
public:
    void OnGrainStart(const Host::GrainStart& grain) override;

    /// Only grains that sound between two frames are kept from now on.
    void KeepWithin(uint64_t from, uint64_t to) {
        firstFrame = from;
        endFrame = to;
    }

    /// Forgets those that start at a frame or later.
    void CutAt(uint64_t frame);
    const std::vector<Host::GrainStart>& Kept() const { return kept; }
    /// One pair of so many is kept.
    uint64_t Stride() const { return stride; }
    uint64_t Count() const { return count; }

private:
    void Thin();

    std::vector<Host::GrainStart> kept;
    std::vector<uint64_t> pairs;  ///< number of the pair of each kept grain
    uint64_t count = 0;
    uint64_t pair = 0;  ///< number of the present pair
    uint64_t stride = 1;
    uint64_t firstFrame = 0;
    uint64_t endFrame = std::numeric_limits<uint64_t>::max();
};

}  // namespace Quorvan::Tools
