#include "granular/OutputStage.h"

#include <gtest/gtest.h>

#include "granular/BitCrusher.h"
#include "granular/LogQuantizer.h"
#include "support/ModuleRig.h"
#include "support/TestSignals.h"

namespace Quorvan::dsp {
namespace {

using test::Stereo;

constexpr uint32_t kFrames = 48;

struct Stage {
    Stage() : crusher("BitCrusher") {
        crusher.SetParameterNormalized(BitCrusher::Wet, 1.0f);
        crusher.Setup(48000.0f, kFrames);
    }
    void Select(int32_t preset) { stage.SetPreset(preset, crusher); }
    void Apply(Stereo& sum) {
        for (size_t at = 0; at < sum[0].size(); at += kFrames) {
            float* outputs[] = {sum[0].data() + at, sum[1].data() + at};
            ProcessBlock block;
            block.outputs = outputs;
            block.numOutputs = 2;
            block.numInputs = 24;
            block.numFrames = kFrames;
            stage.Apply(block, crusher);
        }
    }
    BitCrusher crusher;
    OutputStage stage;
};

Stereo Sum() { return {test::Noise(1, 960), test::Noise(2, 960, 3.0f)}; }

TEST(OutputStageTest, FirstTwoPresetsLeaveTheSumAsItIs) {
    Stage stage;
    for (const int32_t preset : {0, 1}) {
        stage.Select(preset);
        Stereo sum = Sum();
        stage.Apply(sum);
        EXPECT_EQ(sum, Sum());
        EXPECT_EQ(stage.stage.Interpolates(), preset != 1);
    }
}

TEST(OutputStageTest, LogarithmicPresetsQuantizeAtTheirGain) {
    Stage stage;
    for (const auto& [preset, gain] : {std::pair(2, 1.0f), std::pair(3, 0.16788038f)}) {
        stage.Select(preset);
        Stereo sum = Sum();
        stage.Apply(sum);
        for (size_t c = 0; c < 2; ++c)
            for (size_t i = 0; i < sum[c].size(); ++i)
                EXPECT_EQ(sum[c][i], LogQuantizer::Quantize(Sum()[c][i] * gain) * (1.0f / gain));
        EXPECT_TRUE(stage.stage.Interpolates());
    }
}

TEST(OutputStageTest, CrusherPresetsRunTheCrusherAtTheirGain) {
    const float settings[2][3] = {{0.23713738f, 12.1f, 6.0f}, {0.25118864f, 10.6f, 4.0f}};
    for (int32_t k = 0; k < 2; ++k) {
        const auto [gain, bits, divisor] = settings[k];
        Stage stage;
        stage.Select(4 + k);
        EXPECT_EQ(stage.crusher.Value(BitCrusher::Bitdepth), bits);
        EXPECT_EQ(stage.crusher.Value(BitCrusher::Downsample), divisor);
        Stereo sum = Sum();
        stage.Apply(sum);

        test::ModuleRig<BitCrusher> rig(48000.0f, kFrames, "BitCrusher");
        rig.module.SetParameterValue(BitCrusher::Wet, 1.0f);
        rig.module.SetParameterValue(BitCrusher::Bitdepth, bits);
        rig.module.SetParameterValue(BitCrusher::Downsample, divisor);
        rig.module.Reset(true);
        Stereo wanted = Sum();
        for (auto& channel : wanted)
            for (float& sample : channel)
                sample *= gain;
        wanted = rig.Run(wanted);
        for (size_t c = 0; c < 2; ++c)
            for (size_t i = 0; i < sum[c].size(); ++i)
                ASSERT_EQ(sum[c][i], wanted[c][i] * (1.0f / gain));
    }
}

TEST(OutputStageTest, LeavingTheCrusherKeepsItsSettings) {
    Stage stage;
    stage.Select(4);
    stage.Select(0);
    EXPECT_EQ(stage.crusher.Value(BitCrusher::Bitdepth), 12.1f);
    EXPECT_EQ(stage.crusher.Value(BitCrusher::Downsample), 6.0f);
}

}  // namespace
}  // namespace Quorvan::dsp
