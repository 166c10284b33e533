#include "framework/ModuleContainer.h"

#include <gtest/gtest.h>

#include <map>
#include <tuple>
#include <utility>

#include "framework/FakeModules.h"

namespace Quorvan::dsp {
namespace {

using test::FakeLeaf;
using test::Log;
using test::Recording;

/// A child without parameter records: ids below 2 are amounts, the others switches.
class FakeMatrix final : public Module {
public:
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
class Branch : public Recording<ModuleContainer<FakeLeaf<3>>> {
public:
    static constexpr uint32_t kParameterCount = 5;
    static ParameterTable Table() {
        return Numbered("Own", 2, ParameterSpec::Linear("", 0.0f, 4.0f));
    }
    Branch(const char* moduleName, Log* events)
        : Recording(events, moduleName, 2u, 2u, Table(), std::make_tuple("", events)) {}
    void OnTerminate() override { Note("terminate"); }
};

/// Ids 0, 1 leaf "A"; 2..6 branch "B"; 7..10 matrix "M"; 11..13 own. Own 11 is linked to the
/// branch's own 5 and to own 12. Children run at twice the rate and half the block size.
class Root final : public Recording<ModuleContainer<FakeLeaf<2>, Branch, FakeMatrix>> {
public:
    enum Id : uint32_t { Linked = kFirstOwnId, Target, Appended };

