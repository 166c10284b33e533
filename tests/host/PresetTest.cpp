#include "host/state/PresetFormat.h"

#include "host/HostRig.h"
#include "host/parameters/ModulationNames.h"
#include "host/parameters/ShellIndex.h"
#include "host/state/StateTransfer.h"

namespace Quorvan::Host {
namespace {

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

/// The one issue that reading has brought; only an error leaves no preset.
std::string IssueOf(const Parsed<Preset>& parsed, Issue::Severity severity) {
    EXPECT_EQ(parsed.value.has_value(), severity == Issue::Severity::Warning);
    EXPECT_EQ(parsed.issues.size(), 1u);
    if (parsed.issues.empty())
        return {};
    EXPECT_EQ(parsed.issues.front().severity, severity);
    return parsed.issues.front().text;
}
std::string WarningOf(const std::string& members) {
    return IssueOf(ReadMembers(members), Issue::Severity::Warning);
}
std::string ErrorOf(const std::string& json) {
    return IssueOf(ReadPreset(json, Catalog()), Issue::Severity::Error);
}

TEST(PresetTest, WhatIsWrittenIsReadBack) {
    Preset preset = Example();
    preset.parameters = {Set("MoteWeaver_Pitch", "7 st", TextContext{5}),
                         Set("MoteWeaver_Scale", "Major"),
                         Set("MoteWeaver_PlaybackMode", "Follow"),
                         {IndexOf("Macro 1"), 0.123456f}};
    const std::string text = WritePreset(preset, Catalog());
    const Parsed<Preset> parsed = ReadPreset(text, Catalog());
    EXPECT_TRUE(parsed.issues.empty());
    EXPECT_EQ(parsed.value, preset);
    for (const char* line : {"\"MoteWeaver_Pitch\": \"7.00 st\"", "\"Macro 1\": 0.123456",
                             "\"MoteWeaver_PlaybackMode\": \"Follow\""})
        EXPECT_NE(text.find(line), std::string::npos) << line << " of\n" << text;
    EXPECT_EQ(ReadMembers("").value, Preset{});  // only format and version are needed
}

TEST(PresetTest, ParametersMayStandAsTextsUnderAnyName) {
    // The mode, the scale and the sync count for names and texts ahead of them too.
    const Parsed<Preset> parsed = ReadMembers(
        R"(, "parameters": {"Grain Size": "120 ms", "Density": "4", "Granular Mode": "texture",
            "FX1 Delay Time": "1/4", "FX1 Delay Time Sync": "Dotted", "Freeze": true,
            "MoteWeaver_Pitch": "7 st", "MoteWeaver_Scale": "Major", "Master Volume": "-6 dB"})");
    EXPECT_TRUE(parsed.issues.empty());
    const TextContext major{5};
    std::vector<ParameterValue> expected = Settings(
        "MoteWeaver_Scale=Major;MoteWeaver_BufferFreeze=On;MoteWeaver_GranularMode=Texture;"
        "MoteWeaver_TextureDensity=4;MoteWeaver_TextureSizeAbsolute=120 ms;"
        "FX1_Delay_DelayTimeSynced=1/4;FX1_Delay_RateType=Dotted;Master Volume=-6 dB");
    expected.insert(expected.begin(), Set("MoteWeaver_Pitch", "7 st", major));
    EXPECT_EQ(parsed.value->parameters, expected);
    EXPECT_EQ(Catalog().Text(kPitchIndex, expected[0].position, major), "7.00 st");
    const Parsed<Preset> twice =
        ReadMembers(R"(, "parameters": {"MoteWeaver_Spray": 0.25, "Spray": 0.75})");
    EXPECT_NE(IssueOf(twice, Issue::Severity::Warning).find("more than one name"),
              std::string::npos);
    EXPECT_EQ(twice.value->parameters, std::vector{Set("MoteWeaver_Spray", "@0.25")});
}

TEST(PresetTest, WhatMakesNoSenseIsMendedOrLeftOut) {
    EXPECT_EQ(WarningOf(R"(, "parameters": {"Marco 1": 0.5})"),
              "There is no parameter called \"Marco 1\". Did you mean \"Macro 1\" or \"Macro 2\"? "
              "It is left out.");
    EXPECT_EQ(WarningOf(R"(, "parameters": {"Macro 1": 1.5})"),
              "\"Macro 1\" is at 1.5, but positions go from 0 to 1; 1 is taken.");
    const std::pair<const char*, const char*> cases[] = {
        {R"(, "parameters": {"Macro 1": [1]})", "position from 0 to 1"},
        {R"(, "parameters": {"Macro 1": "much"})", "It is left out"},
        {R"(, "parameters": [])", "object in braces"},
        {R"(, "name": 3)", "\"name\" is left out"},
        {R"(, "tempo": -3)", "beats per minute"},
        {R"(, "tmepo": 3)", "\"tempo\"?"},
        {R"(, "routings": [{"source": "Macro 1", "destination": "Pitch", "amount": 1, "amuont": 1}])",
         "\"amount\"?"},
        {R"(, "tags": ["a", 1])", "tags"}};
    for (const auto& [members, phrase] : cases)
        EXPECT_NE(WarningOf(members).find(phrase), std::string::npos) << members;
    EXPECT_EQ(
        ReadMembers(R"(, "parameters": {"Macro 1": -4, "Macro 2": 0.25})").value->parameters,
        (std::vector<ParameterValue>{{IndexOf("Macro 1"), 0.0f}, {IndexOf("Macro 2"), 0.25f}}));
}

TEST(PresetTest, ManyUnknownNamesAreCountedNotSearchedFor) {
    std::ostringstream members, routings, strangers;
    for (int i = 0; i < 20000; ++i) {  // minutes, if each were compared with all there are
        const char* const comma = i == 0 ? "" : ", ";
        members << comma << "\"Nonsense" << i << "\": 0.5";
        strangers << ", \"Nonsense" << i << "\": 0.5";
        routings << comma << R"({"source": "Macro 1", "amount": 1, "destination": "Nonsense)" << i
                 << "\"}";
    }
    const Parsed<Preset> parsed =
        ReadMembers(", \"parameters\": {" + members.str() + "}, \"routings\": [" + routings.str() +
                    "]" + strangers.str());
    ASSERT_EQ(parsed.issues.size(), 18u);
    EXPECT_EQ(parsed.issues[17].text, "19995 more keys are none of a preset. They are left out.");
    EXPECT_EQ(parsed.issues[10].text,
              "19995 more names are those of no parameter. They are left out.");
    EXPECT_EQ(parsed.issues[16].text, "19995 more routings are left out for such reasons.");
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
    const std::pair<const char*, const char*> cases[] = {
        {"{\n  \"format\": \"tesserae-preset\"\n  \"version\": 1}", "near line 3"},
        {"", "no JSON"},
        {"[]", "no preset"},
        {R"({"format": "tesserae-state", "version": 1})", "tesserae-state"},
        {R"({"format": "tesserae-preset", "version": 2})",
         "is of version 2, and this program reads version 1"},
        {R"({"format": "tesserae-preset"})", "\"version\": 1"},
        {R"({"format": "tesserae-preset", "version": 1, "tempo": 1e999})", "too large"}};
    for (const auto& [json, phrase] : cases)
        EXPECT_NE(ErrorOf(json).find(phrase), std::string::npos) << json;
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
    ReadyEngine engine;
    const Preset preset = Example();
    ApplyPreset(preset, engine, Catalog());
    engine.Run(NoiseInput(5000));
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
    ReadyEngine engine;
    ApplyPreset(Example(), engine, Catalog());
    engine.Write(kBypassIndex, 1.0f);
    engine.Write(ActivatedIndex(3, 3), 0.0f);
    engine.Pass(100);
    ApplyPreset({}, engine, Catalog());
    engine.Pass(100);
    EXPECT_EQ(CapturePreset(engine, Catalog()), Preset{});
    EXPECT_EQ(engine.Position(kBypassIndex), 1.0f) << "a preset leaves the shell's levers alone";
}

