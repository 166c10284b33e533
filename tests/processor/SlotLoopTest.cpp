// Every effect inside the feedback loop at unity: it stays bounded, and silence comes to rest.
//
// TESSERAE_LOOP_SECONDS=600 asks for so many seconds of noise and as many of silence, and prints
// what the blocks of each cost. Without it the noise lasts 4 s and the silence 15 s.
#include <ctime>
#include <iostream>

#include "support/ProcessorRig.h"
#include "support/Test.h"

namespace Quorvan::Processor {
namespace {

constexpr float kRate = 48000.0f;
constexpr float kSilent = 1.0e-7f;  // -140 dB
/// What is heard of a loop comes out of the limiter, whatever the effect in it does: full scale,
/// and room for a peak between samples.
constexpr float kBound = 1.1f;

struct Effect {
    const char* name;
    uint32_t type;
    const char* prefix;     ///< of the parameters, behind the slot's
    const char* positions;  ///< as SetAll takes them
    const char* hot;        ///< and those that make it feed itself strongly
};

/// Each at full wet and well into its range, yet with a gain that lets a loop decay: the compressor
/// without makeup, the distortion without drive, echoes below full feedback.
const Effect kEffects[] = {
    {"Filter", 1, "MultiModeFilter_", "Freq=0.7;Q=0.5;Slope=0.5", "Q=1"},
    {"Comb", 1, "MultiModeFilter_", "Mode=0.75;CombFreq=0.4;Q=0.6", "Q=1"},
    {"Distortion", 2, "MultiDist_", "DistType=0", "Drive=1"},
    {"DistortionOfOneChannel", 2, "", "MultiDist_DistType=0;MultiDist_Stereo=0;InGainCompensated=0",
     "MultiDist_Drive=1;Dry / Wet=0.5"},
    {"Compressor", 3, "Compressor_",
     "OutputGain=0.5;Attack=0.3;Release=0.4;Threshold=0.4;Ratio=0.5", "Makeup=1"},
    {"Delay", 4, "Delay_", "DelayTimeMs=0.5;Feedback=0.6;DelayFineMs=0.5", "Feedback=1"},
    {"OctaverDelay", 5, "OctaverDelay_",
     "DelayTimeMs=0.4;Feedback=0.5;PitchShift=0.75;Spray=0.3;DelayOffset=0.5;Detune=0.55",
     "Feedback=1"},
    {"TapeEcho", 6, "TapeEcho_",
     "InputVolume=0.5;DelayTime=0.5;DelayTimeFine=0.5;Intensity=0.5;StereoWidth=0.5",
     "Intensity=1"},
    {"Chorus", 7, "Chorus_", "Delay=0.3;Depth=0.4;Freq=0.3;Feedback=0.5;StereoMode=1;Voices=1",
     "Feedback=1"},
    {"Flanger", 8, "Flanger_",
     "MinDelay=0.2;DepthFlanger=0.5;Chorus_Freq=0.3;Chorus_Feedback=0.6;Chorus_StereoMode=1",
     "Chorus_Feedback=1"},
    {"Reverb", 9, "Reverb_", "Decay=0.7;E_Size=0.5;Predelay=0.3;EarlyOn=1;EarlyMix=0.5", "Decay=1"},
};

void PrintTo(const Effect& effect, std::ostream* out) { *out << effect.name; }

double AskedSeconds(double usual) {
    const char* const asked = std::getenv("TESSERAE_LOOP_SECONDS");
    return asked != nullptr ? std::atof(asked) : usual;
}
bool IsLongRun() { return std::getenv("TESSERAE_LOOP_SECONDS") != nullptr; }

class SlotLoopTest : public ::testing::TestWithParam<Effect> {
protected:
    /// Grains that follow the input, with the effect between them and the return of the loop.
    void Build(float density, float grainSize, bool isHot) {
        const std::string prefix = slot + GetParam().prefix;
        rig.MakeAudible()
            .SetAll(
                "Feedback=1;MoteWeaver_PlaybackMode=0.5;MoteWeaver_Offset=0.2;"
                "FX1_ModuleType=0;FX2_ModuleType=0")
            .Set(slot + "Position", place)
            .Set(slot + "Dry / Wet", 1.0f)
            .Set("MoteWeaver_GranularPhaseHelper_RateUnSynced", density)
            .Set("MoteWeaver_GrainSizeAbsolute", grainSize)
            .Set(slot + "ModuleType", static_cast<float>(GetParam().type) / 9.0f)
            .SetAll(GetParam().positions, prefix)
            .SetAll(isHot ? GetParam().hot : "", prefix);
        rig.EndPresetLoad();
    }

