#pragma once

#include <cstdint>

namespace Quorvan::dsp {

/// Inner loops of the grain renderer, in the widest form that the running processor offers. All
/// forms give the same results: none fuses a multiplication with an addition.
struct GrainKernels {
    /// What an envelope depends on besides the phase.
    struct Envelope {
        int32_t shape;       ///< 0 to 7
        float shapeA, shapeB;
        float length;        ///< source samples
        float attackSamples; ///< fixed attack of shapes 6 and 7
    };
    /// Envelope at count steps: the source samples read so far start at elapsed and grow by step.
    /// Buffers of all kernels have room for count rounded up to a multiple of 16.
    void (*envelope)(const Envelope& shape, double elapsed, double step, uint32_t count,
                     float* out);
    /// Linear interpolation of tape at position, position + increment, ... All positions and their
    /// right neighbours lie inside the tape.
    void (*interpolate)(const float* tape, double position, double increment, uint32_t count,
                        float* out);
    /// The same without interpolation.
    void (*pick)(const float* tape, double position, double increment, uint32_t count, float* out);
    /// x = x * c + (1 - c) * y, with c = start + i * slope held to 0..1.
    void (*crossfade)(float* x, const float* y, float start, float slope, uint32_t count);
    /// out += gain * envelope * x.
    void (*mix)(const float* envelope, const float* x, float gain, uint32_t count, float* out);
    /// Name of the instruction set.
    const char* name;

    /// The form for this machine, chosen once.
    static const GrainKernels& Best();
    /// The form for the baseline instruction set.
    static const GrainKernels& Baseline();
};

}  // namespace Quorvan::dsp
