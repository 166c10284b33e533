// Every effect inside the feedback loop at unity: it stays bounded, and silence comes to rest.
//
// TESSERAE_LOOP_SECONDS=600 asks for so many seconds of noise and as many of silence, and prints
// what the blocks of each cost. Without it the noise lasts 4 s and the silence 15 s.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <ctime>
#include <iostream>
#include <map>
#include <string>

#include "support/ProcessorRig.h"
#include "support/TestSignals.h"

namespace Quorvan::Processor {
namespace {

using test::Channel;
using test::ProcessorRig;

constexpr float kRate = 48000.0f;
constexpr float kSilent = 1.0e-7f;  // -140 dB
/// What is heard of a loop comes out of the limiter, whatever the effect in it does: full scale,
/// and room for a peak between samples.
constexpr float kBound = 1.1f;

struct Effect {
    const char* name;
    uint32_t type;
    std::map<std::string, float> positions;  ///< names without the slot's prefix
    std::map<std::string, float> hot = {};   ///< and those that make it feed itself strongly
};

/// Each at full wet and well into its range, yet with a gain that lets a loop decay: the compressor
/// without makeup, the distortion without drive, echoes below full feedback.
const Effect kEffects[] = {
    {"Filter",
     1,
     {{"MultiModeFilter_Freq", 0.7f}, {"MultiModeFilter_Q", 0.5f}, {"MultiModeFilter_Slope", 0.5f}},
     {{"MultiModeFilter_Q", 1.0f}}},
    {"Comb",
     1,
     {{"MultiModeFilter_Mode", 0.75f},
      {"MultiModeFilter_CombFreq", 0.4f},
      {"MultiModeFilter_Q", 0.6f}},
     {{"MultiModeFilter_Q", 1.0f}}},
    {"Distortion", 2, {{"MultiDist_DistType", 0.0f}}, {{"MultiDist_Drive", 1.0f}}},
    {"DistortionOfOneChannel",
     2,
     {{"MultiDist_DistType", 0.0f}, {"MultiDist_Stereo", 0.0f}, {"InGainCompensated", 0.0f}},
     {{"MultiDist_Drive", 1.0f}, {"Dry / Wet", 0.5f}}},
    {"Compressor",
     3,
     {{"Compressor_OutputGain", 0.5f},
      {"Compressor_Attack", 0.3f},
      {"Compressor_Release", 0.4f},
      {"Compressor_Threshold", 0.4f},
      {"Compressor_Ratio", 0.5f}},
     {{"Compressor_Makeup", 1.0f}}},
    {"Delay",
     4,
     {{"Delay_DelayTimeMs", 0.5f}, {"Delay_Feedback", 0.6f}, {"Delay_DelayFineMs", 0.5f}},
     {{"Delay_Feedback", 1.0f}}},
    {"OctaverDelay",
     5,
     {{"OctaverDelay_DelayTimeMs", 0.4f},
      {"OctaverDelay_Feedback", 0.5f},
      {"OctaverDelay_PitchShift", 0.75f},
      {"OctaverDelay_Spray", 0.3f},
      {"OctaverDelay_DelayOffset", 0.5f},
      {"OctaverDelay_Detune", 0.55f}},
     {{"OctaverDelay_Feedback", 1.0f}}},
    {"TapeEcho",
     6,
     {{"TapeEcho_InputVolume", 0.5f},
      {"TapeEcho_DelayTime", 0.5f},
      {"TapeEcho_DelayTimeFine", 0.5f},
      {"TapeEcho_Intensity", 0.5f},
      {"TapeEcho_StereoWidth", 0.5f}},
     {{"TapeEcho_Intensity", 1.0f}}},
    {"Chorus",
     7,
     {{"Chorus_Delay", 0.3f},
      {"Chorus_Depth", 0.4f},
      {"Chorus_Freq", 0.3f},
      {"Chorus_Feedback", 0.5f},
      {"Chorus_StereoMode", 1.0f},
      {"Chorus_Voices", 1.0f}},
     {{"Chorus_Feedback", 1.0f}}},
    {"Flanger",
     8,
     {{"Flanger_MinDelay", 0.2f},
      {"Flanger_DepthFlanger", 0.5f},
      {"Flanger_Chorus_Freq", 0.3f},
      {"Flanger_Chorus_Feedback", 0.6f},
      {"Flanger_Chorus_StereoMode", 1.0f}},
     {{"Flanger_Chorus_Feedback", 1.0f}}},
    {"Reverb",
     9,
     {{"Reverb_Decay", 0.7f},
      {"Reverb_E_Size", 0.5f},
      {"Reverb_Predelay", 0.3f},
      {"Reverb_EarlyOn", 1.0f},
      {"Reverb_EarlyMix", 0.5f}},
     {{"Reverb_Decay", 1.0f}}},
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
        rig.MakeAudible().Set({{"Feedback", 1.0f},
                               {"MoteWeaver_PlaybackMode", 0.5f},
                               {"MoteWeaver_Offset", 0.2f},
                               {"MoteWeaver_GranularPhaseHelper_RateUnSynced", density},
                               {"MoteWeaver_GrainSizeAbsolute", grainSize},
                               {"FX1_ModuleType", static_cast<float>(GetParam().type) / 9.0f},
                               {"FX1_Position", 1.0f},
                               {"FX1_Dry / Wet", 1.0f}});
        for (const auto& [name, position] : GetParam().positions)
            rig.Set("FX1_" + name, position);
        if (isHot)
            for (const auto& [name, position] : GetParam().hot)
                rig.Set("FX1_" + name, position);
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
            std::cout << GetParam().name << ", " << stretch << ": peak " << test::DecibelsOf(peak)
                      << " dB, " << blockMicroseconds << " us a block\n";
    }

    /// A number in -1..1, cheaper than those of the library.
    float Draw() {
        state = state * 1664525u + 1013904223u;
        return static_cast<float>(static_cast<int32_t>(state)) * 4.6566129e-10f;
    }

    ProcessorRig rig{kRate};
    uint32_t state = 1;
    float peak = 0.0f;
    double blockMicroseconds = 0.0;
};

/// A loop of grains alone can hold a sound for ever at 0 dB, and effects have gains of their own
/// on top. So here the second slot stands in the loop too, as a plain loss: a compressor
/// that does not compress.
TEST_P(SlotLoopTest, NoiseStaysBoundedAndSilenceComesToRest) {
    Build(0.5f, 0.2f, false);
    rig.Set({{"FX2_ModuleType", 3.0f / 9.0f},
             {"FX2_Position", 1.0f},
             {"FX2_Dry / Wet", 1.0f},
             {"FX2_Compressor_Threshold", 1.0f},
             {"FX2_Compressor_Ratio", 0.0f},
             {"FX2_Compressor_OutputGain", 0.1f}});
    Play(AskedSeconds(4.0), 0.5f);
    Report("noise");
    EXPECT_GT(peak, 0.05f);
    const double rest = AskedSeconds(15.0);
    Play(rest - 1.0, 0.0f);
    Report("silence");
    Play(1.0, 0.0f);
    Report("last second");
    EXPECT_LT(peak, kSilent) << test::DecibelsOf(peak) << " dB";
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

INSTANTIATE_TEST_SUITE_P(Effects, SlotLoopTest, ::testing::ValuesIn(kEffects),
                         [](const auto& effect) { return std::string(effect.param.name); });

}  // namespace
}  // namespace Quorvan::Processor
