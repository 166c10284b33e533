#include "host/state/PresetFormat.h"

#include <gtest/gtest.h>

#include "host/HostRig.h"
#include "host/parameters/ModulationNames.h"
#include "host/parameters/ShellIndex.h"
#include "host/state/StateTransfer.h"

namespace Quorvan::Host {
namespace {

using namespace test;

Preset Example() {
    Preset preset;
    preset.name = "Sh\xc3\xbcmmer \"2\"";
    preset.description = "Two lines\nof text";
    preset.tags = {"pad", "slow"};
    preset.tempo = 92.5;
    preset.parameters = AudibleSettings();
    std::sort(preset.parameters.begin(), preset.parameters.end(),
              [](const auto& a, const auto& b) { return a.index < b.index; });
    preset.routings = {{1, 6, 0.25f}, {6, 94, -1.0f}};
    return preset;
}

Parsed<Preset> ReadMembers(const std::string& members) {
    return ReadPreset("{\"format\": \"tesserae-preset\", \"version\": 1" + members + "}",
                      Catalog());
}

/// The one warning of a preset with these members.
std::string WarningOf(const std::string& members) {
    const Parsed<Preset> parsed = ReadMembers(members);
    EXPECT_TRUE(parsed.value.has_value());
    EXPECT_EQ(parsed.issues.size(), 1u) << members;
    if (parsed.issues.empty())
        return {};
    EXPECT_EQ(parsed.issues.front().severity, Issue::Severity::Warning);
    return parsed.issues.front().text;
}

std::string ErrorOf(const std::string& json) {
    const Parsed<Preset> parsed = ReadPreset(json, Catalog());
    EXPECT_FALSE(parsed.value.has_value());
    EXPECT_EQ(parsed.issues.size(), 1u);
    if (parsed.issues.empty())
        return {};
    EXPECT_EQ(parsed.issues.front().severity, Issue::Severity::Error);
    return parsed.issues.front().text;
}

TEST(PresetTest, WhatIsWrittenIsReadBack) {
    const Preset preset = Example();
    const Parsed<Preset> parsed = ReadPreset(WritePreset(preset, Catalog()), Catalog());
    EXPECT_TRUE(parsed.issues.empty());
    ASSERT_TRUE(parsed.value.has_value());
    EXPECT_EQ(*parsed.value, preset);
}

TEST(PresetTest, OnlyFormatAndVersionAreNeeded) {
    const Parsed<Preset> parsed = ReadMembers("");
    EXPECT_TRUE(parsed.issues.empty());
    EXPECT_EQ(*parsed.value, Preset{});
}

TEST(PresetTest, ParametersMayStandAsTexts) {
    const Parsed<Preset> parsed = ReadMembers(
        R"(, "parameters": {"MoteWeaver_GranularMode": "texture", "Master Volume": "-6 dB",
            "MoteWeaver_BufferFreeze": true, "MoteWeaver_Pitch": "7 st",
            "MoteWeaver_Scale": "Major"})");
    EXPECT_TRUE(parsed.issues.empty());
    const TextContext major{5};
    const std::vector<ParameterValue> expected{
        Set("MoteWeaver_Pitch", "7 st", major), Set("MoteWeaver_Scale", "Major"),
        Set("MoteWeaver_BufferFreeze", "On"), Set("MoteWeaver_GranularMode", "Texture"),
        Set("Master Volume", "-6 dB")};
    EXPECT_EQ(parsed.value->parameters, expected);
    EXPECT_EQ(Catalog().Text(kPitchIndex, expected[0].position, major), "7.00 st");
}

TEST(PresetTest, WhatMakesNoSenseIsMendedOrLeftOut) {
    EXPECT_EQ(WarningOf(R"(, "parameters": {"Marco 1": 0.5})"),
              "There is no parameter called \"Marco 1\". Did you mean \"Macro 1\" or \"Macro 2\"? "
              "It is left out.");
    EXPECT_EQ(WarningOf(R"(, "parameters": {"Macro 1": 1.5})"),
              "\"Macro 1\" is at 1.5, but positions go from 0 to 1; 1 is taken.");
    EXPECT_NE(WarningOf(R"(, "parameters": {"Macro 1": [1]})").find("position from 0 to 1"),
              std::string::npos);
    EXPECT_NE(WarningOf(R"(, "parameters": {"Macro 1": "much"})").find("It is left out"),
              std::string::npos);
    EXPECT_NE(WarningOf(R"(, "parameters": [])").find("object in braces"), std::string::npos);
    EXPECT_NE(WarningOf(R"(, "name": 3)").find("\"name\" is left out"), std::string::npos);
    EXPECT_NE(WarningOf(R"(, "tempo": -3)").find("beats per minute"), std::string::npos);
    EXPECT_NE(WarningOf(R"(, "tags": ["a", 1])").find("tags"), std::string::npos);
    EXPECT_EQ(
        ReadMembers(R"(, "parameters": {"Macro 1": -4, "Macro 2": 0.25})").value->parameters,
        (std::vector<ParameterValue>{{IndexOf("Macro 1"), 0.0f}, {IndexOf("Macro 2"), 0.25f}}));
}

TEST(PresetTest, RoutingsAreCheckedPieceByPiece) {
    const auto routing = [](const std::string& members) {
        return R"(, "routings": [{"source": "macro 1", "destination": "pitch", "amount": 0.5}, )" +
               members + "]";
    };
    EXPECT_EQ(WarningOf(routing(R"({"source": "Makro 1", "destination": "Pitch", "amount": 1})")),
              "Routing 2 is left out. There is no modulation source called \"Makro 1\". "
              "Did you mean \"Macro 1\" or \"Macro 2\"?");
    EXPECT_NE(WarningOf(routing(R"({"source": "Macro 1", "destination": "Pith", "amount": 1})"))
                  .find("\"Pitch\""),
              std::string::npos);
    EXPECT_NE(WarningOf(routing(R"({"source": "Macro 1", "destination": "Pitch"})")).find("amount"),
              std::string::npos);
    EXPECT_NE(WarningOf(routing("7")).find("Routing 2"), std::string::npos);
    const auto wild =
        ReadMembers(routing(R"({"source": "Function 3", "destination": "Spray", "amount": -9})"));
    EXPECT_EQ(wild.issues.size(), 1u);
    EXPECT_EQ(wild.value->routings, (std::vector<Routing>{{5, 6, 0.5f}, {3, 21, -1.0f}}));
}

TEST(PresetTest, OtherTextsAreRefusedWithAReason) {
    EXPECT_NE(
        ErrorOf("{\n  \"format\": \"tesserae-preset\"\n  \"version\": 1}").find("near line 3"),
        std::string::npos);
    EXPECT_NE(ErrorOf("").find("no JSON"), std::string::npos);
    EXPECT_NE(ErrorOf("[]").find("no preset"), std::string::npos);
    EXPECT_NE(ErrorOf("{\"format\": \"tesserae-state\", \"version\": 1}").find("tesserae-state"),
              std::string::npos);
    EXPECT_NE(ErrorOf("{\"format\": \"tesserae-preset\", \"version\": 2}")
                  .find("is of version 2, and this program reads version 1"),
              std::string::npos);
    EXPECT_NE(ErrorOf("{\"format\": \"tesserae-preset\"}").find("\"version\": 1"),
              std::string::npos);
    EXPECT_NE(ErrorOf("{\"format\": \"tesserae-preset\", \"version\": 1, \"tempo\": 1e999}")
                  .find("too large"),
              std::string::npos);
}

TEST(PresetTest, FilesSetOnlyWhatIsTheirs) {
    const std::string members =
        R"(, "parameters": {"Bypass": 1, "Panic": 1, "PresetLoading": 1, "GUI Visible": 1,
            "MasterVuL_Level": 1, "Limiter_LookaheadTimeMs": 1, "Feedback_BigChunk": 1})";
    EXPECT_NE(WarningOf(members).find("7 parameters"), std::string::npos);
    EXPECT_TRUE(ReadMembers(members).value->parameters.empty());
    const Parsed<State> state =
        ReadState("{\"format\": \"tesserae-state\", \"version\": 1" + members + "}", Catalog());
    EXPECT_EQ(state.issues.size(), 1u);
    const std::vector<ParameterValue> levers{
        {kBypassIndex, 1.0f}, {kPanicIndex, 1.0f}, {kGuiVisibleIndex, 1.0f}};
    EXPECT_EQ(state.value->parameters, levers);
}

