// Runs the VST3 with the trap set, states coming and going beside it: vst3host Tesserae.so
#include <memory>

#include "plugins/vst3host/Vst3Instance.h"

namespace Quorvan::test {

TEST(Vst3Test, ProcessNeitherAllocatesNorLocksAndStatesComeBackToTheByte) {
    Moves moves;
    RunsBesideStates<Vst3>([&](Vst3& vst3, uint32_t most, int turn) {
        const auto frames = static_cast<int32_t>(most);
        moves.id = vst3.Find(turn % 2 == 0 ? "Dry / Wet" : "MIDI controller 7");
        moves.points = {{0, 0.3}, {frames / 2, 0.7}, {frames + 5, 0.5}};
        vst3.Run(frames, &moves);
    });
}

/// Dry only and fully: what comes out is what went in, late by the latency.
TEST(Vst3Test, AutomationCountsAtItsFrameInAnyCutAndWidth) {
    const auto render = [](int32_t cut, int32_t size) {
        auto vst3 = std::make_unique<Vst3>(3, size);
        vst3->Restore(With(vst3->Save(), "\"seed\": 7", "\"Feedback\": 0.1"));
        Moves moves;
        moves.id = vst3->Find("Dry / Wet");
        std::vector<float> heard;
        for (int32_t frame = 0; frame < 24000; frame += cut) {
            moves.points.clear();
            for (int32_t n = 0; n < cut; ++n) {
                const float sample = std::sin(static_cast<float>(frame + n) * 0.03f) * 0.5f;
                vst3->floats[0][n] = vst3->floats[1][n] = sample;
                vst3->doubles[0][n] = vst3->doubles[1][n] = static_cast<double>(sample);
                if ((frame + n) % 3000 == 1234)
                    moves.points.emplace_back(n, (frame + n) / 3000 % 2 == 0 ? 0.1 : 0.9);
            }
            vst3->Run(cut, &moves);
            for (int32_t n = 0; n < cut; ++n)
                heard.push_back(size == V3_SAMPLE_64 ? static_cast<float>(vst3->doubles[4][n])
                                                     : vst3->floats[4][n]);
        }
        heard.resize(24000);
        return heard;
    };
    const std::vector<float> whole = render(2000, V3_SAMPLE_32);
    EXPECT_EQ(whole, render(2, V3_SAMPLE_32));
    EXPECT_EQ(whole, render(2000, V3_SAMPLE_64));
    EXPECT_GT(*std::max_element(whole.begin(), whole.end()), 0.1f);
}

TEST(Vst3Test, SideChainMonoMidiAndTailReachTheInstrument) {
    // The dry sound of one channel on both, until the follower hears the side-chain.
    Vst3 mono(V3_SPEAKER_M);
    mono.Restore(With(mono.Save(), "\"seed\": 7",
                      R"("Modulations_Dst1_Src1_Amount": 1.0,
                         "Envelope Follower Source": 1.0, "Envelope Follower Gain": 1.0)"));
    Moves moves;
    moves.id = mono.Find("Dry / Wet");
    moves.points = {{0, 0.0}};
    for (const float side : {0.0f, 0.9f}) {
        std::fill_n(mono.floats[0], Vst3::kMost, 0.25f);
        std::fill_n(mono.floats[3], Vst3::kMost, side);
        for (int i = 0; i < 20; ++i)
            mono.Run(Vst3::kMost, &moves);
        EXPECT_EQ(mono.floats[5][2000] > 0.2f, side == 0.0f) << mono.floats[5][2000];
        EXPECT_EQ(mono.floats[5][2000], mono.floats[4][2000]);
    }

    Vst3 vst3;
    const v3_param_id dryWet = vst3.Find("Dry / Wet");
    vst3.Restore(With(vst3.Save(), R"("midi": [{"source": "controller", "number": 7,
                                                "parameter": "Dry / Wet"}])"));
    moves.id = vst3.Find("MIDI controller 7");
    moves.points = {{100, 1.0}};
    vst3.Run(512, &moves);
    vst3.Run(512);
    EXPECT_EQ(vst3.Place(dryWet), 1.0);

    std::this_thread::sleep_for(std::chrono::milliseconds(700));
    const uint32_t tail = v3_cpp_obj(vst3.processor)->get_tail_samples(vst3.processor);
    EXPECT_TRUE(tail > 4800 && tail < 48000 * 60) << tail;
}

}  // namespace Quorvan::test

int main(int argc, char** argv) {
    if (!Quorvan::test::Begin(argc, argv))
        return 2;
    Quorvan::test::Symbol<bool (*)(void*)>("ModuleEntry")(nullptr);
    return RUN_ALL_TESTS();
}
