#pragma once

#include <cstdint>

#include "granular/CaptureBuffer.h"
#include "granular/Grain.h"

namespace Quorvan::dsp {

/// Cuts what a grain reads in one block into runs in which nothing but the positions changes: no
/// wrap of a read head or of the write head, no change of round, no entry into or exit from the
/// crossfade zone. Whatever changes does so where a position that moves in a straight line passes a
/// bound, so that a run is as long as its positions stay between the bounds around its first
/// sample. Most grains have one run a block.
class GrainRuns {
public:
    /// A grain this close behind the write head, in samples, counts as standing on it in the
    /// crossfade.
    static constexpr double kTouching = 0.01;

    /// The write head as it stood at one sample.
    struct Head {
        int64_t position;
        uint32_t pass;  ///< that it wrote at that sample
    };
    /// Where a grain stands to the write head.
    enum class Side { Behind, On, Ahead };
    /// A stretch of samples in which the read heads and the write head move in straight lines.
    struct Run {
        uint32_t count = 0;  ///< 0 where the first sample is a case of its own
        Head head{};         ///< at the first sample
        Side side = Side::Behind;
        bool nearHead = false;  ///< inside the crossfade zone
        double distance = 0.0;  ///< behind the write head, at the first sample
        double slope = 0.0;     ///< its change a sample
    };

    void Setup(float sampleRate);
    /// Takes what holds for all grains of a block. The tape stays until the next call.
    void BeginBlock(const CaptureBuffer& tape, uint32_t frames, bool crossfadeOn,
                    bool interpolation);

    Head HeadAt(uint32_t frame) const;
    /// Whether count samples from the grain's start frame on are one run away from the head's
    /// crossfade zone, as in most blocks of most grains. May say no where they are.
    bool IsClear(const Grain& grain, uint32_t count) const;
    /// Whether the grain was found to be clear for this block by an earlier one's LookAhead. It has
    /// been moved in straight lines only since.
    bool StaysClear(const Grain& grain) const { return grain.clearUntil >= blockEnd; }
    /// Notes how long the grain will be clear, from where it stands at the block's end.
    void LookAhead(Grain& grain) const;
    /// The pass that a clear grain reads.
    uint32_t PassOfClear(const Grain& grain) const {
        return headPass ^ (grain.readPosition > HeadAtStart(grain) ? 1u : 0u);
    }
    /// The same of one that began before this block.
    uint32_t PassOfRunning(const Grain& grain) const {
        return headPass ^ (grain.readPosition > headStart ? 1u : 0u);
    }
    /// The longest run from frame on, of at most most samples. One of a grain on a path keeps clear
    /// of every place where rounding could have a say in more than the sample read.
    Run Plan(const Grain& grain, uint32_t frame, uint32_t most, bool onPath) const;
    /// Whether the last bit of the grain's position can be heard.
    bool NeedsPath(const Grain& grain) const {
        return !interpolate || (grain.increment == 1.0 &&
                                MeetsHeadOnSample(grain, HeadAt(grain.startFrame).position));
    }

    /// Whether the grain fades where it is near the write head.
    bool Fades(const Grain& grain) const {
        return crossfade && (grain.crossing || capture->frozen);
    }
    bool Crossfading() const { return crossfade; }
    /// Loop length at which the read position wraps.
    uint32_t Loop() const { return loop; }
    /// Length of the crossfade zone behind the write head, in samples.
    int32_t Zone() const { return crossfadeSamples; }

private:
    /// A range that a quantity may move in before something about the reading changes:
    /// low <= x < high.
    struct Span {
        double low, high;

        bool Holds(double x) const { return x >= low && x < high; }
        Span Narrowed(double margin) const { return {low + margin, high - margin}; }
        /// How many of most samples from x on, step apart, lie inside.
        uint32_t Steps(double x, double step, uint32_t most) const;
    };

    /// Whether a tape goes on from where the last block left it.
    bool GoesOn(const CaptureBuffer& tape, uint32_t frames) const;
    uint32_t ClearSteps(const Grain& grain) const;
    /// The write head's place at the grain's start frame, while it doesn't wrap.
    double HeadAtStart(const Grain& grain) const {
        return headStart + headSpeed * grain.startFrame;
    }
    bool MeetsHeadOnSample(const Grain& grain, int64_t head) const;
    uint32_t UntilHeadWraps(uint32_t frame, uint32_t most) const;
    uint32_t WithinLoops(const Grain& grain, uint32_t most, double margin) const;
    Span PlaceByHead(const Grain& grain, double lead, Run& run) const;

    int32_t crossfadeSamples = 0;

    // Of the block.
    const CaptureBuffer* capture = nullptr;
    uint32_t numFrames = 0;
    bool crossfade = false;
    bool interpolate = true;
    uint32_t loop = 1;
    bool straight = false;   ///< the write head doesn't wrap, and grains may be clear of it
    double headStart = 0.0;  ///< where it stands at the first sample
    uint32_t headPass = 0;   ///< that it writes there
    double headSpeed = 1.0;  ///< 0 while frozen
    uint64_t blockEnd = 0;   ///< samples played so far, and a leap for every break in the tape
    uint32_t headEnd = 0;    ///< where the write head stands at the end
};

}  // namespace Quorvan::dsp