TEST(StateTransferTest, AStateRestoresEverySetting) {
    ReadyEngine engine;
    ApplyPreset(Example(), engine, Catalog());
    engine.Write(kBypassIndex, 1.0f);
    engine.Write(AmountIndex(2, 2), 0.123f);
    engine.Write(ActivatedIndex(2, 2), 0.0f);
    engine.Pass(500);
    const std::string text = WriteState(CaptureState(engine, Catalog()), Catalog());
    const Parsed<State> parsed = ReadState(text, Catalog());
    EXPECT_TRUE(parsed.issues.empty());
    ReadyEngine other;
    ApplyState(*parsed.value, other, Catalog());
    other.Pass(500);
    for (const ParameterInfo& info : Catalog().All())
        EXPECT_TRUE((info.role != ParameterRole::Setting && info.index != kBypassIndex) ||
                    other.Position(info.index) == engine.Position(info.index))
            << info.name;
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
    ReadyEngine engine;
    ChangeNotes notes;
    engine.AddListener(notes);
    engine.Write(kGuiVisibleIndex, 1.0f);
    engine.Run(NoiseInput(44 * 450));
    EXPECT_TRUE(notes.changes.empty()) << "nothing is told before a preset has loaded";
    ApplyPreset(Example(), engine, Catalog());
    const StereoSignal output = engine.Run(Silence(20000));
    EXPECT_EQ(engine.Position(kPresetLoadingIndex), 0.0f);
    EXPECT_EQ(PeakLevel(output[0], 200), 0.0f) << "the end of loading clears the tape";
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
    const Signal silence(5000);
    const std::array<const float*, 2> in{silence.data(), silence.data()};
    engine.Process({.inputs = in.data(), .frames = 5000});
    EXPECT_GE(notes.blobs, 2);
}

