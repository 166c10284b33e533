#include "host/engine/Engine.h"

#include <cmath>
#include <limits>
#include <stdexcept>

#include <gtest/gtest.h>

#include "host/HostRig.h"
#include "host/parameters/ModulationNames.h"
#include "host/parameters/ShellIndex.h"
#include "primitives/Clock.h"

namespace Quorvan::Host {
namespace {

using namespace test;

constexpr uint64_t kSeed = 20240117;

/// Everything that depends on time at once: a playing transport that turns faster, timed writes, a
/// side-chain that opens the grains' pitch, chance.
StereoSignal BusyRun(double rate, size_t hostFrames) {
    Engine engine(kSeed);
    engine.Prepare({.sampleRate = rate, .sideChainInputs = 2});
    std::vector<ParameterValue> settings = AudibleSettings();
    settings.push_back(Set("Envelope Follower Source", "Side-Chain"));
    settings.push_back(Set("Envelope Follower Gain", "12 dB"));
    settings.push_back({AmountIndex(0, 6), AmountPosition(0.5f)});
    settings.push_back(Set("FX1_ModuleType", "Reverb"));
    settings.push_back(Set("FX1_Dry / Wet", "30 %"));
    engine.Restore(settings);
    engine.SetTransport({.tempo = 133.0, .beat = 1.7, .playing = true});
    for (uint64_t i = 0; i < 40; ++i)
        engine.WriteAt(137 * i + 5, kPitchIndex, static_cast<float>(i % 7) / 7.0f);
    const auto length = static_cast<size_t>(rate * 0.4);
    const StereoSignal side{Bursts(3, length, 1.0f), Bursts(4, length, 1.0f)};
    HostStream stream(engine);
    stream.sideChain = &side;
    return stream.Run(NoiseInput(length), hostFrames);
}

TEST(EngineTest, OutputDoesNotDependOnTheLengthOfHostBuffers) {
    for (const double rate : {44100.0, 48000.0}) {
        const StereoSignal whole = BusyRun(rate, 1000000);
        ASSERT_GT(PeakOf(whole[0]), 0.1f);
        for (const size_t frames : {1u, 7u, 44u, 64u, 441u, 512u, 8192u})
            EXPECT_EQ(BusyRun(rate, frames), whole) << frames << " frames at " << rate << " Hz";
    }
}

TEST(EngineTest, ReportedLatencyIsThatOfAnImpulse) {
    for (const double rate : {8000.0, 44100.0, 48000.0, 96000.0, 192000.0}) {
        Engine engine(kSeed);
        engine.Prepare({.sampleRate = rate});
        engine.Restore(std::array{Set("Master Volume", "0 dB"), Set("Dry / Wet", "0 %")});
        constexpr size_t kAt = 1234;
        StereoSignal input = Silence(8000);
        input[0][kAt] = 1.0f;
        input[1][kAt] = -0.5f;
        const StereoSignal output = HostStream(engine).Run(input, 300);
        const size_t expected = kAt + engine.LatencyFrames();
        EXPECT_NEAR(output[0][expected], 1.0f, 1e-6f) << rate;
        EXPECT_NEAR(output[1][expected], -0.5f, 1e-6f) << rate;
        EXPECT_EQ(PeakOf(output[0], 0, expected), 0.0f) << rate;
        EXPECT_LT(PeakOf(output[0], expected + 1), 1e-6f) << rate;
    }
}

TEST(EngineTest, BuffersMayShareMemoryAndChannelsMayBeMissing) {
    Engine engine(kSeed);
    engine.Prepare({.sampleRate = 44100.0, .inputs = 1, .outputs = 2});
    engine.Restore(std::array{Set("Master Volume", "0 dB")});
    Signal shared = Noise(9, 3000, 0.5f);
    const Signal input = shared;
    for (size_t at = 0; at < shared.size(); at += 100) {
        float* const channel = shared.data() + at;
        const std::array<const float*, 1> in{channel};
        const std::array<float*, 2> out{channel, nullptr};
        engine.Process({.inputs = in.data(), .outputs = out.data(), .frames = 100});
    }
    const size_t latency = engine.LatencyFrames();
    for (size_t i = latency; i < shared.size(); ++i)
        ASSERT_NEAR(shared[i], input[i - latency], 1e-6f) << i;
}

TEST(EngineTest, NumbersThatAreNoneBecomeSilenceAndAreCounted) {
    Engine clean(kSeed);
    Engine dirty(kSeed);
    StereoSignal silenced = NoiseInput(4000);
    StereoSignal broken = silenced;
    const float infinity = std::numeric_limits<float>::infinity();
    const std::array bad{std::numeric_limits<float>::quiet_NaN(), infinity, -infinity};
    for (size_t i = 0; i < 9; ++i) {
        broken[i % 2][100 + 300 * i] = bad[i % 3];
        silenced[i % 2][100 + 300 * i] = 0.0f;
    }
    for (Engine* engine : {&clean, &dirty}) {
        engine->Prepare({});
        engine->Restore(AudibleSettings());
    }
    EXPECT_EQ(HostStream(dirty).Run(broken, 64), HostStream(clean).Run(silenced, 64));
    EXPECT_EQ(dirty.Counts().badInputs, 9u);
    EXPECT_EQ(clean.Counts().badInputs, 0u);
    EXPECT_EQ(dirty.Counts().badOutputs, 0u);
}

StereoSignal SeededRun(std::optional<uint64_t> seed) {
    Engine engine(seed);
    engine.Prepare({});
    engine.Restore(AudibleSettings());
    return HostStream(engine).Run(NoiseInput(20000), 512);
}

TEST(EngineTest, ASeedRepeatsAndAnotherDiffers) {
    EXPECT_EQ(SeededRun(1), SeededRun(1));
    EXPECT_NE(SeededRun(1), SeededRun(2));
}

TEST(EngineTest, ASeedLeavesTheClockToOthers) {
    Engine engine(kSeed);
    EXPECT_EQ(prims::ReplaceClock(nullptr), nullptr);
}

/// Notes what the processor holds and where the song stands at each block.
struct BlockNotes : EngineListener {
    BlockNotes(Engine& running, uint32_t parameter) : engine(running), index(parameter) {
        engine.AddListener(*this);
    }
    void OnBlock(const BlockReport& report) override {
        positions.push_back(engine.Position(index));
        transports.push_back(report.transport);
        EXPECT_EQ(report.firstFrame, (positions.size() - 1) * report.frames);
    }

