#include "effects/MultiDist.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>
#include <vector>

#include "effects/CompensatedMultiDist.h"
#include "support/ModuleRig.h"
#include "support/RampedPole.h"
#include "support/SideBySide.h"

namespace Quorvan::dsp {
namespace {

using test::Channel;
using test::Stereo;
using Rig = test::EffectRig<MultiDist>;

constexpr int32_t kTypes = 13;
constexpr int32_t kFold = 7, kStaircase = 8;

/// The exponential from (x0, y0) to (x1, y1).
double T(double x0, double y0, double x1, double y1, double x, double tension) {
    const double u = tension > 0.0 ? (x1 - x) / (x1 - x0) : (x - x0) / (x1 - x0);
    const double g = std::expm1(-std::abs(tension) * u) / std::expm1(-std::abs(tension));
    return tension > 0.0 ? y1 + (y0 - y1) * g : y0 + (y1 - y0) * g;
}

double FallingEnds(double x) {
    if (x < -1.0 || x >= 1.0)
        return x < 0.0 ? -0.5821325 : 0.9052924;
    if (x < -0.9375)
        return T(-1, -0.5821325, -0.9375, -0.60230547, x, 2);
    if (x < -0.25)
        return T(-0.9375, -0.60230547, -0.25, -1, x, 1.2114142);
    if (x < 0.0)
        return T(-0.25, -1, 0, 0, x, 0.7714677);
    if (x < 0.058495)
        return 5.4193144 * x;
    if (x < 0.718663)
        return T(0.058495, 0.3170028, 0.718663, 1, x, -2.2265773);
    return T(0.718663, 1, 1, 0.9052924, x, -0.34447402);
}

double TwoSides(double x) {
    if (x < -0.125)
        return x < -0.5 ? -1.0 : T(-0.5, -1, -0.125, -0.5, x, -2.6771033);
    if (x < 0.375)
        return x < 0.0 ? 4.0 * x : x / 0.75;
    return x < 0.625 ? T(0.375, 0.5, 0.625, 1, x, -3.3231502) : 1.0;
}

double Fold(double x) {
    if (x > 0.0) {
        const double phase = std::fmod(x, 0.5);
        return phase < 0.25 ? 4.0 * phase : 2.0 - 4.0 * phase;
    }
    const double v = std::fmod(x, 0.5);
    return v > -0.25 ? T(0, 0, -0.25, -1, v, -4.7152257) : T(-0.25, -1, -0.5, 0, v, 4.7152257);
}

/// The curves that are odd, for magnitudes.
double OddCurve(int32_t type, double a) {
    switch (type) {
        case 0:
            return 2.0501223 * a / (2.055593 * 0.83233666 * a + 0.5536444);
        case 1:
            if (a >= 1.0 / 3.0)
                return a > 2.0 / 3.0 ? 1.0 : 1.0 - std::pow(2.0 - 3.0 * a, 2.0) / 3.0;
            return 2.0 * a;
        case 2:
            return std::min(2.0 * a, 1.0);
        case 6: {
            if (a >= 0.5625)
                return a < 1.0 ? T(0.5625, 0.9375, 1, 1, a, -15.788583) : 1.0;
            const double k = std::floor(a / 0.05625);
            return T(0.05625 * k, 0.09375 * k, 0.05625 * (k + 1), 0.09375 * (k + 1), a,
                     std::fmod(k, 2.0) == 0.0 ? -3.6384306 : 3.6384306);
        }
        case kStaircase: {
            // In single precision, where the steps are.
            const float w = 2.0f * static_cast<float>(a) - 0.9411765f;
            return w >= 1.0f ? 1.0 : static_cast<int>((w + 1.0f) * 135.995f) / 17 / 16.0;
        }
        case 9:
            if (a < 0.25)
                return a < 0.125 ? T(0, 0, 0.125, 0.25, a, -4.72403)
                                 : T(0.125, 0.25, 0.25, 0, a, 4.72403);
            return a < 1.0 ? T(0.25, 0, 1, 1, a, -13.693368) : 1.0;
        case 10:
            if (a < 0.079563186)
                return a < 0.06552262
                           ? T(0, 0, 0.06552262, 0.29668674, a, -1.9456403)
                           : T(0.06552262, 0.29668674, 0.079563186, 0.49246988, a, 4.5245762);
            if (a < 0.3978159)
                return T(0.079563186, 0.49246988, 0.3978159, 0.93524098, a, -1.4062476);
            return a < 0.54446173 ? T(0.3978159, 0.93524098, 0.54446173, 1, a, -0.67869568) : 1.0;
        case 11:
            if (a < 0.1875)
                return a < 0.125 ? T(0, 0, 0.125, 0.25, a, -2.999285) : 0.25;
            return a < 0.5625 ? 2.0 * a - 0.125 : 1.0;
        default:
            if (a < 0.375)
                return a < 0.1875 ? 2.0 * a : a < 0.25 ? 0.75 - 2.0 * a : 4.0 * a - 0.75;
            return a < 1.0 ? T(0.375, 0.75, 1, 1, a, -10.496884) : 1.0;
    }
}

double Curve(int32_t type, double x) {
    if (type == 3)
        return x >= 1.0 ? 1.0 : std::copysign(T(0, 0, 1, 1, std::abs(x), -4.5781655), x);
    if (type == 4)
        return FallingEnds(x);
    if (type == 5)
        return TwoSides(x);
    if (type == kFold)
        return Fold(x);
    return std::copysign(OddCurve(type, std::abs(x)), x);
}

double CompensationDb(int32_t type, double d) {
    switch (type) {
        case 0:
            return -(5.2401018 + 0.6271368 * d) / (1 + 0.01776156 * d + 0.000223976 * d * d);
        case 1:
        case 2:
            return -(4.927435 + 0.7415558 * d) / (1 + 0.02240797 * d + 0.00035916021 * d * d);
        case 5:
            return -(3.2427361 + 0.61995 * d) / (1 + 0.0023799371 * d + 0.00060628232 * d * d);
        case 6:
            return (0.96536648 - 1.2581609 * d) / (1 + 0.0309995 * d + 0.00090610079 * d * d);
        case kStaircase:
            return -12.92433 / (1 + 10.03912 * std::exp2(-0.39682713 * d));
        case 9:
            return -(11.15924 + 0.38153979 * d) / (1 + 0.02232071 * d + 0.000079732352 * d * d);
        case 11:
            return -(3.450327 + 0.34462371 * d) / (1 - 0.01242106 * d + 0.00047316551 * d * d);
        case 12:
            return -(6.42352 + 0.6011539 * d) / (1 + 0.01792721 * d + 0.00035718811 * d * d);
        default:
            return -10.30087 - 0.1658369 * d + 0.0028138531 * d * d - 0.00001262626 * d * d * d;
    }
}

double Gain(double decibels) { return std::pow(10.0, decibels / 20.0); }

TEST(DistortionCurvesTest, FollowTheirFormulas) {
    for (int32_t type = 0; type < kTypes; ++type) {
        std::vector<float> x;
        for (int32_t k = -40000; k <= 40000; ++k)
            x.push_back(static_cast<float>(k) * 1.0e-4f / 3.0f);  // past 1 on both sides
        for (const float far : {-2000.0f, -3.7f, 2.9f, 1000.1f, 1.0e30f})
            x.push_back(far);
        std::vector<float> y = x;
        DistortionCurves::Instance().Apply(type, y.data(), static_cast<uint32_t>(y.size()));
        double worst = 0.0;
        for (size_t i = 0; i < x.size(); ++i)
            worst = std::max(worst, std::abs(Curve(type, static_cast<double>(x[i])) -
                                             static_cast<double>(y[i])));
        // The bounds between pieces are rounded, and some curves are steep or bent there.
        EXPECT_LT(worst, 1.5e-6) << type;
    }
}

/// The distortion with its parameters read block by block, on the class's own resamplers.
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
        Stereo result{Channel(count, test::kStale), Channel(count, test::kStale)};
        for (size_t c = 0; c < (knobs.IsOn(MultiDist::Stereo) ? 2 : 1); ++c) {
            Channel driven, fast(2 * count);
            for (uint32_t i = 0; i < count; ++i)
                driven.push_back(static_cast<float>(double{input[c][i]} * Gain(d[i])));
            resamplers[c].Upsample(driven.data(), fast.data(), count);
            for (float& x : fast)
                x = static_cast<float>(Curve(type, double{x}));
            resamplers[c].Downsample(fast.data(), result[c].data(), count);
            for (uint32_t i = 0; i < count; ++i) {
                const double compensation =
                    knobs.IsOn(MultiDist::AutoComp) ? Gain(CompensationDb(type, d[i])) : 1.0;
                result[c][i] = static_cast<float>(double{result[c][i]} * level[i] * compensation);
            }
        }
        return result;
    }

