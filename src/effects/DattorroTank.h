#pragma once

#include <array>
#include <cstdint>

#include "effects/TankLengths.h"
#include "effects/TankReads.h"
#include "primitives/AllpassDelayLine.h"
#include "primitives/DelayLine.h"

namespace Quorvan::dsp {

/// The recirculating part of a plate reverberator: four all-passes in a row diffuse the input, then
/// two branches feed each other, each a modulated all-pass, a line, a low-pass, a second all-pass
/// and a second line. Either output is the sum of seven taps from all over the branches.
///
/// All lengths follow a size, 0.1 at least, which may move in any frame. At rest they are whole
/// samples.
class DattorroTank {
public:
    static constexpr uint32_t kSides = 2;

    /// One entry a frame.
    struct Course {
        const float* input = nullptr;
        const float* decay = nullptr;                   ///< gain of the feedback paths
        std::array<const float*, kSides> modulation{};  ///< of each branch, samples
        std::array<float*, kSides> out{};               ///< none of them an input
        float damp = 0.0f;                              ///< of the low-passes, 0 none

        Course From(uint32_t frame) const;
    };

    /// Takes the rings for sizes up to maxSize, 1 at least. reach: largest modulation, seconds.
    void Setup(float rate, float maxSize, float reach);
    void Clear();
    /// Once a block, ahead of Run.
    void Wipe();
    void SetInputDiffusion1(float gain) { allpasses[0].gain = allpasses[1].gain = gain; }
    void SetInputDiffusion2(float gain) { allpasses[2].gain = allpasses[3].gain = gain; }
    void SetDecayDiffusion1(float gain) { allpasses[4].gain = allpasses[6].gain = -gain; }
    void SetDecayDiffusion2(float gain) { allpasses[5].gain = allpasses[7].gain = gain; }

    /// Rests at a size.
    void UpdateLengths(float size);
    void Run(const Course& course, uint32_t count);
    /// With a size for each frame, rising or falling throughout. UpdateLengths has to follow.
    void RunGliding(const Course& course, const float* sizes, uint32_t count);

    /// Scale of the lengths at size 1: 1 at the reference rate.
    float Ratio() const { return ratio; }

private:
    uint32_t LongestChunk(float scale) const;
    template <class Reads>
    void RunChunk(const Reads& reads, const Course& course, uint32_t count);
    template <class Reads>
    void RunBranches(const Reads& reads, const Course& course, uint32_t count);
    template <class Reads>
    void ReadOutput(const Reads& reads, const Course& course, uint32_t count) const;
    void Damp(float damp, uint32_t count);

    // Coefficients.
    float ratio = 1.0f;
    float longestReach = 0.0f;  ///< of the modulation, samples
    float restScale = 1.0f;
    TankLengths lengths;  ///< at restScale

    // State.
    std::array<float, kSides> damped{};  ///< of the low-passes
    std::array<AllpassDelayLine, TankLengths::kAllpasses> allpasses;
    std::array<DelayLine, TankLengths::kLines> lines;

    // Buffers of one chunk.
    TankChunk diffused{}, delayed{};
    std::array<TankChunk, kSides> branch{};
};

}  // namespace Quorvan::dsp
