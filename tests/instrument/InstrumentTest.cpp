#include "host/instrument/Instrument.h"

#include <thread>

#include <nlohmann/json.hpp>

#include "instrument/InstrumentRig.h"
#include "support/AllocationTrap.h"

namespace Quorvan::Host {
namespace {

using Json = nlohmann::json;

constexpr uint32_t kMode = 8, kDensity = 9, kSize = 10, kPitch = 11, kSpray = 19, kFreeze = 24,
                   kPlayOffset = 31, kAssign1 = 40;

uint32_t Below(std::mt19937& random, uint32_t end) { return static_cast<uint32_t>(random() % end); }

/// Moves all over half a second, several in one block, some of which change what others mean.
std::vector<InstrumentEvent> LivelyEvents() {
    std::vector<InstrumentEvent> events;
    std::mt19937 random(5);
    for (uint32_t frame = 0; frame < 22000; frame += Below(random, 400)) {
        constexpr uint32_t kMoved[]{kMode, kDensity, kSize, kPitch, kSpray, kFreeze, kAssign1, 0};
        events.push_back(ControlAt(frame, kMoved[Below(random, 8)], Below(random, 101) / 100.0));
        // Halves of a 14-bit value, together or far apart.
        events.push_back(Midi(frame, 0xb0, 7, static_cast<uint8_t>(Below(random, 128))));
        events.push_back(Midi(frame + Below(random, 400), 0xb0, 39, 9));
    }
    std::stable_sort(events.begin(), events.end(),
                     [](const auto& one, const auto& other) { return one.frame < other.frame; });
    return events;
}

TEST(InstrumentTest, TheSameEventsGiveTheSameBitsHoweverBuffersAreCut) {
    const StereoSignal input = NoiseInput(24000);
    const std::vector<InstrumentEvent> events = LivelyEvents();
    const auto run = [&](const std::function<size_t()>& cut) {
        ReadyInstrument instrument;
        instrument.Assign(0, IndexOf("Feedback"));
        instrument.SetMidiMap(
            {{{MidiSource::Kind::FineController, 0, 7}, IndexOf("Master Volume")}});
        return instrument.Run(input, events, cut);
    };
    const StereoSignal whole = run([] { return size_t{24000}; });
    for (const size_t length : {1, 17, 64, 441, 512, 8192})
        EXPECT_TRUE(run([length] { return length; }) == whole) << length;
    std::mt19937 random(9);
    EXPECT_TRUE(run([&] { return random() % 700; }) == whole);
}

TEST(InstrumentTest, SizeAndDensityFollowWhatIsInForceAndAreHeardInEveryMode) {
    ReadyInstrument texture(
        "MoteWeaver_TextureSizeAbsolute=80 ms;MoteWeaver_GranularMode=Texture;");
    EXPECT_EQ(texture.ControlText(kSize, texture.ControlPosition(kSize)), "80.0 ms");
    texture.Flush({ControlAt(0, kMode, 1.0)});
    EXPECT_EQ(texture.ControlTarget(kPlayOffset), IndexOf("MoteWeaver_OffsetSynced"));
    EXPECT_EQ(texture.ControlText(kAssign1, 0.5f) + texture.ControlText(kPitch, 0.5f),
              "Off0.00 st");
    const StereoSignal input = NoiseInput(30000);
    for (const std::string mode : {"Classic", "Texture", "Beat"})
        for (const char* const more :
             {"GrainSizeMode=Free;", "GrainSizeMode=Straight;", "DensitySizeLink=On;",
              "DensityType=Triplet;", "TextureSizeMidiSync=On;"}) {
            const auto run = [&](uint32_t id, float position) {
                ReadyInstrument instrument(
                    "MoteWeaver_GranularPhaseHelper_RateSynced=@0.7;MoteWeaver_"
                    "StepSequencerGranular_StepOnOff1=On;MoteWeaver_GranularMode=" +
                    mode + ";MoteWeaver_" + more);
                instrument.Song().Run(true);
                const std::string text = instrument.ControlText(id, position);
                const float read = *instrument.ControlPositionOf(id, text).position;
                EXPECT_EQ(instrument.ControlText(id, read), text);
                EXPECT_EQ(text.ends_with(" layers"), id == kDensity && mode == "Texture");
                return instrument.Run(input, {ControlAt(0, id, position)});
            };
            EXPECT_FALSE(run(kSize, 0.2f) == run(kSize, 0.6f)) << mode << more;
            EXPECT_FALSE(run(kDensity, 0.4f) == run(kDensity, 0.8f)) << mode << more;
        }
}

TEST(InstrumentTest, OffsetsMoveTheSoundAndLeaveNoTrace) {
    const auto offset = [](uint32_t id, double value) {
        return InstrumentEvent{.kind = InstrumentEvent::Kind::Offset, .id = id, .value = value};
    };
    const StereoSignal input = NoiseInput(12000);
    ReadyInstrument moved, plain;
    const std::string before = moved.SaveState();
    moved.Flush({offset(kSize, 0.3), offset(kPitch, -0.2), ControlAt(0, kMode, 0.5)});
    plain.Flush({ControlAt(0, kMode, 0.5)});
    EXPECT_FALSE(moved.Run(input) == plain.Run(input));
    moved.Flush({ControlAt(0, kMode, 0.0), offset(kSize, 0.0), offset(kPitch, 0.0)});
    EXPECT_EQ(moved.SaveState(), before);
    // Taken back under another mode than it was given: both sizes stand where they stood.
    ReadyInstrument other, untouched;
    other.Flush({offset(kSize, 0.3), ControlAt(0, kMode, 0.5), offset(kSize, 0.0)});
    untouched.Flush({ControlAt(0, kMode, 0.5)});
    other.Flush({ControlAt(0, kMode, 0.0)});
    untouched.Flush({ControlAt(0, kMode, 0.0)});
    EXPECT_TRUE(other.Run(input) == untouched.Run(input));
}

TEST(InstrumentTest, BypassDoesNotClick) {
    const StereoSignal input{Sine(220.0, 44100.0, 44100, 0.5), Sine(330.0, 44100.0, 44100, 0.5)};
    ReadyInstrument instrument("Dry / Wet=0 %;");
    const StereoSignal output =
        instrument.Run(input, {ControlAt(10000, 0, 1.0), ControlAt(30000, 0, 0.0)});
    float jump = 0.0f;
    for (size_t i = 2000; i < output[0].size(); ++i)
        jump = std::max(jump, std::abs(output[0][i] - output[0][i - 1]));
    EXPECT_LT(jump, 0.5f * 2.0f * 3.1416f * 220.0f / 44100.0f + 0.001f);
}

/// Puts another member into each object.
void AddUnknown(Json& json) {
    for (Json& member : json)
        if (member.is_structured())
            AddUnknown(member);
    if (json.is_object())
        json["glow"] = {{"made", {1, "here", Json()}}};
}

TEST(InstrumentTest, StatesComeBackToTheByteAndRefuseWhatIsBroken) {
    ReadyInstrument instrument("MoteWeaver_Pitch=7 st;");
    instrument.Assign(3, IndexOf("FX2_Reverb_Decay"));
    instrument.CopySound();
    instrument.Edit(kPitchIndex, 0.9f);
    instrument.PlaySound(1);
    instrument.SetWindowSize({1100, 720});
    const std::string saved = instrument.SaveState();

    Instrument other(Catalog());
    EXPECT_TRUE(other.LoadState(saved).empty());
    EXPECT_EQ(other.SaveState(), saved);

    // A newer version may write more into every object, what it writes may be of other kinds, and
    // it comes back from a state that knows one sound alone, too.
    instrument.SetMidiMap({{{MidiSource::Kind::Controller, 1, 74}, kPitchIndex, 0.25f}});
    for (Json newer : {Json::parse(instrument.SaveState({{3, 0.5f}})),
                       Json::parse(ReadyInstrument().SaveState())}) {
        if (!newer["sounds"].contains("B"))
            newer["sounds"].update({{"A", Json::object()}, {"other", 5}, {"played", "C"}});
        AddUnknown(newer);
        newer["seed"] = newer["morph"] = newer["window"]["width"] = "none";
        newer["midi"].push_back({{"source", "theremin"}});
        newer["midi"].push_back({{"source", "note"}, {"number", "60"}, {"parameter", "Feedback"}});
        EXPECT_EQ(other.LoadState(newer.dump()).size(), 6u);
        EXPECT_EQ(Json::parse(other.SaveState(other.LoadedPorts())), newer);
    }
    const char* const poor = R"({"format": "tesserae-instrument", "version": 2, "parameters":
        {"Feedback": "loud"}, "midi": [{"source": "controller", "parameter": "Feedback"}]})";
    EXPECT_EQ(other.LoadState(poor).size(), 2u);
    const std::string kept = other.SaveState();
    EXPECT_NE(kept.find("\"controller\""), std::string::npos);
    other.LoadState(kept);
    EXPECT_EQ(other.SaveState(), kept);

