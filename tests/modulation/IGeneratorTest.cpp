#include "modulation/IGenerator.h"

#include "modulation/FunctionGenerator.h"
#include "modulation/LFO.h"
#include "modulation/StepSequencer.h"
#include "support/GeneratorRig.h"
#include "support/SeededClock.h"

namespace Quorvan::dsp {
namespace {

constexpr float kRate = 48000.0f;
constexpr uint32_t kBlock = 48;

/// A generator with nothing of its own, its ranges as an owner would give them.
class BareClock final : public IGenerator {
public:
    explicit BareClock(std::string moduleName) : IGenerator(std::move(moduleName), 1, 1, {}) {
        Configure(RateUnSynced, PotardKind::kLinear, 0.0f, 20000.0f);
        Configure(Swing, PotardKind::kLinear, 50.0f, 75.0f);
        rateInputMode = kPerSample;
    }
    bool Generate(ProcessBlock& block) override {
        lastFrames = block.numFrames;
        return true;
    }
    uint32_t lastFrames = 0;
};

using Rig = GeneratorRig<BareClock>;

double Frac(double x) { return x - std::floor(x); }
/// Distance of two phases, the short way round.
double Apart(double a, double b) {
    const double d = Frac(a - b);
    return std::min(d, 1.0 - d);
}

/// The clock told in plain words, step by step, without any short cut. Rates are those in force, in
/// hertz or quarter notes a cycle.
struct PlainClock {
    int mode = 2;
    bool synced = false, follows = false;
    double start = 0.0, swing = 0.5, hertz = 1.0, beatsPerCycle = 4.0;

    double previous = 0.0, origin = 0.0, song = 0.0;
    double freePhase = 0.0, syncedPhase = 0.0, lastHertz = 1.0;
    int count = 0;
    bool ended = false, pending = true, wasPlaying = false;
    double phase = 0.0, cycle = 0.0;
    bool tick = false;
    bool roundingDecides = false;  ///< the last step but one stood on the start of a cycle

    void Restart() {
        count = -1;
        previous = origin = 0.0;
        pending = true;
    }
    void MoveStart(double to) {
        freePhase = Frac(freePhase + to - start);
        syncedPhase = Frac(syncedPhase + to - start);
        start = to;
    }
    /// A whole number counts as passed a hair before it, so that rounding decides nothing here.
    static bool Passes(double from, double to) {
        return std::floor(from + 1e-9) != std::floor(to + 1e-9);
    }
    double Bent(double cycles) const {
        const double pair = 2.0 * std::floor(cycles / 2.0);
        const double within = cycles - pair;
        const double first = 2.0 * swing;
        return pair + (within < first ? within / first : 1.0 + (within - first) / (2.0 - first));
    }

