#include "framework/UnitModule.h"

#include <gtest/gtest.h>

#include "framework/FakeModules.h"

namespace Quorvan::dsp {
namespace {

using test::FakeLeaf;
using test::Log;

bool RunBlock(Module& module, uint32_t inputs = 2, uint32_t outputs = 1) {
    ProcessBlock block;
    block.numInputs = inputs;
    block.numOutputs = outputs;
    return module.Process(block);
}

TEST(UnitModuleTest, FlagsFollowTheOutcomeOfTheBlock) {
    Log log;
    FakeLeaf<1> leaf("", &log);  // takes two inputs and one output
    leaf.runs = false;
    EXPECT_FALSE(RunBlock(leaf));  // refused by the module: all waits for the next block
    EXPECT_TRUE(leaf.IsChanged(0) && leaf.NeedsFullUpdate());
    leaf.runs = true;
    for (const auto& [inputs, outputs] : {std::pair{3u, 1u}, {2u, 2u}}) {
        leaf.MarkChanged(0);
        EXPECT_FALSE(RunBlock(leaf, inputs, outputs));  // too wide: flags go, the update stays due
        EXPECT_TRUE(!leaf.IsChanged(0) && leaf.NeedsFullUpdate());
    }
    EXPECT_TRUE(log.empty());
    leaf.answer = false;
    leaf.MarkChanged(0);
    EXPECT_FALSE(RunBlock(leaf, 0, 0));  // has run, and answered no
    EXPECT_TRUE(!leaf.IsChanged(0) && !leaf.NeedsFullUpdate());
    EXPECT_EQ(log.size(), 1u);
}

TEST(UnitModuleTest, FlagsRiseOnOtherNumbersOnlyAndSurviveTheWayBack) {
    FakeLeaf<2> leaf("");
    RunBlock(leaf);
    EXPECT_TRUE(leaf.SetParameterValue(0, 0.0f));
    EXPECT_TRUE(leaf.SetParameterNormalized(0, 0.0f));
    EXPECT_FALSE(leaf.IsChanged(0));
    leaf.SetParameterNormalized(0, 0.5f);
    leaf.SetParameterValue(0, 0.0f);
    leaf.SetParameterNormalized(0, 0.0f);
    EXPECT_TRUE(leaf.IsChanged(0) && !leaf.IsChanged(1));
}

TEST(ParameterNameSinkTest, WhatDoesNotFitIsCutAndCounted) {
    char text[8] = "xxxxxxx";
    ParameterNameSink sink(text, 4);
    EXPECT_EQ(sink.required, 1u);
    sink.Append("Bypass");
    EXPECT_EQ(sink.length, 3u);
    EXPECT_EQ(sink.required, 7u);
    sink.AppendSeparator();
    sink.Append({});
    EXPECT_STREQ(text, "Byp");
    EXPECT_EQ(sink.required, 8u);
    EXPECT_STREQ(text + 4, "xxx");  // nothing past the capacity
}

TEST(ParameterNameSinkTest, NamesJoinTextSeparatorAndNumber) {
    char text[64];
    ParameterNameSink sink(text, sizeof(text));
    FakeLeaf<12>("Leaf").GetParameterName(10, sink);
    sink.AppendSeparator();
    FakeLeaf<1>("").GetParameterName(0, sink);
    for (const uint32_t number : {0u, 95u, 256u, 4294967295u})
        sink.AppendNumber(number);
    EXPECT_STREQ(text, "Leaf_P11_P10952564294967295");
    EXPECT_EQ(sink.required, sink.length + 1);
}

}  // namespace
}  // namespace Quorvan::dsp
