#pragma once

#include <hwy/cache_control.h>

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
    /// Whether Pass may do what Read does in the next count samples: as an earlier block knew, or
    /// seen now.
    bool StaysClear(const Grain& grain, uint32_t count) const {
        return count >= kShortestRun && runs.StaysClear(grain);
    }
    bool IsClear(const Grain& grain, uint32_t count) const {
        return count >= kShortestRun && runs.IsClear(grain, count);
    }
    /// To be called at the end of a block for grains that did not stay clear.
    void LookAhead(Grain& grain) const { runs.LookAhead(grain); }
    /// Passes over the samples of a grain that is clear: tells the voice where its head goes and
    /// asks for that part of the tape.
    void Pass(Grain& grain, uint32_t side, GrainKernels::Voice& voice) const {
        TrackCrossfade(grain, false);
        const Channel channel = channels[side];
        voice.low = channel[runs.PassOfClear(grain)].data();
        voice.position = ReadsWrapped(grain) ? grain.wrappedPosition : grain.readPosition;
        voice.increment = grain.increment;
        Prefetch(voice);
        Advance(grain, runs.Loop(), voice.count);
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
    /// Asks for the tape that a voice is about to read, and for what comes next where that is
    /// little: grains lie all over the tape, and most read on in the next block.
    static void Prefetch(const GrainKernels::Voice& voice) {
        constexpr int32_t kCacheLine = 16;  // floats
        constexpr int32_t kUsual = 5;       // lines; too few to count
        const double way = voice.increment * voice.count;
        const double first = std::max(voice.position + std::min(way, 0.0), 0.0);
        const float* const at = voice.low + static_cast<int64_t>(first);
        for (int32_t i = 0; i < kUsual; ++i)
            hwy::Prefetch(at + i * kCacheLine);
        const auto floats = static_cast<int32_t>(std::abs(way));
        for (int32_t i = kUsual * kCacheLine; i <= floats; i += kCacheLine)
            hwy::Prefetch(at + i);
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
    Channel channels[2] = {};  ///< of the left and the right side
    uint32_t numFrames = 0;
    bool interpolate = true;
};

}  // namespace Quorvan::dsp
