#include "slots/FxVariant.h"

#include "support/ModuleRig.h"
#include "support/Test.h"

namespace Quorvan::Processor {
namespace {

using Filter = dsp::MultiModeFilter;

struct Rig : ModuleRig<FxVariant> {
    Rig() : ModuleRig(48000.0f, 48, "FX1") {}
    void Choose(uint32_t effect) {
        module.SetParameterValue(FxVariant::ModuleType, static_cast<float>(effect));
    }
};

/// The tuning of the slot: where the knobs of an effect end, and where one starts.
struct Tuned {
    uint32_t id;
    float bottom, top, start;
};

TEST(FxVariantTest, EffectsAreTunedForTheSlot) {
    Rig rig;
    FxVariant& fx = rig.module;
    const auto expect = [](auto& module, std::initializer_list<Tuned> rows) {
        for (const Tuned& row : rows) {
            const dsp::Parameter& p = module.ParameterAt(row.id);
            EXPECT_NEAR(p.ValueOf(0.0f), row.bottom, 1.0e-4f) << module.Name() << row.id;
            EXPECT_NEAR(p.ValueOf(1.0f), row.top, 1.0e-4f * row.top) << module.Name() << row.id;
            EXPECT_NEAR(module.Value(row.id), row.start, 1.0e-4f * std::abs(row.start) + 1.0e-6f)
                << module.Name() << row.id;
        }
    };
    expect(fx.Child<1>(),
           {{2, 20, 20000, 20}, {3, 0.5f, 15, 0.5f}, {4, 12, 36, 12}, {5, 20, 2000, 20}});
    expect(fx.Child<2>().Child<0>(), {{5, -24, 0, -12}});
    expect(fx.Child<2>().Child<0>().Child<0>(), {{0, 0, 1, 1}, {1, 0, 12, 1}, {2, 0, 48, 0}});
    expect(fx.Child<3>(), {{1, -36, 36, 20},
                           {3, -36, 36, -36},
                           {4, 0.01f, 1000, 0.01f},
                           {5, 1, 2000, 1},
                           {6, -60, 20, -60},
                           {7, 1, 100, 1}});
    expect(fx.Child<4>(), {{0, 2, 2000, 2},
                           {2, 0, 1, 0},
                           {3, 20, 10000, 150},
                           {4, 250, 20000, 20000},
                           {5, 0, 0.2f, 0},
                           {11, -50, 50, -50}});
    expect(fx.Child<5>(), {{33, 16, 2000, 16}, {39, 20, 10000, 150}, {40, 250, 20000, 20000}});
    expect(fx.Child<6>(), {{11, 20, 10000, 150}, {13, -36, 36, -24.3f}});
    expect(fx.Child<7>(), {{1, 0.6f, 20, 0.6f},
                           {2, 0, 10, 0},
                           {3, 0.1f, 5, 0.1f},
                           {4, 0, 0.9f, 0},
                           {7, 1, 3, 1},
                           {12, 20, 20000, 10000},
                           {14, 0, 1, 1},
                           {15, 0, 1, 0}});
    expect(fx.Child<8>(), {{16, 0.001f, 10, 0.001f}, {17, 0, 10, 0}});
    expect(fx.Child<8>().Child<0>(), {{3, 0.005f, 10, 0.005f},
                                      {4, 0, 0.99f, 0},
                                      {12, 1000, 20000, 9935},
                                      {13, 30, 800, 125},
                                      {14, 0, 1, 1},
                                      {15, 0, 1, 1}});
    expect(fx.Child<9>(), {{13, 100, 20000, 15000}, {14, 30, 10000, 200}, {15, 0, 1, 0}});
    expect(fx.Child<9>().Child<0>(), {{0, 0, 0.2f, 0}, {3, 0, 0.925f, 0}, {10, 0.1f, 1.9f, 0.1f}});
    EXPECT_EQ(fx.Position(FxVariant::CopyOnBypass), 1.0f);
}

TEST(FxVariantTest, DryWetGoesToEveryEffectAsAPosition) {
    Rig rig;
    const std::set<uint32_t> linked{1, 13, 14, 34, 77, 94, 104, 120, 153};
    std::vector<float> before;
    for (uint32_t id = 0; id < FxVariant::kFirstOwnId; ++id)
        before.push_back(rig.module.GetParameterNormalized(id));
    rig.module.SetParameterValue(FxVariant::DryWetInternal, 0.375f);
    for (uint32_t id = 0; id < FxVariant::kFirstOwnId; ++id)
        EXPECT_EQ(rig.module.GetParameterNormalized(id), linked.contains(id) ? 0.375f : before[id])
            << id;
    EXPECT_LT(rig.module.Child<9>().Value(dsp::Reverb::Wet), 0.3f);  // bent by its curve
    EXPECT_EQ(rig.module.Child<1>().Value(Filter::Wet), 0.375f);
}

TEST(FxVariantTest, RateTypesSetSyncAndKindOfNote) {
    Rig rig;
    const Stereo silence{Channel(48), Channel(48)};
    for (const int32_t type : {2, 3, 1, 0}) {
        for (const uint32_t id : {FxVariant::DelayRateType, FxVariant::OctaverDelayTimeType,
                                  FxVariant::FlangerChorusRateType})
            rig.module.SetParameterValue(id, static_cast<float>(type));
        rig.Run(silence);
        const float sync = type == 0 ? 0.0f : 1.0f;
        const auto kind = static_cast<float>(type == 0 ? 0 : type - 1);
        auto& delay = rig.module.Child<4>();
        auto& octaver = rig.module.Child<5>();
        auto& chorus = rig.module.Child<8>().Child<0>();
        EXPECT_EQ(delay.Value(dsp::Delay::MidiSync), sync);
        EXPECT_EQ(delay.Value(dsp::Delay::RateSyncedType), kind);
        EXPECT_EQ(chorus.Value(dsp::Chorus::MidiSync), sync);
        EXPECT_EQ(chorus.Value(dsp::Chorus::RateSyncedType), kind);
        for (auto* stage : {&octaver.Child<0>(), &octaver.Child<1>()}) {
            EXPECT_EQ(stage->Value(dsp::PitchShiftDelay::MidiSync), sync);
            EXPECT_EQ(stage->Value(dsp::PitchShiftDelay::RateSyncedType), kind);
        }
        EXPECT_EQ(rig.module.Child<7>().Value(dsp::Chorus::MidiSync), 0.0f);  // the chorus itself
    }
}

}  // namespace
}  // namespace Quorvan::Processor
