#include "primitives/BlockDelay.h"

#include <gtest/gtest.h>

#include "support/TestSignals.h"

namespace Quorvan::dsp {
namespace {

TEST(BlockDelayTest, IsTheSampleBySampleRing) {
    constexpr int32_t kSize = 97;
    for (const uint32_t delay : {0u, 1u, 5u, 48u, 49u, 96u, 97u}) {
        DelayLine line, plain;
        line.Resize(kSize);
        plain.Resize(kSize);
        for (const uint32_t count : {48u, 4u, 1u, 97u, 52u, 48u, 30u}) {
            const std::vector<float> in = test::Noise(delay * 100 + count, count);
            std::vector<float> out(count);
            RunBlockDelay(line, delay, in.data(), out.data(), count);
            for (uint32_t i = 0; i < count; ++i) {
                const int32_t read = plain.writeIndex - static_cast<int32_t>(delay);
                ASSERT_EQ(out[i], plain.data[(read + kSize) % kSize]) << delay << " " << i;
                plain.Write(in[i]);
            }
            ASSERT_EQ(line.writeIndex, plain.writeIndex);
        }
    }
}

}  // namespace
}  // namespace Quorvan::dsp
