#pragma once

#include <cstdint>

#include "primitives/RadixFourFft.h"
#include "primitives/VectorKernels.h"

namespace Quorvan::dsp {

/// Forward real FFT of a power-of-two length.
class RealFft {
public:
    RealFft() = default;
    RealFft(const RealFft&) = delete;
    RealFft& operator=(const RealFft&) = delete;
    ~RealFft() { Free(); }

    /// Takes memory and tables for length samples, at least 4.
    void Resize(int64_t length);
    /// N samples to N/2 + 1 interleaved complex bins, unscaled; dst has room for N + 2 floats and
    /// is not src.
    void Forward(const float* src, float* dst) {
        if (spec == nullptr)
            vectorFft.Forward(src, dst);
        else
            prims::ippsFFTFwd_RToCCS_32f(src, dst, spec, workMemory);
    }

private:
    void Free();

    int64_t size = 0;
    RadixFourFft vectorFft;                    ///< for the lengths that it takes
    prims::IppsFFTSpec_R_32f* spec = nullptr;  ///< inside specMemory
    uint8_t* specMemory = nullptr;
    uint8_t* workMemory = nullptr;
};

}  // namespace Quorvan::dsp
