#pragma once

#include <cstdint>
#include <vector>

#include "granular/CaptureBuffer.h"
#include "granular/Grain.h"
#include "granular/GrainKernels.h"
#include "granular/GrainPool.h"
#include "primitives/AlignedVector.h"

namespace Quorvan::dsp {

/// Plays every running grain over one block: a read head that moves through the tape at its own
/// speed under one of eight envelopes, with a crossfade where it meets the write head.
///
/// Each grain's block is cut into runs in which nothing but the positions changes: no wrap, no
/// change of pass, no entry into or exit from the crossfade zone. A run goes through the kernels; the
/// few samples in between go through a plain step.
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
    void UseKernels(const GrainKernels& other) { kernels = &other; }

private:
    /// The write head at one sample.
    struct Head {
        double position;
        uint32_t pass;
    };
    /// A stretch of samples in which the read head and the write head move in straight lines.
    struct Run {
        uint32_t count = 0;
        uint32_t pass = 0;   ///< that holds the samples around the read position
        bool near = false;   ///< inside the crossfade zone
        double distance = 0.0;  ///< behind the write head, at the first sample
        double slope = 0.0;     ///< its change a sample
    };

    bool RenderGrain(Grain& grain, float* outLeft, float* outRight);
    uint32_t FillEnvelope(Grain& grain, uint32_t count);
    uint32_t FillRelease(Grain& grain, uint32_t count);
    uint32_t FramesToEnd(const Grain& grain, uint32_t count) const;
    void ReadTape(Grain& grain, const std::vector<float>* channel, uint32_t count);

    Head HeadAt(uint32_t frame) const;
    Run PlanRun(const Grain& grain, uint32_t frame, uint32_t most) const;
    uint32_t StraightCount(const Grain& grain, uint32_t most) const;
    bool ReadsWrapped(const Grain& grain) const { return grain.swapped && !grain.reversed; }
    void PlayRun(Grain& grain, const std::vector<float>* channel, const Run& run, float* out);
    uint32_t PlayOnHead(Grain& grain, const std::vector<float>* channel, uint32_t frame,
                        uint32_t most, float* out) const;
    float PlaySample(Grain& grain, const std::vector<float>* channel, uint32_t frame) const;
    void TrackCrossfade(Grain& grain, bool nearHead) const;
    void Advance(Grain& grain, uint32_t count) const;

    const GrainKernels* kernels = &GrainKernels::Best();
    float releaseStep = 0.0f;      ///< fade of a released grain, a sample
    float attackSamples = 0.0f;    ///< fixed attack of the percussive shapes
    int32_t crossfadeSamples = 0;  ///< the zone behind the write head
    float inverseCrossfade = 0.0f;
    AlignedVector scratch;
    float* envelope = nullptr;
    float* samples = nullptr;
    float* second = nullptr;

    // Of the block being rendered.
    const CaptureBuffer* capture = nullptr;
    Block now;
    uint32_t loop = 1;  ///< effective loop length
};

}  // namespace Quorvan::dsp
