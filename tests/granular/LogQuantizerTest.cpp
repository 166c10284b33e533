#include "granular/LogQuantizer.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "support/TestSignals.h"

namespace Quorvan::dsp {
namespace {

/// Counts segments and steps one by one.
float Counted(float sample) {
    const float magnitude = std::min(std::abs(sample), 1.0f) * 8031.0f;
    float base = 0.0f;
    float step = 2.0f;
    while (step < 256.0f && magnitude >= 2.0f * base + 33.0f) {  // segments start at 33 (2^s - 1)
        base = 2.0f * base + 33.0f;
        step *= 2.0f;
    }
    int level = 0;
    while (level < 15 && base + static_cast<float>(level + 1) * step <= magnitude)
        ++level;
    const float value = (static_cast<float>(level) * step + base) * 0.0001245175f;
    return sample < 0.0f ? -value : value;
}

TEST(LogQuantizerTest, FindsTheLevelThatCountingFinds) {
    std::vector<float> samples = test::Noise(1, 20000, 1.2f);
    samples.insert(samples.end(), {-0.0f, -1.0f, 7.0f});
    for (const float quiet : {0.1f, 0.01f, 0.001f})
        for (const float sample : test::Noise(2, 5000, quiet))
            samples.push_back(sample);
    for (int level = 0; level <= 8031; ++level)  // the edges of all steps, met exactly or nearly
        samples.push_back(static_cast<float>(level) / 8031.0f);
    std::vector<float> quantized = samples;
    LogQuantizer::Process(quantized.data(), static_cast<uint32_t>(quantized.size()));
    for (size_t i = 0; i < samples.size(); ++i) {
        ASSERT_EQ(quantized[i], Counted(samples[i])) << samples[i];
        ASSERT_EQ(std::signbit(quantized[i]), samples[i] < 0.0f);
        ASSERT_EQ(quantized[i], LogQuantizer::Quantize(samples[i]));
    }
}

}  // namespace
}  // namespace Quorvan::dsp
