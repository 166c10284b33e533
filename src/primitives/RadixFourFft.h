#pragma once

#include <cstdint>
#include <vector>

#include "primitives/AlignedVector.h"

namespace Quorvan::dsp {

/// Forward real FFT whose half length is a power of four: a complex one, four butterflies at a time
/// in vectors. All sums and products are those of the plain loops of the library that other lengths
/// go through, so that both give the same bits, but for the sign of a zero.
class RadixFourFft {
public:
    /// Lengths that it takes.
    static bool Fits(uint32_t length);
    /// Takes memory and tables.
    void Resize(uint32_t length);
    /// As RealFft::Forward.
    void Forward(const float* src, float* dst);

private:
    struct Complex;

    void MakePlaces();
    void MakeTwiddles();
    void RunFirstStage(const float* src);
    void RunStage(uint32_t quarter, const float* twiddles);
    void WriteBins(float* dst) const;
    void WritePair(uint32_t k, float* dst) const;

    uint32_t half = 0;
    std::vector<uint32_t> places;  ///< where the four values of a first butterfly go
    AlignedVector stageTwiddles;   ///< in the order in which the stages behind the first take them
    AlignedVector binTwiddlesRe, binTwiddlesIm;
    AlignedVector re, im;  ///< the complex transform
};

}  // namespace Quorvan::dsp
