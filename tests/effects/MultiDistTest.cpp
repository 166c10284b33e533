#include "effects/MultiDist.h"

#include <numeric>

#include "effects/CompensatedMultiDist.h"
#include "effects/DistortionCurves.h"
#include "effects/DistortionLevel.h"
#include "support/PlainParts.h"
#include "support/SideBySide.h"

namespace Quorvan::dsp {
namespace {

using Rig = EffectRig<MultiDist>;

constexpr int32_t kTypes = 13;
constexpr int32_t kFold = 7, kStaircase = 8;

/// What each curve's formula gives in double precision: its mean over -1.5..1.5 against three
/// waves, and the decibels that make up for a drive of 0, 12 and 48 dB.
constexpr double kFormulas[kTypes][6] = {
    {0.2884117, -0.0190298, -0.0012926, -5.2401, -10.2504, -14.9214},
    {0.3270529, -0.0216942, -0.0014487, -4.9274, -10.4694, -13.9583},
    {0.3298438, -0.0211275, -0.0017327, -4.9274, -10.4694, -13.9583},
    {0.3333967, -0.0191074, -0.0014005, -10.3009, -11.9075, -13.1743},
    {0.2352718, -0.0000230, 0.0000695, -10.3009, -11.9075, -13.1743},
    {0.3019832, -0.0071126, -0.0015768, -3.2427, -9.5730, -13.1417},
    {0.3177474, -0.0189234, -0.0021281, 0.9654, -9.4062, -12.9876},
    {0.2301190, -0.0523907, -0.0016013, -10.3009, -11.9075, -13.1743},
    {0.2597549, -0.0211267, -0.0014177, -1.1708, -9.4338, -12.9241},
    {0.3295343, -0.0261733, 0.0020863, -11.1592, -12.3015, -13.0696},
    {0.3456585, -0.0146095, -0.0016453, -10.3009, -11.9075, -13.1743},
    {0.3196632, -0.0153482, -0.0008983, -3.4503, -8.2537, -13.3820},
    {0.3256004, -0.0195450, -0.0002882, -6.4235, -10.7672, -13.1468}};

double CompensationDb(int32_t type, double drive) {
    const auto from = static_cast<float>(drive);
    float decibels = 0.0f;
    FillLevelCompensation(type, &from, &decibels, 1);
    return double{decibels};
}

double Gain(double decibels) { return std::pow(10.0, decibels / 20.0); }

TEST(DistortionCurvesTest, FollowTheirFormulas) {
    constexpr int32_t kHalf = 30000;
    for (int32_t type = 0; type < kTypes; ++type) {
        const auto& wanted = kFormulas[type];
        std::vector<float> y{-1.0e30f, 1.0e30f};
        for (int32_t k = -kHalf; k <= kHalf; ++k)
            y.push_back(static_cast<float>(k) * 5.0e-5f);
        const std::vector<float> x = y;
        DistortionCurves::Instance().Apply(type, y.data(), static_cast<uint32_t>(y.size()));
        EXPECT_LT(std::max(-y[0], y[1]), 1.2f) << type;
        for (size_t wave = 0; wave < 3; ++wave) {
            double sum = 0.0;
            for (size_t i = 2; i < x.size(); ++i)
                sum += double{y[i]} * std::sin(std::array{2.0, 13.0, 47.0}[wave] * x[i] + 1.0);
            EXPECT_NEAR(sum / (2 * kHalf + 1), wanted[wave], 2.0e-7) << type << " " << wave;
        }
        for (const auto& [k, drive] : {std::pair{3, 0.0}, {4, 12.0}, {5, 48.0}})
            EXPECT_NEAR(CompensationDb(type, drive), wanted[k], 1.0e-3) << type << " " << drive;
    }
}

/// The distortion with its parameters read block by block, on its own curves and resamplers.
class Plain {
public:
    Plain(MultiDist& distortion, float sampleRate, uint32_t blockFrames)
        : knobs(distortion),
          steps(blockFrames),
          drive{.rate = double{sampleRate}, .time = 0.002},
          output(drive) {
        output.Put(1.0);
    }

    void Reset(bool) {
        for (prims::UpDownsampler& one : resamplers)
            one = prims::UpDownsampler(2, 1);
        output.Put(Gain(double{knobs.Get(MultiDist::OutputGain)}));
        first = true;
    }

