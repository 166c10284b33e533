#include "framework/ModuleContainer.h"

#include "framework/UnitModule.h"
#include "support/Test.h"

namespace Quorvan::dsp {
namespace {

using Log = std::vector<std::string>;

/// What a leaf and a container have in common: both note which hooks run.
template <class Base>
class Recording : public Base {
public:
    template <class... Arguments>
    explicit Recording(Log* events, Arguments&&... arguments)
        : Base(std::forward<Arguments>(arguments)...), log(events) {}

    void OnSetup(float rate, uint32_t size) override {
        Note("setup " + std::to_string(static_cast<int>(rate)) + "/" + std::to_string(size));
    }
    void OnReset(bool hard) override { Note(hard ? "reset hard" : "reset soft"); }
    bool OnProcess(ProcessBlock&) override {
        Note(this->needsFullUpdate ? "process fully" : "process");
        return answer;
    }
    bool UpdateParameters(ProcessBlock&) override { return runs; }

    void Note(const std::string& what) {
        if (log != nullptr)
            log->push_back(this->name + ": " + what);
    }

    Log* log;
    bool runs = true;    ///< answer of UpdateParameters
    bool answer = true;  ///< answer of OnProcess
};

/// kCount linear parameters from 0 to 10, named "P1" on; two inputs, one output.
template <uint32_t kCount>
class FakeLeaf : public Recording<UnitModule> {
public:
    static constexpr uint32_t kParameterCount = kCount;

    explicit FakeLeaf(const char* moduleName, Log* events = nullptr)
        : Recording(events, moduleName, 2u, 1u,
                    Numbered("P", kCount, ParameterSpec::Linear("", 0.0f, 10.0f))) {}
};

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

bool RunBlock(Module& module, uint32_t inputs = 2, uint32_t outputs = 0) {
    ProcessBlock block;
    block.numInputs = inputs;
    block.numOutputs = outputs;
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

}  // namespace
}  // namespace Quorvan::dsp