TEST(StateTransferTest, AnAppliedPresetIsCapturedAsItWas) {
    Engine engine(1);
    engine.Prepare({});
    const Preset preset = Example();
    ApplyPreset(preset, engine, Catalog());
    HostStream(engine).Run(NoiseInput(5000), 512);
    const Preset captured = CapturePreset(engine, Catalog());
    EXPECT_EQ(captured.routings, preset.routings);
    // Settings that are named at the position of a new processor come back unnamed.
    for (const ParameterValue& value : captured.parameters)
        EXPECT_NE(value.position, Catalog()[value.index].defaultPosition);
    for (const ParameterValue& value : preset.parameters)
        EXPECT_EQ(engine.Position(value.index), value.position) << Catalog()[value.index].name;
    Engine other(1);
    ApplyPreset(captured, other, Catalog());
    EXPECT_EQ(CaptureState(other, Catalog()), CaptureState(engine, Catalog()));
}

TEST(StateTransferTest, APresetIsComplete) {
    Engine engine(1);
    engine.Prepare({});
    ApplyPreset(Example(), engine, Catalog());
    engine.Write(kBypassIndex, 1.0f);
    engine.Write(ActivatedIndex(3, 3), 0.0f);
    HostStream(engine).Run(Silence(100), 100);
    ApplyPreset({}, engine, Catalog());
    HostStream(engine).Run(Silence(100), 100);
    EXPECT_EQ(CapturePreset(engine, Catalog()), Preset{});
    EXPECT_EQ(engine.Position(kBypassIndex), 1.0f) << "a preset leaves the shell's levers alone";
}

