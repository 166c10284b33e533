#include "primitives/UpDownsampler.h"

#include "support/Test.h"

namespace Quorvan::prims {
namespace {

using Signal = std::vector<float>;

/// Amplitude of the part at a frequency in cycles a sample, in the last 4000 samples.
double LevelAt(const Signal& signal, double frequency) {
    std::complex<double> sum = 0.0;
    for (size_t i = signal.size() - 4000; i < signal.size(); ++i)
        sum += double{signal[i]} *
               std::polar(1.0, -2.0 * std::numbers::pi * frequency * static_cast<double>(i));
    return 2.0 * std::abs(sum) / 4000.0;
}

TEST(UpDownsamplerTest, SinesPassAndTheirImagesAndAliasesDoNot) {
    UpDownsampler resampler(2, 1);
    Signal high(12000), out(6000);
    for (const double frequency : {0.02, 0.1, 0.3, 0.42}) {  // of the low rate
        resampler.Reset();
        const Signal in = Sine(frequency, 1.0, 6000);
        resampler.Upsample(in.data(), high.data(), 6000);
        resampler.Downsample(high.data(), out.data(), 6000);
        const double tolerance = frequency < 0.1 ? 1e-4 : 1e-2;
        EXPECT_NEAR(LevelAt(high, 0.5 * frequency), 1.0, tolerance) << frequency;
        EXPECT_NEAR(LevelAt(out, frequency), 1.0, 2 * tolerance) << frequency;
        // Two passes of a group delay of 3.59 high-rate samples, as long as it is even.
        const double late = 2.0 * std::numbers::pi * frequency;
        for (size_t i = 3000; i < 3100 && frequency < 0.1; ++i)
            EXPECT_NEAR(out[i], std::sin(late * (static_cast<double>(i) - 3.59)), 3e-3);
        // The cascade is down by 100 dB from 0.28 of the high rate on.
        EXPECT_LT(LevelAt(high, 0.5 - 0.5 * frequency), 2e-5) << frequency;
        const Signal above = Sine(0.5 - 0.5 * frequency, 1.0, 12000);
        resampler.Downsample(above.data(), out.data(), 6000);
        EXPECT_LT(LevelAt(out, frequency), 2e-5) << frequency;
    }
}

}  // namespace
}  // namespace Quorvan::prims
