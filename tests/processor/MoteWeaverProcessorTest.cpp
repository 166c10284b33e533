// The audio path around the granular engine.
#include "support/ProcessorRig.h"
#include "support/Test.h"

namespace Quorvan::Processor {
namespace {

TEST(MoteWeaverProcessorTest, TheMixKeepsThePowerAndFollowsItsKnob) {
    const Stereo in{Channel(24000, 0.5f), Channel(24000, 0.5f)};
    for (const float mix : {0.25f, 0.5f, 0.75f}) {
        ProcessorRig rig;
        rig.Set("Master Volume", 1.0f).Set("Dry / Wet", mix);  // wet is 70 dB down
        const Stereo out = rig.Run(in);
        EXPECT_NEAR(out[0].back(), 0.5f * std::cos(mix * std::numbers::pi_v<float> / 2.0f), 1e-3f);
    }
}

TEST(MoteWeaverProcessorTest, FullDryIsTheInputLateByTheLatencyOnAsManyChannelsAsThereAre) {
    ProcessorRig rig, monoIn, monoOut;
    for (ProcessorRig* each : {&rig, &monoIn, &monoOut})
        each->Set("Master Volume", 1.0f);
    Stereo in = NoisePair(rig.blockSize * 8, 0.5f);
    const Stereo out = rig.Run(in);
    Channel left(in[0].size()), right(left), alone(left);
    for (size_t at = 0; at < left.size(); at += rig.blockSize) {
        monoIn.RunBlock({&in[0][at]}, {&left[at], &right[at]});
        monoOut.RunBlock({&in[0][at], &in[1][at]}, {&alone[at]});
    }
    const size_t late = rig.processor->GetLatency();
    for (size_t i = late; i < left.size(); ++i) {
        ASSERT_EQ(out[1][i], in[1][i - late]);
        // One output makes the block mono: the right input isn't looked at.
        for (const Channel& channel : {out[0], left, right, alone})
            ASSERT_EQ(channel[i], in[0][i - late]);
    }
}

/// Grains are drawn and played by the sample: with settings at rest nothing but the rounding of
/// their positions depends on how the wrapper cuts its blocks.
TEST(MoteWeaverProcessorTest, BlockLengthsAreNotHeardInTheCloud) {
    for (const auto& [settings, playing] :
         {std::pair("MoteWeaver_GranularMode=0", false),
          std::pair("MoteWeaver_GranularMode=0", true),
          std::pair("MoteWeaver_GranularMode=0.5;MoteWeaver_TextureDensity=0.3", false),
          std::pair("MoteWeaver_PlaybackMode=0.5;MoteWeaver_Spray=0.3;MoteWeaver_RandomPitch=0.4;"
                    "MoteWeaver_Pitch=0.6;MoteWeaver_RandomSize=0.5;MoteWeaver_RandomPan=0.5",
                    false),
          std::pair("MoteWeaver_Shape=1;MoteWeaver_RandomDirection=0.5", true)}) {
        const Stereo in = NoisePair(48 * 1000);
        const auto hear = [&](bool random) {
            ProcessorRig rig;
            rig.MakeAudible().SetAll(settings);
            rig.EndPresetLoad();
            rig.playing = playing;
            std::mt19937 any(5);
            return rig.Run(in, [&] {
                rig.frames = random ? 4 * static_cast<uint32_t>(any() % 13) : rig.frames;
            });
        };
        const Stereo even = hear(false), odd = hear(true);
        EXPECT_GT(PeakLevel(even[0]), 0.1f);
        for (size_t c = 0; c < 2; ++c)
            for (size_t i = 0; i < even[c].size(); ++i)
                ASSERT_NEAR(even[c][i], odd[c][i], 1e-6f) << settings << " " << i;
    }
}

TEST(MoteWeaverProcessorTest, TransportMuteFadesTheWetPathAloneInAFifthOfASecond) {
    ProcessorRig rig;
    rig.MakeAudible().Set("Transport Mute", 1.0f).Set("Dry / Wet", 1.0f);
    rig.playing = true;
    const Stereo in = NoisePair(48000);
    EXPECT_GT(PeakLevel(rig.Run(in)[0], 24000), 0.02f);
    rig.playing = false;
    const Stereo faded = rig.Run(in);
    EXPECT_GT(PeakLevel(Channel(faded[0].begin() + 480, faded[0].begin() + 4800)), 0.01f);
    EXPECT_EQ(PeakLevel(faded[0], 9700), 0.0f);
    rig.Set("Dry / Wet", 0.0f);
    EXPECT_GT(PeakLevel(rig.Run(in)[0], 24000), 0.1f);
}

TEST(MoteWeaverProcessorTest, TheLoopIsSilentAtTheBottomAndBoundedAtTheTop) {
    const Stereo in = NoisePair(96000, 0.9f);
    ProcessorRig open, closed;
    open.MakeAudible();
    closed.MakeAudible().Set("Feedback", 1.0f);
    const Stereo without = open.Run(in), with = closed.Run(in);
    EXPECT_NE(without[0], with[0]);
    for (const Stereo& out : {without, with})
        EXPECT_LE(PeakOf(out), 1.0f);
    // Without the loop the sound dies with the tape cleared; with it, it goes round.
    for (ProcessorRig* rig : {&open, &closed})
        rig->Set("MoteWeaver_BufferClear", 1.0f);
    EXPECT_LT(PeakLevel(open.RunSilence(300)[0], 300 * 48 - 4800), 1e-9f);
    EXPECT_GT(PeakLevel(closed.RunSilence(300)[0], 300 * 48 - 4800), 1e-3f);
}

TEST(MoteWeaverProcessorTest, ALongBlockBehindShortOnesBringsNothingOldBackIntoTheLoop) {
    ProcessorRig rig;
    rig.Set("Feedback", 1.0f);
    rig.Run(NoisePair(4800));  // onto the tape alone, without grains
    rig.Run({Channel(9600), Channel(9600)}, [&rig] { rig.frames = 4; });
    const float* const taped = rig.ReadDisplay().buffer + rig.ReadDisplay().writePosition;
    rig.RunSilence(1);
    EXPECT_LT(PeakLevel(Channel(taped, taped + rig.blockSize)), 1e-5f);
}

TEST(MoteWeaverProcessorTest, MetersShowThePeaksOfTheOutput) {
    ProcessorRig rig;
    rig.Set("Master Volume", 1.0f);
    Stereo in{Channel(4800, 0.0f), Channel(4800, 0.0f)};
    in[0][4000] = 0.5f;
    in[1][4000] = -0.25f;
    const Stereo out = rig.Run(in);
    EXPECT_NEAR(rig.Get("MasterVuL_Level"), PeakLevel(out[0]), 0.01f);
    EXPECT_NEAR(rig.Get("MasterVuR_Level"), PeakLevel(out[1]), 0.01f);
}

TEST(MoteWeaverProcessorTest, AuxiliaryOutputsCarryTheFollowerAndThePlace) {
    ProcessorRig rig;
    rig.SetAll("Envelope Follower Gain=0.5;EnvFollower_Release=0.01");
    Channel left(rig.blockSize, 0.5f), right(rig.blockSize, -0.5f), side(rig.blockSize, 0.125f);
    Channel out(rig.blockSize);
    const auto& aux = rig.scratch;
    const auto run = [&](std::vector<float*> sideChain) {
        for (int i = 0; i < 200; ++i)
            rig.RunBlock({left.data(), right.data()}, {out.data(), out.data()}, {}, sideChain);
    };
    run({});
    EXPECT_EQ(aux[0], left);
    EXPECT_NEAR(aux[1][0], 0.5f, 1e-3f);
    EXPECT_EQ(aux[2][0], 0.5f);  // the middle
    EXPECT_EQ(aux[3][0], 0.0f);
    rig.Set("Envelope Follower Source", 1.0f);
    run({side.data()});
    EXPECT_EQ(aux[0], side);
    EXPECT_NEAR(aux[1][0], 0.125f, 1e-3f);
    run({});  // no side-chain there: back to the input
    EXPECT_EQ(aux[0], left);
}

TEST(MoteWeaverProcessorTest, TheDisplayRecordShowsTheLoop) {
    ProcessorRig rig;
    rig.MakeAudible();
    const Stereo in = NoisePair(48000);
    rig.Run(in);
    const Display shown = rig.ReadDisplay();
    EXPECT_EQ(shown.length, 96000u);  // a whole note at 120
    EXPECT_EQ(shown.writePosition, 48000u);
    EXPECT_GT(shown.started, shown.ended);
    EXPECT_EQ(shown.grains->size(), shown.started - shown.ended);
    EXPECT_TRUE(shown.markers->empty());
    EXPECT_EQ(*shown.lock, 0);
    // The tape holds the input behind the loop's high-pass; its mean follows the inputs' mean.
    double product = 0.0, power = 0.0;
    for (size_t i = 0; i < 48000; ++i) {
        const double mean = 0.5 * (in[0][i] + in[1][i]);
        product += mean * shown.buffer[i];
        power += mean * mean;
    }
    EXPECT_NEAR(product / power, 1.0, 0.02);

    rig.Set("MoteWeaver_PlaybackQuantizationMode", 1.0f);  // the grid
    *shown.lock = 1;                                       // a reader is at it
    const std::vector<uint32_t> before = *shown.grains;
    rig.RunSilence(100);
    EXPECT_EQ(*shown.grains, before);
    EXPECT_TRUE(shown.markers->empty());
    *shown.lock = 0;
    rig.RunSilence(1);
    ASSERT_EQ(shown.markers->size(), 8u);
    EXPECT_EQ((*shown.markers)[3], 36000u);
}

TEST(MoteWeaverProcessorTest, TheLoopStaysAlignedWithTheSong) {
    // Wherever the song goes, two laps later the write head stands where the song's place in the
    // loop of one whole note says.
    ProcessorRig rig;
    rig.MakeAudible();
    rig.playing = true;
    const auto play = [&rig](double beats) {
        const double frames = beats * 60.0 / rig.tempo * 48000.0;
        rig.RunSilence(static_cast<uint32_t>(frames / rig.blockSize));
    };
    const auto expectAligned = [&rig](const char* when) {
        const Display shown = rig.ReadDisplay();
        const double lap = 240.0 / rig.tempo * 48000.0;
        EXPECT_NEAR(static_cast<double>(shown.length), lap, 0.002 * lap) << when;
        const double place = std::fmod(rig.songPosition, 4.0) / 4.0 * lap;
        double off = static_cast<double>(shown.writePosition) - place;
        off -= std::round(off / lap) * lap;
        EXPECT_NEAR(off, 0.0, 100.0) << when;  // song positions are single precision, by the block
    };
    rig.songPosition = 1.5;
    play(8.0);
    expectAligned("start in the middle of a bar");
    for (const float tempo : {97.0f, 151.0f}) {
        rig.tempo = tempo;
        play(9.5);
        expectAligned("new tempo");
    }
    for (const double jump : {-13.5, 6.6}) {
        rig.songPosition += jump;
        play(9.0);
        expectAligned("jump");
    }
    rig.playing = false;
    play(1.7);
    rig.playing = true;
    rig.songPosition = -2.0;
    play(11.0);
    expectAligned("pre-roll");
}

}  // namespace
}  // namespace Quorvan::Processor
