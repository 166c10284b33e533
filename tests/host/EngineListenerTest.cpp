#include "host/engine/EngineListener.h"

#include "host/HostRig.h"
#include "host/engine/DisplaySnapshot.h"
#include "processor/IProcessor.h"

namespace Quorvan::Host {
namespace {

struct Notes : EngineListener {
    void OnBlock(const BlockReport& report) override {
        frames += report.frames;
        for (uint32_t i = 0; i < report.frames; ++i) {
            left.push_back(report.outputs[0][i]);
            follower.push_back(report.aux[0][i]);
        }
    }
    void OnGrainStart(const GrainStart& grain) override { grains.push_back(grain); }

    uint64_t frames = 0;
    Signal left, follower;
    std::vector<GrainStart> grains;
};

std::vector<ParameterValue> SteadyGrains() {
    return Settings(
        "MoteWeaver_Pitch=12 st;MoteWeaver_GrainSizeAbsolute=100 ms;"
        "MoteWeaver_GranularPhaseHelper_RateUnSynced=20 Hz;MoteWeaver_PlaybackMode=Follow;"
        "MoteWeaver_Offset=500 ms;MoteWeaver_BufferLengthSynced=1/1;MoteWeaver_MaxGrains=64;"
        "MoteWeaver_RandomDirection=100 %");
}

TEST(EngineListenerTest, GrainsAreToldAsTheyStart) {
    ReadyEngine engine(SteadyGrains());
    Notes notes;
    engine.AddListener(notes);
    engine.Run(NoiseInput(44100));
    ASSERT_GE(notes.grains.size(), 38u);  // 20 pairs in a second
    ASSERT_LE(notes.grains.size(), 42u);
    for (size_t i = 0; i < notes.grains.size(); ++i) {
        const GrainStart& grain = notes.grains[i];
        EXPECT_EQ(grain.right, i % 2 == 1);
        EXPECT_NEAR(grain.semitones, 12.0f, 1e-4f);
        EXPECT_NEAR(grain.increment, 2.0f, 1e-5f);
        EXPECT_NEAR(grain.durationFrames, 4410.0f, 2.0f);
        EXPECT_NEAR(grain.sourceFrames, 8820.0f, 4.0f);
        EXPECT_EQ(grain.tapeLength, 88200u);  // a whole note at 120
        EXPECT_NEAR(grain.pan, 0.5f, 1e-6f);
        EXPECT_NEAR(grain.gain, 1.0f, 1e-6f);
        EXPECT_FALSE(grain.reversed);
        // The head follows half a second behind the recording, which began with the first frame.
        // Only the pair of the very first frame starts ahead of the head's first move.
        const float expected =
            std::fmod(static_cast<float>(grain.frame) + 88200.0f - 22050.0f, 88200.0f);
        EXPECT_NEAR(grain.tapePosition, i < 2 ? 0.0f : expected, 2.0f);
        if (i >= 4 && i % 2 == 0) {
            EXPECT_NEAR(static_cast<double>(grain.frame - notes.grains[i - 2].frame), 2205.0, 2.0);
        }
    }
}

TEST(EngineListenerTest, BlocksCarryOutputsAheadOfTheQueueAndAuxOutputs) {
    ReadyEngine engine(AudibleSettings("Envelope Follower Gain=0 dB"));
    Notes notes;
    engine.AddListener(notes);
    const StereoSignal input = NoiseInput(44 * 60);
    const StereoSignal output = engine.Run(input, 101);
    ASSERT_EQ(notes.frames, 44u * 60u);
    EXPECT_EQ(Signal(notes.left.begin(), notes.left.end() - 44),
              Signal(output[0].begin() + 44, output[0].end()));
    EXPECT_EQ(notes.follower, input[0]);

    engine.RemoveListener(notes);
    engine.Run(input, 101);
    EXPECT_EQ(notes.frames, 44u * 60u);
}

TEST(EngineListenerTest, AuxOutputsComeThroughTheQueueToo) {
    ReadyEngine engine;
    Notes notes;
    engine.AddListener(notes);
    const Signal input = Noise(6, 44 * 20);
    Signal aux(input.size());
    for (size_t at = 0; at < input.size(); at += 11) {
        const std::array<const float*, 2> in{input.data() + at, input.data() + at};
        const std::array<float*, 4> auxOut{aux.data() + at, nullptr, nullptr, nullptr};
        engine.Process({.inputs = in.data(), .aux = auxOut.data(), .frames = 11});
    }
    EXPECT_EQ(Signal(aux.begin() + 44, aux.end()), Signal(input.begin(), input.end() - 44));
}

TEST(DisplaySnapshotTest, ShowsTheTape) {
    ReadyEngine engine(SteadyGrains());
    const StereoSignal input = NoiseInput(44 * 500);
    engine.Run(input);
    DisplaySnapshot snapshot;
    ASSERT_TRUE(snapshot.Read(engine.GetProcessor(), true));
    EXPECT_EQ(snapshot.tapeLength, 88200u);
    EXPECT_EQ(snapshot.writePosition, 44u * 500u);
    EXPECT_EQ(snapshot.tape.size(), 88200u);
    EXPECT_GT(snapshot.grainsStarted, snapshot.grainsEnded);
    EXPECT_EQ(snapshot.grains.size(), snapshot.grainsStarted - snapshot.grainsEnded);
    EXPECT_GT(PeakLevel(snapshot.tape, 0, 22000), 0.1f);
    EXPECT_EQ(PeakLevel(snapshot.tape, 22000), 0.0f);
    ASSERT_TRUE(snapshot.Read(engine.GetProcessor(), false));
    EXPECT_TRUE(snapshot.tape.empty());
}

TEST(DisplaySnapshotTest, ATransportThatStartsPutsTheTapeWhereTheSongIs) {
    for (const uint32_t idleBlocks : {0u, 1u}) {
        ReadyEngine engine(SteadyGrains());
        engine.SetTransport({.tempo = 120.0, .beat = 5.0, .playing = true});
        engine.Idle(idleBlocks);
        EXPECT_EQ(engine.FramesIn(), 0u);
        engine.Run(Silence(44), 44);
        DisplaySnapshot snapshot;
        ASSERT_TRUE(snapshot.Read(engine.GetProcessor(), false));
        // A quarter of the way into the tape's four beats; without the start it begins at its
        // front.
        EXPECT_NEAR(static_cast<double>(snapshot.writePosition), 44.0 + 22050.0 * idleBlocks, 2.0);
    }
}

}  // namespace
}  // namespace Quorvan::Host
