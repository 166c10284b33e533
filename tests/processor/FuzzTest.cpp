// A seeded random host: every call of the interface in every order, with outputs watched.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <random>

#include "support/ProcessorRig.h"

namespace Quorvan::Processor {
namespace {

using namespace test;

/// Far above what the gains of limiter and slots can add up to, some 180 dB.
constexpr float kBound = 1e9f;

/// One random life of a processor.
class RandomHost {
public:
    explicit RandomHost(uint32_t seed) : random(seed), rig(RandomRate(), seed) {}

    void Live(uint32_t steps) {
        for (uint32_t k = 0; k < steps && !testing::Test::HasFailure(); ++k)
            Step();
    }

private:
    uint32_t Draw(uint32_t below) { return static_cast<uint32_t>(random() % below); }
    float Unit() { return static_cast<float>(random() % 1000001) / 1000000.0f; }
    float RandomRate() {
        constexpr float kRates[] = {8000.0f, 11025.0f, 44100.0f, 48000.0f, 96000.0f};
        return kRates[Draw(5)];
    }

    void Step() {
        // What happens now and then between two blocks.
        const std::function<void()> events[] = {
            [this] { rig.Initialize(RandomRate()); },
            [this] { rig.Set("Panic", Unit()); },
            [this] { rig.Set("PresetLoading", Draw(2) == 0 ? 0.0f : 1.0f); },
            [this] { rig.MakeAudible(); },
            [this] { rig.playing = !rig.playing; },
            [this] { rig.songPosition = static_cast<double>(Unit()) * 200.0 - 8.0; },
            [this] { rig.tempo = std::exp(Unit() * 6.0f) * 2.0f; },
            [this] { WriteOdd(); },
            [this] { amplitude = std::pow(10.0f, -5.0f * Unit()); },
            [this] { ChooseEffect(); },
            [this] { ChooseEffect(); }};
        const uint32_t choice = Draw(200);
        if (choice < std::size(events))
            return events[choice]();
        for (uint32_t i = Draw(4); i > 0; --i)
            WriteOne();
        RunBlock();
    }
    /// Puts an effect into a slot, somewhere in the signal, so that all of them have their turn.
    void ChooseEffect() {
        const std::string slot = Draw(2) == 0 ? "FX1_" : "FX2_";
        rig.Set(slot + "ModuleType", static_cast<float>(Draw(10)) / 9.0f)
            .Set(slot + "Position", static_cast<float>(Draw(3)) / 2.0f)
            .Set(slot + "Dry / Wet", Unit())
            .Set("Feedback", Unit());
    }
    void WriteOne() {
        // Most of the writes go to the grains and the slots, and a third of all to the ends of the
        // travel.
        constexpr uint32_t kFirstSlot = 1195, kSlotParameters = 340;
        const uint32_t choice = Draw(4);
        const uint32_t index = choice < 2    ? Draw(158)
                               : choice == 2 ? kFirstSlot + Draw(kSlotParameters)
                                             : Draw(3150);
        const uint32_t kind = Draw(6);
        rig.processor->SetParameter(index, kind == 0 ? 0.0f : kind == 1 ? 1.0f : Unit());
    }
    void WriteOdd() {
        for (const float odd : {-1.0f, 2.0f, 1e30f, std::nanf(""), -INFINITY})
            rig.processor->SetParameter(Draw(4000), odd);
        ParameterDescription description;
        rig.processor->GetParameterDescription(Draw(4000), &description);
        float value = 0.0f;
        rig.processor->GetParameter(Draw(4000), &value);
    }
    void RunBlock() {
        for (Channel* channel : {&left, &right, &outLeft, &outRight})
            channel->resize(rig.blockSize);
        for (size_t i = 0; i < left.size(); ++i) {
            left[i] = amplitude * (2.0f * Unit() - 1.0f);
            right[i] = Draw(3) == 0 ? 0.0f : -left[i];
        }
        std::vector<float*> inputs{left.data(), right.data()};
        std::vector<float*> outputs{outLeft.data(), outRight.data()};
        inputs.resize(1 + Draw(2));
        outputs.resize(Draw(8) == 0 ? 1 : 2);
        ASSERT_TRUE(rig.RunBlock(inputs, outputs));
        for (const Channel& channel : {outLeft, outRight})
            for (const float sample : channel)
                ASSERT_TRUE(std::isfinite(sample) && std::abs(sample) < kBound) << sample;
        for (const Channel& channel : rig.scratch)
            for (const float sample : channel)
                ASSERT_TRUE(std::isfinite(sample));
    }

    std::mt19937 random;
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
