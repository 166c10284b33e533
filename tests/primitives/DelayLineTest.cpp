#include "primitives/DelayLine.h"

#include "support/Test.h"

namespace Quorvan::dsp {
namespace {

constexpr int32_t kSize = 37;

/// A line full of noise, and the signal that went in, newest last.
struct Filled {
    Filled() : signal(Noise(5, 3 * kSize + 11)) {
        line.Resize(kSize);
        for (const float x : signal)
            line.Write(x);
    }
    /// The sample written back samples before the last one, round and round.
    float Back(int64_t back) const {
        const int64_t inRing = (back % kSize + kSize) % kSize;
        return signal[signal.size() - 1 - static_cast<size_t>(inRing)];
    }
    std::vector<float> signal;
    DelayLine line;
};

TEST(DelayLineTest, AnyDelayReadsTheSampleThatFarBack) {
    Filled f;
    EXPECT_EQ(f.line.Read(1, 0.0f, DelayLine::kNone), f.signal.back());
    EXPECT_EQ(f.line.Read(kSize, 0.0f, DelayLine::kNone), f.line.data[f.line.writeIndex]);
    const int32_t huge = std::numeric_limits<int32_t>::max();
    for (const int32_t delay : {1, 2, 17, kSize - 1, kSize, kSize + 1, 5 * kSize + 3, 0, -1, -kSize,
                                -7 * kSize - 5, huge, -huge - 1}) {
        const double newer = f.Back(int64_t{delay} - 1), older = f.Back(delay);
        EXPECT_EQ(f.line.Read(delay, 0.7f, DelayLine::kNone), newer) << delay;
        EXPECT_EQ(f.line.Read(delay, 0.7f, 77), newer) << delay;
        EXPECT_EQ(f.line.Read(delay, 0.0f, DelayLine::kLinear), newer) << delay;
        EXPECT_NEAR(f.line.Read(delay, 0.3f, DelayLine::kLinear), 0.7 * newer + 0.3 * older, 2e-7);
        EXPECT_NEAR(f.line.Read(delay, 1.0f, DelayLine::kLinear), older, 2e-7) << delay;
        EXPECT_EQ(f.line.Read(delay, 0.0f, DelayLine::kPolynomial), newer) << delay;
        EXPECT_NEAR(f.line.Read(delay, 1.0f, DelayLine::kPolynomial), older, 2e-6) << delay;
        f.line.allpassState = 0.25f;
        const float y = f.line.Read(delay, 0.5f, DelayLine::kAllpass);
        EXPECT_NEAR(y, (newer - 0.25) / 3.0 + older, 2e-7) << delay;
        EXPECT_EQ(f.line.allpassState, y);
    }
}

TEST(DelayLineTest, ClearZeroesTheRingAndCopiesHaveTheirOwn) {
    Filled f;
    DelayLine copy = f.line;
    f.line.Read(3, 0.5f, DelayLine::kAllpass);
    f.line.Clear();
    EXPECT_TRUE(std::ranges::equal(f.line.storage, std::vector<float>(kSize)));
    EXPECT_TRUE(f.line.writeIndex == 0 && f.line.allpassState == 0.0f && !f.line.isClear);
    EXPECT_EQ(copy.Read(1, 0.0f, DelayLine::kNone), f.signal.back());
    f.line.Resize(8);
    for (int run = 0; run < 2; ++run) {  // straight behind Resize, and behind a write past Write
        EXPECT_EQ(f.line.isClear, run == 0);
        f.line.Clear();
        EXPECT_TRUE(std::ranges::equal(f.line.storage, std::vector<float>(8)));
        f.line.data[2] = 1.0f;
    }
}

TEST(DelayLineTest, LongLinesAreZeroedBitByBitHoweverOftenTheyAreCleared) {
    std::mt19937 any(3);
    DelayLine line;
    line.Resize(20000, DelayLine::Clearing::BitByBit);
    line.Clear();
    for (uint32_t turn = 0; turn < 500; ++turn) {
        for (auto block = any() % 90; block-- > 0;) {
            line.Wipe();
            for (auto i = any() % 900; i-- > 0;)
                line.Write(1.0f);
        }
        line.Clear();
        ASSERT_TRUE(std::ranges::equal(line.storage, std::vector<float>(20000))) << turn;
    }
}

}  // namespace
}  // namespace Quorvan::dsp