    void BeginBlock(double frames, double step, double beat, double position, bool playing) {
        const bool starts = playing && !wasPlaying, stops = !playing && wasPlaying;
        if (starts && mode == 2)
            Restart();
        if (position < song && !starts) {
            const double back = beat * frames + song - position;
            if (playing || mode != 2)
                previous -= back;
            if (mode != 2)
                origin -= back;
        }
        song = std::max(position, 0.0);
        if (mode != 2 && (starts || stops)) {
            if (starts)
                origin += song - (previous + step * beat);
            previous = song - step * beat;
        }
        now = playing ? song : previous + step * beat;
        if (pending)
            Land(step, beat, playing, starts);
        wasPlaying = playing;
    }
    void Land(double step, double beat, bool playing, bool starts) {
        pending = false;
        lastHertz = hertz;
        const double rest = Frac(start - 0.000001);
        const bool rests = ended && mode == 0;
        const double stretch = 0.5 / swing;
        if (!synced) {
            if (!(mode == 2 && playing && !starts))
                freePhase = rests ? rest : start - hertz / 48000.0 * step * stretch;
            return;
        }
        previous = now - step * beat;
        const double inc = beat * step / beatsPerCycle * stretch;
        if (mode == 2 && playing) {
            origin = 0.0;
            syncedPhase = Frac(now / beatsPerCycle + start) - inc;
        } else {
            origin = follows && playing ? 0.0 : now;
            syncedPhase = rests ? rest : start - inc;
        }
    }
    void Step(double step, double beat) {
        tick = roundingDecides = false;
        const bool rests = mode == 0 && ended;
        if (rests) {
            cycle = 0.0;
        } else if (!synced) {
            const bool second = count % 2 != 0;
            const double inc = lastHertz / 48000.0 * step / 2.0 / (second ? 1.0 - swing : swing);
            tick = Passes(freePhase + 1.0 - start, freePhase + 1.0 + inc - start);
            // Moves of the start phase leave the roundings of a float behind.
            roundingDecides = Apart(freePhase, start) < 1e-6;
            count += tick ? 1 : 0;
            ended = ended || (tick && count > 0);
            cycle = count;
            freePhase = Frac(freePhase + inc);
            lastHertz = hertz;
            if (mode == 0 && ended) {
                freePhase = Frac(start + 0.999999);
                tick = false;
            }
        } else if (mode == 0) {
            const double inc = step * beat / beatsPerCycle;
            tick = Passes(syncedPhase - start + 1.0, syncedPhase - start + 1.0 + inc);
            count += tick ? 1 : 0;
            ended = tick && count > 0;
            cycle = 0.0;
            tick = tick && !ended;
            syncedPhase = ended ? Frac(start - 0.000001) : Frac(syncedPhase + inc);
        } else {
            const double p = Bent((now - origin) / beatsPerCycle);
            const double q = Bent((previous - origin) / beatsPerCycle);
            roundingDecides = std::abs(q - std::round(q)) < 1e-9;
            cycle = std::floor(p + 1e-9);
            tick = Passes(q, p);
            ended = ended || (tick && cycle > 0.0);
            const bool placed = tick || (follows && mode == 2);
            syncedPhase = Frac(placed ? start + p : syncedPhase + step * beat / beatsPerCycle);
        }
        phase = synced ? syncedPhase : freePhase;
        if (!rests)
            previous = std::exchange(now, now + beat);
    }
    double now = 0.0;
};

/// A scenario at random: settings, transport and tempo change at block borders.
class Scenario : private Dice {
public:
    explicit Scenario(uint32_t seed) : Dice(seed), rig(kRate, kBlock, "Clock") {
        Choose(IGenerator::Mode, Whole(0, 2));
        Choose(IGenerator::MidiSync, Whole(0, 1));
        Choose(IGenerator::RateUnSynced, Between(1.0f, 400.0f));
        Choose(IGenerator::RateSynced, Whole(2, 8));
        Choose(IGenerator::RateSyncedType, Whole(0, 2));
        Choose(IGenerator::PhaseInit, Whole(0, 3) == 0.0f ? 0.0f : Between(0.0f, 359.0f));
        Choose(IGenerator::SppHardFollow, Whole(0, 1));
        Choose(IGenerator::Swing, Whole(0, 1) == 0.0f ? 50.0f : Between(50.5f, 75.0f));
        controlRate = Whole(0, 4) == 0.0f;
        rig.Set(IGenerator::ControlRate, controlRate ? 1.0f : 0.0f);
        rig.tempo = Between(60.0f, 400.0f);
        rig.position = Whole(0, 2) == 0.0f ? -2.0 : Between(0.0f, 200.0f);
    }
    /// False where the scenario has ended early, because plain clock and rounding disagree on a
    /// tick.
    bool Run(uint32_t blocks) {
        for (uint32_t b = 0; b < blocks && !over && !testing::Test::HasFailure(); ++b) {
            if (b > 0)
                Disturb();
            Compare(4 * static_cast<uint32_t>(Whole(1, kBlock / 4)));
        }
        return !over;
    }

private:
    float Whole(int a, int b) {
        return static_cast<float>(std::uniform_int_distribution<int>(a, b)(random));
    }

    void Choose(uint32_t id, float value) {
        rig.Set(id, value);
        static constexpr double kLengths[] = {32, 16, 8, 4, 2, 1, 0.5, 0.25, 0.125};
        static constexpr float kTypes[] = {1.0f, 0.6666667f, 1.5f};  // the rounding counts
        if (id == IGenerator::Mode)
            plain.mode = static_cast<int>(value);
        if (id == IGenerator::MidiSync) {
            restarts = restarts || rig.module.IsChanged(id);
            plain.synced = value > 0.5f;
        }
        if (id == IGenerator::RateUnSynced)
            plain.hertz = value;
        if (id == IGenerator::RateSynced)
            entry = kLengths[static_cast<size_t>(value)];
        if (id == IGenerator::RateSyncedType)
            type = kTypes[static_cast<size_t>(value)];
        if (id == IGenerator::PhaseInit)
            plain.MoveStart(value / 360.0);
        if (id == IGenerator::SppHardFollow)
            plain.follows = value > 0.5f;
        if (id == IGenerator::Swing)
            plain.swing = value / 100.0;
        plain.beatsPerCycle = entry * type;
    }
    void Disturb() {
        rig.tempo = std::clamp(rig.tempo * ramp, 60.0f, 400.0f);
        const std::function<void()> events[] = {
            [this] { rig.playing = !rig.playing; },
            [this] { rig.position = Between(-1.0f, 300.0f); },  // a jump
            [this] { rig.position -= Between(0.0f, 2.0f); },    // a loop
            [this] {
                rig.tempo = Between(60.0f, 400.0f);
                ramp = 1.0f;
            },
            [this] { Choose(IGenerator::RateUnSynced, Between(1.0f, 400.0f)); },
            [this] { Choose(IGenerator::RateSynced, Whole(2, 8)); },
            [this] { Choose(IGenerator::PhaseInit, Between(0.0f, 359.0f)); },
            [this] { Choose(IGenerator::MidiSync, Whole(0, 1)); },
            [this] { Gate(); },
            [this] { ramp = Between(0.995f, 1.005f); }};
        const auto choice = static_cast<size_t>(Whole(0, 40));
        if (choice < std::size(events))
            events[choice]();
    }
    void Gate() {
        rig.Set(IGenerator::GateIn, 0.0f);
        Compare(4);
        rig.Set(IGenerator::GateIn, 1.0f);
        if (plain.mode != 2) {
            plain.ended = false;
            restarts = true;
        }
    }
    void Compare(uint32_t frames) {
        const double step = controlRate ? frames : 1.0, beat = rig.tempo / 60.0 / 48000.0;
        if (restarts)
            plain.Restart();
        restarts = false;
        plain.BeginBlock(frames, step, beat, static_cast<float>(rig.position), rig.playing);
        rig.Forget();
        rig.Block(frames);
        for (size_t i = 0; i < rig.phases.size(); ++i) {
            plain.Step(step, beat);
            const double apart = Apart(rig.phases[i], plain.phase);
            over = plain.roundingDecides && (plain.tick != (rig.ticks[i] > 0.5f) || apart > 2e-6);
            if (over)
                return;
            ASSERT_LT(apart, 2e-6) << "step " << i;
            ASSERT_EQ(rig.ticks[i] > 0.5f, plain.tick) << "step " << i << " at " << plain.phase;
            ASSERT_EQ(rig.cycles[i], plain.cycle) << "step " << i;
            ASSERT_EQ(rig.module.lastFrames, rig.phases.size());
        }
    }

