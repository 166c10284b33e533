#include "granular/GrainRenderer.h"

#include <algorithm>
#include <cmath>

namespace Quorvan::dsp {

namespace {

constexpr float kReleasePerSecond = 249.99998f;  // 4 ms from full level to silence
constexpr float kAttackSeconds = 0.0005f;

/// A grain sounds on one side only, so that the other side's tape need not be read.
bool IsRightSide(const Grain& grain) { return grain.outGainRight != 0.0f; }

}  // namespace

void GrainRenderer::Setup(float sampleRate, uint32_t blockSize) {
    reader.Setup(sampleRate, blockSize);
    releaseStep = kReleasePerSecond / sampleRate;
    attackSamples = sampleRate * kAttackSeconds;
    constexpr uint32_t kVector = GrainKernels::kMaxLanes;
    const uint32_t stride = (blockSize + 2 * kVector - 1) / kVector * kVector;
    scratch.assign(size_t{4} * stride, 0.0f);
    float* buffer = scratch.data();
    for (float** row : {&sumLeft, &sumRight, &envelope, &samples}) {
        *row = buffer;
        buffer += stride;
    }
}

void GrainRenderer::UseKernels(const GrainKernels& other) {
    kernels = &other;
    reader.UseKernels(other);
}

void GrainRenderer::Render(GrainPool& pool, const CaptureBuffer& tape, const Block& block,
                           float* outLeft, float* outRight, std::vector<uint16_t>& ended) {
    if (block.numFrames == 0)
        return;
    reader.BeginBlock(tape, block.numFrames, block.crossfade, block.interpolate);
    std::copy_n(outLeft, block.numFrames, sumLeft);
    std::copy_n(outRight, block.numFrames, sumRight);
    for (uint16_t slot = pool.First(); slot < pool.Capacity();) {
        const uint16_t next = pool.Next(slot);
        if (next < pool.Capacity())
            reader.Prefetch(pool[next], IsRightSide(pool[next]));
        if (RenderGrain(pool[slot], block.numFrames, reader.PathOf(pool, slot)))
            ended.push_back(slot);
        slot = next;
    }
    std::copy_n(sumLeft, block.numFrames, outLeft);
    std::copy_n(sumRight, block.numFrames, outRight);
}

/// Answers whether the grain ends in this block.
bool GrainRenderer::RenderGrain(Grain& grain, uint32_t numFrames, const GrainWalk::Path* path) {
    const uint32_t start = grain.startFrame;
    const uint32_t wanted = numFrames - start;
    const bool rightSide = IsRightSide(grain);
    const float gain =  // of which one part is 0
        grain.outGainLeft * grain.panGainLeft + grain.outGainRight * grain.panGainRight;
    float* const sum = (rightSide ? sumRight : sumLeft) + start;
    const uint32_t count = FillEnvelope(grain, wanted);
    if (path == nullptr && reader.IsClear(grain, count)) {
        reader.Play(grain, rightSide, envelope, gain, count, sum);
    } else {
        reader.Read(grain, rightSide, count, path, samples);
        kernels->mix(envelope, samples, gain, count, sum);
    }
    grain.startFrame = 0;
    return grain.released || count < wanted || grain.elapsed >= static_cast<double>(grain.length);
}

/// Fills the envelope up to the grain's end or count samples, and answers how many there are.
uint32_t GrainRenderer::FillEnvelope(Grain& grain, uint32_t count) {
    count = FramesToEnd(grain, count);
    if (grain.releasing)
        return FillRelease(grain, count);
    const GrainKernels::Envelope shape{grain.shape, grain.shapeA, grain.shapeB, grain.length,
                                       attackSamples};
    kernels->envelope(shape, grain.elapsed, std::abs(grain.increment), count, envelope);
    grain.envelope = envelope[count - 1];
    return count;
}

/// Fades from where the envelope stands to 0; some shapes stand below 0.
uint32_t GrainRenderer::FillRelease(Grain& grain, uint32_t count) {
    float level = grain.envelope;
    uint32_t i = 0;
    while (i < count && !grain.released) {
        if (level > 0.0f) {
            grain.released = level < releaseStep;
            level = grain.released ? 0.0f : level - releaseStep;
        } else {
            grain.released = level > -releaseStep;
            level = grain.released ? 0.0f : level + releaseStep;
        }
        envelope[i++] = level;
    }
    grain.envelope = level;
    return i;
}

/// Samples up to and with the one at which the grain has read its length, at most count. Increments
/// come from single precision, so that sums of them are exact and the order doesn't matter.
uint32_t GrainRenderer::FramesToEnd(const Grain& grain, uint32_t count) {
    const double step = std::abs(grain.increment);
    const double left = static_cast<double>(grain.length) - grain.elapsed;
    if (count * step < left)
        return count;
    auto frames = static_cast<uint32_t>(std::clamp(left / step, 1.0, static_cast<double>(count)));
    while (frames < count && frames * step < left)
        ++frames;
    return frames;
}

}  // namespace Quorvan::dsp