TEST(StateTransferTest, AStateRestoresEverySetting) {
    Engine engine(1);
    engine.Prepare({});
    ApplyPreset(Example(), engine, Catalog());
    engine.Write(kBypassIndex, 1.0f);
    engine.Write(AmountIndex(2, 2), 0.123f);
    engine.Write(ActivatedIndex(2, 2), 0.0f);
    HostStream(engine).Run(Silence(500), 100);
    const std::string text = WriteState(CaptureState(engine, Catalog()), Catalog());
    const Parsed<State> parsed = ReadState(text, Catalog());
    EXPECT_TRUE(parsed.issues.empty());
    Engine other(2);
    other.Prepare({});
    ApplyState(*parsed.value, other, Catalog());
    HostStream(other).Run(Silence(500), 100);
    for (const ParameterInfo& info : Catalog().All()) {
        if (info.role == ParameterRole::Setting || info.index == kBypassIndex) {
            EXPECT_EQ(other.Position(info.index), engine.Position(info.index)) << info.name;
        }
    }
}

/// Notes which parameters the processor moves.
struct ChangeNotes : EngineListener {
    void OnParameterChange(uint32_t index, float position) override {
        changes.push_back({index, position});
    }
    void OnBlobChange(uint32_t index, std::span<const uint8_t> data) override {
        EXPECT_EQ(data.size(), index == IndexOf("Feedback_BigChunk") ? 816u : 240u);
        ++blobs;
    }
    std::vector<ParameterValue> changes;
    int blobs = 0;
};

TEST(StateTransferTest, PresetLoadingRunsThroughBothItsEdges) {
    Engine engine(1);
    engine.Prepare({});
    ChangeNotes notes;
    engine.AddListener(notes);
    engine.Write(kGuiVisibleIndex, 1.0f);
    HostStream(engine).Run(NoiseInput(44 * 450), 512);
    EXPECT_TRUE(notes.changes.empty()) << "nothing is told before a preset has loaded";
    ApplyPreset(Example(), engine, Catalog());
    const StereoSignal output = HostStream(engine).Run(Silence(20000), 512);
    EXPECT_EQ(engine.Position(kPresetLoadingIndex), 0.0f);
    EXPECT_EQ(PeakOf(output[0], 200), 0.0f) << "the end of loading clears the tape";
    EXPECT_GE(notes.blobs, 2);
    const ParameterValue assigned{IndexOf("Dest7_Assigned"), 1.0f};
    EXPECT_NE(std::find(notes.changes.begin(), notes.changes.end(), assigned), notes.changes.end());
}

TEST(StateTransferTest, APresetMayComeAheadOfPrepare) {
    Engine engine(1);
    ChangeNotes notes;
    engine.AddListener(notes);
    ApplyPreset(Example(), engine, Catalog());
    engine.Prepare({});
    EXPECT_EQ(engine.Position(kPresetLoadingIndex), 0.0f);
    engine.Write(kGuiVisibleIndex, 1.0f);
    HostStream(engine).Run(Silence(5000), 512);
    EXPECT_GE(notes.blobs, 2);
}

/// Parameters that the processor derives from others would be lost if a preset set them back while
/// the others stay as they are.
TEST(StateTransferTest, TheSamePresetAgainLeavesDerivedParametersInForce) {
    Engine engine(1);
    engine.Prepare({});
    Preset preset;
    preset.parameters = {
        Set("Spatializer Enable", "On"),          Set("Spatializer Trajectory", "Circle"),
        Set("Spatializer Rate UnSynced", "5 Hz"), Set("Spatializer Amount", "100 %"),
        Set("Function1_RateType", "Triplet"),     Set("MoteWeaver_BitCrushPreset", "12 Bit")};
    std::vector<std::vector<float>> derived;
    for (int round = 0; round < 2; ++round) {
        ApplyPreset(preset, engine, Catalog());
        HostStream(engine).Run(Silence(1000), 100);
        derived.emplace_back();
        for (const ParameterInfo& info : Catalog().All()) {
            if (info.role == ParameterRole::Driven)
                derived.back().push_back(engine.Position(info.index));
        }
    }
    EXPECT_EQ(derived[0], derived[1]);
    const uint32_t rate = IndexOf("LFO_Stereo_X_RateUnSynced");
    EXPECT_NEAR(Catalog().Value(rate, engine.Position(rate)), 5.0, 0.01);
    EXPECT_EQ(engine.Position(IndexOf("Function1_MidiSync")), 1.0f);
}

}  // namespace
}  // namespace Quorvan::Host
