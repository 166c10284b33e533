#include "primitives/RealFft.h"

#include "support/Test.h"

namespace Quorvan::dsp {
namespace {

TEST(RealFftTest, BinsAreThoseOfTheDefinition) {
    RealFft fft;
    for (const uint32_t length : {512u, 4u, 8u, 32u, 64u, 1024u, 512u}) {
        fft.Resize(length);
        const std::vector<float> signal = Noise(length, length);
        std::vector<float> bins(length + 4, 99.0f);
        fft.Forward(signal.data(), bins.data());
        for (uint32_t k = 0; k <= length / 2; ++k) {
            std::complex<double> sum = 0.0;
            for (uint32_t n = 0; n < length; ++n)
                sum += double{signal[n]} *
                       std::polar(1.0, -2.0 * std::numbers::pi * (k * n % length) / length);
            // Roundings grow with the root of the length, as the bins do.
            const double tolerance = 2e-6 * std::sqrt(length);
            EXPECT_NEAR(bins[2 * k], sum.real(), tolerance) << length << ' ' << k;
            EXPECT_NEAR(bins[2 * k + 1], sum.imag(), tolerance) << length << ' ' << k;
        }
        EXPECT_EQ(bins[1], 0.0f);
        EXPECT_EQ(bins[length + 1], 0.0f);
        EXPECT_EQ(bins[length + 2], 99.0f);
    }
}

TEST(VectorKernelsTest, MemoryIsAlignedAndFilled) {
    for (const int count : {1, 17, 516}) {
        float* const floats = prims::ippsMalloc_32f(count);
        uint8_t* const bytes = prims::ippsMalloc_8u(count);
        EXPECT_EQ(reinterpret_cast<uintptr_t>(floats) % 64, 0u);
        EXPECT_EQ(reinterpret_cast<uintptr_t>(bytes) % 64, 0u);
        prims::ippsSet_32f(1.5f, floats, count);
        EXPECT_EQ(floats[count - 1], 1.5f);
        prims::ippsFree(floats);
        prims::ippsFree(bytes);
    }
}

}  // namespace
}  // namespace Quorvan::dsp
