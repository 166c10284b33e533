#pragma once

#include <array>
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
    static constexpr uint32_t kRows = GrainKernels::kVoices;

    /// Rows of one side's grains, in the order in which they are summed.
    struct Side {
        std::array<const float*, kRows> rows{};
        uint32_t count = 0;
        float* sum = nullptr;
    };
    /// The samples of a row outside of which its grain is silent.
    struct Part {
        float* row;
        uint32_t from, to;
    };

    uint32_t NextVoice(Grain& grain, uint32_t count, float* out);
    void PassBlock(Grain& grain);
    bool TakeGrain(Grain& grain, const GrainWalk::Path* path);
    bool Finish(Grain& grain, float* row, uint32_t count);
    float* NextRow(uint32_t side);
    void PlayRows();
    uint32_t FillEnvelope(Grain& grain, uint32_t count);
    uint32_t FillRelease(Grain& grain, uint32_t count, float* out) const;
    uint32_t FramesToEnd(const Grain& grain) const;

    const GrainKernels* kernels = &GrainKernels::Best();
    GrainReader reader;
    float releaseStep = 0.0f;  ///< fade of a released grain, a sample
    uint32_t numFrames = 0;    ///< of the block

    // Some grains on their way to the sums, a row each.
    GrainKernels::Voices voices{};  ///< those that the kernels play at once
    uint32_t numRows = 0, numVoices = 0;
    std::array<Part, kRows> parts{};  ///< those that start or end in the block
    uint32_t numParts = 0;
    std::array<Side, 2> sides;  ///< left and right

    // Scratch, with room for the kernels' whole vectors.
    AlignedVector scratch;
    size_t stride = 0;  ///< from row to row
    float* rows = nullptr;
    float* envelope = nullptr;
};

}  // namespace Quorvan::dsp