/// Parameters that the processor derives from others would be lost if a preset set them back while
/// the others stay as they are.
TEST(StateTransferTest, TheSamePresetAgainLeavesDerivedParametersInForce) {
    ReadyEngine engine;
    Preset preset;
    preset.parameters = Settings(
        "Spatializer Enable=On;Spatializer Trajectory=Circle;Spatializer Rate UnSynced=5 Hz;"
        "Spatializer Amount=100 %;Function1_RateType=Triplet;MoteWeaver_BitCrushPreset=12 Bit");
    std::vector<std::vector<float>> derived;
    for (int round = 0; round < 2; ++round) {
        ApplyPreset(preset, engine, Catalog());
        engine.Pass(1000);
        derived.emplace_back();
        for (const ParameterInfo& info : Catalog().All())
            if (info.role == ParameterRole::Driven)
                derived.back().push_back(engine.Position(info.index));
    }
    EXPECT_EQ(derived[0], derived[1]);
    const uint32_t rate = IndexOf("LFO_Stereo_X_RateUnSynced");
    EXPECT_NEAR(Catalog().Value(rate, engine.Position(rate)), 5.0, 0.01);
    EXPECT_EQ(engine.Position(IndexOf("Function1_MidiSync")), 1.0f);
}

/// The limiter's look-ahead decides the latency, and a position that reads back a little too short
/// would take a sample off it: no state and no preset touches it.
TEST(StateTransferTest, DryPathIsTheInputAtItsLatencyAfterAStateAndAtANewRate) {
    const StereoSignal input = NoiseInput(4000);
    ReadyEngine made(Settings("Dry / Wet=0 %;Master Volume=0 dB"), {.sampleRate = 48000.0});
    made.Run(input);
    const std::string state = WriteState(CaptureState(made, Catalog()), Catalog());
    const std::string preset = WritePreset(CapturePreset(made, Catalog()), Catalog());
    for (const double rate : {44100.0, 48000.0, 96000.0}) {
        ReadyEngine engine;
        ApplyPreset(*ReadPreset(preset, Catalog()).value, engine, Catalog());
        ApplyState(*ReadState(state, Catalog()).value, engine, Catalog());
        engine.Prepare({.sampleRate = rate});
        const StereoSignal output = engine.Run(input);
        const uint32_t latency = engine.LatencyFrames();
        for (uint32_t c = 0; c < 2; ++c)
            EXPECT_TRUE(std::equal(output[c].begin() + latency, output[c].end(), input[c].begin()))
                << rate;
    }
}

}  // namespace
}  // namespace Quorvan::Host
