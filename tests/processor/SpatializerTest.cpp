// Figures and random walk of the spatialiser, as the auxiliary outputs show the position.
#include "support/ProcessorRig.h"
#include "support/Test.h"

namespace Quorvan::Processor {
namespace {

/// The figures' own table: rate of Y against X, and the start phases of Y.
struct Figure {
    double ratio, phase, invertedPhase;
};
constexpr Figure kFigures[] = {{0.0, 0.75, 0.75}, {2.0, 0.125, 0.625}, {1.0, 0.25, 0.75},
                               {2.0, 0.0, 0.5},   {0.5, 0.0, 0.25},    {0.6666667, 0.0, 0.0},
                               {1.0, 0.0, 0.5},   {8.0, 0.0, 0.0}};
constexpr uint32_t kWalk = 8;
/// Lengths of the synced rates, in whole notes.
constexpr double kNotes[] = {8.0,        4.0,        2.0,         1.0500549,  0.52502745,
                             0.26251373, 0.13125686, 0.065628432, 0.032814216};

float NinthOf(uint32_t index) { return (static_cast<float>(index) + 0.5f) / 9.0f; }

/// Full depth on both axes; keeps the positions, 0..1, block by block.
class SpaceRig : public ProcessorRig {
public:
    SpaceRig() : ProcessorRig(24000.0f) {
        SetAll("Spatializer Enable=1;Spatializer Amount=1;Spatializer Distance=1");
    }
    /// Forgets the positions so far, unless told otherwise.
    SpaceRig& Blocks(uint32_t count, bool keeps = false) {
        Channel input(blockSize), output(blockSize);
        if (!keeps)
            x = y = {};
        for (uint32_t k = 0; k < count; ++k) {
            RunBlock({input.data(), input.data()}, {output.data(), output.data()});
            x.push_back(scratch[2][0]);
            y.push_back(scratch[3][0]);
        }
        return *this;
    }
    double BlocksPerSecond() const { return static_cast<double>(rate) / blockSize; }

