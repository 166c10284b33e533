// A seeded random host: every call of the interface in every order, with outputs watched.
#include "support/ProcessorRig.h"
#include "support/Test.h"

namespace Quorvan::Processor {
namespace {

/// Far above what the gains of limiter and slots can add up to, some 180 dB.
constexpr float kBound = 1e9f;

/// One random life of a processor.
class RandomHost : private Dice {
public:
    explicit RandomHost(uint32_t seed) : Dice(seed), rig(RandomRate(), seed) {}

    void Live(uint32_t steps) {
        for (uint32_t k = 0; k < steps && !testing::Test::HasFailure(); ++k)
            Step();
    }

private:
    float RandomRate() { return std::array{8e3f, 11025.0f, 44100.0f, 48e3f, 96e3f}[Below(5)]; }

    void Step() {
        const std::function<void()> events[] = {
            [this] { rig.Initialize(RandomRate()); },
            [this] { rig.Set("Panic", Unit()); },
            [this] { rig.Set("PresetLoading", Below(2) == 0 ? 0.0f : 1.0f); },
            [this] { rig.MakeAudible(); },
            [this] { rig.playing = !rig.playing; },
            [this] { rig.songPosition = Unit() * 200.0 - 8.0; },
            [this] { rig.tempo = std::exp(Unit() * 6.0f) * 2.0f; },
            [this] { WriteOdd(); },
            [this] { amplitude = std::pow(10.0f, -5.0f * Unit()); },
            [this] { ChooseEffect(); },
            [this] { ChooseEffect(); }};
        const uint32_t choice = Below(200);
        if (choice < std::size(events))
            return events[choice]();
        for (uint32_t i = Below(4); i > 0; --i)
            WriteOne();
        RunBlock();
    }
    /// Puts an effect into a slot, somewhere in the signal, so that all of them have their turn.
    void ChooseEffect() {
        const std::string slot = Below(2) == 0 ? "FX1_" : "FX2_";
        rig.Set(slot + "ModuleType", static_cast<float>(Below(10)) / 9.0f)
            .Set(slot + "Position", static_cast<float>(Below(3)) / 2.0f)
            .Set(slot + "Dry / Wet", Unit())
            .Set("Feedback", Unit());
    }
    void WriteOne() {
        // Most of the writes go to the grains and the slots, and a third of all to the ends of the
        // travel.
        constexpr uint32_t kFirstSlot = 1195, kSlotParameters = 340;
        const uint32_t choice = Below(4);
        const uint32_t index = choice < 2    ? Below(158)
                               : choice == 2 ? kFirstSlot + Below(kSlotParameters)
                                             : Below(3150);
        rig.processor->SetParameter(index, std::clamp(1.5f * Unit() - 0.25f, 0.0f, 1.0f));
    }
    void WriteOdd() {
        for (const float odd : {-1.0f, 2.0f, 1e30f, std::nanf(""), -INFINITY})
            rig.processor->SetParameter(Below(4000), odd);
        ParameterDescription description;
        rig.processor->GetParameterDescription(Below(4000), &description);
        float value = 0.0f;
        rig.processor->GetParameter(Below(4000), &value);
    }
    void RunBlock() {
        for (Channel* channel : {&left, &right, &outLeft, &outRight})
            channel->resize(rig.blockSize);
        for (size_t i = 0; i < left.size(); ++i) {
            left[i] = amplitude * (2.0f * Unit() - 1.0f);
            right[i] = Below(3) == 0 ? 0.0f : -left[i];
        }
        std::vector<float*> inputs{left.data(), right.data()};
        std::vector<float*> outputs{outLeft.data(), outRight.data()};
        inputs.resize(1 + Below(2));
        outputs.resize(Below(8) == 0 ? 1 : 2);
        ASSERT_TRUE(rig.RunBlock(inputs, outputs));
        for (const Channel& channel : {outLeft, outRight})
            for (const float sample : channel)
                ASSERT_TRUE(std::isfinite(sample) && std::abs(sample) < kBound) << sample;
        for (const Channel& channel : rig.scratch)
            for (const float sample : channel)
                ASSERT_TRUE(std::isfinite(sample));
    }

    ProcessorRig rig;
    float amplitude = 0.5f;
    Channel left, right, outLeft, outRight;
};

TEST(FuzzTest, OutputsStayFiniteAndBounded) {
    // TESSERAE_FUZZ_LIVES asks for a longer run.
    const char* const asked = std::getenv("TESSERAE_FUZZ_LIVES");
    const uint32_t lives = asked != nullptr ? static_cast<uint32_t>(std::atoi(asked)) : 12;
    for (uint32_t seed = 1; seed <= lives && !HasFailure(); ++seed) {
        SCOPED_TRACE(seed);
        RandomHost(seed).Live(3000);
    }
}

}  // namespace
}  // namespace Quorvan::Processor