    /// Runs blocks of noise, or of zeros at an amplitude of 0. Every sample is looked at.
    void Play(double seconds, float amplitude) {
        const auto blocks =
            static_cast<uint32_t>(seconds * static_cast<double>(kRate)) / rig.blockSize;
        const Channel zeros(rig.blockSize, 0.0f);
        Channel in[2] = {zeros, zeros}, out[2] = {zeros, zeros};
        const std::clock_t start = std::clock();  // of the process alone
        peak = 0.0f;
        for (uint32_t k = 0; k < blocks; ++k) {
            if (amplitude > 0.0f)
                for (uint32_t c = 0; c < 2; ++c)
                    for (float& sample : in[c])
                        sample = amplitude * Draw();
            ASSERT_TRUE(rig.RunBlock({in[0].data(), in[1].data()}, {out[0].data(), out[1].data()}));
            for (const Channel& channel : out)
                for (const float sample : channel) {
                    ASSERT_TRUE(std::isfinite(sample));
                    ASSERT_NE(std::fpclassify(sample), FP_SUBNORMAL);
                    peak = std::max(peak, std::abs(sample));
                }
            ASSERT_LT(peak, kBound);
        }
        blockMicroseconds = 1.0e6 * static_cast<double>(std::clock() - start) /
                            (CLOCKS_PER_SEC * static_cast<double>(blocks));
    }
    void Report(const std::string& stretch) const {
        if (IsLongRun())
            std::cout << GetParam().name << ", " << stretch << ": peak " << DecibelsOf(peak)
                      << " dB, " << blockMicroseconds << " us a block\n";
    }

    /// A number in -1..1, cheaper than those of the library.
    float Draw() {
        state = state * 1664525u + 1013904223u;
        return static_cast<float>(static_cast<int32_t>(state)) * 4.6566129e-10f;
    }