    const std::string head = R"({"format":"tesserae-instrument","version":)";
    for (const std::string& broken :
         {std::string(), std::string("{}"), saved.substr(0, saved.size() / 2), head + "\"x\"}",
          head + "1}",
          head + "1,\"parameters\":{},\"a\":" + std::string(100000, '[') +
              std::string(100000, ']') + "}",
          std::string(100000, '['), std::string("\xff\xfe\x00", 3)}) {
        const std::vector<Issue> issues = other.LoadState(broken);
        ASSERT_EQ(issues.size(), 1u);
        EXPECT_EQ(issues[0].severity, Issue::Severity::Error);
        EXPECT_EQ(other.SaveState(), kept);
    }
}

TEST(InstrumentTest, AFixedSeedRepeatsAfterReloadAndActivate) {
    const StereoSignal input = NoiseInput(12000);
    ReadyInstrument first;
    const std::string saved = first.SaveState();
    const StereoSignal sound = first.Run(input);
    ReadyInstrument second("MoteWeaver_Pitch=12 st;");
    second.SetSeed({});
    second.Run(input);
    second.LoadState(saved);
    second.Activate({});
    EXPECT_TRUE(second.Run(input) == sound);
    second.SetSeed(8);
    EXPECT_FALSE(second.Run(input) == sound);
}

