#include "framework/Parameter.h"

#include "basictools/math/mapping/IPotardMapping.h"
#include "framework/ParameterTable.h"
#include "support/Test.h"

namespace Quorvan::dsp {
namespace {

constexpr uint32_t kFrames = 48;

/// A block whose input 1 is a modulation row.
struct RowBlock {
    explicit RowBlock(const std::vector<float>& samples, float activity = kRowActive)
        : row(kRowHeadFloats, activity) {
        row.insert(row.end(), samples.begin(), samples.end());
        channels[1] = row.data() + kRowHeadFloats;
        block.inputs = channels;
        block.numInputs = 2;
        block.numFrames = static_cast<uint32_t>(samples.size());
    }
    std::vector<float> row;
    float* channels[2] = {};
    ProcessBlock block;
};

/// One parameter of each kind and direction, over a falling range, and two of steps.
std::vector<Parameter> AllKinds() {
    std::vector<Parameter> all(1);
    for (uint32_t kind = PotardKind::kLinear; kind <= PotardKind::kSemiToneToFreq; ++kind) {
        // Arguments that every kind can do with.
        const bool isFraction = kind == PotardKind::kPiecewiseLinear;
        for (const bool reversed : {false, true})
            all.emplace_back().Configure(kind, 100.0f, -20.0f, isFraction ? 0.3f : 3.0f,
                                         kind < PotardKind::kInverse ? 0.4f : 50.0f, reversed);
    }
    all.emplace_back().ConfigureStepped(13, -6.0f, 0.5f);
    all.emplace_back().ConfigureStepped(4, 10.0f, -1.0f);
    return all;
}

TEST(ParameterTest, CurvesRunBetweenTheEndsOfTheRange) {
    Parameter p = Parameter::MakeContinuous("Cutoff", PotardKind::kExponential, 20.0f, 2e4f, 6.9f);
    p.WriteNormalized(0.4f, false);
    p.Configure(PotardKind::kRaw, 0.0f, 5.0f);
    EXPECT_EQ(p.name, "Cutoff");
    EXPECT_EQ(p.freshness, Parameter::kAgree);  // at the minimum
    EXPECT_EQ(p.GetNormalized(), 0.0f);
    EXPECT_EQ(p.ValueOf(0.7f), 0.7f);  // raw knows no range
    p.Configure(PotardKind::kPolynomial, 10.0f, 20.0f, 2.0f);
    EXPECT_FLOAT_EQ(p.ValueOf(0.5f), 12.5f);
    EXPECT_FLOAT_EQ(p.PositionOf(12.5f), 0.5f);
    EXPECT_EQ(p.ValueOf(3.0f), 20.0f);
    EXPECT_EQ(p.PositionOf(-7.0f), 0.0f);
    p.Configure(PotardKind::kLinear, 10.0f, -10.0f, 0.5f, 0.5f, true);  // falling, then reversed
    EXPECT_FLOAT_EQ(p.ValueOf(0.25f), -5.0f);
    EXPECT_FLOAT_EQ(p.PositionOf(-5.0f), 0.25f);
    EXPECT_EQ(p.PositionOf(99.0f), 1.0f);
    p.Configure(PotardKind::kLinear, 3.0f, 3.0f);
    EXPECT_EQ(p.PositionOf(3.0f), 0.0f);
    p.Configure(PotardKind::kHarmonic, 0.0f, 100.0f, 4.0f);  // absolute: the range is left alone
    EXPECT_FLOAT_EQ(p.ValueOf(1.0f), 4.0f);
    EXPECT_FLOAT_EQ(p.PositionOf(0.25f), 0.0f);
}

TEST(ParameterTest, StepsDivideTheTravelEvenly) {
    const Parameter up = Parameter::MakeStepped("Mode", 3, 5.0f);
    Parameter down;
    down.ConfigureStepped(3, 5.0f, -1.0f);
    EXPECT_EQ(down.GetValue(), 7.0f);
    const float third = 1.0f / 3.0f;
    const float positions[] = {0.0f, third - 1e-6f, third, 2 * third - 1e-6f, 2 * third, 1.0f};
    for (int i = 0; i < 6; ++i) {
        const float position = positions[i], step = static_cast<float>(i / 2);
        EXPECT_EQ(up.ValueOf(position), 5.0f + step) << position;
        EXPECT_EQ(down.ValueOf(position), 7.0f - step) << position;
        EXPECT_EQ(up.PositionOf(5.0f + step), 0.5f * step);
        EXPECT_EQ(down.PositionOf(7.0f - step), 0.5f * step);
    }
    EXPECT_EQ(Parameter::MakeStepped("One", 1, 5.0f).PositionOf(5.0f), 0.0f);
}

TEST(ParameterTest, TheLaterFaceWinsAndIsConvertedOnce) {
    Parameter p = Parameter::MakeContinuous("", PotardKind::kLinear, 0.0f, 10.0f, 0.5f);
    p.WriteNormalized(0.3f, false);
    p.WriteValue(8.0f, false);
    EXPECT_EQ(p.freshness, Parameter::kValueNewer);
    EXPECT_EQ(p.GetNormalized(), 0.8f);
    EXPECT_EQ(p.freshness, Parameter::kAgree);
    p.WriteNormalized(0.25f, false);
    EXPECT_EQ(p.GetNormalized(), 0.25f);
    EXPECT_EQ(p.freshness, Parameter::kNormalizedNewer);  // the value is still to be converted
    EXPECT_EQ(p.GetValue(), 2.5f);
    p.WriteValue(40.0f, false);  // beyond the range: kept as written
    EXPECT_EQ(p.GetNormalized(), 1.0f);
    EXPECT_EQ(p.GetValue(), 40.0f);
}

TEST(ParameterTest, OnlyAnotherNumberCountsAsAChange) {
    Parameter p = Parameter::MakeContinuous("", PotardKind::kLinear, 0.0f, 10.0f, 0.5f);
    EXPECT_FALSE(p.WriteNormalized(0.0f, false));
    EXPECT_TRUE(p.WriteNormalized(0.5f, false));
    EXPECT_FALSE(p.WriteValue(5.0f, false));       // the same through the other face
    EXPECT_FALSE(p.WriteNormalized(0.5f, false));  // and back, with the value pending
    EXPECT_TRUE(p.WriteValue(2.5f, false));
    EXPECT_FALSE(p.WriteNormalized(0.25f, false));
    EXPECT_TRUE(p.WriteNormalized(std::nextafter(0.25f, 1.0f), false));
    EXPECT_TRUE(p.WriteValue(7.0f, false));
    EXPECT_FALSE(p.WriteValue(7.0f, false));
    EXPECT_TRUE(p.WriteValue(7.0f, true));  // once changed, changed
    EXPECT_TRUE(p.WriteNormalized(0.7f, true));
}

TEST(ParameterTest, RowsMoveThePositionAndStopAtItsEnds) {
    Parameter p = Parameter::MakeContinuous("", PotardKind::kPolynomial, 0.0f, 100.0f, 2.0f);
    p.WriteNormalized(0.7f, false);
    EXPECT_FLOAT_EQ(p.GetBlockValue(RowBlock({0.1f, 9.0f}).block, 1), 64.0f);
    EXPECT_FLOAT_EQ(p.GetBlockNormalized(RowBlock({-0.3f, 9.0f}).block, 1), 0.4f);
    EXPECT_EQ(p.GetBlockValue(RowBlock({0.5f}).block, 1), 100.0f);
    EXPECT_EQ(p.GetBlockNormalized(RowBlock({-2.0f}).block, 1), 0.0f);
    EXPECT_FLOAT_EQ(p.GetValue(), 49.0f);  // modulation leaves no trace

    RowBlock resting({0.25f}, 0.0f), missing({0.25f}), narrow({0.25f});
    missing.channels[1] = nullptr;
    narrow.block.numInputs = 1;
    for (RowBlock* rig : {&resting, &missing, &narrow}) {
        float out = 0.0f;
        p.FillBlockValues(rig->block, 1, &out);
        EXPECT_EQ(out, p.GetValue());
        EXPECT_EQ(p.GetBlockValue(rig->block, 1), p.GetValue());
        EXPECT_EQ(p.GetBlockNormalized(rig->block, 1), 0.7f);
    }
}

TEST(ParameterTest, FilledBlocksAgreeWithSingleReadsForAllKindsAndRowsThatAreNoNumbers) {
    std::vector<float> samples = Noise(3, kFrames, 0.8f);
    samples[1] = NAN;  // leads to the bottom
    RowBlock rig(samples), broken({NAN});
    for (Parameter& p : AllKinds()) {
        p.WriteNormalized(0.45f, false);
        float out[kFrames];
        p.FillBlockValues(rig.block, 1, out);
        for (uint32_t i = 0; i < kFrames; ++i) {
            const float single = i == 1 ? p.ValueOf(0.0f) : p.GetModulatedValue(samples[i]);
            // The block forms of the curves are good to a few roundings of the range.
            EXPECT_NEAR(out[i], single, 1e-6f * std::fmax(120.0f, std::fabs(single))) << p.kind;
        }
        EXPECT_EQ(p.GetBlockValue(rig.block, 1), p.GetModulatedValue(samples[0]));
        EXPECT_EQ(p.GetBlockValue(broken.block, 1), p.ValueOf(0.0f)) << p.kind;
        EXPECT_EQ(p.GetBlockNormalized(broken.block, 1), 0.0f);
    }
}

}  // namespace
}  // namespace Quorvan::dsp
