#include "slots/ModuleVariant.h"

#include "effects/CompensatedMultiDist.h"
#include "framework/UnitModule.h"
#include "slots/WithDryWet.h"
#include "support/ModuleRig.h"
#include "support/Test.h"

namespace Quorvan::engine {
namespace {

/// Puts out a level and counts what reaches it.
class Probe final : public dsp::UnitModule {
public:
    static constexpr uint32_t kParameterCount = 1;

    Probe(std::string moduleName, float outputLevel)
        : UnitModule(std::move(moduleName), 2, 2, {dsp::ParameterSpec::Raw("P")}),
          level(outputLevel) {}

    void OnSetup(float, uint32_t) override {}
    void OnReset(bool) override { ++resets; }
    bool UpdateParameters(dsp::ProcessBlock&) override { return true; }
    bool OnProcess(dsp::ProcessBlock& block) override {
        ++runs;
        for (uint32_t c = 0; c < 2; ++c)
            std::fill_n(block.outputs[c], block.numFrames, level);
        return true;
    }

    float level;
    uint32_t runs = 0, resets = 0;
};

using TwoProbes = ModuleVariant<2, 2, Probe, Probe>;

struct Variant final : TwoProbes {
    static constexpr uint32_t kParameterCount = kFirstDerivedId;
    Variant() : TwoProbes("V", kParameterCount, std::tuple("A", 1.0f), std::tuple("B", 2.0f)) {}
};

struct Rig : ModuleRig<Variant> {
    Rig() : ModuleRig(48000.0f, 48) {}
    void Set(uint32_t id, float value) { module.SetParameterValue(id, value); }
    Channel RunFor(size_t frames, float fill = 7.0f) {
        const Channel some(frames, 0.5f);
        return Run({some, some}, fill)[1];
    }
};

/// Both ends of a fade, and that it is a straight line between.
void ExpectLine(const Channel& got, size_t from, size_t length, float start, float end) {
    for (size_t i = from; i < from + length; ++i) {
        const float share = static_cast<float>(i - from + 1) / static_cast<float>(length);
        ASSERT_NEAR(got[i], start + (end - start) * share, 2.0e-3f) << i;
    }
}

TEST(ModuleVariantTest, BypassCrossfadesInFiftyMilliseconds) {
    Rig rig;
    rig.Set(Variant::CopyOnBypass, 1.0f);
    rig.Set(Variant::CrossfadeOnBypass, 1.0f);
    rig.module.Reset(true);
    rig.RunFor(48);
    rig.Set(Variant::Bypass, 1.0f);
    const Channel out = rig.RunFor(2880);
    ExpectLine(out, 0, 2400, 1.0f, 0.5f);
    EXPECT_EQ(out.back(), 0.5f);
    const uint32_t runs = rig.module.Child<0>().runs;
    rig.RunFor(480);
    EXPECT_EQ(rig.module.Child<0>().runs, runs);
    rig.Set(Variant::Bypass, 0.0f);
    const Channel back = rig.RunFor(2880);
    ExpectLine(back, 0, 2400, 0.5f, 1.0f);
    EXPECT_EQ(back.back(), 1.0f);
}

TEST(ModuleVariantTest, ChangeFadesOutThenIn) {
    Rig rig;
    rig.Set(Variant::FadeOnModuleChange, 1.0f);
    rig.RunFor(480);
    const uint32_t before = rig.module.Child<1>().resets;
    rig.Set(Variant::ModuleType, 1.0f);
    const Channel out = rig.RunFor(2880);
    ExpectLine(out, 0, 1200, 1.0f, 0.0f);
    // The new one comes in with the block behind the one in which the old one has gone.
    const size_t start = out[1208] == 0.0f ? 1248 : 1200;
    ExpectLine(out, 1200, start - 1200, 0.0f, 0.0f);
    ExpectLine(out, start, 1200, 0.0f, 2.0f);
    EXPECT_EQ(out.back(), 2.0f);
    EXPECT_EQ(rig.module.Child<1>().resets, before + 1);

    rig.Set(Variant::ModuleType, 0.0f);  // taken back while it fades out
    EXPECT_NEAR(rig.RunFor(480).back(), 1.2f, 2.0e-3f);
    rig.Set(Variant::ModuleType, 1.0f);
    const Channel again = rig.RunFor(960);
    ExpectLine(again, 0, 480, 1.2f, 2.0f);
    EXPECT_EQ(again.back(), 2.0f);
}

using Mixed = WithDryWet<Processor::CompensatedMultiDist, 0, 2, 0>;

TEST(WithDryWetTest, CrossfadesTheChildWithItsInput) {
    const Stereo input{Noise(1, 4800), Noise(2, 4800)};
    ModuleRig<Processor::CompensatedMultiDist> alone(48000.0f, 48, "");
    alone.Modulate(2, 0.3f);
    const Stereo wet = alone.Run(input);

    ModuleRig<Mixed> mixed(48000.0f, 48, "");
    mixed.Modulate(2, 0.3f);   // Drive of the child
    mixed.Modulate(3, 0.25f);  // DryWet
    mixed.module.SetParameterValue(Mixed::DryWet, 0.5f);
    mixed.module.Reset(false);
    const Stereo output = mixed.Run(input);
    double share = 0.5;  // a reset jumps to the mix, from where the row makes it glide
    for (size_t i = 0; i < 4800; ++i) {
        share += (0.75 - share) * (1.0 - std::exp(-5.0 / 480.0));
        const auto w = static_cast<float>(share);
        for (size_t c = 0; c < 2; ++c)
            ASSERT_NEAR(output[c][i], (1.0f - w) * input[c][i] + w * wet[c][i], 1.0e-5f) << i;
    }
}

}  // namespace
}  // namespace Quorvan::engine