TEST(InstrumentTest, AFixedSeedRepeatsFromEachStartOfTheHostsSong) {
    const StereoSignal input = NoiseInput(12000);
    const auto whole = [] { return size_t{12000}; };
    ReadyInstrument first, second;
    first.transport = Transport{120.0, 0.0, true};
    const StereoSignal sound = first.Run(input, {}, whole);
    for (int round = 0; round < 3; ++round) {
        second.transport = Transport{120.0, 8.0, false};
        second.Run(input, {ControlAt(5, kPitch, 0.1)}, [] { return size_t{777}; });
        second.Flush({ControlAt(0, kPitch, 0.5)});
        second.Poll();
        second.transport = first.transport;
        EXPECT_TRUE(second.Run(input, {}, whole) == sound) << round;
    }
}

TEST(InstrumentTest, EditsAreTakenBackByGestureAndSoundsCompared) {
    ReadyInstrument instrument;
    const uint32_t feedback = IndexOf("Feedback");
    const float start = instrument.Position(feedback);
    instrument.BeginGesture(feedback);
    for (const float position : {0.2f, 0.4f, 0.6f})
        for (const uint32_t touched : {feedback, IndexOf("Dry / Wet")})
            instrument.Edit(touched, position);
    instrument.EndGesture(feedback);
    instrument.Flush({});
    EXPECT_EQ(instrument.sink.moves.size(), 6u);
    EXPECT_EQ(instrument.sink.begun * instrument.sink.ended, 4);
    EXPECT_TRUE(instrument.IsModified());
    instrument.Undo();
    EXPECT_EQ(instrument.Position(feedback), start);
    EXPECT_FALSE(instrument.IsModified());
    instrument.Redo();
    EXPECT_EQ(instrument.Position(feedback), 0.6f);
    // There and back again is no step.
    instrument.BeginGesture(feedback);
    for (const float position : {0.2f, 0.6f})
        instrument.Edit(feedback, position);
    instrument.EndGesture(feedback);
    instrument.Undo();
    EXPECT_EQ(instrument.Position(feedback), start);
    instrument.Redo();
    for (int i = 0; i < 300; ++i)
        instrument.Edit(feedback, static_cast<float>(i % 2));
    int steps = 0;
    for (; instrument.CanUndo(); ++steps)
        instrument.Undo();
    EXPECT_EQ(steps, 200);

    const std::string alone = instrument.SaveState();
    instrument.CopySound();
    instrument.Undo();
    EXPECT_EQ(instrument.SaveState(), alone);
    instrument.Redo();
    instrument.Edit(feedback, 0.8f);
    instrument.PlaySound(1);
    instrument.Edit(feedback, 0.4f);
    instrument.PlaySound(0);
    EXPECT_EQ(instrument.Position(feedback), 0.8f);
    instrument.Flush({ControlAt(0, kMorphControl, 0.25)});
    EXPECT_FLOAT_EQ(instrument.Position(feedback), 0.7f);

    EXPECT_EQ(instrument.sink.moves.back().second, double{instrument.Position(feedback)});

    const std::vector<float> before{instrument.Position(98), instrument.Position(feedback)};
    instrument.Randomise(Catalog()[98].group, std::nanf(""), 3);
    EXPECT_EQ(instrument.Position(98), before[0]);
    instrument.Randomise(Catalog()[98].group, 0.5f, 3);
    EXPECT_NE(instrument.Position(98), before[0]);
    EXPECT_EQ(instrument.Position(feedback), before[1]);
}

