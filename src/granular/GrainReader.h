#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "granular/CaptureBuffer.h"
#include "granular/Grain.h"
#include "granular/GrainKernels.h"
#include "granular/GrainMotion.h"
#include "granular/GrainRuns.h"
#include "granular/GrainWalk.h"
#include "primitives/AlignedVector.h"

namespace Quorvan::dsp {

/// Reads what one grain hears off the tape, and moves its read heads on.
///
/// The tape is being overwritten while grains read it: what lies behind the write head belongs to
/// the round being written, what lies ahead of it to the one before. A grain that the write head
/// meets fades to its second read position, which wraps at the loop length of the grain's start,
/// and a forward grain stays with it from then on.
///
/// Runs go through the kernels; the few samples in between are read one by one.
class GrainReader {
public:
    void Setup(float sampleRate, uint32_t blockSize);
    void BeginBlock(const CaptureBuffer& tape, uint32_t frames, bool crossfade, bool interpolation);
    /// The way of a grain that needs one in this block, else null. Grains come in the pool's order,
    /// before they are read.
    const GrainWalk::Path* PathOf(const GrainPool& pool, uint16_t slot) {
        return runs.NeedsPath(pool[slot]) ? &walk.Next(pool, slot, runs) : nullptr;
    }
    /// Whether PassBlock may do what Read does in this block, as an earlier block knew, and the
    /// grain has more to read behind it.
    bool StaysClear(const Grain& grain) const {
        const double read = grain.elapsed + std::abs(grain.increment * blockSteps);
        return runs.StaysClear(grain) && read < static_cast<double>(grain.length) &&
               numFrames >= kShortestRun;
    }
    /// Whether Pass may do what Read does in the next count samples.
    bool IsClear(const Grain& grain, uint32_t count) const {
        return count >= kShortestRun && runs.IsClear(grain, count);
    }
    /// To be called at the end of a block for grains that did not stay clear.
    void LookAhead(Grain& grain) const { runs.LookAhead(grain); }
    /// Passes over the samples of a grain that is clear: tells the voice where its head goes and
    /// asks for that part of the tape, for grains lie all over it.
    void Pass(Grain& grain, uint32_t side, GrainKernels::Voices& voices, uint32_t voice) const {
        TrackCrossfade(grain, false);
        const double way = grain.increment * voices.count[voice];
        FillVoice(grain, tapes[side][runs.PassOfClear(grain)], way, voices, voice);
        MoveOn(grain, loopEnd, way);
    }
    /// The same over the whole block, for one that stayed clear.
    void PassBlock(Grain& grain, uint32_t side, GrainKernels::Voices& voices,
                   uint32_t voice) const {
        const double way = grain.increment * blockSteps;
        FillVoice(grain, tapes[side][runs.PassOfRunning(grain)], way, voices, voice);
        MoveOn(grain, loopEnd, way);
    }
    /// Reads count samples from the grain's start frame on. out has room for whole vectors.
    void Read(Grain& grain, uint32_t side, uint32_t count, const GrainWalk::Path* path, float* out);

    void UseKernels(const GrainKernels& other) {
        kernels = &other;
        walk.UseKernels(other);
    }

private:
    using Head = GrainRuns::Head;
    using Run = GrainRuns::Run;
    using Side = GrainRuns::Side;
    /// Runs shorter than this cost more to set up than single samples do, which round otherwise.
    static constexpr uint32_t kShortestRun = 4;
    static constexpr int32_t kCacheLine = 16;  ///< floats
    static constexpr int32_t kUsualLines = 5;  ///< a block's, too few to count
    /// The two passes of one side.
    using Channel = const ZeroedArray*;

    void PlayRun(Grain& grain, Channel channel, const Run& run, float* out);
    void PickRun(Grain& grain, Channel channel, const Run& run, const GrainWalk::Path& path,
                 uint32_t step, float* out);
    void Fade(const Run& run, float* out) const;
    float PlaySample(Grain& grain, Channel channel, uint32_t frame) const;

    /// A forward grain that has left the crossfade zone reads by its second position.
    static bool ReadsWrapped(const Grain& grain) { return grain.swapped && !grain.reversed; }
    uint32_t PassOf(const Grain& grain, const Run& run) const;
    uint32_t FarPassOf(const Grain& grain, const Run& run) const;
    void TrackCrossfade(Grain& grain, bool nearHead) const {
        const bool active = nearHead && grain.crossing && runs.Crossfading();
        if (grain.wasCrossfading && !active)
            grain.swapped = true;
        grain.wasCrossfading = active;
    }
    static void FillVoice(const Grain& grain, const float* tape, double way,
                          GrainKernels::Voices& voices, uint32_t voice) {
        const double position = ReadsWrapped(grain) ? grain.wrappedPosition : grain.readPosition;
        voices.tape[voice] = tape;
        voices.position[voice] = position;
        voices.increment[voice] = grain.increment;
        const float* const first =
            tape + static_cast<int64_t>(std::max(position + std::min(way, 0.0), 0.0));
        // A function of its own would be taken for one that does nothing.
        for (int32_t line = 0; line < kUsualLines; ++line)
            __builtin_prefetch(first + line * kCacheLine);
        const auto floats = static_cast<int32_t>(std::abs(way));
        for (int32_t at = kUsualLines * kCacheLine; at <= floats; at += kCacheLine)
            __builtin_prefetch(first + at);
    }
    float Between(float x, float next, float fraction) const {
        return interpolate ? x + (next - x) * fraction : x;
    }

    const GrainKernels* kernels = &GrainKernels::Best();
    GrainRuns runs;
    GrainWalk walk;
    float inverseZone = 0.0f;  ///< of the crossfade zone's length
    AlignedVector faded;       ///< the crossfade's far side, over one run

    // Of the block.
    Channel channels[2] = {};       ///< of the left and the right side
    const float* tapes[2][2] = {};  ///< their passes
    uint32_t numFrames = 0;
    double blockSteps = 0.0;  ///< numFrames
    double loopEnd = 1.0;
    bool interpolate = true;
};

}  // namespace Quorvan::dsp
