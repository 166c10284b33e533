#include "granular/GrainRenderer.h"

#include <hwy/base.h>

#include <algorithm>
#include <cmath>

namespace Quorvan::dsp {

namespace {

constexpr float kReleasePerSecond = 249.99998f;  // 4 ms from full level to silence
constexpr float kAttackSeconds = 0.0005f;

/// Left or right: a grain sounds on one side only, so that the other's tape need not be read. A
/// number, as chance says which and a branch would have to be guessed.
uint32_t SideOf(const Grain& grain) { return grain.outGainRight != 0.0f ? 1 : 0; }

float GainOf(const Grain& grain) {  // of which one part is 0
    return grain.outGainLeft * grain.panGainLeft + grain.outGainRight * grain.panGainRight;
}

}  // namespace

void GrainRenderer::Setup(float sampleRate, uint32_t blockSize) {
    reader.Setup(sampleRate, blockSize);
    releaseStep = kReleasePerSecond / sampleRate;
    voices.attackSamples = sampleRate * kAttackSeconds;
    constexpr size_t kVector = GrainKernels::kMaxLanes;
    stride = (blockSize + 2 * kVector - 1) / kVector * kVector;
    scratch.assign((3 + kRows) * stride, 0.0f);
    sides[0].sum = scratch.data();
    sides[1].sum = sides[0].sum + stride;
    envelope = sides[1].sum + stride;
    rows = envelope + stride;
}

void GrainRenderer::UseKernels(const GrainKernels& other) {
    kernels = &other;
    reader.UseKernels(other);
}

void GrainRenderer::Render(GrainPool& pool, const CaptureBuffer& tape, const Block& block,
                           float* outLeft, float* outRight, std::vector<uint16_t>& ended) {
    if (block.numFrames == 0)
        return;
    numFrames = block.numFrames;
    reader.BeginBlock(tape, numFrames, block.crossfade, block.interpolate);
    if (pool.Count() == 0)
        return;
    std::copy_n(outLeft, numFrames, sides[0].sum);
    std::copy_n(outRight, numFrames, sides[1].sum);
    for (uint16_t slot = pool.First(); slot < pool.Capacity(); slot = pool.Next(slot)) {
        Grain& grain = pool[slot];
        if (reader.StaysClear(grain) && !grain.releasing)
            PassBlock(grain);
        else if (TakeGrain(grain, reader.PathOf(pool, slot)))
            ended.push_back(slot);
        if (numRows == kRows)
            PlayRows();
    }
    PlayRows();
    std::copy_n(sides[0].sum, numFrames, outLeft);
    std::copy_n(sides[1].sum, numFrames, outRight);
}

/// Notes a voice for what the grain plays from its next sample on.
HWY_INLINE uint32_t GrainRenderer::NextVoice(Grain& grain, uint32_t count, float* out) {
    const uint32_t voice = numVoices++;
    voices.elapsed[voice] = grain.elapsed;
    voices.length[voice] = grain.length;
    voices.count[voice] = count;
    voices.shape[voice] = grain.shape;
    voices.grain[voice] = &grain;
    voices.gain[voice] = GainOf(grain);
    voices.out[voice] = out;
    return voice;
}

/// Moves a grain that stays clear on by a block, and leaves its row to the kernels, which take many
/// at a time.
HWY_INLINE void GrainRenderer::PassBlock(Grain& grain) {
    const uint32_t side = SideOf(grain);
    const uint32_t voice = NextVoice(grain, numFrames, NextRow(side));
    reader.PassBlock(grain, side, voices, voice);
}

/// The same for a grain that may meet anything. Answers whether it ends in this block.
HWY_NOINLINE bool GrainRenderer::TakeGrain(Grain& grain, const GrainWalk::Path* path) {
    const uint32_t side = SideOf(grain);
    float* const row = NextRow(side);
    float* const out = row + grain.startFrame;
    uint32_t count = FramesToEnd(grain);
    if (path == nullptr && reader.IsClear(grain, count)) {
        const bool releasing = grain.releasing;
        if (releasing)
            count = FillRelease(grain, count, out);
        const uint32_t voice = NextVoice(grain, count, out);
        if (releasing)
            voices.shape[voice] = GrainKernels::Voices::kGiven;
        reader.Pass(grain, side, voices, voice);
    } else {
        count = FillEnvelope(grain, count);
        reader.Read(grain, side, count, path, out);
        kernels->shape(envelope, GainOf(grain), count, out);
    }
    const bool ends = Finish(grain, row, count);
    reader.LookAhead(grain);
    return ends;
}

/// Sees to the rest of the row of a grain that has sounded for count samples of it. Answers whether
/// it has ended.
bool GrainRenderer::Finish(Grain& grain, float* row, uint32_t count) {
    const uint32_t start = grain.startFrame;
    if (count < numFrames)
        parts[numParts++] = {row, start, start + count};
    grain.startFrame = 0;
    return grain.released || start + count < numFrames ||
           grain.elapsed >= static_cast<double>(grain.length);
}

/// Where the next grain goes.
HWY_INLINE float* GrainRenderer::NextRow(uint32_t side) {
    float* const row = rows + numRows++ * stride;
    Side& sum = sides[side];
    sum.rows[sum.count++] = row;
    return row;
}

void GrainRenderer::PlayRows() {
    constexpr float kNothing = -0.0f;  // added to anything it changes no bit, 0 would make -0 a 0
    kernels->play(voices, numVoices);
    for (uint32_t i = 0; i < numParts; ++i) {
        const Part& part = parts[i];
        std::fill(part.row, part.row + part.from, kNothing);
        std::fill(part.row + part.to, part.row + numFrames, kNothing);
    }
    numRows = numVoices = numParts = 0;
    for (Side& side : sides) {
        kernels->add(side.rows.data(), side.count, numFrames, side.sum);
        side.count = 0;
    }
}

/// Fills the envelope of count samples or up to the release's end, and answers how many there are.
uint32_t GrainRenderer::FillEnvelope(Grain& grain, uint32_t count) {
    if (grain.releasing)
        return FillRelease(grain, count, envelope);
    kernels->envelope({grain.shape, grain.shapeA, grain.shapeB, grain.length, voices.attackSamples},
                      grain.elapsed, std::abs(grain.increment), count, envelope);
    grain.envelope = envelope[count - 1];
    return count;
}

/// Fades from where the envelope stands to 0; some shapes stand below 0.
uint32_t GrainRenderer::FillRelease(Grain& grain, uint32_t count, float* out) const {
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
        out[i++] = level;
    }
    grain.envelope = level;
    return i;
}

/// Samples of the block up to and with the one at which the grain has read its length. Increments
/// come from single precision, so that sums of them are exact and the order doesn't matter.
uint32_t GrainRenderer::FramesToEnd(const Grain& grain) const {
    const uint32_t count = numFrames - grain.startFrame;
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
