#pragma once

#include <cstdint>
#include <vector>

#include "granular/CaptureBuffer.h"
#include "granular/Grain.h"
#include "granular/GrainKernels.h"
#include "granular/GrainPool.h"
#include "granular/GrainReader.h"
#include "primitives/AlignedVector.h"

namespace Quorvan::dsp {

/// Plays every running grain over one block: what it reads off the tape under one of eight
/// envelopes, added to the output of the side that it sounds on. A released grain fades in place of
/// its envelope.
class GrainRenderer {
public:
    /// What the block fixes for all grains.
    struct Block {
        uint32_t numFrames = 0;
        bool crossfade = false;  ///< grains fade at the write head
        bool interpolate = true;
    };

    /// Takes the scratch buffers.
    void Setup(float sampleRate, uint32_t blockSize);

    /// Adds all grains to the two outputs. Handles of those that finished go to ended, which has
    /// room for all.
    void Render(GrainPool& pool, const CaptureBuffer& tape, const Block& block, float* outLeft,
                float* outRight, std::vector<uint16_t>& ended);

    /// Exchanges the kernels, for comparisons.
    void UseKernels(const GrainKernels& other);

private:
    bool RenderGrain(Grain& grain, uint32_t numFrames, const GrainWalk::Path* path);
    uint32_t FillEnvelope(Grain& grain, uint32_t count);
    uint32_t FillRelease(Grain& grain, uint32_t count);
    static uint32_t FramesToEnd(const Grain& grain, uint32_t count);

    const GrainKernels* kernels = &GrainKernels::Best();
    GrainReader reader;
    float releaseStep = 0.0f;    ///< fade of a released grain, a sample
    float attackSamples = 0.0f;  ///< fixed attack of the percussive shapes

    // Scratch, with room for the kernels' whole vectors.
    AlignedVector scratch;
    float* sumLeft = nullptr;
    float* sumRight = nullptr;
    float* envelope = nullptr;
    float* samples = nullptr;
};

}  // namespace Quorvan::dsp
