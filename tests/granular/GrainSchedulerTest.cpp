#include "granular/GrainScheduler.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

#include "granular/GranularTables.h"
#include "primitives/Clock.h"
#include "support/PlainScheduler.h"

namespace Quorvan::dsp {
namespace {

constexpr uint32_t kFrames = 48;

struct FixedClock : prims::ClockSource {
    explicit FixedClock(uint32_t time) : now(time), before(prims::ReplaceClock(this)) {}
    ~FixedClock() override { prims::ReplaceClock(before); }
    uint64_t Microseconds() override { return now; }

    uint32_t now;
    prims::ClockSource* before;
};

struct Recorder : GrainListener {
    void OnGrainStart(const Grain& grain) override { heard.push_back(grain); }

    std::vector<Grain> heard;
};

/// A scheduler with everything that it reads, at settings that start plain grains.
struct Engine {
    explicit Engine(uint32_t seed = 1)
        : clock(seed), scheduler(pool, capture, ring, settings, curves, position, gate) {
        pool.Resize(258);
        settings.grainLimit = 257;
        capture.length = capture.previousLength = capture.targetLength = 96000;
        capture.lengthMs = 2000.0f;
        capture.writePosition = 50000;
        capture.playPosition = 20000.0;
        for (size_t i = 0; i < rows.size(); ++i) {
            rows[i].assign(kFrames, 0.0f);
            curves.rows[i] = rows[i].data();
        }
        Set(Curve::GrainSizeAbsolute, 100.0f);
        Set(Curve::RandomDirection, 1.0f);
        clocks = {.tick = tick.data(),
                  .hz = 20.0f,
                  .mainRate = mainRate.data(),
                  .mainSynced = false,
                  .mainTempo = 120.0f,
                  .sequence = sequence.data(),
                  .wholeNote = 2.0f,
                  .sampleRate = 48000.0f};
    }
    void Set(Curve curve, float value) { rows[static_cast<size_t>(curve)].assign(kFrames, value); }
    /// One block with a tick at each of its samples or at none.
    void Run(bool ticks = true) {
        tick.assign(kFrames, ticks ? 1.0f : 0.0f);
        scheduler.BeginBlock(clocks);
        for (uint32_t n = 0; n < kFrames; ++n)
            scheduler.Step(n);
    }
    std::vector<Grain> ByAge() const {
        std::vector<Grain> grains;
        for (uint16_t s = pool.Oldest(); s != GrainPool::kNone; s = pool.NextByAge(s))
            grains.push_back(pool[s]);
        return grains;
    }

    FixedClock clock;
    GrainPool pool;
    CaptureBuffer capture;
    MarkerRing ring;
    GranularSettings settings;
    BlockCurves curves;
    StereoPosition position;
    GatePulse gate;
    std::array<std::vector<float>, static_cast<size_t>(Curve::Count)> rows;
    std::vector<float> tick = std::vector<float>(kFrames);
    std::vector<float> mainRate = std::vector<float>(kFrames, 20.0f);
    std::vector<float> sequence = std::vector<float>(kFrames, 1.0f);
    GrainScheduler::Clocks clocks;
    GrainScheduler scheduler;
};

void ExpectSameGrain(const Grain& a, const Grain& b) {
    EXPECT_EQ(a.startPosition, b.startPosition);
    EXPECT_EQ(a.readPosition, b.readPosition);
    EXPECT_EQ(a.wrappedPosition, b.wrappedPosition);
    EXPECT_EQ(a.wrapLength, b.wrapLength);
    EXPECT_EQ(a.increment, b.increment);
    EXPECT_EQ(a.startFrame, b.startFrame);
    EXPECT_FLOAT_EQ(a.length, b.length);
    EXPECT_EQ(a.panGainLeft, b.panGainLeft);
    EXPECT_EQ(a.panGainRight, b.panGainRight);
    EXPECT_EQ(a.outGainLeft, b.outGainLeft);
    EXPECT_EQ(a.outGainRight, b.outGainRight);
    EXPECT_EQ(a.crossing, b.crossing);
    EXPECT_EQ(a.reversed, b.reversed);
    EXPECT_EQ(a.displayed, b.displayed);
    EXPECT_EQ(a.releasing, b.releasing);
    EXPECT_EQ(a.shape, b.shape);
    EXPECT_EQ(a.shapeA, b.shapeA);
    EXPECT_EQ(a.shapeB, b.shapeB);
    EXPECT_EQ(a.elapsed, 0.0);
    EXPECT_EQ(a.envelope, 0.0f);
    EXPECT_FALSE(a.swapped || a.wasCrossfading || a.released);
}

/// Draws every switch, curve and clock anew.
class Fuzz {
public:
    Fuzz(uint32_t seed, Engine& target) : random(seed), engine(target) {}