    ProcessorRig rig{kRate};
    std::string slot = "FX1_";
    float place =
        1.0f;  ///< of that slot: 1 in the loop, 0 behind the mix, out of the limiter's reach
    uint32_t state = 1;
    float peak = 0.0f;
    double blockMicroseconds = 0.0;
};

/// A loop of grains alone can hold a sound for ever at 0 dB, and effects have gains of their own
/// on top. So here the second slot stands in the loop too, as a plain loss: a compressor
/// that does not compress.
TEST_P(SlotLoopTest, NoiseStaysBoundedAndSilenceComesToRest) {
    Build(0.5f, 0.2f, false);
    rig.SetAll(
        "ModuleType=0.333;Position=1;Dry / Wet=1;Compressor_Threshold=1;Compressor_Ratio=0;"
        "Compressor_OutputGain=0.1",
        "FX2_");
    Play(AskedSeconds(4.0), 0.5f);
    Report("noise");
    EXPECT_GT(peak, 0.05f);
    const double rest = AskedSeconds(15.0);
    Play(rest - 1.0, 0.0f);
    Report("silence");
    Play(1.0, 0.0f);
    Report("last second");
    EXPECT_LT(peak, kSilent) << DecibelsOf(peak) << " dB";
}

/// Grains that overlap many times give back more than they take: such a loop may sound for ever,
/// but no louder than the limiter and the soft clip let it.
TEST_P(SlotLoopTest, LoopThatFeedsItselfStaysBounded) {
    Build(0.8f, 0.6f, true);
    Play(AskedSeconds(2.0), 1.0f);
    Report("dense noise");
    Play(AskedSeconds(2.0), 0.0f);
    Report("dense silence");
}

/// Settings at rest sound the same however the wrapper cuts its blocks, with blocks of no frames
/// among them. The effect stands on the dry signal. A reverb is frozen in the end, with a short
/// block, from the modulation that it has then. Only the tape's flutter goes by the block.
TEST_P(SlotLoopTest, BlockLengthsAreNotHeard) {
    const Stereo in = NoisePair(48 * 500);
    const auto hear = [&](const char* positions, bool random) {
        ProcessorRig cut(kRate);
        cut.SetAll("Master Volume=1;FX1_Position=0;FX1_Dry / Wet=1")
            .Set("FX1_ModuleType", static_cast<float>(GetParam().type) / 9.0f)
            .SetAll(positions, std::string("FX1_").append(GetParam().prefix))
            .EndPresetLoad();
        cut.Run(in);  // until all glides are over
        Stereo heard = cut.Run(in, [&] {
            if (random)
                cut.frames = static_cast<uint32_t>((Draw() + 1.0f) * 6.0f) * 4;
        });
        cut.Set("FX1_Reverb_Freeze", 1.0f);
        uint32_t next = 4;
        const Stereo frozen = cut.Run(in, [&] { cut.frames = std::exchange(next, cut.blockSize); });
        for (size_t c = 0; c < 2; ++c)
            heard[c].insert(heard[c].end(), frozen[c].begin(), frozen[c].end());
        return heard;
    };
    const bool flutters = GetParam().name == std::string("TapeEcho");
    for (const char* const positions : {GetParam().positions, GetParam().hot}) {
        const Stereo even = hear(positions, false), odd = hear(positions, true);
        for (size_t c = 0; c < 2; ++c)
            for (size_t i = 0; i < even[c].size(); ++i)
                ASSERT_NEAR(even[c][i], odd[c][i], flutters ? 10.0f : 0.0f) << c << " " << i;
    }
}

/// Finite input can still overflow inside.
TEST_P(SlotLoopTest, PanicAndPresetLoadsHealWhatHasOverflowed) {
    for (const auto& [where, at, panic, away] :
         {std::tuple("FX1_", 1.0f, true, false), std::tuple("FX1_", 1.0f, false, true),
          std::tuple("FX2_", 1.0f, false, false), std::tuple("FX2_", 0.0f, true, true)}) {
        slot = where;
        place = at;
        Build(0.8f, 0.3f, true);
        const Channel vast(rig.blockSize * 400, 3e38f),
            noise = Noise(1, rig.blockSize * 2000, 0.3f);
        rig.Run({vast, vast});
        // Also an effect that is out of its slot by then.
        if (away)
            rig.Set(slot + "ModuleType", 0.0f).RunSilence(200);
        if (panic) {
            rig.Set("Panic", 1.0f).RunSilence(1);
            rig.Set("Panic", 0.0f);
        } else {
            rig.EndPresetLoad();
        }
        rig.Set(slot + "ModuleType", static_cast<float>(GetParam().type) / 9.0f);
        // The loop's length of 2 s, in which nothing comes back of what the tree has held.
        rig.Set("Feedback", 0.0f);
        EXPECT_LT(PeakLevel(rig.RunSilence(2000)[0]), kSilent) << where << place << panic;
        rig.Set("Feedback", 1.0f);
        const Stereo out = rig.Run({noise, noise});
        const float bound = place > 0.0f ? kBound : std::numeric_limits<float>::max();
        for (const Channel& channel : out)
            EXPECT_TRUE(std::ranges::all_of(channel, [=](float x) { return std::abs(x) <= bound; }))
                << where << place << panic;
        EXPECT_GT(PeakLevel(out[0]), 0.001f) << where << place << panic;
    }
}

INSTANTIATE_TEST_SUITE_P(Effects, SlotLoopTest, ::testing::ValuesIn(kEffects),
                         [](const auto& effect) { return std::string(effect.param.name); });

}  // namespace
}  // namespace Quorvan::Processor
