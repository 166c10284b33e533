#include "granular/GrainScheduler.h"

#include "granular/GranularTables.h"
#include "support/PlainScheduler.h"
#include "support/SeededClock.h"

namespace Quorvan::dsp {
namespace {

constexpr uint32_t kFrames = 48;

/// A scheduler with everything that it reads.
struct Engine : GrainListener {
    explicit Engine(uint32_t seed)
        : clock(seed), scheduler(pool, capture, ring, settings, curves, position, gate) {
        pool.Resize(258);
        scheduler.SetListener(this);
        for (size_t i = 0; i < rows.size(); ++i)
            curves.rows[i] = rows[i].data();
        clocks = {.tick = tick.data(),
                  .mainRate = mainRate.data(),
                  .sequence = sequence.data(),
                  .sampleRate = 48000.0f};
    }
    void OnGrainStart(const Grain& grain) override { heard.push_back(grain.readPosition); }
    /// By age; the pool's other lists must tell of the same.
    std::vector<uint16_t> Slots() const {
        std::vector<uint16_t> byAge, inOrder;
        for (uint16_t s = pool.Oldest(); s != GrainPool::kNone; s = pool.NextByAge(s))
            byAge.push_back(s);
        for (uint16_t s = pool.First(); s < pool.Capacity(); s = pool.Next(s))
            inOrder.push_back(s);
        std::vector<uint16_t> sorted = byAge;
        std::ranges::sort(sorted);
        EXPECT_EQ(inOrder, sorted);
        EXPECT_EQ(pool.Count(), sorted.size());
        uint16_t lowest = 0, end = pool.Capacity();
        while (lowest < sorted.size() && sorted[lowest] == lowest)
            ++lowest;
        while (!sorted.empty() && sorted.back() + 1 == end) {
            sorted.pop_back();
            --end;
        }
        EXPECT_TRUE(end == 0 || pool.FirstFree() == lowest);
        EXPECT_TRUE(end == 0 || pool.LastFree() == (sorted.empty() ? 0 : sorted.back() + 1));
        return byAge;
    }

    FixedClock clock;
    GrainPool pool;
    CaptureBuffer capture;
    MarkerRing ring;
    GranularSettings settings;
    BlockCurves curves;
    StereoPosition position;
    GatePulse gate;
    std::array<std::array<float, kFrames>, static_cast<size_t>(Curve::Count)> rows{};
    std::array<float, kFrames> tick{}, mainRate{}, sequence{};
    GrainScheduler::Clocks clocks;
    GrainScheduler scheduler;
    std::vector<double> heard;  ///< starts of the grains told of
};

/// Everything that a new grain holds but its length.
auto Fields(const Grain& g) {
    return std::tuple(g.startPosition, g.readPosition, g.wrappedPosition, g.wrapLength, g.increment,
                      g.startFrame, g.panGainLeft, g.panGainRight, g.outGainLeft, g.outGainRight,
                      g.crossing, g.reversed, g.displayed, g.releasing, g.shape, g.shapeA, g.shapeB,
                      g.elapsed, g.envelope, g.swapped, g.wasCrossfading, g.released);
}

/// Draws every switch, curve and clock anew.
class Fuzz : public Dice {
public:
    Fuzz(uint32_t seed, Engine& target) : Dice(seed), engine(target) {}

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
        s.randomDistance = Unit();
        s.distanceRange = Between(1.0f, 100.0f);
        s.grainLimit = kGrainLimits[static_cast<size_t>(Choice(10))] + 1;
        s.gridSize = kGridSizes[static_cast<size_t>(Choice(3))];
        engine.position.Follow(Between(-1.5f, 1.5f), 0.0f, 0.0f, Between(-0.5f, 1.0f), 0.0f, 0.0f);
    }
    void Tape() {
        CaptureBuffer& tape = engine.capture;
        tape.length = Chance(0.3f) ? 20 + Below(80) : 2000 + Below(100000);
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
        const auto notes = static_cast<float>(engine.settings.scaleTable.size());
        for (uint32_t n = 0; n < kFrames; ++n) {
            const auto set = [&](Curve curve, float value) { engine.curves[curve][n] = value; };
            const auto depth = [this] { return Chance(0.2f) ? 0.0f : Unit(); };
            set(Curve::Pitch, scaled         ? std::floor(Between(0.0f, notes))
                              : Chance(0.3f) ? 0.0f  // unit speed, where nothing else moves it
                                             : Between(-36.0f, 36.0f));
            for (const Curve curve :
                 {Curve::RandomPitch, Curve::RandomFine, Curve::RandomSize, Curve::RandomDensity,
                  Curve::RandomDirection, Curve::RandomPan, Curve::Width, Curve::Spray,
                  Curve::RandomLayers, Curve::ShapeParam})
                set(curve, depth());
            for (const Curve curve :
                 {Curve::GrainSizeRatio, Curve::GrainSizeSynced, Curve::TextureSizeSynced})
                set(curve, static_cast<float>(Choice(7)));
            set(Curve::GrainTrigger, Chance(0.2f) ? 0.5f : depth());
            set(Curve::GrainSizeAbsolute, Between(10.0f, 1000.0f));
            set(Curve::TextureSizeAbsolute, Between(10.0f, 1000.0f));
            set(Curve::TextureDensity, static_cast<float>(Choice(6)));
            set(Curve::ManualScanPosition, Chance(0.5f) ? static_cast<float>(Choice(2)) : depth());
            engine.tick[n] = Chance(0.3f) ? 1.0f : 0.0f;
            engine.sequence[n] = static_cast<float>(Choice(4));
            engine.mainRate[n] = Between(0.01f, 1.0f);
        }
        tape.playPosition = double{Unit()} * tape.length;
        engine.clocks.hz = std::exp2(Between(-3.0f, 10.0f));
        engine.clocks.mainSynced = Chance(0.5f);
        engine.clocks.mainTempo = Between(30.0f, 300.0f);
        engine.clocks.wholeNote = 240.0f / engine.clocks.mainTempo;
        for (float& rate : engine.mainRate)
            rate *= engine.clocks.mainSynced ? 1.0f : 250.0f;
    }