    void Settings() {
        GranularSettings& s = engine.settings;
        s.granularMode = Choice(3);
        s.scale = Chance(0.5f) ? 0 : Choice(15);
        s.scaleTable = ScaleSemitones(static_cast<uint32_t>(s.scale));
        for (int32_t* arrow :
             {&s.randomPitchArrow, &s.randomSizeArrow, &s.randomLayersArrow, &s.sprayDirection})
            *arrow = Choice(3);
        s.randomDensityArrow = s.granularMode == GranularSettings::kBeat ? 1 : Choice(2);
        s.grainSizeMode = Choice(4);
        s.densitySizeLink = s.granularMode == GranularSettings::kBeat || Chance(0.3f);
        s.textureSizeMidiSync = Chance(0.5f);
        s.shape = Choice(8);
        s.triggerMode = Choice(4) == 0 ? 1 : 0;
        s.spatializerEnabled = Chance(0.5f);
        s.randomDistance = Draw(0.0f, 1.0f);
        s.distanceRange = Draw(1.0f, 100.0f);
        s.grainLimit = kGrainLimits[static_cast<size_t>(Choice(10))] + 1;
        s.gridSize = kGridSizes[static_cast<size_t>(Choice(3))];
        engine.position.Follow(Draw(-1.5f, 1.5f), 0.0f, 0.0f, Draw(-0.5f, 1.0f), 0.0f, 0.0f);
    }
    void Tape() {
        CaptureBuffer& tape = engine.capture;
        tape.length = 2000 + Below(100000);
        tape.writePosition = Chance(0.2f)   ? tape.length - Below(6)
                             : Chance(0.1f) ? 0u
                                            : Below(tape.length);
        tape.previousLength = Chance(0.5f) ? tape.length : 2000 + Below(100000);
        tape.lengthMs = static_cast<float>(tape.length) / 48.0f;
        tape.playbackMode = Choice(3);
        tape.quantizationMode = Choice(3);
        // Onsets in order of age: what lies ahead of the head is older than what lies behind.
        engine.ring.Clear();
        onsets.clear();
        for (uint32_t pass = 0; pass < 2; ++pass)
            for (uint32_t at = pass == 0 ? tape.writePosition + 1 : 0;
                 at < (pass == 0 ? tape.length : tape.writePosition);
                 at += 1 + Below(tape.length / 4))
                onsets.push_back(static_cast<int32_t>(at));
        if (Chance(0.2f))
            onsets.resize(std::min<size_t>(onsets.size(), Below(3)));
        for (const int32_t onset : onsets)
            engine.ring.Push(onset);
    }
    void Block() {
        CaptureBuffer& tape = engine.capture;
        const bool scaled = engine.settings.scale != 0;
        const float notes = static_cast<float>(engine.settings.scaleTable.size());
        for (uint32_t n = 0; n < kFrames; ++n) {
            const auto set = [&](Curve curve, float value) { engine.curves[curve][n] = value; };
            const auto depth = [this] { return Chance(0.2f) ? 0.0f : Draw(0.0f, 1.0f); };
            set(Curve::Pitch, scaled ? std::floor(Draw(0.0f, notes)) : Draw(-36.0f, 36.0f));
            if (!scaled && Chance(0.3f))
                set(Curve::Pitch, 0.0f);  // unit speed, where nothing else moves the pitch
            for (const Curve curve :
                 {Curve::RandomPitch, Curve::RandomFine, Curve::RandomSize, Curve::RandomDensity,
                  Curve::RandomDirection, Curve::RandomPan, Curve::Width, Curve::Spray,
                  Curve::GrainTrigger, Curve::RandomLayers, Curve::ShapeParam})
                set(curve, depth());
            for (const Curve curve :
                 {Curve::GrainSizeRatio, Curve::GrainSizeSynced, Curve::TextureSizeSynced})
                set(curve, static_cast<float>(Choice(7)));
            set(Curve::GrainSizeAbsolute, Draw(10.0f, 1000.0f));
            set(Curve::TextureSizeAbsolute, Draw(10.0f, 1000.0f));
            set(Curve::TextureDensity, static_cast<float>(Choice(6)));
            set(Curve::ManualScanPosition, Chance(0.5f) ? static_cast<float>(Choice(2)) : depth());
            engine.tick[n] = Chance(0.3f) ? 1.0f : 0.0f;
            engine.sequence[n] = static_cast<float>(Choice(4));
            engine.mainRate[n] = Draw(0.01f, 1.0f);
        }
        tape.playPosition = static_cast<double>(Draw(0.0f, 1.0f)) * tape.length;
        engine.clocks.hz = std::exp2(Draw(-3.0f, 10.0f));
        engine.clocks.mainSynced = Chance(0.5f);
        engine.clocks.mainTempo = Draw(30.0f, 300.0f);
        engine.clocks.wholeNote = 240.0f / engine.clocks.mainTempo;
        if (!engine.clocks.mainSynced)
            for (float& rate : engine.mainRate)
                rate *= 250.0f;
    }

