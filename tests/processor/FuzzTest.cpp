// A seeded random host: every call of the interface in every order, with outputs watched.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <random>

#include "support/ProcessorRig.h"

namespace Quorvan::Processor {
namespace {

using test::Channel;
using test::ProcessorRig;

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
        switch (Draw(200)) {
            case 0: {
                rig.rate = RandomRate();
                rig.processor->Initialize(&rig.rate);
                rig.blockSize = rig.processor->GetBlockSize(rig.rate);
                for (Channel& channel : rig.scratch)
                    channel.assign(rig.blockSize, 0.0f);
                break;
            }
            case 1:
                rig.Set("Panic", Unit());
                break;
            case 2:
                rig.Set("PresetLoading", Draw(2) == 0 ? 0.0f : 1.0f);
                break;
            case 3:
                rig.MakeAudible();
                break;
            case 4:
                rig.playing = !rig.playing;
                break;
            case 5:
                rig.songPosition = static_cast<double>(Unit()) * 200.0 - 8.0;
                break;
            case 6:
                rig.tempo = std::exp(Unit() * 6.0f) * 2.0f;
                break;
            case 7:
                WriteOdd();
                break;
            case 8:
                amplitude = std::pow(10.0f, -5.0f * Unit());
                break;
            case 9:
            case 10:
                ChooseEffect();
                break;
            default:
                for (uint32_t i = Draw(4); i > 0; --i)
                    WriteOne();
                RunBlock();
        }
    }
    /// Puts an effect into a slot, somewhere in the signal, so that all of them have their turn.
    void ChooseEffect() {
        const std::string slot = Draw(2) == 0 ? "FX1_" : "FX2_";
        rig.Set({{slot + "ModuleType", static_cast<float>(Draw(10)) / 9.0f},
                 {slot + "Position", static_cast<float>(Draw(3)) / 2.0f},
                 {slot + "Dry / Wet", Unit()},
                 {"Feedback", Unit()}});
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
    /// What a failure is likely to depend on.
    std::string Situation() {
        std::string text = " at " + std::to_string(rig.rate) + " Hz";
        for (const char* name : {"FX1_ModuleType", "FX1_Position", "FX1_Dry / Wet",
                                 "FX2_ModuleType", "FX2_Position", "FX2_Dry / Wet", "Feedback"})
            text.append(", ").append(name).append(" ").append(std::to_string(rig.Get(name)));
        return text;
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
        inputs.resize(1 + Draw(2));
        std::vector<float*> outputs{outLeft.data(), outRight.data()};
        outputs.resize(1 + (Draw(8) == 0 ? 0 : 1));
        ASSERT_TRUE(rig.RunBlock(inputs, outputs));
        for (const Channel& channel : {outLeft, outRight})
            for (const float sample : channel)
                ASSERT_TRUE(std::isfinite(sample) && std::abs(sample) < kBound)
                    << sample << Situation();
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