    std::vector<float> x, y;
};

/// Rate in hertz of a run through the middle, by its upward crossings; 0 with fewer than two.
double RateOf(const std::vector<float>& path, double perSecond) {
    double first = -1.0, last = -1.0;
    int count = -1;
    for (size_t i = 1; i < path.size(); ++i) {
        if (!(path[i - 1] < 0.5f && path[i] >= 0.5f))
            continue;
        const double step = static_cast<double>(path[i] - path[i - 1]);
        last = static_cast<double>(i) - static_cast<double>(path[i] - 0.5f) / step;
        first = first < 0.0 ? last : first;
        ++count;
    }
    return count > 0 ? count * perSecond / (last - first) : 0.0;
}

double OnCircle(double phase) { return 0.5 + 0.5 * std::sin(2.0 * std::numbers::pi * phase); }

TEST(SpatializerTest, FiguresRunTheirAxesInTheirRatiosFreeAndSynced) {
    const double factors[] = {0.0, 1.0, 2.0 / 3.0, 1.5};  // of the kinds of notes; 0 is free
    for (uint32_t k = 0; k < kWalk; ++k)
        for (uint32_t type = 0; type <= 3; ++type) {
            SCOPED_TRACE("figure " + std::to_string(k) + " type " + std::to_string(type));
            SpaceRig rig;
            rig.tempo = 150.0f;
            const uint32_t note = type == 2 ? 7 : 6;
            rig.Set("Spatializer Trajectory", NinthOf(k))
                .Set("Spatializer Rate Type", (static_cast<float>(type) + 0.5f) / 4.0f)
                .Set("Spatializer Rate UnSynced", 0.875f)
                .Set("Spatializer Rate Synced", NinthOf(note));
            const double hertz = type == 0 ? 0.1 + 19.9 * std::pow(0.875, 7.0)
                                           : 150.0 / 240.0 / (kNotes[note] * factors[type]);
            const double ratio = kFigures[k].ratio == 0.0 ? 1.0 : kFigures[k].ratio;
            const double slower = std::max(ratio, 1.0 / ratio);
            rig.Blocks(2).Blocks(
                static_cast<uint32_t>(2200.0 * slower / hertz));  // two rounds and more
            // The knob's rate is that of the faster axis.
            const double figure = kFigures[k].ratio;
            const double rateX = figure < 1.0 ? hertz : hertz / figure;
            const double rateY = figure < 1.0 ? hertz * figure : hertz;
            EXPECT_NEAR(RateOf(rig.x, rig.BlocksPerSecond()), rateX, 0.003 * rateX);
            EXPECT_NEAR(RateOf(rig.y, rig.BlocksPerSecond()), rateY, 0.003 * rateY);
        }
}

TEST(SpatializerTest, AFigureStartsAtItsPhaseAndInvertMovesY) {
    for (uint32_t k = 0; k < kWalk; ++k) {
        const Figure& figure = kFigures[k];
        SpaceRig rig;
        rig.Set("Spatializer Rate UnSynced", 0.5f).Set("Spatializer Trajectory", NinthOf(kWalk));
        rig.Blocks(100).Set("Spatializer Trajectory", NinthOf(k));
        rig.Blocks(1).Blocks(1);  // the outputs are one block behind
        EXPECT_NEAR(rig.x[0], 0.5f, 1e-4f) << k;
        EXPECT_NEAR(rig.y[0], OnCircle(figure.phase), 1e-4) << k;
        // Y stands on by the jump of its phase, X as it was.
        SpaceRig plain, inverted;
        for (SpaceRig* each : {&plain, &inverted})
            each->Set("Spatializer Rate UnSynced", 0.5f).Set("Spatializer Trajectory", NinthOf(k));
        plain.Blocks(106);
        inverted.Blocks(100).Set("Spatializer Invert", 1.0f);
        inverted.Blocks(6, true);
        const double hertz = 0.1 + 19.9 * std::pow(0.5, 7.0);
        const double rateY = figure.ratio < 1.0 ? hertz * figure.ratio : hertz;
        const double time = 104.0 / plain.BlocksPerSecond();
        EXPECT_NEAR(plain.y[105], OnCircle(figure.phase + rateY * time), 1e-3) << k;
        EXPECT_NEAR(inverted.y[105], OnCircle(figure.invertedPhase + rateY * time), 1e-3) << k;
        EXPECT_EQ(plain.x, inverted.x) << k;
    }
}

TEST(SpatializerTest, EnablingRestartsTheFigureAndDisablingLetsItRunUnheard) {
    SpaceRig rig;
    rig.Set("Spatializer Trajectory", NinthOf(6)).Set("Spatializer Rate UnSynced", 0.7f);
    rig.Blocks(150).Set("Spatializer Enable", 0.0f);
    EXPECT_EQ(rig.Get("MoteWeaver_SpatializerEnabled"), 0.0f);
    rig.Blocks(2);
    const float phase = rig.Get("LFO_Stereo_X_CurrentPhaseFeedback");
    rig.Blocks(50);
    EXPECT_EQ(rig.x, Channel(50, 0.5f));
    EXPECT_EQ(rig.y, Channel(50, 0.0f));
    EXPECT_NE(rig.Get("LFO_Stereo_X_CurrentPhaseFeedback"), phase);
    rig.Set("Spatializer Enable", 1.0f);
    EXPECT_EQ(rig.Get("MoteWeaver_SpatializerEnabled"), 1.0f);
    rig.Blocks(1).Blocks(1);
    EXPECT_NEAR(rig.x[0], 0.5f, 1e-4f);
    EXPECT_NEAR(rig.y[0], 0.5f, 1e-4f);
}

TEST(SpatializerTest, DepthsScaleTheAxes) {
    SpaceRig rig;
    rig.SetAll("Spatializer Rate UnSynced=0.9;Spatializer Amount=0.25;Spatializer Distance=0.5");
    rig.Set("Spatializer Trajectory", NinthOf(6));
    rig.Blocks(1000);
    const float distance = (std::exp(1.5f) - 1.0f) / (std::exp(3.0f) - 1.0f);
    for (const auto& [path, from, to] :
         {std::tuple(rig.x, 0.375f, 0.625f), {rig.y, 0.0f, distance}}) {
        const auto [low, high] = std::minmax_element(path.begin() + 2, path.end());
        EXPECT_NEAR(*low, from, 1e-3f);
        EXPECT_NEAR(*high, to, 1e-3f);
    }
}

TEST(SpatializerTest, TheWalkTakesStepsOfItsRateOnOneAxisAtATimeAndStaysInside) {
    SpaceRig rig;
    rig.SetAll("Spatializer Trajectory=1;Spatializer Rate UnSynced=0.75");
    rig.Blocks(2).Blocks(6000);
    const float hertz = 0.1f + 19.9f * std::pow(0.75f, 7.0f);
    const float step = hertz / 30.0f;  // of X in -1..1, that is half as much in positions
    int movesX = 0, movesY = 0;
    for (size_t i = 1; i < rig.x.size(); ++i) {
        const float dx = 2.0f * std::abs(rig.x[i] - rig.x[i - 1]);
        const float dy = std::abs(rig.y[i] - rig.y[i - 1]);
        EXPECT_TRUE(std::min(dx, dy) == 0.0f && std::max(dx, dy) < step * 1.001f) << i;
        movesX += std::abs(dx - step) < 1e-5f;
        movesY += std::abs(dy - step) < 1e-5f;
    }
    // Half of the blocks move X; at the ends steps are cut short or unseen.
    EXPECT_TRUE(movesX > 1500 && movesY > 500);
    // The LFOs keep the rates that they had, at the figure that construction leaves.
    EXPECT_EQ(rig.Get("LFO_Stereo_Y_RateUnSynced"), 0.0f);
}

}  // namespace
}  // namespace Quorvan::Processor
