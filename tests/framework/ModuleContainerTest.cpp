#include "framework/ModuleContainer.h"

#include "framework/UnitModule.h"
#include "support/Test.h"

namespace Quorvan::dsp {
namespace {

/// The hooks that a leaf and a container have to have.
template <class Base>
struct Idle : Base {
    using Base::Base;
    void OnSetup(float, uint32_t) override {}
    void OnReset(bool) override {}
    bool UpdateParameters(ProcessBlock&) override { return runs; }
    bool OnProcess(ProcessBlock&) override { return ++processed, answer; }

    bool runs = true;    ///< answer of UpdateParameters
    bool answer = true;  ///< answer of OnProcess
    int processed = 0;
};

/// kCount linear parameters from 0 to 10, named "P1" on; two inputs, one output.
template <uint32_t kCount>
struct FakeLeaf : Idle<UnitModule> {
    static constexpr uint32_t kParameterCount = kCount;
    explicit FakeLeaf(const char* moduleName)
        : Idle(moduleName, 2, 1, Numbered("P", kCount, ParameterSpec::Linear("", 0.0f, 10.0f))) {}
};

/// A child without parameter records: ids below 2 are amounts, the others switches.
struct FakeMatrix final : Module {
    static constexpr uint32_t kParameterCount = 4, kFirstSwitchId = 2;
    explicit FakeMatrix(const char* moduleName) : Module(moduleName, 0, 0) {}
    void SetAmount(uint32_t id, float amount) { held[id] = amount; }
    void SetActivated(uint32_t id, bool on) { held[id] = on ? 1.0f : 0.0f; }
    bool SetParameterNormalized(uint32_t id, float position) override {
        held[id] = position;
        return false;  // containers answer true all the same
    }
    float GetParameterNormalized(uint32_t id) override { return held[id]; }
    void GetParameterName(uint32_t id, ParameterNameSink& out) override {
        AppendPath(out);
        out.AppendNumber(id);
    }
    void OnSetup(float, uint32_t) override {}
    void OnReset(bool) override {}
    bool OnProcess(ProcessBlock&) override { return true; }

    std::map<uint32_t, float> held;
};

/// Ids 0..2 its leaf's, 3 and 4 its own.
struct Branch : Idle<ModuleContainer<FakeLeaf<3>>> {
    static constexpr uint32_t kParameterCount = 5;
    explicit Branch(const char* moduleName)
        : Idle(moduleName, 2, 2, Numbered("Own", 2, ParameterSpec::Linear("", 0.0f, 4.0f)),
               std::make_tuple("")) {}
};

/// Ids 0, 1 leaf "A"; 2..6 branch "B"; 7..10 matrix "M"; 11..13 own. Own 11 is linked to the
/// branch's own 5 and to own 12.
struct Root final : Idle<ModuleContainer<FakeLeaf<2>, Branch, FakeMatrix>> {
    enum Id : uint32_t { Linked = kFirstOwnId, Target, Appended };

