#include "granular/OutputStage.h"

#include "granular/BitCrusher.h"
#include "granular/LogQuantizer.h"
#include "support/ModuleRig.h"
#include "support/Test.h"

namespace Quorvan::dsp {
namespace {

constexpr uint32_t kFrames = 48;

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
    std::vector<float> samples = Noise(1, 20000, 1.2f);
    samples.insert(samples.end(), {-0.0f, -1.0f, 7.0f});
    for (const float quiet : {0.1f, 0.01f, 0.001f})
        for (const float sample : Noise(2, 5000, quiet))
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

struct Stage {
    Stage() { crusher.Setup(48000.0f, kFrames); }
    void Select(int32_t preset) { stage.SetPreset(preset, crusher); }
    Stereo Run(Stereo sum) {
        for (size_t at = 0; at < sum[0].size(); at += kFrames) {
            float* outputs[] = {sum[0].data() + at, sum[1].data() + at};
            ProcessBlock block;
            block.outputs = outputs;
            block.numOutputs = 2;
            block.numInputs = 24;
            block.numFrames = kFrames;
            stage.Apply(block, crusher);
        }
        return sum;
    }
    BitCrusher crusher{"BitCrusher"};
    OutputStage stage;
};

Stereo Scaled(Stereo signal, float gain) {
    for (auto& channel : signal)
        for (float& sample : channel)
            sample *= gain;
    return signal;
}

TEST(OutputStageTest, EveryPresetRunsItsEffectAtItsGain) {
    const Stereo sum{Noise(1, 960), Noise(2, 960, 3.0f)};
    Stage stage;
    for (const int32_t preset : {0, 1}) {
        stage.Select(preset);
        EXPECT_EQ(stage.Run(sum), sum);
        EXPECT_EQ(stage.stage.Interpolates(), preset == 0);
    }
    for (const auto& [preset, gain] : {std::pair(2, 1.0f), std::pair(3, 0.16788038f)}) {
        stage.Select(preset);
        Stereo wanted = Scaled(sum, gain);
        for (auto& channel : wanted)
            LogQuantizer::Process(channel.data(), 960);
        EXPECT_EQ(stage.Run(sum), Scaled(wanted, 1.0f / gain)) << preset;
        EXPECT_TRUE(stage.stage.Interpolates());
    }
    const float crushers[2][3] = {{0.23713738f, 12.1f, 6.0f}, {0.25118864f, 10.6f, 4.0f}};
    for (int32_t k = 0; k < 2; ++k) {
        const auto [gain, bits, divisor] = crushers[k];
        stage.Select(4 + k);
        stage.Select(0);  // leaves the crusher's settings as they are
        EXPECT_EQ(stage.crusher.Value(BitCrusher::Bitdepth), bits);
        EXPECT_EQ(stage.crusher.Value(BitCrusher::Downsample), divisor);
        stage.Select(4 + k);

        ModuleRig<BitCrusher> rig(48000.0f, kFrames, "BitCrusher");
        rig.module.SetParameterValue(BitCrusher::Bitdepth, bits);
        rig.module.SetParameterValue(BitCrusher::Downsample, divisor);
        for (BitCrusher* crusher : {&stage.crusher, &rig.module}) {
            crusher->SetParameterNormalized(BitCrusher::Wet, 1.0f);
            crusher->Reset(true);
        }
        EXPECT_EQ(stage.Run(sum), Scaled(rig.Run(Scaled(sum, gain)), 1.0f / gain)) << 4 + k;
    }
}

}  // namespace
}  // namespace Quorvan::dsp
