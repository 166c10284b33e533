#pragma once

#include <array>
#include <cstdint>

#include "effects/TapSweep.h"
#include "effects/TapWindow.h"
#include "primitives/DelayLine.h"
#include "primitives/SmootherLPF.h"

namespace Quorvan::dsp {

/// Pitch shifter of one channel: two taps sweep the recent signal, half a cycle apart, and fade
/// into each other where one of them jumps back. Works in chunks: Advance settles what the taps do
/// in each sample (a Course), Push takes the signal in, Read sums the taps. A course may be read
/// with the signal of another channel.
///
/// At no shift tap A rests in the middle of its span and tap B is silent; half the span is the
/// latency, which Course::span lets the owner take off its own delay.
class PitchTaps {
public:
    static constexpr uint32_t kChunk = TapSweep::kMost;  ///< samples of a chunk at most

    struct Tap {
        std::array<float, kChunk> delay;  ///< samples
        std::array<float, kChunk> gain;
    };
    /// What the taps of a channel do over a chunk.
    struct Course {
        Tap a, b;
        std::array<float, kChunk> span;      ///< of the sweep in samples, smoothed over 1 s
        std::array<bool, kChunk> spanMoves;  ///< whether span is not at rest
    };
    /// Randomly longer delays: each time a tap jumps back, it draws anew. There are two draws for
    /// each sample of a chunk, for tap A and tap B.
    struct Spray {
        float DrawA(uint32_t sample) const { return Draw(2 * sample + 1); }
        float DrawB(uint32_t sample) const { return Draw(2 * sample + 2); }

        float samples = 0.0f;  ///< the longest
        uint32_t state = 1;    ///< of the draws, ahead of the chunk

    private:
        float Draw(uint32_t number) const;
    };

    void Setup(float rate);
    void Reset();
    /// Jumps to a shift, in semitones.
    void Snap(float pitch);
    /// The shift glides, in 0.5 s.
    void SetPitch(float pitch) { pitchSmoother.SetTarget(pitch); }

    /// At least once a block, ahead of Push: goes on wiping what Reset has put aside.
    void Wipe() { ring.Wipe(); }
    using Two = std::array<PitchTaps*, 2>;
    using TwoCourses = std::array<Course*, 2>;
    /// Two channels in step, so that their recursions overlap. A channel alone stands in both
    /// places.
    static void Advance(const Two& taps, const Spray& spray, TapWindow window,
                        const TwoCourses& courses, uint32_t count);
    void Push(const float* samples, uint32_t count);
    /// The taps of course over the last count samples pushed; one sample of latency is in it.
    void Read(const Course& course, float* out, uint32_t count) const;

private:
    using Samples = std::array<float, kChunk>;

    /// What one chunk has for each sample, ahead of the course.
    struct Motion {
        Samples pitch;           ///< semitones
        Samples span;            ///< samples
        Samples overlap;         ///< 0..0.5
        Samples step;            ///< cycles a sample
        Samples cycle;           ///< phase of tap A
        Samples sweepA, sweepB;  ///< 0..1 of span
        TapSweep goal;           ///< where the sweep of each pitch glides to
    };
    using TwoMotions = std::array<Motion, 2>;

    bool IsAtRest() const;
    void Rest(Motion& motion, Course& course) const;
    static void GlidePitch(const Two& taps, TwoMotions& motions, uint32_t count);
    static void GlideSweep(const Two& taps, TwoMotions& motions, const TwoCourses& courses,
                           uint32_t count);
    static void Turn(const Two& taps, TwoMotions& motions, uint32_t count);
    void PlaceTaps(const Motion& motion, const Spray& spray, Course& course, uint32_t count);
    void DrawDelays(const Motion& motion, const Spray& spray, Course& course, uint32_t count);
    void ReadTap(const Tap& tap, float* out, uint32_t count) const;

    // Coefficients.
    float sampleRate = 0.0f;
    float appliedPitch = 0.0f;  ///< that step and the targets of the three smoothers belong to
    float cycleStep = 0.0f;     ///< cycles a sample, signed as the shift

    // State.
    SmootherLPF pitchSmoother{0.5};         // semitones
    SmootherLPF spanSmoother{0.01};         // samples
    SmootherLPF compensationSmoother{1.0};  // samples
    SmootherLPF overlapSmoother{0.01};
    float phase = 0.0f;  ///< cycles, -1..1
    float lastSweep = 0.0f;
    float sprayA = 0.0f, sprayB = 0.0f;  ///< samples
    DelayLine ring;                      ///< the signal, for both taps
};

}  // namespace Quorvan::dsp