    Root()
        : Idle("", 2, 2,
               ParameterTable{ParameterSpec::Linear("Linked", 0.0f, 100.0f),
                              ParameterSpec::Linear("Target", 0.0f, 8.0f)},
               std::make_tuple("A"), std::make_tuple("B"), std::make_tuple("M")) {
        AppendParameters({ParameterSpec::Raw("Appended")});
        Link(Linked, 5);
        Link(Linked, Target);
    }
    Branch& B() { return Child<1>(); }
    FakeMatrix& M() { return Child<2>(); }
};

std::string NameOf(Root& root, uint32_t id) {
    char text[64];
    ParameterNameSink sink(text, sizeof(text));
    root.GetParameterName(id, sink);
    return text;
}

TEST(ModuleContainerTest, IdsRunThroughTheChildrenAndThenTheOwn) {
    Root root;
    const char* const names[] = {"A_P1",   "A_P2",   "B_P1",   "B_P2",     "B_P3",
                                 "B_Own1", "B_Own2", "M_0",    "M_1",      "M_2",
                                 "M_3",    "Linked", "Target", "Appended", ""};
    for (uint32_t id = 0; id < 15; ++id) {
        EXPECT_EQ(NameOf(root, id), names[id]);
        EXPECT_TRUE(id == Root::Linked ||
                    root.SetParameterNormalized(id, 0.05f * static_cast<float>(id)));
    }
    for (uint32_t id = 0; id < 14; ++id)
        EXPECT_EQ(root.GetParameterNormalized(id),
                  id == Root::Linked ? 0.0f : 0.05f * static_cast<float>(id));
    EXPECT_EQ(root.B().Position(3), 0.05f * 5.0f);
    EXPECT_TRUE(root.SetParameterNormalized(14, 0.5f) && root.SetParameterValue(~0u, 0.5f));
    EXPECT_EQ(root.GetParameterNormalized(14), 0.0f);  // past the end

    EXPECT_TRUE(root.SetParameterValue(6, 1.0f));
    EXPECT_EQ(root.B().Position(4), 0.25f);
    for (const auto& [id, value] : {std::pair{8u, -0.75f}, {9u, 0.5f}, {10u, 0.51f}})
        root.SetParameterValue(id, value);
    EXPECT_EQ(root.M().held[1], -0.75f);
    EXPECT_EQ(root.M().held[2], 0.0f);
    EXPECT_EQ(root.M().held[3], 1.0f);
}

TEST(ModuleContainerTest, LinksCarryThePositionToEveryTarget) {
    Root root;
    root.ClearChanged();
    root.B().ClearChanged();
    EXPECT_TRUE(root.SetParameterValue(Root::Linked, 25.0f));
    EXPECT_EQ(root.B().Value(3), 1.0f);         // a quarter of 0..4
    EXPECT_EQ(root.Value(Root::Target), 2.0f);  // and of 0..8
    EXPECT_TRUE(root.B().IsChanged(3) && !root.B().IsChanged(4) && root.IsChanged(Root::Target));

    // The same number again raises no flag of its own, but puts a strayed target back.
    root.SetParameterNormalized(Root::Target, 0.9f);
    root.ClearChanged();
    root.SetParameterNormalized(Root::Linked, 0.25f);
    EXPECT_EQ(root.Value(Root::Target), 2.0f);
    EXPECT_TRUE(!root.IsChanged(Root::Linked) && root.IsChanged(Root::Target));
}

TEST(UnitModuleTest, FlagsFollowTheOutcomeOfTheBlock) {
    FakeLeaf<1> leaf("");  // takes two inputs and one output
    const auto run = [&leaf](uint32_t inputs, uint32_t outputs) {
        ProcessBlock block;
        block.numInputs = inputs;
        block.numOutputs = outputs;
        return leaf.Process(block);
    };
    leaf.runs = false;
    EXPECT_FALSE(run(2, 0));  // refused by the module: all waits for the next block
    EXPECT_TRUE(leaf.IsChanged(0) && leaf.NeedsFullUpdate());
    leaf.runs = true;
    for (const auto& [inputs, outputs] : {std::pair{3u, 1u}, {2u, 2u}}) {
        leaf.MarkChanged(0);
        EXPECT_FALSE(run(inputs, outputs));  // too wide: flags go, the update stays due
        EXPECT_TRUE(!leaf.IsChanged(0) && leaf.NeedsFullUpdate());
    }
    EXPECT_EQ(leaf.processed, 0);
    leaf.answer = false;
    leaf.MarkChanged(0);
    EXPECT_FALSE(run(0, 0));  // has run, and answered no
    EXPECT_TRUE(!leaf.IsChanged(0) && !leaf.NeedsFullUpdate());
    EXPECT_EQ(leaf.processed, 1);
}

}  // namespace
}  // namespace Quorvan::dsp