TEST(InstrumentTest, SoundsKeepTheirOwnWhateverAMorphLends) {
    ReadyInstrument instrument;
    const uint32_t feedback = IndexOf("Feedback"), width = IndexOf("MoteWeaver_Width");
    Preset choir = ReadyInstrument::Sound("Feedback=@0.6;");
    choir.name = "Choir";
    instrument.PlaySound(1);
    instrument.LoadPreset(choir);
    instrument.Flush({ControlAt(0, kMorphControl, 0.5)});
    EXPECT_FLOAT_EQ(instrument.Position(feedback), 0.3f);
    instrument.Edit(kPitchIndex, 0.9f);
    instrument.Flush({ControlAt(0, 20, 0.7), ControlAt(0, kMorphControl, 0.0)});
    EXPECT_EQ(instrument.Position(width), 0.0f);
    Instrument loaded(Catalog());
    loaded.LoadState(instrument.SaveState());
    EXPECT_EQ(loaded.SaveState(), instrument.SaveState());
    for (Instrument* const one : {static_cast<Instrument*>(&instrument), &loaded}) {
        one->PlaySound(0);
        EXPECT_TRUE(one->PresetName() == "Test" && !one->IsModified());
        one->PlaySound(1);
        EXPECT_TRUE(one->PresetName() == "Choir" && one->IsModified());
        EXPECT_TRUE(one->Position(width) == 0.7f && one->Position(feedback) == 0.6f);
    }
    for (int steps = 0; steps < 4; ++steps)  // to B, to A, the edit, the preset
        instrument.Undo();
    EXPECT_TRUE(instrument.PresetName() == "Test" && instrument.Position(feedback) == 0.0f);
    // A text of before: the played sound is what was heard.
    loaded.LoadState(R"({"format": "tesserae-instrument", "version": 1, "parameters":
        {"Feedback": 0.5}, "sounds": {"played": "B", "A": {"Feedback": 0.25}}})");
    loaded.PlaySound(0);
    loaded.PlaySound(1);
    EXPECT_EQ(loaded.Position(feedback), 0.5f);
}

/// One thread plays as a host does and traps what it must not do; others work on the same
/// instrument meanwhile. Races are the thread sanitizer's to find.
TEST(InstrumentTest, PlaysOnWhileOthersEditSaveAndLoad) {
    ReadyInstrument instrument;
    const std::string saved = instrument.SaveState();
    std::atomic<bool> stop{false};
    std::thread editor([&] {
        std::mt19937 random(1);
        for (int i = 0; i < 60; ++i) {
            instrument.Edit(Below(random, 3150), static_cast<float>(Below(random, 100)) / 99.0f);
            instrument.PlaySound(Below(random, 2));
            if (i % 20 == 5)
                instrument.SetSeed(i);
            if (i % 10 == 0)
                instrument.LoadState(saved);
            instrument.Undo();
        }
        stop = true;
    });
    std::thread saver([&] {
        while (!stop)
            EXPECT_FALSE(instrument.SaveState().empty());
    });
    const StereoSignal input = NoiseInput(512);
    StereoSignal output = Silence(512);
    const float* in[]{input[0].data(), input[1].data()};
    float* out[]{output[0].data(), output[1].data()};
    const std::array events{ControlAt(3, kMorphControl, 0.5), ControlAt(90, kSize, 0.2)};
    InstrumentBuffer buffer;
    buffer.audio = {.inputs = in, .outputs = out, .frames = 512};
    buffer.events = events;
    ControlSink silent;
    uint64_t caught = 0;
    while (!stop) {
        const AllocationTrap trap;
        instrument.Process(buffer, silent);
        caught += trap.caught;
        for (const float sample : output[0])
            ASSERT_TRUE(std::isfinite(sample));
    }
    editor.join();
    saver.join();
    EXPECT_EQ(caught, 0u);
    // All that was put has arrived: the sound is that of the last state.
    instrument.LoadState(saved);
    EXPECT_EQ(instrument.SaveState(), saved);
}

}  // namespace
}  // namespace Quorvan::Host