    Rig rig;
    PlainClock plain;
    double entry = 4.0, type = 1.0;
    float ramp = 1.0f;  ///< of the tempo, from block to block
    bool controlRate = false, restarts = true, over = false;
};

TEST(IGeneratorTest, FollowsAPlainClockThroughRandomScenarios) {
    uint32_t complete = 0;
    for (uint32_t seed = 1; seed <= 500 && !HasFailure(); ++seed) {
        SCOPED_TRACE("scenario " + std::to_string(seed));
        complete += Scenario(seed).Run(300) ? 1 : 0;
    }
    EXPECT_GT(complete, 480u);
}

/// Under a standing transport, in blocks of full and of random length.
template <class G>
void ExpectBlockLengthsAreNotHeard(std::map<uint32_t, float> settings) {
    settings.insert({{G::RateUnSynced, 77.0f}, {G::RateSynced, 8.0f}});
    for (const float synced : {0.0f, 1.0f}) {
        settings.insert_or_assign(G::MidiSync, synced);
        std::array<std::vector<float>, 2> heard;
        for (const size_t random : {0u, 1u}) {
            const SeededClock seed(1);
            GeneratorRig<G> rig(kRate, kBlock, "Generator");
            rig.module.Configure(G::RateUnSynced, PotardKind::kLinear, 0.0f, 2000.0f);
            for (const auto& [id, value] : settings)
                rig.Set(id, value);
            rig.module.Reset(true);
            Dice dice(1);
            while (rig.outputs[0].size() < 48000)
                rig.Block(random != 0 ? 4 + 4 * dice.Below(kBlock / 4) : kBlock);
            heard[random] = rig.outputs[0];
        }
        SCOPED_TRACE(testing::PrintToString(settings));
        for (size_t i = 0; i < 48000; ++i)
            ASSERT_NEAR(heard[1][i], heard[0][i], 1e-4f) << i;
        EXPECT_GT(std::set<float>(heard[0].begin(), heard[0].end()).size(), 1u);
    }
}

TEST(GeneratorsTest, BlockLengthsAreNotHeard) {
    using Function = FunctionGenerator<64>;
    using Steps = StepSequencer;
    for (const float k : {0.0f, 1.0f, 2.0f, 3.0f, 4.0f, 5.0f}) {
        ExpectBlockLengthsAreNotHeard<LFO>({{LFO::Waveform, k}, {LFO::Fade, 0.1f}});
        ExpectBlockLengthsAreNotHeard<Function>({{Function::Mode, std::fmod(k, 3.0f)},
                                                 {Function::LastActivePointIndex, 2.0f},
                                                 {Function::PointX1 + 1, 0.3f},
                                                 {Function::PointY1 + 1, 0.9f},
                                                 {Function::Tension1, k}});
        ExpectBlockLengthsAreNotHeard<Steps>({{Steps::LoopMode, std::fmod(k, 4.0f)},
                                              {Steps::NbSteps, 5.0f},
                                              {Steps::StepVal1 + 1, 1.0f},
                                              {Steps::Smooth, k < 4.0f ? 0.0f : 0.3f}});
    }
}

}  // namespace
}  // namespace Quorvan::dsp