    test::PlainKnobs<MultiDist> knobs;

private:
    uint32_t steps;
    bool first = true;
    test::RampedPole drive, output;
    std::array<prims::UpDownsampler, 2> resamplers{{{2, 1}, {2, 1}}};
};

// Drives up to 30 dB: beyond, the rounding of the resamplers shows where a loud signal crosses
// zero. The fold is steep throughout. The staircase would flip a step here and there and stays at 0
// dB, where the drive is exact.
TEST(MultiDistTest, MatchesAPlainModelWhileEverythingMoves) {
    for (const float rate : test::kRates) {
        for (int32_t type = 0; type < kTypes; ++type) {
            Rig rig(rate);
            rig.Set(MultiDist::DistType, static_cast<float>(type));
            rig.Set(MultiDist::Stereo, 1.0f);
            Plain model(rig.module, rate, test::BlockOf(rate));
            test::SideBySide pair(rig, model, rate);
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

/// Level of a sine behind a module that has settled, against its own.
template <class M>
float LevelOf(test::ModuleRig<M>& rig, float amplitude) {
    const Channel tone = test::Sine(500.0, 48000.0, 9600, amplitude);
    const Channel output = rig.Run({tone, tone})[1];
    double in = 0.0, out = 0.0;
    for (size_t i = 4800; i < 9600; ++i) {
        in += std::pow(static_cast<double>(tone[i]), 2.0);
        out += std::pow(static_cast<double>(output[i]), 2.0);
    }
    return static_cast<float>(std::sqrt(out / in));
}

TEST(CompensatedMultiDistTest, InputGainMovesAlongTheCurveAndNotTheLevel) {
    using Module = Processor::CompensatedMultiDist;
    test::EffectRig<Module> rig;
    rig.Set(MultiDist::DistType, 2.0f);
    const auto levels = [&rig](float inputDb) {
        rig.Set(Module::InGainCompensated, inputDb);
        return std::pair{LevelOf(rig, 0.1f), LevelOf(rig, 0.9f)};
    };
    const auto [small, loud] = levels(0.0f);
    EXPECT_LT(loud, 0.75f * small);  // clipped
    const auto [smallBelow, loudBelow] = levels(-24.0f);
    EXPECT_NEAR(smallBelow, small, 1.0e-3f);
    EXPECT_NEAR(loudBelow, small, 1.0e-3f);
}

}  // namespace
}  // namespace Quorvan::dsp
