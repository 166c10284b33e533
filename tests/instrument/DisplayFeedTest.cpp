#include <thread>

#include "instrument/InstrumentRig.h"

namespace Quorvan::Host {
namespace {

TEST(DisplayFeedTest, ShowsWhatSoundsAndChangesNothingOfIt) {
    StereoSignal input = NoiseInput(72000);
    for (float& sample : input[1])
        sample *= 0.25f;
    ReadyInstrument plain, watched, offline;
    watched.Display().Watch(true);
    offline.SetOffline(true);
    const StereoSignal sound = plain.Run(input);
    EXPECT_TRUE(watched.Run(input) == sound);
    EXPECT_TRUE(offline.Run(input) == sound);
    EXPECT_FALSE(plain.Display().Take());
    ASSERT_TRUE(watched.Display().Take());
    EXPECT_FALSE(watched.Display().Take());

    const DisplayFrame& frame = watched.Display().Latest();
    EXPECT_NEAR(static_cast<double>(frame.number), 72000 / 44100.0 * 50.0, 12.0);
    EXPECT_NEAR(static_cast<double>(frame.time), 72000.0, 900.0);
    EXPECT_NEAR(static_cast<double>(frame.input[0]), 4.0 * static_cast<double>(frame.input[1]),
                0.5);
    EXPECT_TRUE(frame.output[0] > 0.0f && frame.load > 0.0f && frame.pairsStarted > 0);
    std::set<uint64_t> numbers;
    for (uint32_t i = 0; i < frame.grainCount; ++i) {
        numbers.insert(frame.grains[i].number);
        EXPECT_LE(frame.grains[i].place, 1.0f);
    }
    EXPECT_TRUE(!numbers.empty() && numbers.size() == frame.grainCount);

    // The outline behind the write head is that of the samples themselves.
    const auto column =
        static_cast<uint32_t>(frame.writePlace * static_cast<float>(TapeOutline::kColumns)) - 3;
    const double columnFrames =
        static_cast<double>(frame.tapeSeconds) * 44100.0 / TapeOutline::kColumns;
    const auto begin = static_cast<size_t>(column * columnFrames);
    float highest = -1.0f;
    for (size_t i = begin; i < begin + static_cast<size_t>(columnFrames); ++i)
        highest = std::max(highest, 0.5f * (input[0][i] + input[1][i]));
    EXPECT_NEAR(frame.tape.highest[column], highest, 0.1f);
}

TEST(DisplayFeedTest, AClearedTapeIsSeenEmptyAtOnceAndTheStepFollowsTheSequencer) {
    ReadyInstrument instrument(
        "StepSeq_NbSteps=4;StepSeq_RateUnSynced=20 Hz;MoteWeaver_GranularMode=Beat;"
        "MoteWeaver_StepSequencerGranular_NbSteps=4;"
        "MoteWeaver_GranularPhaseHelper_RateSynced=1/16;");
    ReadyInstrument other("Dry / Wet=100 %;");  // so that all that comes out is wet
    instrument.Display().Watch(true);
    other.Display().Watch(true);
    const auto highest = [&] {
        instrument.Display().Take();
        const auto& columns = instrument.Display().Latest().tape.highest;
        return std::count_if(columns.begin(), columns.end(), [](float x) { return x > 0.0f; });
    };
    std::set<uint32_t> steps, beats;
    std::vector<float> loudest(4);  // so far, and four buffers ago
    float wet = 0.0f;
    for (int i = 0; i < 40; ++i) {
        instrument.Run(NoiseInput(1024));
        loudest.push_back(std::max(loudest.back(), PeakLevel(other.Run(NoiseInput(1024))[0])));
        instrument.Display().Take();
        other.Display().Take();
        wet = std::max(wet, other.Display().Latest().wet[0]);
        EXPECT_TRUE(wet >= loudest[loudest.size() - 4] && wet <= loudest.back()) << i;
        steps.insert(instrument.Display().Latest().sequencerStep);
        beats.insert(instrument.Display().Latest().beatStep);
    }
    EXPECT_EQ(steps, (std::set<uint32_t>{0, 1, 2, 3}));
    EXPECT_EQ(beats, steps);
    EXPECT_GT(highest(), 200);
    instrument.Run(NoiseInput(2048), {ControlAt(0, 25, 1.0)});
    EXPECT_LT(highest(), 60);
}

TEST(DisplayFeedTest, AnotherThreadSeesWholePicturesInOrder) {
    ReadyInstrument instrument;
    instrument.Display().Watch(true);
    std::atomic<bool> runs{true};
    std::thread window([&] {
        uint64_t last = 0;
        for (bool on = true; std::exchange(on, runs.load());)  // once more at the end
            if (instrument.Display().Take()) {
                const DisplayFrame& frame = instrument.Display().Latest();
                EXPECT_GT(frame.number, last);
                EXPECT_GE(frame.moments, frame.number);
                last = frame.number;
            }
        EXPECT_GT(last, 0u);
    });
    instrument.Run(NoiseInput(100000));
    runs = false;
    window.join();
}

}  // namespace
}  // namespace Quorvan::Host