    Stereo Run(const Stereo& input, bool) {
        const auto count = static_cast<uint32_t>(input[0].size());
        const auto type = static_cast<int32_t>(knobs.Get(MultiDist::DistType));
        const double driveDb{knobs.Get(MultiDist::Drive, 2)};
        if (std::exchange(first, false))
            drive.Put(driveDb);
        const std::vector<double> d = drive.Run(driveDb, count, steps);
        const std::vector<double> level =
            output.Run(Gain(double{knobs.Get(MultiDist::OutputGain)}), count, steps);
        Stereo result{Channel(count, kStale), Channel(count, kStale)};
        for (size_t c = 0; c < (knobs.IsOn(MultiDist::Stereo) ? 2 : 1); ++c) {
            Channel driven, fast(2 * count);
            for (uint32_t i = 0; i < count; ++i)
                driven.push_back(static_cast<float>(double{input[c][i]} * Gain(d[i])));
            resamplers[c].Upsample(driven.data(), fast.data(), count);
            DistortionCurves::Instance().Apply(type, fast.data(), 2 * count);
            resamplers[c].Downsample(fast.data(), result[c].data(), count);
            for (uint32_t i = 0; i < count; ++i) {
                const double compensation =
                    knobs.IsOn(MultiDist::AutoComp) ? Gain(CompensationDb(type, d[i])) : 1.0;
                result[c][i] = static_cast<float>(double{result[c][i]} * level[i] * compensation);
            }
        }
        return result;
    }

    PlainKnobs<MultiDist> knobs;

private:
    uint32_t steps;
    bool first = true;
    RampedPole drive, output;
    std::array<prims::UpDownsampler, 2> resamplers{{{2, 1}, {2, 1}}};
};

// Drives up to 30 dB: beyond, the rounding of the resamplers shows where a loud signal crosses
// zero. The fold is steep throughout. The staircase would flip a step here and there and stays at 0
// dB, where the drive is exact.
TEST(MultiDistTest, MatchesAPlainModelWhileEverythingMoves) {
    for (const float rate : kRates) {
        for (int32_t type = 0; type < kTypes; ++type) {
            Rig rig(rate);
            rig.Set(MultiDist::DistType, static_cast<float>(type));
            rig.Set(MultiDist::Stereo, 1.0f);
            Plain model(rig.module, rate, BlockOf(rate));
            SideBySide pair(rig, model, rate);
            pair.mayLackRight = false;
            const float worst = pair.WorstError(400, [&](uint32_t number) {
                if (type != kStaircase && pair.dice.Chance(0.15f))
                    rig.SetPosition(MultiDist::Drive, pair.dice.Between(0.0f, 0.4f));
                if (type != kStaircase && pair.dice.Chance(0.1f))
                    pair.Modulate(2, pair.dice.Between(-0.1f, 0.1f));
                for (const uint32_t id : {MultiDist::OutputGain, MultiDist::AutoComp})
                    if (pair.dice.Chance(0.1f))
                        rig.SetPosition(id, pair.dice.Unit());
                if (number % 100 == 70)
                    rig.Set(MultiDist::Stereo, number == 270 ? 1.0f : 0.0f);
                if (number % 200 == 150)
                    pair.Reset(number == 150);
            });
            EXPECT_LT(worst, type == kFold ? 1.0e-4f : 2.0e-5f) << type << " at " << rate;
        }
    }
}

TEST(CompensatedMultiDistTest, InputGainMovesAlongTheCurveAndNotTheLevel) {
    using Module = Processor::CompensatedMultiDist;
    EffectRig<Module> rig;
    rig.Set(MultiDist::DistType, 2.0f);
    const auto levels = [&rig](float inputDb) {
        rig.Set(Module::InGainCompensated, inputDb);
        std::pair<float, float> rms;
        for (auto& [level, amplitude] : {std::pair{&rms.first, 0.1f}, {&rms.second, 0.9f}}) {
            const Channel tone = Sine(500.0, 48000.0, 9600, amplitude),
                          out = rig.Run({tone, tone})[1];
            const float square =
                std::inner_product(out.begin() + 4800, out.end(), out.begin() + 4800, 0.0f);
            *level = std::sqrt(square / 2400.0f) / amplitude;
        }
        return rms;
    };
    const auto [small, loud] = levels(0.0f);
    EXPECT_LT(loud, 0.75f * small);  // clipped
    const auto [smallBelow, loudBelow] = levels(-24.0f);
    EXPECT_NEAR(smallBelow, small, 1.0e-3f);
    EXPECT_NEAR(loudBelow, small, 1.0e-3f);
}

}  // namespace
}  // namespace Quorvan::dsp
