#include "effects/Reverb.h"

#include "EffectLoop.h"

// The counter "frame" is the time for one stereo frame.
namespace Quorvan {
namespace {

using dsp::DattorroCore;
using dsp::Reverb;

struct Room : test::EffectLoop<Reverb> {
    explicit Room(int64_t early, float size = 1.0f) : EffectLoop("Reverb") {
        effect.SetParameterValue(DattorroCore::Predelay, 0.02f);
        effect.SetParameterValue(DattorroCore::Damping, 0.2f);
        effect.SetParameterValue(DattorroCore::Size, size);
        effect.SetParameterValue(Reverb::LPBandWith, 15000.0f);
        effect.SetParameterValue(Reverb::HPBandWith, 200.0f);
        effect.SetParameterNormalized(Reverb::EarlyOn, static_cast<float>(early));
        effect.SetParameterValue(Reverb::EarlyMix, 0.3f);
        effect.Reset(false);
    }
};

/// The oscillators run, all else rests.
void BM_ReverbAtRest(benchmark::State& state) {
    Room room(state.range(0), static_cast<float>(state.range(1)) * 0.1f);
    room.Settle(2.0);
    room.Measure(state);
}
BENCHMARK(BM_ReverbAtRest)->ArgNames({"early", "size"})->ArgsProduct({{0, 1}, {1, 10, 19}});

/// Every row, and with early reflections their size, moves in every block.
void BM_ReverbMoving(benchmark::State& state) {
    Room room(state.range(0));
    for (uint32_t channel = 2; channel <= 9; ++channel)
        room.Move(channel, 0.1f, 0.3 * channel);
    room.Settle(1.0);
    float turned = 0.0f;
    room.Measure(state, [&] {
        turned = turned < 1.0f ? turned + 0.003f : 0.0f;
        room.effect.SetParameterNormalized(Reverb::EarlySize, turned);
        room.effect.SetParameterNormalized(Reverb::MSMix, turned);
        room.effect.SetParameterNormalized(Reverb::OutputGain, 0.4f + 0.2f * turned);
    });
}
BENCHMARK(BM_ReverbMoving)->ArgName("early")->Arg(0)->Arg(1);

}  // namespace
}  // namespace Quorvan
