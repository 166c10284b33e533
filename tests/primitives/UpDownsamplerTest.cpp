#include "primitives/UpDownsampler.h"

#include "support/Test.h"

namespace Quorvan::prims {
namespace {

using Signal = std::vector<float>;

/// Every sample through one section after the other, on coefficients and states of an object.
Signal Plain(const UpDownsampler& u, Signal signal, std::vector<std::pair<float, float>>& state) {
    for (float& s : signal) {
        for (size_t k = 0; k < 8; ++k) {
            const float out = s + state[k].first;
            state[k].first = u.numeratorB1[k] * s - u.denominator[k].first * out + state[k].second;
            state[k].second = s - u.denominator[k].second * out;
            s = out;
        }
    }
    return signal;
}

Signal PlainUp(UpDownsampler& u, const Signal& in) {
    Signal spread(2 * in.size());
    for (size_t i = 0; i < in.size(); ++i)
        spread[2 * i] = in[i] * u.upGain;
    return Plain(u, spread, u.upState);
}

Signal PlainDown(UpDownsampler& u, Signal in) {
    for (float& x : in)
        x *= u.downGain;
    const Signal filtered = Plain(u, in, u.downState);
    Signal out(in.size() / 2);
    for (size_t i = 0; i < out.size(); ++i)
        out[i] = filtered[2 * i];
    return out;
}

/// Amplitude of the part at a frequency in cycles a sample, in the last 4000 samples.
double LevelAt(const Signal& signal, double frequency) {
    std::complex<double> sum = 0.0;
    for (size_t i = signal.size() - 4000; i < signal.size(); ++i)
        sum += double{signal[i]} *
               std::polar(1.0, -2.0 * std::numbers::pi * frequency * static_cast<double>(i));
    return 2.0 * std::abs(sum) / 4000.0;
}

TEST(UpDownsamplerTest, PipelinesEqualThePlainCascadeBitForBit) {
    UpDownsampler plain[2] = {{2, 1}, {2, 1}}, single[2] = {{2, 1}, {2, 1}},
                  two[2] = {{2, 1}, {2, 1}};
    const UpDownsampler::Two both = {&two[0], &two[1]};
    uint32_t seed = 1;
    for (const uint32_t count : {44u, 1u, 0u, 2u, 3u, 4u, 7u, 48u, 5u, 96u, 13u}) {
        std::array<Signal, 2> in, high, expectedHigh, expected;
        for (size_t c = 0; c < 2; ++c) {
            in[c] = Noise(seed++, count);
            high[c].resize(2 * count);
            expectedHigh[c] = PlainUp(plain[c], in[c]);
            expected[c] = PlainDown(plain[c], expectedHigh[c]);
            Signal work(2 * count);
            single[c].Upsample(in[c].data(), work.data(), count);
            EXPECT_EQ(work, expectedHigh[c]) << count;
            single[c].Downsample(work.data(), work.data(), count);  // in place
            work.resize(count);
            EXPECT_EQ(work, expected[c]) << count;
        }
        UpDownsampler::UpsampleTwo(both, {in[0].data(), in[1].data()},
                                   {high[0].data(), high[1].data()}, count);
        EXPECT_EQ(high, expectedHigh) << count;
        UpDownsampler::DownsampleTwo(both, {high[0].data(), high[1].data()},
                                     {in[0].data(), in[1].data()}, count);
        EXPECT_EQ(in, expected) << count;
    }
    for (size_t c = 0; c < 2; ++c) {
        EXPECT_TRUE(single[c].upState == plain[c].upState && two[c].upState == plain[c].upState);
        EXPECT_TRUE(single[c].downState == plain[c].downState);
        two[c].Reset();
        EXPECT_TRUE(two[c].upState == UpDownsampler(2, 1).upState &&
                    two[c].downState == two[c].upState);
    }
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
