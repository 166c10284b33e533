#pragma once

#include <cstdint>
#include <vector>

#include "primitives/AlignedVector.h"

namespace Quorvan::Host {

/// One block of audio in some channels, in memory as vector code likes it.
class ChannelBlock {
public:
    void Resize(uint32_t channelCount, uint32_t frames);
    void Clear();

    uint32_t Channels() const { return static_cast<uint32_t>(pointers.size()); }
    float* operator[](uint32_t channel) const { return pointers[channel]; }
    /// All channels, as the processor's records take them.
    float** Pointers() { return pointers.data(); }

    /// Puts count frames of the source channels, from their frame from on, at frame at. Answers how
    /// many samples were no finite numbers: they become 0. Missing channels become silence.
    uint64_t Take(const float* const* source, uint32_t from, uint32_t at, uint32_t count);
    /// The way out: count frames from frame at on into the target channels, at their frame to.
    void Give(float* const* target, uint32_t to, uint32_t at, uint32_t count) const;
    /// Turns what is no finite number into 0, and answers how many samples that were.
    uint64_t Clean();

private:
    dsp::AlignedVector samples;
    std::vector<float*> pointers;
    uint32_t length = 0;
};

}  // namespace Quorvan::Host
