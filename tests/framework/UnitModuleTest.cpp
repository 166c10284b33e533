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

TEST(ParameterNameSinkTest, NamesAreJoinedCutAndCounted) {
    char text[64], brief[8] = "xxxxxxx";
    ParameterNameSink sink(text, sizeof(text)), narrow(brief, 4);
    EXPECT_EQ(narrow.required, 1u);
    for (ParameterNameSink* each : {&sink, &narrow}) {
        FakeLeaf<12>("Leaf").GetParameterName(10, *each);
        each->AppendSeparator();
        FakeLeaf<1>("").GetParameterName(0, *each);
        each->Append({});
        for (const uint32_t number : {0u, 95u, 256u, 4294967295u})
            each->AppendNumber(number);
    }
    EXPECT_STREQ(text, "Leaf_P11_P10952564294967295");
    EXPECT_STREQ(brief, "Lea");
    EXPECT_STREQ(brief + 4, "xxx");  // nothing past the capacity
    EXPECT_EQ(sink.length, 27u);
    EXPECT_EQ(narrow.length, 3u);
    EXPECT_TRUE(sink.required == 28u && narrow.required == 28u);
}

}  // namespace
}  // namespace Quorvan::dsp