    uint32_t Below(uint32_t count) { return static_cast<uint32_t>(random() % count); }

    std::vector<int32_t> onsets;

private:
    int32_t Choice(uint32_t count) { return static_cast<int32_t>(Below(count)); }
    float Draw(float from, float to) {
        return std::uniform_real_distribution<float>(from, to)(random);
    }
    bool Chance(float chance) { return Draw(0.0f, 1.0f) < chance; }

    std::mt19937 random;
    Engine& engine;
};

TEST(GrainSchedulerTest, DrawsAndPlacesEveryGrainAsThePlainListSays) {
    uint32_t compared = 0;
    for (uint32_t seed = 1; seed <= 400; ++seed) {
        Engine engine(seed);
        Recorder recorder;
        engine.scheduler.SetListener(&recorder);
        Fuzz fuzz(seed, engine);
        CaptureBuffer twin;
        test::PlainScheduler model(seed, engine.settings, engine.curves, twin, fuzz.onsets);
        for (uint32_t block = 0; block < 12; ++block) {
            if (block % 4 == 0) {
                fuzz.Settings();
                fuzz.Tape();
                engine.pool.Clear();
                model.grains.clear();
            }
            if (fuzz.Below(8) == 0) {
                engine.scheduler.ArmTrigger();
                model.pending = true;
            }
            fuzz.Block();
            engine.scheduler.BeginBlock(engine.clocks);
            recorder.heard.clear();
            const size_t before = model.grains.size();
            model.started = 0;
            for (uint32_t n = 0; n < kFrames; ++n) {
                twin.length = engine.capture.length;
                twin.previousLength = engine.capture.previousLength;
                twin.lengthMs = engine.capture.lengthMs;
                twin.writePosition = engine.capture.writePosition;
                twin.playPosition = engine.capture.playPosition;
                twin.playbackMode = engine.capture.playbackMode;
                twin.quantizationMode = engine.capture.quantizationMode;
                model.Step(n, engine.clocks, engine.position.X(), engine.position.Y());
                engine.scheduler.Step(n);
                ASSERT_EQ(engine.capture.playPosition, twin.playPosition);
            }
            SCOPED_TRACE("seed " + std::to_string(seed) + " block " + std::to_string(block));
            const std::vector<Grain> grains = engine.ByAge();
            ASSERT_EQ(grains.size(), model.grains.size());
            for (size_t i = 0; i < grains.size(); ++i)
                ExpectSameGrain(grains[i], model.grains[i]);
            ASSERT_EQ(recorder.heard.size(), grains.size() - before);
            for (size_t i = before; i < grains.size(); ++i)
                EXPECT_EQ(recorder.heard[i - before].readPosition, grains[i].readPosition);
            EXPECT_EQ(engine.scheduler.StartedCount(), model.started);
            EXPECT_EQ(engine.scheduler.DensityJitter(), model.jitter);
            EXPECT_EQ(engine.scheduler.LayerOffset(), model.layers);
            if (HasFailure())
                return;
            compared += static_cast<uint32_t>(grains.size() - before);
        }
    }
    EXPECT_GT(compared, 20000u);
}

TEST(GrainSchedulerTest, SkippingFollowsTheRateWithinItsBounds) {
    struct Case {
        float hz;
        int32_t mode;
        double chance;
    };
    for (const Case& wanted : {Case{1000.0f, 0, 0.95}, Case{0.25f, 0, 0.25}, Case{0.5f, 0, 0.5},
                               Case{1000.0f, 1, 0.475}}) {
        Engine engine;
        engine.settings.granularMode = wanted.mode;
        engine.settings.randomDensityArrow = 1;
        engine.Set(Curve::RandomDensity, 1.0f);
        engine.Set(Curve::TextureSizeAbsolute, 100.0f);
        engine.clocks.hz = wanted.hz;
        uint32_t starts = 0;
        constexpr uint32_t kBlocks = 400;
        for (uint32_t i = 0; i < kBlocks; ++i) {
            engine.pool.Clear();
            engine.Run();
            starts += engine.scheduler.StartedCount();
        }
        const double skipped = 1.0 - starts / static_cast<double>(kBlocks * kFrames);
        EXPECT_NEAR(skipped, wanted.chance, 0.015) << wanted.hz;  // four standard deviations
    }
}

TEST(GrainSchedulerTest, TheFirstSampleStartsAPairWithoutATick) {
    Engine engine;
    engine.gate.selection = GatePulse::kGrains;
    engine.Run(false);
    EXPECT_EQ(engine.pool.Count(), 2u);
    EXPECT_EQ(engine.pool[0].startFrame, 0u);
    EXPECT_TRUE(engine.gate.on);
    engine.Run(false);
    EXPECT_EQ(engine.pool.Count(), 2u);
}

TEST(GrainSchedulerTest, APendingStartWaitsForTheFirstMarkerAndForTheGate) {
    Engine engine;
    engine.capture.quantizationMode = CaptureBuffer::kTransients;
    engine.settings.triggerMode = 1;
    engine.Set(Curve::GrainTrigger, 1.0f);
    engine.Run(false);
    EXPECT_EQ(engine.pool.Count(), 0u);
    engine.ring.Push(4321);
    engine.Set(Curve::GrainTrigger, 0.5f);
    engine.Run(false);
    EXPECT_EQ(engine.pool.Count(), 0u);
    engine.Set(Curve::GrainTrigger, 0.6f);
    engine.Run(false);
    ASSERT_EQ(engine.pool.Count(), 2u);
    EXPECT_EQ(engine.pool[0].readPosition, 4321.0);
    EXPECT_EQ(engine.pool[1].readPosition, 4321.0);
}

TEST(GrainSchedulerTest, ReleasesTheOldestInPairs) {
    Engine engine;
    for (uint32_t i = 0; i < 9; ++i)
        engine.pool.Add(Grain{});
    engine.pool.Erase(0);
    engine.pool.Add(Grain{});  // slot 0 is the youngest now
    const auto released = [&engine] {
        std::vector<uint16_t> slots;
        for (uint16_t s = engine.pool.Oldest(); s != GrainPool::kNone; s = engine.pool.NextByAge(s))
            if (engine.pool[s].releasing)
                slots.push_back(s);
        return slots;
    };
    engine.settings.grainLimit = 9;
    engine.scheduler.EnforceLimit();
    EXPECT_TRUE(released().empty());
    engine.scheduler.ReleaseOldest(1);
    EXPECT_EQ(released(), (std::vector<uint16_t>{1}));
    engine.settings.grainLimit = 6;
    engine.scheduler.EnforceLimit();  // three too many make four
    EXPECT_EQ(released(), (std::vector<uint16_t>{1, 2, 3, 4}));
    engine.settings.grainLimit = 0;
    engine.scheduler.EnforceLimit();
    EXPECT_EQ(released().size(), 9u);
}

// What the lengths are for: the head must not run over what such a grain still reads.
TEST(GrainSchedulerTest, SlowAndReversedGrainsEndBeforeTheHeadIsThere) {
    Engine engine(7);
    engine.settings.randomPitchArrow = 2;
    engine.settings.sprayDirection = 2;
    engine.Set(Curve::RandomPitch, 1.0f);
    engine.Set(Curve::Spray, 1.0f);
    engine.Set(Curve::Width, 1.0f);
    engine.Set(Curve::RandomDirection, 0.5f);
    engine.Set(Curve::GrainSizeAbsolute, 1000.0f);
    engine.capture.length = engine.capture.previousLength = 60000;
    uint32_t slow = 0;
    uint32_t reversed = 0;
    for (uint32_t i = 0; i < 100; ++i) {
        engine.pool.Clear();
        engine.Run();
        for (const Grain& grain : engine.ByAge()) {
            const double frames = static_cast<double>(grain.length) / std::abs(grain.increment);
            double ahead = grain.readPosition - engine.capture.writePosition;
            if (ahead <= 0.0)
                ahead += engine.capture.length;
            if (grain.increment < 1.0) {
                EXPECT_LT((1.0 - grain.increment) * frames, ahead * 1.001 + 1.0);
                ++(grain.reversed ? reversed : slow);
            }
        }
    }
    EXPECT_GT(slow, 500u);
    EXPECT_GT(reversed, 500u);
}

}  // namespace
}  // namespace Quorvan::dsp
