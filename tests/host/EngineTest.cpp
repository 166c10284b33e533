#include "host/engine/Engine.h"

#include "host/HostRig.h"
#include "host/parameters/ModulationNames.h"
#include "host/parameters/ShellIndex.h"
#include "primitives/Clock.h"

namespace Quorvan::Host {
namespace {

/// Everything that depends on time at once: a playing transport that turns faster, timed writes, a
/// side-chain that opens the grains' pitch, chance.
StereoSignal BusyRun(double rate, size_t hostFrames) {
    std::vector<ParameterValue> settings = AudibleSettings(
        "Envelope Follower Source=Side-Chain;Envelope Follower Gain=12 dB;FX1_ModuleType=Reverb;"
        "FX1_Dry / Wet=30 %");
    settings.push_back({AmountIndex(0, 6), AmountPosition(0.5f)});
    ReadyEngine engine(settings, {.sampleRate = rate, .sideChainInputs = 2});
    engine.SetTransport({.tempo = 133.0, .beat = 1.7, .playing = true});
    for (uint64_t i = 0; i < 40; ++i)
        engine.WriteAt(137 * i + 5, kPitchIndex, static_cast<float>(i % 7) / 7.0f);
    const auto length = static_cast<size_t>(rate * 0.4);
    const StereoSignal side{Bursts(3, length, 1.0f), Bursts(4, length, 1.0f)};
    engine.sideChain = &side;
    return engine.Run(NoiseInput(length), hostFrames);
}

TEST(EngineTest, OutputDoesNotDependOnTheLengthOfHostBuffers) {
    for (const double rate : {44100.0, 48000.0}) {
        const StereoSignal whole = BusyRun(rate, 1000000);
        ASSERT_GT(PeakLevel(whole[0]), 0.1f);
        for (const size_t frames : {1u, 7u, 44u, 64u, 441u, 512u, 8192u})
            EXPECT_EQ(BusyRun(rate, frames), whole) << frames << " frames at " << rate << " Hz";
    }
}

TEST(EngineTest, BuffersMayShareMemoryAndChannelsMayBeMissing) {
    ReadyEngine engine({Set("Master Volume", "0 dB")},
                       {.sampleRate = 44100.0, .inputs = 1, .outputs = 2});
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
    ReadyEngine clean(AudibleSettings()), dirty(AudibleSettings());
    StereoSignal silenced = NoiseInput(4000), broken = silenced;
    for (size_t i = 0; i < 9; ++i) {
        broken[i % 2][100 + 300 * i] = std::array{NAN, INFINITY, -INFINITY}[i % 3];
        silenced[i % 2][100 + 300 * i] = 0.0f;
    }
    EXPECT_EQ(dirty.Run(broken, 64), clean.Run(silenced, 64));
    EXPECT_EQ(dirty.Counts().badInputs, 9u);
}

TEST(EngineTest, ASeedLeavesTheClockToOthers) {
    Engine engine(1);
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
    ReadyEngine engine;  // blocks of 44 frames
    BlockNotes notes(engine, IndexOf("Macro 1"));
    EXPECT_TRUE(engine.WriteAt(44 * 3, notes.index, 0.1f));      // first frame of block 3
    EXPECT_TRUE(engine.WriteAt(44 * 6 - 1, notes.index, 0.2f));  // last frame of block 5
    EXPECT_TRUE(engine.WriteAt(44 * 8 + 9, notes.index, 0.32f));
    EXPECT_TRUE(engine.WriteAt(44 * 8 + 9, notes.index, 0.35f));  // the last of three in block 8
    EXPECT_TRUE(engine.WriteAt(44 * 8 + 2, notes.index, 0.3f));
    engine.Run(Silence(44 * 10 + 20), 100);
    const std::vector<float> expected{0.0f, 0.0f, 0.0f, 0.1f, 0.1f, 0.2f, 0.2f, 0.2f, 0.35f, 0.35f};
    EXPECT_EQ(notes.positions, expected);

    EXPECT_TRUE(engine.WriteAt(3, notes.index, 0.5f));  // late: with the block that is being filled
    EXPECT_TRUE(engine.Write(notes.index, 7.0f));       // held to 1, and behind the late one
    EXPECT_EQ(engine.Position(notes.index), 0.35f);
    engine.Pass(24);
    EXPECT_EQ(notes.positions.back(), 1.0f);
}

TEST(EngineTest, SenselessWritesAreRefusedAndCounted) {
    ReadyEngine engine;
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
    ReadyEngine running({}, {.sampleRate = kRate}), told({}, {.sampleRate = kRate});
    BlockNotes runningNotes(running, 0);
    BlockNotes toldNotes(told, 0);
    running.SetTransport({.tempo = 150.0, .beat = -0.5, .playing = true});
    running.Run(Silence(48 * 50), 333);
    told.beforeBuffer = [&](uint64_t frame) {
        // A host that works with seconds, and rounds in its own way.
        const double seconds = static_cast<double>(frame) / kRate;
        told.SetTransport({.tempo = 150.0, .beat = seconds * 2.5 - 0.5, .playing = true});
    };
    told.Run(Silence(48 * 50), 79);
    ASSERT_EQ(runningNotes.transports.size(), 50u);
    for (size_t block = 0; block < 50; ++block) {
        const double expected = -0.5 + static_cast<double>(48 * block) * beatsPerFrame;
        EXPECT_NEAR(runningNotes.transports[block].beat, expected, 1e-12);
        EXPECT_EQ(toldNotes.transports[block].beat, runningNotes.transports[block].beat);
        EXPECT_TRUE(toldNotes.transports[block].playing);
    }
}

TEST(EngineTest, JumpsStopsAndTemposTakeEffectWithTheNextBlock) {
    ReadyEngine engine({}, {.sampleRate = 48000.0});
    BlockNotes notes(engine, 0);
    engine.SetTransport({.tempo = 120.0, .beat = 0.0, .playing = true});
    engine.Pass(60);  // into block 1
    engine.SetTransport({.tempo = 120.0, .beat = 64.0, .playing = true});
    engine.Pass(36);  // to the end of block 1
    engine.SetTempo(60.0);
    engine.Pass(48);
    engine.SetTransport({.tempo = 60.0, .beat = 3.0, .playing = false});
    engine.Pass(96);
    const double frame = 120.0 / (60.0 * 48000.0);
    ASSERT_EQ(notes.transports.size(), 5u);
    EXPECT_NEAR(notes.transports[1].beat, 48.0 * frame, 1e-12);
    EXPECT_NEAR(notes.transports[2].beat, 64.0 + 36.0 * frame, 1e-12);
    EXPECT_EQ(notes.transports[2].tempo, 60.0);
    EXPECT_FALSE(notes.transports[3].playing);
    EXPECT_EQ(notes.transports[4].beat, 3.0);
}

TEST(EngineTest, WildTransportsAreHeldToWhatTheProcessorCanRunAt) {
    ReadyEngine engine;
    engine.SetTransport({.tempo = 0.0, .beat = 2.0, .playing = true});
    EXPECT_EQ(engine.GetTransport().tempo, 1.0);
    const double nan = std::numeric_limits<double>::quiet_NaN();
    engine.SetTransport({.tempo = nan, .beat = nan, .playing = true});
    EXPECT_EQ(engine.GetTransport().tempo, 1.0);
    EXPECT_EQ(engine.GetTransport().beat, 2.0);
}

TEST(EngineTest, FormatsThatNothingRunsAtAreRefusedInASentence) {
    const std::vector<std::pair<StreamFormat, std::string>> formats{
        {{.sampleRate = std::nan("")}, "sample rate"},
        {{.inputs = 3}, "main inputs"},
        {{.outputs = 0}, "main outputs"},
        {{.sideChainInputs = 3}, "side-chain"}};
    for (const auto& [format, phrase] : formats) {
        std::string complaint;
        try {
            Engine().Prepare(format);
        } catch (const std::invalid_argument& error) {
            complaint = error.what();
        }
        EXPECT_NE(complaint.find(phrase), std::string::npos) << phrase << ": " << complaint;
    }
}

TEST(EngineTest, PreparingAgainKeepsParametersAndClearsSound) {
    ReadyEngine engine(AudibleSettings());
    engine.Run(NoiseInput(20000));
    const float volume = engine.Position(IndexOf("Master Volume"));
    engine.Prepare({.sampleRate = 96000.0});
    EXPECT_EQ(engine.Position(IndexOf("Master Volume")), volume);
    EXPECT_EQ(engine.FramesIn(), 0u);
    EXPECT_EQ(engine.BlockFrames(), 96u);
    const StereoSignal output = engine.Run(Silence(20000));
    EXPECT_EQ(PeakLevel(output[0]), 0.0f);
}

TEST(EngineTest, PanicClearsWhateverSounds) {
    for (const bool leverUp : {false, true}) {
        ReadyEngine engine(AudibleSettings());
        if (leverUp)
            engine.Write(kPanicIndex, 1.0f);
        engine.Run(NoiseInput(44 * 450));
        engine.Panic();
        const StereoSignal output = engine.Run(Silence(8800));
        EXPECT_EQ(PeakLevel(output[0], 1000), 0.0f);
        EXPECT_EQ(engine.Position(kPanicIndex), 0.0f);
    }
}

}  // namespace
}  // namespace Quorvan::Host