    std::vector<int32_t> onsets;

private:
    int32_t Choice(uint32_t count) { return static_cast<int32_t>(Below(count)); }

    Engine& engine;
};

TEST(GrainSchedulerTest, DrawsAndPlacesEveryGrainAsThePlainListSays) {
    size_t compared = 0;
    for (uint32_t seed = 1; seed <= 400; ++seed) {
        Engine engine(seed);
        Fuzz fuzz(seed, engine);
        CaptureBuffer twin;
        PlainScheduler model(seed, engine.settings, engine.curves, twin, fuzz.onsets);
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
            engine.heard.clear();
            const size_t before = model.grains.size();
            model.started = 0;
            for (uint32_t n = 0; n < kFrames; ++n) {
                twin = engine.capture;
                model.Step(n, engine.clocks, engine.position.X(), engine.position.Y());
                engine.scheduler.Step(n);
                ASSERT_EQ(engine.capture.playPosition, twin.playPosition);
            }
            SCOPED_TRACE("seed " + std::to_string(seed) + " block " + std::to_string(block));
            const std::vector<uint16_t> slots = engine.Slots();
            ASSERT_EQ(slots.size(), model.grains.size());
            std::vector<double> starts;
            for (size_t i = slots.size(); i-- > 0;) {
                const Grain& grain = engine.pool[slots[i]];
                EXPECT_EQ(Fields(grain), Fields(model.grains[i]));
                EXPECT_FLOAT_EQ(grain.length, model.grains[i].length);
                if (i >= before)
                    starts.insert(starts.begin(), grain.readPosition);
                if (fuzz.Below(4) != 0)
                    continue;
                engine.pool.Erase(slots[i]);  // it ends
                model.grains.erase(model.grains.begin() + static_cast<std::ptrdiff_t>(i));
            }
            EXPECT_EQ(engine.heard, starts);
            EXPECT_EQ(engine.scheduler.StartedCount(), model.started);
            EXPECT_EQ(engine.scheduler.DensityJitter(), model.jitter);
            EXPECT_EQ(engine.scheduler.LayerOffset(), model.layers);
            if (HasFailure())
                return;
            compared += starts.size();
        }
    }
    EXPECT_GT(compared, 20000u);
}

TEST(GrainSchedulerTest, ReleasesTheOldestInPairs) {
    Engine engine(1);
    for (uint32_t i = 0; i < 9; ++i)
        engine.pool.Add(Grain{});
    engine.pool.Erase(0);
    engine.pool.Add(Grain{});  // slot 0 is the youngest now
    const auto released = [&engine] {
        std::vector<uint16_t> slots = engine.Slots();
        std::erase_if(slots, [&](uint16_t slot) { return !engine.pool[slot].releasing; });
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

}  // namespace
}  // namespace Quorvan::dsp
