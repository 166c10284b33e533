// The granular module as a whole: modes, clocks, scale, limits, gate.
#include "granular/MoteWeaver.h"

#include "granular/GranularTables.h"
#include "support/ModuleRig.h"
#include "support/SeededClock.h"
#include "support/Test.h"

namespace Quorvan::dsp {
namespace {

namespace Id = MoteWeaverId;
namespace Row = MoteWeaverRow;

constexpr float kRate = 24000.0f;
constexpr uint32_t kBlock = 24;
constexpr uint32_t kFirstStep = 39 + StepSequencerGranular::StepVal1;
constexpr uint32_t kFirstSwitch = 39 + StepSequencerGranular::StepOnOff1;
constexpr uint32_t kMainRate = IGenerator::RateSynced;

/// One module under a standing transport: its starts are counted, its grains kept.
class Engine : private GrainListener {
public:
    explicit Engine(const std::vector<std::pair<uint32_t, float>>& more = {}) {
        const SeededClock clock(1);
        rig = std::make_unique<ModuleRig<MoteWeaver>>(kRate, kBlock, "MoteWeaver");
        Module().SetGrainListener(this);
        Set({{Id::MaxGrains, 9.0f},
             {Id::RandomDirection, 1.0f},
             {Id::BufferLengthSynced, 2.0f},
             {Id::GrainSizeAbsolute, 20.0f},
             {Id::Pitch, 0.0f},
             {Id::Speed, 0.5f}});
        Set(more);
    }
    MoteWeaver& Module() { return rig->module; }
    Engine& Set(uint32_t id, float value) {
        Module().SetParameterValue(id, value);
        return *this;
    }
    Engine& Set(const std::vector<std::pair<uint32_t, float>>& values) {
        for (const auto& [id, value] : values)
            Set(id, value);
        return *this;
    }
    void Modulate(uint32_t row, float amount) { rig->Modulate(row, amount); }
    /// Pairs started in these blocks of noise.
    uint32_t Starts(uint32_t blocks) {
        uint32_t starts = 0;
        for (uint32_t k = 0; k < blocks; ++k) {
            Run(1);
            starts += Module().StartedCount();
        }
        return starts;
    }
    Stereo Run(uint32_t blocks) {
        const size_t length = size_t{blocks} * kBlock;
        return rig->Run({Noise(++noise, length, 0.5f), Noise(++noise, length, 0.5f)});
    }

    std::vector<Grain> grains;

private:
    void OnGrainStart(const Grain& grain) override { grains.push_back(grain); }

