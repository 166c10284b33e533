#pragma once

#include <cstdint>
#include <span>

#include "granular/Grain.h"

namespace Quorvan::dsp {

/// Inner loops of the grain renderer, in the vectors of one instruction set. All sets give the same
/// bits: none fuses a multiplication with an addition or puts an inverse for a division.
///
/// Loops work on whole vectors of up to kMaxLanes floats. What they write has room for count
/// rounded up to that; what they read of the tape goes up to four vectors beyond the last sample in
/// use.
struct GrainKernels {
    static constexpr uint32_t kMaxLanes = 16;
    /// Voices that are played by one call, at most.
    static constexpr uint32_t kVoices = 32;
    /// Heads that walk side by side.
    static constexpr uint32_t kHeads = 16;

    /// What an envelope depends on besides the phase.
    struct Envelope {
        int32_t shape;  ///< 0 to 7
        float shapeA, shapeB;
        float length;         ///< source samples
        float attackSamples;  ///< fixed attack of shapes 6 and 7
    };
    /// A read head: the samples around it are low[whole] and high[whole] of its whole part.
    struct ReadHead {
        const float* low;
        const float* high;  ///< low + 1 but where the two lie in different rounds of the tape
        double position;    ///< samples; it and all later ones are at or above 0
        double increment;   ///< a sample
    };
    /// Grains' parts of one block, whose heads move in straight lines over one round of the tape.
    /// What several are worked out from at a time lies side by side.
    struct Voices {
        static constexpr int32_t kGiven = 8;  ///< shape of one whose envelope stands in its out

        double position[kVoices];  ///< as in a read head
        double increment[kVoices];
        double elapsed[kVoices];     ///< source samples read so far
        float length[kVoices];       ///< of the whole grain, in source samples
        uint32_t count[kVoices];     ///< samples, 1 or more
        int32_t shape[kVoices];      ///< the grain's, or kGiven
        Grain* grain[kVoices];       ///< has the rest of the shape, takes the envelope's last value
        const float* tape[kVoices];  ///< low of a read head whose high is low + 1
        float gain[kVoices];
        float* out[kVoices];
        float attackSamples;  ///< as in an envelope
    };
    /// kHeads read heads with the ends of their loops.
    struct Heads {
        const double* position;
        const double* increment;
        const double* wrap;
    };

    /// Envelope at count steps: the source samples read so far start at elapsed and grow by step.
    void (*envelope)(const Envelope& shape, double elapsed, double step, uint32_t count,
                     float* out);
    /// Each voice's out = gain * envelope * the tape along its head, by linear interpolation.
    void (*play)(const Voices& voices, uint32_t number);
    /// The tape at count places of the read head, by linear interpolation.
    void (*interpolate)(const ReadHead& head, uint32_t count, float* out);
    /// The heads' positions, looped into their wraps and rounded step by step, in steps + 1 rows of
    /// kHeads; the first holds where they stand now.
    void (*walk)(const Heads& heads, uint32_t steps, double* out);
    /// x = x * c + (1 - c) * y, with c = start + i * slope held to 0..1.
    void (*crossfade)(float* x, const float* y, float start, float slope, uint32_t count);
    /// x = gain * envelope * x
    void (*shape)(const float* envelope, float gain, uint32_t count, float* x);
    /// Adds the rows, one after the other, to sum.
    void (*add)(const float* const* rows, uint32_t number, uint32_t count, float* sum);
    /// Name of the instruction set.
    const char* name;

    /// All forms that this machine can run, the widest first and the baseline last.
    static std::span<const GrainKernels* const> Supported();
    static const GrainKernels& Best() { return *Supported().front(); }
    static const GrainKernels& Baseline() { return *Supported().back(); }
};

}  // namespace Quorvan::dsp