    Engine& engine;
    uint32_t index;
    std::vector<float> positions;
    std::vector<Transport> transports;
};

TEST(EngineTest, WritesLandWithTheBlockThatHoldsTheirFrame) {
    Engine engine(kSeed);
    engine.Prepare({});  // blocks of 44 frames
    BlockNotes notes(engine, IndexOf("Macro 1"));
    EXPECT_TRUE(engine.WriteAt(44 * 3, notes.index, 0.1f));       // first frame of block 3
    EXPECT_TRUE(engine.WriteAt(44 * 6 - 1, notes.index, 0.2f));   // last frame of block 5
    EXPECT_TRUE(engine.WriteAt(44 * 8 + 9, notes.index, 0.35f));  // later of two in block 8
    EXPECT_TRUE(engine.WriteAt(44 * 8 + 2, notes.index, 0.3f));
    HostStream(engine).Run(Silence(44 * 10 + 20), 100);
    const std::vector<float> expected{0.0f, 0.0f, 0.0f, 0.1f, 0.1f, 0.2f, 0.2f, 0.2f, 0.35f, 0.35f};
    EXPECT_EQ(notes.positions, expected);

    EXPECT_TRUE(engine.WriteAt(3, notes.index, 0.5f));  // late: with the block that is being filled
    EXPECT_TRUE(engine.Write(notes.index, 7.0f));       // held to 1, and behind the late one
    EXPECT_EQ(engine.Position(notes.index), 0.35f);
    HostStream(engine).Run(Silence(24), 24);
    EXPECT_EQ(notes.positions.back(), 1.0f);
}

TEST(EngineTest, SenselessWritesAreRefusedAndCounted) {
    Engine engine(kSeed);
    engine.Prepare({});
    EXPECT_FALSE(engine.Write(3150, 0.5f));
    EXPECT_FALSE(engine.Write(0, std::numeric_limits<float>::quiet_NaN()));
    EXPECT_EQ(engine.Counts().refusedWrites, 2u);
    uint64_t taken = 0;
    while (engine.Write(IndexOf("Macro 1"), 0.5f))
        ++taken;
    EXPECT_GE(taken, uint64_t{2 * kProcessorParameters});
    EXPECT_EQ(engine.Counts().refusedWrites, 3u);
}

TEST(EngineTest, SongPositionIsThatOfTheBlocksFirstFrame) {
    constexpr double kRate = 48000.0;
    const double beatsPerFrame = 150.0 / (60.0 * kRate);
    Engine running(kSeed);
    Engine told(kSeed);
    running.Prepare({.sampleRate = kRate});
    told.Prepare({.sampleRate = kRate});
    BlockNotes runningNotes(running, 0);
    BlockNotes toldNotes(told, 0);
    running.SetTransport({.tempo = 150.0, .beat = -0.5, .playing = true});
    HostStream(running).Run(Silence(48 * 50), 333);
    HostStream toldStream(told);
    toldStream.beforeBuffer = [&](uint64_t frame) {
        // A host that works with seconds, and rounds in its own way.
        const double seconds = static_cast<double>(frame) / kRate;
        told.SetTransport({.tempo = 150.0, .beat = seconds * 2.5 - 0.5, .playing = true});
    };
    toldStream.Run(Silence(48 * 50), 79);
    ASSERT_EQ(runningNotes.transports.size(), 50u);
    for (size_t block = 0; block < 50; ++block) {
        const double expected = -0.5 + static_cast<double>(48 * block) * beatsPerFrame;
        EXPECT_NEAR(runningNotes.transports[block].beat, expected, 1e-12);
        EXPECT_EQ(toldNotes.transports[block].beat, runningNotes.transports[block].beat);
        EXPECT_TRUE(toldNotes.transports[block].playing);
    }
}

TEST(EngineTest, JumpsStopsAndTemposTakeEffectWithTheNextBlock) {
    Engine engine(kSeed);
    engine.Prepare({.sampleRate = 48000.0});
    BlockNotes notes(engine, 0);
    engine.SetTransport({.tempo = 120.0, .beat = 0.0, .playing = true});
    HostStream(engine).Run(Silence(60), 60);  // into block 1
    engine.SetTransport({.tempo = 120.0, .beat = 64.0, .playing = true});
    HostStream(engine).Run(Silence(36), 36);  // to the end of block 1
    engine.SetTempo(60.0);
    HostStream(engine).Run(Silence(48), 48);
    engine.SetTransport({.tempo = 60.0, .beat = 3.0, .playing = false});
    HostStream(engine).Run(Silence(96), 96);
    const double frame = 120.0 / (60.0 * 48000.0);
    ASSERT_EQ(notes.transports.size(), 5u);
    EXPECT_NEAR(notes.transports[1].beat, 48.0 * frame, 1e-12);
    EXPECT_NEAR(notes.transports[2].beat, 64.0 + 36.0 * frame, 1e-12);
    EXPECT_EQ(notes.transports[2].tempo, 60.0);
    EXPECT_FALSE(notes.transports[3].playing);
    EXPECT_EQ(notes.transports[4].beat, 3.0);
}

TEST(EngineTest, TheProcessorFollowsTheSongPosition) {
    Engine engine(kSeed);
    engine.Prepare({});
    engine.Restore(std::array{Set("StepSeq_RateType", "Straight"), Set("StepSeq_NbSteps", "16"),
                              Set("StepSeq_RateSynced", "1/16")});
    for (const double beat : {3.05, 1.55, 0.30}) {
        engine.SetTransport({.tempo = 120.0, .beat = beat, .playing = false});
        HostStream(engine).Run(Silence(44), 44);
        engine.SetTransport({.tempo = 120.0, .beat = beat, .playing = true});
        HostStream(engine).Run(Silence(44), 44);
        const uint32_t step = IndexOf("StepSeq_CurrentStep");
        EXPECT_EQ(Catalog().Value(step, engine.Position(step)), std::floor(beat * 4.0)) << beat;
    }
}

TEST(EngineTest, WildTransportsAreHeldToWhatTheProcessorCanRunAt) {
    Engine engine(kSeed);
    engine.Prepare({});
    engine.SetTransport({.tempo = 0.0, .beat = 2.0, .playing = true});
    EXPECT_EQ(engine.GetTransport().tempo, 1.0);
    const double nan = std::numeric_limits<double>::quiet_NaN();
    engine.SetTransport({.tempo = nan, .beat = nan, .playing = true});
    EXPECT_EQ(engine.GetTransport().tempo, 1.0);
    EXPECT_EQ(engine.GetTransport().beat, 2.0);
}

TEST(EngineTest, FormatsThatNothingRunsAtAreRefusedInASentence) {
    Engine engine(kSeed);
    const auto complaint = [&](const StreamFormat& format) -> std::string {
        try {
            engine.Prepare(format);
        } catch (const std::invalid_argument& error) {
            return error.what();
        }
        return {};
    };
    EXPECT_NE(complaint({.sampleRate = std::nan("")}).find("sample rate"), std::string::npos);
    EXPECT_NE(complaint({.inputs = 3}).find("main inputs"), std::string::npos);
    EXPECT_NE(complaint({.outputs = 0}).find("main outputs"), std::string::npos);
    EXPECT_NE(complaint({.sideChainInputs = 3}).find("side-chain"), std::string::npos);
}

TEST(EngineTest, PreparingAgainKeepsParametersAndClearsSound) {
    Engine engine(kSeed);
    engine.Prepare({});
    engine.Restore(AudibleSettings());
    HostStream(engine).Run(NoiseInput(20000), 512);
    const float volume = engine.Position(IndexOf("Master Volume"));
    engine.Prepare({.sampleRate = 96000.0});
    EXPECT_EQ(engine.Position(IndexOf("Master Volume")), volume);
    EXPECT_EQ(engine.FramesIn(), 0u);
    EXPECT_EQ(engine.BlockFrames(), 96u);
    const StereoSignal output = HostStream(engine).Run(Silence(20000), 512);
    EXPECT_EQ(PeakOf(output[0]), 0.0f);
}

TEST(EngineTest, PanicClearsWhateverSounds) {
    for (const bool leverUp : {false, true}) {
        Engine engine(kSeed);
        engine.Prepare({});
        engine.Restore(AudibleSettings());
        if (leverUp)
            engine.Write(kPanicIndex, 1.0f);
        HostStream(engine).Run(NoiseInput(44 * 450), 512);
        engine.Panic();
        const StereoSignal output = HostStream(engine).Run(Silence(8800), 512);
        EXPECT_EQ(PeakOf(output[0], 1000), 0.0f);
        EXPECT_EQ(engine.Position(kPanicIndex), 0.0f);
    }
}

}  // namespace
}  // namespace Quorvan::Host