    std::unique_ptr<ModuleRig<MoteWeaver>> rig;
    uint32_t noise = 0;
};

TEST(MoteWeaverTest, AScaleKeepsThePitchKnobWhereItIs) {
    Engine engine;
    Parameter& pitch = *engine.Module().FindRecord(Id::Pitch);
    engine.Module().SetParameterNormalized(Id::Pitch, 0.5f);
    engine.Run(1);
    EXPECT_EQ(pitch.GetValue(), 0.0f);
    for (const auto& [scale, value] : {std::pair(5.0f, 21.0f), {0.0f, 0.0f}}) {  // major, and none
        engine.Set(Id::Scale, scale).Run(1);
        EXPECT_EQ(pitch.GetNormalized(), 0.5f);
        EXPECT_EQ(pitch.GetValue(), value);
        EXPECT_TRUE(scale == 0.0f || pitch.steps == 43.0f);
    }

    const size_t entries[] = {73, 7, 13, 19, 43, 43, 31, 31, 43, 43, 43, 43, 43, 43};
    for (uint32_t scale = 1; scale <= 14; ++scale) {
        const auto table = ScaleSemitones(scale);
        ASSERT_EQ(table.size(), entries[scale - 1]) << scale;
        EXPECT_EQ(table.front(), -36.0f);
        EXPECT_EQ(table.back(), 36.0f);
        EXPECT_EQ(table[table.size() / 2], 0.0f) << scale;
    }
}

TEST(MoteWeaverTest, TheClassicModeStartsAtItsRateFreeOrSynced) {
    Engine free({{IGenerator::RateUnSynced, 50.0f}});
    free.Run(1);
    EXPECT_NEAR(free.Starts(2000), 100.0, 1.0);
    // An eighth note is a quarter of a second; the triplet takes two thirds of it.
    const uint32_t perFourSeconds[] = {16, 24, 11};
    for (int type = 1; type <= 3; ++type) {
        Engine synced({{Id::DensityType, static_cast<float>(type)}, {kMainRate, 3.0f}});
        synced.Run(1);
        EXPECT_NEAR(synced.Starts(4000), perFourSeconds[type - 1], 1.0) << type;
    }
}

TEST(MoteWeaverTest, TheTextureModeKeepsItsLayersOverlapping) {
    Engine engine(
        {{Id::GranularMode, 1.0f}, {Id::TextureSizeAbsolute, 100.0f}, {Id::TextureDensity, 2.0f}});
    engine.Run(200);
    EXPECT_NEAR(engine.Starts(3000), 120.0, 1.0);         // 40 Hz
    EXPECT_NEAR(engine.Module().Grains().Count(), 8, 2);  // four pairs
    engine.Modulate(Row::TextureDensity, 0.2f);           // one step more
    EXPECT_NEAR(engine.Starts(1000), 80.0, 1.0);
    engine.Modulate(Row::TextureDensity, 0.0f);
    engine.Set({{Id::TextureSizeMidiSync, 1.0f}, {Id::TextureSizeSynced, 3.0f}});
    engine.Run(100);
    EXPECT_NEAR(engine.Starts(2000), 32.0, 1.0);  // four in an eighth note
}

/// A beat of all steps alike, at quarter notes.
void SetBeat(Engine& engine, float value) {
    engine.Set({{Id::GranularMode, 2.0f}, {kMainRate, 2.0f}, {39 + IGenerator::Mode, 2.0f}});
    engine.Set(39 + StepSequencerGranular::NbSteps, 4.0f);
    for (uint32_t k = 0; k < 16; ++k)
        engine.Set({{kFirstStep + k, value}, {kFirstSwitch + k, 1.0f}});
}

TEST(MoteWeaverTest, StepValuesMultiplyTheBeat) {
    const uint32_t perFourSeconds[] = {8, 16, 32};
    for (uint32_t value = 0; value < 3; ++value) {
        Engine engine;
        SetBeat(engine, static_cast<float>(value));
        engine.Run(1);
        EXPECT_NEAR(engine.Starts(4000), perFourSeconds[value], 1.0) << value + 1;
        // Past the end of the rate table there is nothing faster.
        engine.Set(kMainRate, 8.0f).Run(1);
        EXPECT_NEAR(engine.Starts(500), 64.0, 2.0) << value + 1;
    }
    Engine half;
    SetBeat(half, 0.0f);
    half.Set({{kFirstSwitch + 1, 0.0f}, {kFirstSwitch + 3, 0.0f}});
    half.Run(1);
    EXPECT_NEAR(half.Starts(4000), 4.0, 1.0);
}

TEST(MoteWeaverTest, TheBeatModeForcesItsRules) {
    // The size follows the density, whatever the link says, and depth is a chance of skipping.
    Engine engine;
    SetBeat(engine, 0.0f);
    engine.Set({{kMainRate, 4.0f}, {Id::GrainSizeRatio, 3.0f}, {Id::OffsetType, 0.0f}});
    engine.Run(500);
    ASSERT_FALSE(engine.grains.empty());
    // A sixteenth at 120 is 125 ms, and half of it 62.5.
    EXPECT_NEAR(engine.grains.back().length, 0.0625f * kRate, 1.0f);
    EXPECT_GT(engine.Module().Capture().offsetType, 0);
    const uint32_t all = engine.Starts(4000);
    engine.Set({{Id::RandomDensity, 1.0f}, {Id::RandomDensityArrow, 0.0f}});
    const uint32_t some = engine.Starts(4000);
    EXPECT_LT(some, all / 3);  // skipped with a chance of 0.95 at most

    // Back in the classic mode the parameters count again.
    engine.Set({{Id::GranularMode, 0.0f}, {Id::DensitySizeLink, 0.0f}, {Id::RandomDensity, 0.0f}});
    engine.Set(IGenerator::RateUnSynced, 50.0f).Run(100);
    EXPECT_NEAR(engine.grains.back().length, 0.02f * kRate, 1.0f);
    EXPECT_EQ(engine.Module().Capture().offsetType, 0);
    EXPECT_FALSE(engine.Module().FindRecord(IGenerator::MidiSync)->GetValue() > 0.5f);
}

TEST(MoteWeaverTest, ClassicJitterSpeedsUpTheClock) {
    Engine engine({{IGenerator::RateUnSynced, 20.0f}});
    engine.Run(1);
    const uint32_t even = engine.Starts(2000);
    engine.Set(Id::RandomDensity, 0.3f);
    EXPECT_GT(engine.Starts(2000), even + even / 4);
    engine.Set(Id::RandomDensityArrow, 1.0f).Set(Id::RandomDensity, 1.0f);
    EXPECT_LT(engine.Starts(2000), even / 2);
}

TEST(MoteWeaverTest, FreezeHoldsTapeAndHeadAndTheGrainsGoOn) {
    Engine engine;
    engine.Set(IGenerator::RateUnSynced, 50.0f).Run(300);
    engine.Set(Id::BufferFreeze, 1.0f).Run(1);
    const CaptureBuffer& tape = engine.Module().Capture();
    const uint32_t head = tape.writePosition;
    const ZeroedArray left = tape.left[tape.activePass];
    EXPECT_GT(engine.Starts(200), 5u);
    EXPECT_EQ(tape.writePosition, head);
    EXPECT_TRUE(std::ranges::equal(tape.left[tape.activePass], left));
    engine.Set(Id::BufferLengthSynced, 3.0f).Run(1);  // a new length keeps the recording
    EXPECT_TRUE(std::ranges::equal(tape.left[tape.activePass], left));
    EXPECT_EQ(tape.length, static_cast<uint32_t>(2.0f * kRate));
    engine.Set(Id::BufferFreeze, 0.0f);
    engine.Modulate(Row::BufferFreeze, 0.4f);  // not above the middle
    engine.Run(1);
    EXPECT_EQ(tape.writePosition, head + kBlock);
    engine.Modulate(Row::BufferFreeze, 0.6f);
    engine.Run(1);
    EXPECT_EQ(tape.writePosition, head + kBlock);
}

TEST(MoteWeaverTest, BufferClearActsOnEveryChange) {
    Engine engine;
    for (const float value : {1.0f, 0.0f}) {
        engine.Run(200);
        const CaptureBuffer& tape = engine.Module().Capture();
        const uint32_t head = tape.writePosition;
        EXPECT_NE(tape.mono[head - 100], 0.0f);
        engine.Set(Id::BufferClear, value).Run(1);
        for (uint32_t i = 0; i < head; ++i)
            ASSERT_EQ(tape.mono[i], 0.0f) << i;
        EXPECT_EQ(tape.writePosition, head + kBlock);
    }
}

TEST(MoteWeaverTest, PersistenceFeedsTheOldRoundIntoTheNew) {
    Engine engine({{Id::BufferLengthSynced, 0.0f}});
    const auto blocks = static_cast<uint32_t>(0.25f * kRate) / kBlock;
    engine.Run(blocks);
    const CaptureBuffer& tape = engine.Module().Capture();
    const ZeroedArray before = tape.mono;
    engine.Set(Id::BufferPersistence, 0.8f).Run(blocks);
    double product = 0.0, power = 0.0;
    for (size_t i = 1000; i < size_t{blocks} * kBlock; ++i) {
        product += double{before[i]} * tape.mono[i];
        power += double{before[i]} * before[i];
    }
    EXPECT_NEAR(product / power, 0.8, 0.02);  // the new noise isn't quite foreign to the old
}

TEST(MoteWeaverTest, PanOfTheGrainsNeedsTheSpatializer) {
    for (const float enabled : {0.0f, 1.0f}) {
        Engine engine({{Id::RandomPan, 1.0f}, {Id::SpatializerEnabled, enabled}});
        engine.Set(IGenerator::RateUnSynced, 250.0f).Run(500);
        std::set<float> pans;
        for (const Grain& grain : engine.grains)
            pans.insert(grain.panGainLeft);
        EXPECT_EQ(pans.size() > 50u, enabled > 0.0f) << pans.size();
        EXPECT_EQ(pans.size() == 1u, enabled == 0.0f) << pans.size();
    }
}

TEST(MoteWeaverTest, GatePulsesLastTwentyMilliseconds) {
    Engine engine({{IGenerator::RateUnSynced, 10.0f}, {Id::GateSelection, 1.0f}});
    const auto pulses = [&engine](uint32_t blocks) {
        std::vector<uint32_t> lengths(1);
        for (uint32_t k = 0; k < blocks; ++k) {
            engine.Run(1);
            if (engine.Module().FindRecord(Id::GateOut)->GetValue() == 1.0f)
                ++lengths.back();
            else if (lengths.back() > 0)
                lengths.push_back(0);
        }
        return lengths;
    };
    std::vector<uint32_t> lengths = pulses(1000);
    lengths.pop_back();  // none or cut short
    EXPECT_NEAR(static_cast<double>(lengths.size()), 10.0, 1.0);
    EXPECT_EQ(lengths, std::vector<uint32_t>(lengths.size(), 20));
    engine.Set(Id::GateSelection, 0.0f).Run(30);
    EXPECT_EQ(pulses(200), std::vector<uint32_t>{0});
}

TEST(MoteWeaverTest, StereoAndRowsOfZerosChangeNothing) {
    const auto render = [](float stereo, float random, bool rows) {
        Engine engine({{Id::Stereo, stereo},
                       {IGenerator::RateUnSynced, 60.0f},
                       {Id::Width, random},
                       {Id::RandomPitch, random}});
        for (uint32_t row = Row::Pitch; rows && row < Row::Count; ++row)
            engine.Modulate(row, 0.0f);
        return engine.Run(600);
    };
    EXPECT_EQ(render(1.0f, 0.7f, false), render(0.0f, 0.7f, false));
    EXPECT_EQ(render(0.0f, 0.0f, true), render(0.0f, 0.0f, false));
}

TEST(MoteWeaverTest, TheCountOfGrainsKeepsToItsLimit) {
    Engine engine({{IGenerator::RateUnSynced, 250.0f}, {Id::GrainSizeAbsolute, 500.0f}});
    engine.Run(1000);
    EXPECT_GT(engine.Module().Grains().Count(), 150u);
    for (const uint32_t index : {6u, 3u, 0u}) {
        engine.Set(Id::MaxGrains, static_cast<float>(index)).Run(10);
        uint32_t highest = 0;
        for (uint32_t k = 0; k < 500; ++k) {
            engine.Run(1);
            highest = std::max<uint32_t>(highest, engine.Module().Grains().Count());
        }
        // A pair may start where one grain has room.
        EXPECT_LE(highest, kGrainLimits[index] + 2) << index;
        EXPECT_GE(highest, kGrainLimits[index]) << index;
    }
}

TEST(MoteWeaverTest, ResetEmptiesTheEngineAndStartsAtOnce) {
    // Nearly every trigger is skipped; the start that a reset asks for is none.
    Engine engine({{IGenerator::RateUnSynced, 20.0f},
                   {Id::RandomDensityArrow, 1.0f},
                   {Id::RandomDensity, 1.0f}});
    for (int k = 0; k < 10; ++k) {
        engine.Run(100);
        engine.Module().Reset(false);
        EXPECT_EQ(engine.Module().Grains().Count(), 0u);
        EXPECT_EQ(engine.Module().Capture().writePosition, 0u);
        engine.grains.clear();
        EXPECT_EQ(engine.Starts(1), 1u);
        EXPECT_EQ(engine.grains.at(0).startFrame, 0u);
    }
}

}  // namespace
}  // namespace Quorvan::dsp
