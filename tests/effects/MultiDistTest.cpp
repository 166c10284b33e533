#include "effects/MultiDist.h"

#include <numeric>

#include "effects/CompensatedMultiDist.h"
#include "support/PlainParts.h"
#include "support/SideBySide.h"

namespace Quorvan::dsp {
namespace {

using Rig = EffectRig<MultiDist>;

constexpr int32_t kTypes = 13;
constexpr int32_t kFold = 7, kStaircase = 8;

/// An exponential from (x0, y0) to (x1, y1), or a line.
struct Piece {
    double x0, y0, x1, y1, tension = 0.0;

    double At(double x) const {
        const double t = tension, u = t > 0.0 ? (x1 - x) / (x1 - x0) : (x - x0) / (x1 - x0);
        const double g = t == 0.0 ? u : std::expm1(-std::abs(t) * u) / std::expm1(-std::abs(t));
        return t > 0.0 ? y1 + (y0 - y1) * g : y0 + (y1 - y0) * g;
    }
};

/// Curves that run through pieces, and stay where the outer ones end.
double Pieces(int32_t type, double x) {
    static std::map<int32_t, std::vector<Piece>> all{
        {2, {{0, 0, 0.5, 1}}},
        {4,
         {{-1, -0.5821325, -0.9375, -0.60230547, 2},
          {-0.9375, -0.60230547, -0.25, -1, 1.2114142},
          {-0.25, -1, 0, 0, 0.7714677},
          {0, 0, 0.058495, 0.3170028},
          {0.058495, 0.3170028, 0.718663, 1, -2.2265773},
          {0.718663, 1, 1, 0.9052924, -0.34447402}}},
        {5,
         {{-0.5, -1, -0.125, -0.5, -2.6771033},
          {-0.125, -0.5, 0, 0},
          {0, 0, 0.375, 0.5},
          {0.375, 0.5, 0.625, 1, -3.3231502}}},
        {9,
         {{0, 0, 0.125, 0.25, -4.72403},
          {0.125, 0.25, 0.25, 0, 4.72403},
          {0.25, 0, 1, 1, -13.693368}}},
        {10,
         {{0, 0, 0.06552262, 0.29668674, -1.9456403},
          {0.06552262, 0.29668674, 0.079563186, 0.49246988, 4.5245762},
          {0.079563186, 0.49246988, 0.3978159, 0.93524098, -1.4062476},
          {0.3978159, 0.93524098, 0.54446173, 1, -0.67869568}}},
        {11,
         {{0, 0, 0.125, 0.25, -2.999285}, {0.125, 0.25, 0.1875, 0.25}, {0.1875, 0.25, 0.5625, 1}}},
        {12,
         {{0, 0, 0.1875, 0.375},
          {0.1875, 0.375, 0.25, 0.25},
          {0.25, 0.25, 0.375, 0.75},
          {0.375, 0.75, 1, 1, -10.496884}}}};
    auto& pieces = all[type];
    for (int k = 0; type == 6 && pieces.size() < 10; ++k)
        pieces.push_back({0.05625 * k, 0.09375 * k, 0.05625 * (k + 1), 0.09375 * (k + 1),
                          k % 2 == 0 ? -3.6384306 : 3.6384306});
    if (type == 6)
        pieces.resize(11, {0.5625, 0.9375, 1, 1, -15.788583});
    for (const Piece& piece : pieces)
        if (x < piece.x1)
            return x < piece.x0 ? piece.y0 : piece.At(x);
    return pieces.back().y1;
}

double Curve(int32_t type, double x) {
    const double a = std::abs(x);
    switch (type) {
        case 0:
            return std::copysign(2.0501223 * a / (2.055593 * 0.83233666 * a + 0.5536444), x);
        case 1:
            return std::copysign(
                a < 1.0 / 3.0 ? 2.0 * a : 1.0 - std::pow(std::max(2.0 - 3.0 * a, 0.0), 2.0) / 3.0,
                x);
        case 3:
            return x >= 1.0 ? 1.0 : std::copysign(Piece{0, 0, 1, 1, -4.5781655}.At(a), x);
        case 4:
        case 5:
            return Pieces(type, x);
        case kFold: {
            const double v = std::fmod(x, 0.5);
            if (x > 0.0)
                return v < 0.25 ? 4.0 * v : 2.0 - 4.0 * v;
            return v > -0.25 ? Piece{0, 0, -0.25, -1, -4.7152257}.At(v)
                             : Piece{-0.25, -1, -0.5, 0, 4.7152257}.At(v);
        }
        case kStaircase: {
            // In single precision, where the steps are.
            const float w = 2.0f * static_cast<float>(a) - 0.9411765f;
            return std::copysign(
                w >= 1.0f ? 1.0 : static_cast<int>((w + 1.0f) * 135.995f) / 17 / 16.0, x);
        }
        default:
            return std::copysign(Pieces(type, a), x);
    }
}

double CompensationDb(int32_t type, double d) {
    const std::map<int32_t, std::array<double, 4>> quotients{
        {0, {5.2401018, 0.6271368, 0.01776156, 0.000223976}},
        {1, {4.927435, 0.7415558, 0.02240797, 0.00035916021}},
        {2, {4.927435, 0.7415558, 0.02240797, 0.00035916021}},
        {5, {3.2427361, 0.61995, 0.0023799371, 0.00060628232}},
        {6, {-0.96536648, 1.2581609, 0.0309995, 0.00090610079}},
        {9, {11.15924, 0.38153979, 0.02232071, 0.000079732352}},
        {11, {3.450327, 0.34462371, -0.01242106, 0.00047316551}},
        {12, {6.42352, 0.6011539, 0.01792721, 0.00035718811}}};
    if (const auto found = quotients.find(type); found != quotients.end()) {
        const auto& [p, q, r, s] = found->second;
        return -(p + q * d) / (1 + r * d + s * d * d);
    }
    if (type == kStaircase)
        return -12.92433 / (1 + 10.03912 * std::exp2(-0.39682713 * d));
    return -10.30087 - 0.1658369 * d + 0.0028138531 * d * d - 0.00001262626 * d * d * d;
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
            worst = std::max(worst, std::abs(Curve(type, x[i]) - y[i]));
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
        Stereo result{Channel(count, kStale), Channel(count, kStale)};
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
