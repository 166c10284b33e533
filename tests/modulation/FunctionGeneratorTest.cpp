#include "modulation/FunctionGenerator.h"

#include "support/GeneratorRig.h"

namespace Quorvan::dsp {
namespace {

using Function = FunctionGenerator<64>;
using Rig = GeneratorRig<Function>;

struct Point {
    float x, y, tension;
};

/// A function of 100 Hz: 480 samples a cycle.
struct Drawn : Rig {
    explicit Drawn(const std::vector<Point>& points, IGenerator::RunMode mode = IGenerator::kLoop)
        : Rig(48000.0f, 48, "Function1") {
        module.Configure(Function::RateUnSynced, PotardKind::kLinear, 0.0f, 2000.0f);
        Set(Function::RateUnSynced, 100.0f);
        Set(Function::Mode, static_cast<float>(mode));
        Draw(points);
    }
    void Draw(const std::vector<Point>& points) {
        Set(Function::LastActivePointIndex, static_cast<float>(points.size() - 1));
        for (uint32_t i = 0; i < points.size(); ++i) {
            Set(Function::PointX1 + i, points[i].x);
            Set(Function::PointY1 + i, points[i].y);
            if (i < 63)
                Set(Function::Tension1 + i, points[i].tension);
        }
    }
    float Feedback(uint32_t id) { return module.Value(id); }
};

const std::vector<Point> kTent{{0.0f, 0.0f, 0.0f}, {0.5f, 1.0f, 0.0f}, {1.0f, 0.0f, 0.0f}};

/// The curve in double precision, straight from its points.
double PlainHeight(std::vector<Point> points, double x) {
    points.front().x = 0.0f;
    for (size_t i = 1; i < points.size(); ++i)
        points[i].x = std::max(points[i].x, points[i - 1].x);
    points.back().x = 1.0f;
    for (size_t i = 0; i + 1 < points.size(); ++i) {
        const Point &a = points[i], &b = points[i + 1];
        if (x >= b.x)
            continue;
        const double t = a.tension, u = (x - a.x) / (b.x - a.x);
        if (std::abs(t) >= 1000.0)
            return t > 0.0 ? a.y : b.y;
        const double share = t == 0.0  ? u
                             : t < 0.0 ? std::expm1(t * u) / std::expm1(t)
                                       : 1.0 - std::expm1(-t * (1.0 - u)) / std::expm1(-t);
        return a.y + (b.y - a.y) * share;
    }
    return points.back().y;
}

TEST(FunctionGeneratorTest, DrawsRandomCurvesLikeAPlainModel) {
    Dice dice(5);
    for (uint32_t round = 0; round < 60; ++round) {
        std::vector<Point> points(2 + round % 63);
        for (Point& point : points) {
            const float kind = dice.Unit();
            point = {dice.Unit(), dice.Unit(), kind < 0.3f ? 0.0f : dice.Between(-20.0f, 20.0f)};
            if (kind > 0.9f)
                point.tension = kind > 0.95f ? 1000.0f : -1000.0f;
        }
        // Some points stay out of order, and the ends off their places.
        if (round % 3 != 0)
            std::ranges::sort(points, {}, &Point::x);
        Drawn function(points);
        const float scale = dice.Between(-1.0f, 1.0f), bipolar = static_cast<float>(round % 2);
        function.Set(Function::Scale, scale);
        function.Set(Function::Bipolar, bipolar);
        function.Blocks(20);
        for (size_t i = 0; i < function.phases.size(); ++i) {
            const double scaled = (PlainHeight(points, function.phases[i]) - 0.5) * scale + 0.5;
            const double wanted = bipolar > 0.5f ? 2.0 * scaled - 1.0 : scaled;
            // Short segments with a bend lose digits of the position in them.
            ASSERT_NEAR(function.outputs[0][i], wanted, 2e-3) << "round " << round << ", " << i;
        }
    }
}

TEST(FunctionGeneratorTest, ReadsThePointsThemselvesAndTheirMirrorImage) {
    Drawn function(
        {{0.0f, 0.2f, 0.0f}, {0.25f, 0.9f, 0.0f}, {0.25f, 0.1f, 0.0f}, {0.3f, 0.6f, 0.0f}});
    function.Block();
    const auto at = [&function](float phase) { return function.module.Evaluate(phase); };
    EXPECT_FLOAT_EQ(at(0.0f), 0.2f);
    EXPECT_NEAR(at(0.2499999f), 0.9f, 1e-5f);
    EXPECT_FLOAT_EQ(at(0.25f), 0.1f);  // an upright segment holds no phase
    EXPECT_EQ(function.Feedback(Function::FeedbackNextPoint), 3.0f);
    EXPECT_FLOAT_EQ(at(1.0f), 0.6f);  // the last point stands at 1
    EXPECT_EQ(function.Feedback(Function::FeedbackNextPoint), 3.0f);
    EXPECT_EQ(function.Feedback(Function::FeedbackPositionInSegment), 1.0f);
    EXPECT_NEAR(at(0.625f), 0.35f, 1e-6f);
    EXPECT_NEAR(function.Feedback(Function::FeedbackPositionInSegment), 0.5f, 1e-6f);

    function.Modulate(1, -0.25f);  // half the travel of Scale
    function.Set(Function::Bipolar, 1.0f);
    function.Block();
    EXPECT_NEAR(at(1.0f), 0.1f, 1e-6f);
}

TEST(FunctionGeneratorTest, OneShotRestsOnTheLastPoint) {
    Drawn function({{0.0f, 0.0f, 0.0f}, {0.5f, 1.0f, 0.0f}, {1.0f, 0.75f, 0.0f}},
                   IGenerator::kOneShot);
    for (uint32_t b = 0; b < 14; ++b) {
        function.Block();
        EXPECT_EQ(function.Feedback(Function::GateOut), b >= 1 && b <= 9 ? 1.0f : 0.0f);
    }
    EXPECT_NEAR(function.outputs[0][240], 1.0f, 1e-5f);
    EXPECT_EQ(function.outputs[0].back(), 0.75f);
    EXPECT_EQ(function.Feedback(Function::OutputValue), 0.75f);
    function.Set(Function::GateIn, 1.0f);
    function.Forget();
    function.Block();
    EXPECT_NEAR(function.outputs[0][24], 0.1f, 1e-5f);

    Drawn doubled({{0.0f, 0.0f, 0.0f}, {1.0f, 0.3f, 0.0f}, {1.0f, 0.8f, 0.0f}},
                  IGenerator::kOneShot);
    doubled.Blocks(14);
    EXPECT_EQ(doubled.outputs[0].back(), 0.3f);  // the end that the curve runs into
}

TEST(FunctionGeneratorTest, SmoothBoundsTheStepByTheBlockLength) {
    const std::vector<Point> square{
        {0.0f, 0.0f, 1000.0f}, {0.5f, 1.0f, 1000.0f}, {1.0f, 1.0f, 0.0f}};
    Drawn function(square);
    function.Block();
    function.module.Setup(48000.0f, 48);  // a second set-up is as good as the first
    function.Set(Function::Smooth, 1.0f);
    function.Forget();
    function.Blocks(15);
    for (uint32_t i = 0; i < 240; ++i) {  // up to 0.8, and down
        ASSERT_EQ(function.outputs[0][i], 0.0f);
        ASSERT_NEAR(function.outputs[0][240 + i], (i + 1) * 48.0 / 14400.0, 1e-5);
        ASSERT_NEAR(function.outputs[0][480 + i], 0.8 - (i + 1) * 48.0 / 14400.0, 1e-5);
    }
}

TEST(FunctionGeneratorTest, FeedbackTellsThePlaceUntilTheGateIsLetGo) {
    Drawn function(kTent, IGenerator::kOneShot);
    function.Set(Function::GateIn, 1.0f);
    function.Blocks(7);
    EXPECT_EQ(function.Feedback(Function::FeedbackNextPoint), 2.0f);
    EXPECT_NEAR(function.Feedback(Function::FeedbackPositionInSegment), 95.0f / 240.0f, 1e-4f);
    function.Blocks(7);
    EXPECT_EQ(function.Feedback(Function::FeedbackNextPoint), 2.0f);  // at rest it stays
    function.Set(Function::GateIn, 0.0f);
    function.Block();
    EXPECT_EQ(function.Feedback(Function::FeedbackNextPoint), 0.0f);
    EXPECT_EQ(function.Feedback(Function::FeedbackPositionInSegment), 0.0f);
}

struct Listener final : Function::Observer {
    void OnParameterChanged(uint32_t id, float normalised) override {
        heard.emplace_back(id, normalised);
    }
    std::vector<std::pair<uint32_t, float>> heard;
};

TEST(FunctionGeneratorTest, ObserverAndSubjectMayGoInEitherOrder) {
    Listener last;
    auto function = std::make_unique<Function>("Function1");
    function->Attach(last);
    {
        Listener gone;
        function->Attach(gone);
        EXPECT_EQ(gone.Observed(), function.get());
    }
    function->SetParameterValue(Function::Scale, 0.0f);
    EXPECT_EQ(last.heard.size(), 1u);
    function.reset();
    EXPECT_EQ(last.Observed(), nullptr);
}

TEST(FunctionGeneratorTest, ARandomEngineMovesThePointsAtEveryRestartInOrderAndInRange) {
    std::vector<Point> stairs;
    for (uint32_t i = 0; i < 9; ++i)
        stairs.push_back({static_cast<float>(i) / 8.0f, i % 2 == 0 ? 0.1f : 0.9f, 0.0f});
    std::mt19937 engine(7);
    for (const float amount : {0.0f, 0.5f}) {
        Drawn function(stairs, IGenerator::kOneShot);
        function.module.SetRandomEngine(&engine);
        function.Set(Function::RandomAmount, amount);
        for (uint32_t i = 0; i < 64; ++i) {
            function.Set(Function::RandomX1 + i, 0.3f);
            function.Set(Function::RandomY1 + i, 0.4f);
        }
        function.Block();
        double sum = 0.0;
        float widest = 0.0f;
        for (uint32_t round = 0; round < 400; ++round) {
            function.module.Restart();
            function.Forget();
            function.Blocks(10);
            const auto [low, high] = std::ranges::minmax(function.outputs[0]);
            ASSERT_TRUE(low >= 0.0f && high <= 1.0f);
            const float moved = function.outputs[0][0] - 0.1f;  // of the first point
            ASSERT_LE(std::abs(moved), amount * 0.4f + 1e-6f);
            ASSERT_GE(moved, -0.1f - 1e-6f);
            widest = std::max(widest, std::abs(moved));
            sum += moved;
        }
        // Triangular between -0.1 and 0.2 with its peak at 0: the mean is a third of their sum.
        EXPECT_NEAR(sum / 400.0, amount > 0.0f ? 0.1 / 3.0 : 0.0, 0.012);
        EXPECT_EQ(widest > 0.15f, amount > 0.0f);
    }
}

}  // namespace
}  // namespace Quorvan::dsp