    explicit Root(Log* events = nullptr)
        : Recording(events, "", 2u, 2u,
                    ParameterTable{ParameterSpec::Linear("Linked", 0.0f, 100.0f),
                                   ParameterSpec::Linear("Target", 0.0f, 8.0f)},
                    std::make_tuple("A", events), std::make_tuple("B", events),
                    std::make_tuple("M")) {
        AppendParameters({ParameterSpec::Raw("Appended")});
        Link(Linked, 5);
        Link(Linked, Target);
    }
    ChildSetup GetChildSetup(float rate, uint32_t size) override { return {2.0f * rate, size / 2}; }
    void OnTerminate() override { Note("terminate"); }
    FakeLeaf<2>& A() { return Child<0>(); }
    Branch& B() { return Child<1>(); }
    FakeLeaf<3>& Leaf() { return B().Child<0>(); }
    FakeMatrix& M() { return Child<2>(); }
};

bool RunBlock(Module& module, uint32_t inputs = 2) {
    ProcessBlock block;
    block.numInputs = inputs;
    return module.Process(block);
}

void RunTree(Root& root) {
    for (Module* module : std::initializer_list<Module*>{&root, &root.A(), &root.B(), &root.Leaf()})
        RunBlock(*module);
}

/// One digit for each record of the tree, in id order.
std::string ChangedFlags(Root& root) {
    std::string flags;
    const auto add = [&flags](const auto& module, uint32_t from, uint32_t to) {
        for (uint32_t id = from; id < to; ++id)
            flags += module.IsChanged(id) ? '1' : '0';
    };
    add(root.A(), 0, 2);
    add(root.Leaf(), 0, 3);
    add(root.B(), 3, 5);
    add(root, 11, 14);
    return flags;
}

std::string NameOf(Root& root, uint32_t id) {
    char text[64];
    ParameterNameSink sink(text, sizeof(text));
    root.GetParameterName(id, sink);
    return text;
}

TEST(ModuleContainerTest, IdsRunThroughTheChildrenAndThenTheOwn) {
    static_assert(Root::kOffsets == std::array<uint32_t, 4>{0, 2, 7, 11});
    Root root;
    const char* const names[] = {"A_P1",   "A_P2",   "B_P1",   "B_P2",     "B_P3",
                                 "B_Own1", "B_Own2", "M_0",    "M_1",      "M_2",
                                 "M_3",    "Linked", "Target", "Appended", ""};
    for (uint32_t id = 0; id < 15; ++id) {
        EXPECT_EQ(NameOf(root, id), names[id]);
        if (id != Root::Linked) {
            EXPECT_TRUE(root.SetParameterNormalized(id, 0.05f * static_cast<float>(id)));
        }
    }
    for (uint32_t id = 0; id < 14; ++id)
        EXPECT_EQ(root.GetParameterNormalized(id),
                  id == Root::Linked ? 0.0f : 0.05f * static_cast<float>(id));
    EXPECT_EQ(root.A().Position(1), 0.05f * 1.0f);
    EXPECT_EQ(root.Leaf().Position(2), 0.05f * 4.0f);
    EXPECT_EQ(root.B().Position(3), 0.05f * 5.0f);
    EXPECT_EQ(root.M().held[3], 0.05f * 10.0f);
    EXPECT_EQ(root.ParameterAt(Root::Appended).GetValue(), 0.05f * 13.0f);
    for (const uint32_t id : {14u, 4294967295u}) {  // past the end
        EXPECT_TRUE(root.SetParameterNormalized(id, 0.5f) && root.SetParameterValue(id, 0.5f));
        EXPECT_EQ(root.GetParameterNormalized(id), 0.0f);
    }
}

TEST(ModuleContainerTest, ValuesReachRecordsAndTheMatrix) {
    Root root;
    EXPECT_TRUE(root.SetParameterValue(6, 1.0f));
    EXPECT_EQ(root.B().Position(4), 0.25f);
    root.SetParameterValue(8, -0.75f);
    root.SetParameterValue(9, 0.5f);
    root.SetParameterValue(10, 0.51f);
    EXPECT_EQ(root.M().held, (std::map<uint32_t, float>{{1, -0.75f}, {2, 0.0f}, {3, 1.0f}}));
}

TEST(ModuleContainerTest, ChildrenAreSetUpResetAndEndedBeforeTheirParent) {
    Log log;
    Root root(&log);
    const auto logged = [&log] { return std::exchange(log, {}); };
    root.Setup(1000.0f, 64);
    const Log setUp = {"A: setup 2000/32", "A: reset hard", ": setup 2000/32", ": reset hard",
                       "B: setup 2000/32", "B: reset hard", ": setup 1000/64", ": reset hard"};
    EXPECT_EQ(logged(), setUp);
    EXPECT_EQ(ChangedFlags(root), "1111111111");
    RunTree(root);
    root.SetParameterNormalized(4, 0.5f);
    logged();
    root.Reset(false);
    EXPECT_EQ(logged(), (Log{"A: reset soft", ": reset soft", "B: reset soft", ": reset soft"}));
    EXPECT_EQ(ChangedFlags(root), "0000100000");
    EXPECT_TRUE(root.NeedsFullUpdate() && root.B().NeedsFullUpdate() &&
                root.Leaf().NeedsFullUpdate());
    root.Reset(true);
    EXPECT_EQ(ChangedFlags(root), "1111111111");
    logged();
    root.Terminate();
    EXPECT_EQ(logged(), (Log{"B: terminate", ": terminate"}));
}

TEST(ModuleContainerTest, ABlockConcernsTheContainerAlone) {
    Log log;
    Root root(&log);
    root.runs = false;
    EXPECT_FALSE(RunBlock(root));
    EXPECT_EQ(ChangedFlags(root), "1111111111");
    EXPECT_TRUE(root.NeedsFullUpdate());
    root.runs = true;
    EXPECT_FALSE(RunBlock(root, 3));
    EXPECT_EQ(ChangedFlags(root), "1111111000");
    EXPECT_TRUE(root.NeedsFullUpdate() && log.empty());
    EXPECT_TRUE(RunBlock(root));
    EXPECT_FALSE(root.NeedsFullUpdate());
    EXPECT_TRUE(root.A().NeedsFullUpdate());
    EXPECT_EQ(log, Log{": process fully"});
}

TEST(ModuleContainerTest, LinksCarryThePositionToEveryTarget) {
    Root root;
    RunTree(root);
    EXPECT_TRUE(root.SetParameterValue(Root::Linked, 25.0f));
    EXPECT_EQ(root.ParameterAt(Root::Linked).freshness, Parameter::kAgree);
    EXPECT_EQ(root.B().Value(3), 1.0f);         // a quarter of 0..4
    EXPECT_EQ(root.Value(Root::Target), 2.0f);  // and of 0..8
    EXPECT_EQ(ChangedFlags(root), "0000010110");

    // The same number again raises no flag of its own, but puts a strayed target back.
    RunTree(root);
    root.SetParameterNormalized(Root::Target, 0.9f);
    RunTree(root);
    root.SetParameterNormalized(Root::Linked, 0.25f);
    EXPECT_EQ(root.Value(Root::Target), 2.0f);
    EXPECT_EQ(ChangedFlags(root), "0000000010");
}

}  // namespace
}  // namespace Quorvan::dsp
