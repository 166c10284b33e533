#include "host/parameters/ParameterCatalog.h"

#include <fstream>
#include <iomanip>

#include "host/HostRig.h"
#include "host/parameters/ModulationNames.h"
#include "host/parameters/PresentSettings.h"
#include "host/parameters/ShellIndex.h"
#include "processor/ProcessorInternals.h"

namespace Quorvan::Host {
namespace {

std::string ProblemOf(std::string_view name, std::string_view text) {
    const TextResult result = Catalog().Position(IndexOf(name), text);
    EXPECT_FALSE(result.position.has_value());
    return result.problem;
}

PresentSettings Textured() {
    PresentSettings settings(Catalog());
    settings.Put(IndexOf("MoteWeaver_GranularMode"), 0.5f);
    return settings;
}

TEST(ParameterCatalogTest, EveryParameterIsDescribed) {
    ASSERT_EQ(Catalog().Count(), 3152u);
    std::set<std::string> names, labels;
    for (const ParameterInfo& info : Catalog().All()) {
        EXPECT_TRUE(names.insert(info.name).second) << info.name;
        EXPECT_NE(info.group, "Other") << info.name;
        EXPECT_FALSE(info.label.empty()) << info.name;
        EXPECT_TRUE(labels.insert(info.group + "/" + info.label).second) << info.title;
        // No name of one is taken by another, whatever the modes.
        for (const PresentSettings& settings : {PresentSettings(Catalog()), Textured()}) {
            EXPECT_EQ(Catalog().Resolve(info.name, settings), info.index) << info.name;
            EXPECT_EQ(Catalog().Resolve(info.group + " " + info.label, settings), info.index)
                << info.title;
        }
        const bool choose =
            info.kind == ParameterKind::Choice || info.kind == ParameterKind::Switch;
        EXPECT_TRUE(!choose || info.choices.size() >= 2u) << info.name;
    }
}

/// What saved sounds and people's habits hang on, of all parameters: places, names, ranges, curves,
/// starts and texts. Where the digest is another one by intent, the listing shows what has changed.
TEST(ParameterCatalogTest, EverythingStandsWhereItStood) {
    std::ostringstream listing;
    listing << std::setprecision(4);
    for (const ParameterInfo& info : Catalog().All()) {
        listing << info.index << ' ' << info.name;
        for (const float position : {0.0f, 0.3f, 0.5f, 1.0f, info.defaultPosition})
            listing << " | " << Catalog().Value(info.index, position) << " = "
                    << Catalog().Text(info.index, position);
        listing << '\n';
    }
    uint64_t digest = 14695981039346656037u;  // FNV-1a
    for (const char c : listing.str())
        digest = (digest ^ static_cast<uint8_t>(c)) * 1099511628211u;
    const std::string file = testing::TempDir() + "tesserae-parameters.txt";
    std::ofstream(file) << listing.str();
    EXPECT_EQ(digest, 8320932294806498164u) << "compare " << file << " with that of a good build";
}

TEST(ParameterCatalogTest, TextsComeBackAsTheyWere) {
    Dice dice(5);
    for (const ParameterInfo& info : Catalog().All()) {
        if (info.kind == ParameterKind::Binary)
            continue;
        std::vector<float> positions{0.0f, 1.0f, 0.5f, 0.001f, 0.999f, info.defaultPosition};
        for (int i = 0; i < 30; ++i)
            positions.push_back(dice.Unit());
        for (const float position : positions) {
            const std::string text = Catalog().Text(info.index, position);
            const TextResult back = Catalog().Position(info.index, text);
            ASSERT_TRUE(back.position.has_value()) << info.name << ": " << back.problem;
            ASSERT_GE(*back.position, 0.0f);
            ASSERT_LE(*back.position, 1.0f);
            ASSERT_EQ(Catalog().Text(info.index, *back.position), text)
                << info.name << " at " << position;
        }
    }
}

/// The text says what the processor does: the shown choice is the step that the processor takes.
TEST(ParameterCatalogTest, ShownChoicesAreAllOfTheProcessorsSteps) {
    Engine engine(1);
    for (const ParameterInfo& info : Catalog().All()) {
        dsp::Parameter* const record =
            Processor::ParameterRecordOf(engine.GetProcessor(), info.index);
        if (record == nullptr)
            continue;
        SCOPED_TRACE(info.name);
        const bool stepped = record->kind == dsp::PotardKind::kStepped;
        EXPECT_TRUE(info.kind != ParameterKind::Switch || !stepped || record->steps == 2.0f);
        if (info.kind != ParameterKind::Choice) {
            EXPECT_FALSE(info.kind == ParameterKind::Continuous && stepped);
            continue;
        }
        EXPECT_TRUE(stepped);
        EXPECT_EQ(static_cast<float>(info.choices.size()), record->steps);
        for (uint32_t choice = 0; choice < info.choices.size(); ++choice) {
            const TextResult wanted = Catalog().Position(info.index, info.choices[choice]);
            ASSERT_TRUE(wanted.position.has_value()) << wanted.problem;
            const float value = record->ValueOf(*wanted.position);
            EXPECT_EQ((value - record->minValue) / record->stepSize, static_cast<float>(choice));
        }
    }
}

TEST(ParameterCatalogTest, ReadsWhatPeopleType) {
    const uint32_t frequency = IndexOf("FX1_MultiModeFilter_Freq");
    const auto shown = [&](std::string_view text) {
        return Catalog().Text(frequency, *Catalog().Position(frequency, text).position);
    };
    for (const char* text : {"1.25 kHz", "1250", "1250Hz", " 1.25K ", "1.25e3 hz"})
        EXPECT_EQ(shown(text), "1.25 kHz") << text;
    EXPECT_EQ(*Catalog().Position(frequency, "@0.25").position, 0.25f);
    EXPECT_EQ(Set("MoteWeaver_GranularMode", "tex"), Set("MoteWeaver_GranularMode", "Texture"));
    EXPECT_EQ(Set("MoteWeaver_Scale", "major"), Set("MoteWeaver_Scale", "Major"));
    EXPECT_EQ(Set("MoteWeaver_BufferFreeze", "yes").position, 1.0f);
    EXPECT_EQ(Set("Feedback", "-inf").position, 0.0f);
    EXPECT_NEAR(Set("FX1_TapeEcho_DelayTimeFine", "0 ms").position, 0.5f, 1e-6f);
}

TEST(ParameterCatalogTest, NamesOfMusiciansFindTheirParameters) {
    const char* const names[][2] = {{"spray", "MoteWeaver_Spray"},
                                    {"Dry/Wet", "Dry / Wet"},
                                    {" persistence ", "MoteWeaver_BufferPersistence"},
                                    {"fx1  reverb decay", "FX1_Reverb_Decay"},
                                    {"FX2 Dry / Wet", "FX2_Dry / Wet"},
                                    {"FX1 Filter Freq", "FX1_MultiModeFilter_Freq"},
                                    {"FX1 Filter Frequency", "FX1_MultiModeFilter_Freq"},
                                    {"Direction", "MoteWeaver_RandomDirection"},
                                    {"Function 1 to Pitch", "Modulations_Dst7_Src2_Amount"},
                                    {"Grain Size", "MoteWeaver_GrainSizeAbsolute"},
                                    {"Density", "MoteWeaver_GranularPhaseHelper_RateUnSynced"},
                                    {"play_head", "MoteWeaver_Speed"},
                                    {"Texture Density", "MoteWeaver_TextureDensity"}};
    const PresentSettings settings(Catalog());
    for (const auto& [name, full] : names)
        EXPECT_EQ(Catalog().Resolve(name, settings), IndexOf(full)) << name;
    EXPECT_EQ(Catalog().Resolve("grain size", Textured()),
              IndexOf("MoteWeaver_TextureSizeAbsolute"));
    EXPECT_EQ(Catalog().Resolve("Density", Textured()), IndexOf("MoteWeaver_TextureDensity"));
    PresentSettings held = settings;
    held.Put(IndexOf("FX2_ModuleType"), 1.0f);
    for (const char* name : {"Reverb Decay", "decay"})
        EXPECT_EQ(Catalog().Resolve(name, held), IndexOf("FX2_Reverb_Decay")) << name;
    held.Put(IndexOf("FX1_ModuleType"), 1.0f);
    EXPECT_EQ(Catalog().Resolve("Reverb Decay", held), std::nullopt);
    for (const char* name : {"Decay", "FX1_Reverb_Sise", "", "Sparkle"})
        EXPECT_EQ(Catalog().Resolve(name, settings), std::nullopt) << name;
    EXPECT_EQ(Catalog().UnknownName("Reverb Decay"),
              "\"Reverb Decay\" can mean \"FX1 Reverb Decay\" or \"FX2 Reverb Decay\". Write the "
              "one that "
              "is meant.");
}

/// What a row of modulation moves is what the shared name means, whatever the modes.
TEST(ParameterCatalogTest, SharedNamesMeanWhatModulationMoves) {
    ReadyEngine engine;
    Dice dice(3);
    for (int round = 0; round < 40; ++round) {
        std::vector<ParameterValue> modes;
        for (const ParameterInfo& info : Catalog().All())
            if (Catalog().Decides(info.index))
                modes.push_back({info.index, dice.Unit()});
        engine.Restore(modes);
        engine.Pass(100);
        const PresentSettings settings(Catalog(), [&](uint32_t i) { return engine.Position(i); });
        const uint32_t mode = settings.Choice(IndexOf("MoteWeaver_GranularMode"));
        for (uint32_t row = 0; row < kModulationDestinations; ++row) {
            const std::string& name = DestinationName(row);
            // Rows with a life of their own: the name goes with the sound, the row with the
            // display.
            const bool apart = name.ends_with("Density") || name.ends_with("Chorus Rate") ||
                               (name == "Play Head" && mode == 2);
            const uint32_t target = TargetOfDestination(engine.GetProcessor(), row);
            EXPECT_TRUE(apart || Catalog().CommonName(target).empty() ||
                        Catalog().IsInForce(target, settings))
                << Catalog()[target].title;
        }
    }
}

TEST(ParameterCatalogTest, ProblemsNameTheThingAndSayWhatToDo) {
    EXPECT_EQ(ProblemOf("MoteWeaver_GranularMode", "Textile"),
              "\"Granular Mode\" (MoteWeaver_GranularMode) has no choice \"Textile\". Use "
              "\"Classic\", \"Texture\" "
              "or \"Beat\".");
    EXPECT_EQ(
        ProblemOf("Master Volume", "6 dB"),
        "\"6 dB\" is out of range for \"Master Volume\". Use a value from -70.0 dB to 0.0 dB.");
    const char* const cases[][3] = {
        {"MoteWeaver_Offset", "soon", "Write a number such as \"500 ms\""},
        {"Dry / Wet", "@2", "from 0 to 1"},
        {"Dry / Wet", "", "Dry / Wet"},
        {"Feedback_BigChunk", "1", "leave it out"},
        {"MoteWeaver_Scale", "maj", "can mean \"Major\" or \"Major Pentatonic\""},
        {"MoteWeaver_SprayDirection", "", "Backward"}};
    for (const auto& [name, text, phrase] : cases)
        EXPECT_NE(ProblemOf(name, text).find(phrase), std::string::npos) << name << " " << text;
}

TEST(ParameterCatalogTest, TyposFindTheirNames) {
    const auto best = [](std::string_view typed) {
        const auto nearest = Catalog().Nearest(typed, 1);
        return nearest.empty() ? std::string() : nearest.front();
    };
    EXPECT_EQ(best("MoteWeaver_Ptich"), "MoteWeaver_Pitch");
    EXPECT_EQ(best("mastervolume"), "Master Volume");
    EXPECT_EQ(best("FX1_Delay_Feedbak"), "FX1_Delay_Feedback");
    EXPECT_EQ(best("GrainSizeAbsolut"), "MoteWeaver_GrainSizeAbsolute");
    EXPECT_EQ(best("FX1 Reverb Dekay"), "FX1 Reverb Decay");
    EXPECT_EQ(best("Presistence"), "Persistence");
    EXPECT_EQ(best("grain_sise"), "Grain Size");
    EXPECT_EQ(best("macro 1 to pich"), "Macro 1 to Pitch");
    EXPECT_EQ(Catalog().UnknownName("Grain Sise"),
              "There is no parameter called \"Grain Sise\". Did you mean \"Grain Size\"?");
    EXPECT_EQ(best("Modulations_Dst7_Src9_Amount").substr(0, 19), "Modulations_Dst7_Sr");
    EXPECT_TRUE(Catalog().Nearest("qqqqqqqqqqqqqq").empty());
    EXPECT_EQ(Catalog().Find("dry / WET"), IndexOf("Dry / Wet"));
}

struct GrainNotes : EngineListener {
    void OnGrainStart(const GrainStart& grain) override { grains.push_back(grain); }
    std::vector<GrainStart> grains;
};

TEST(ParameterCatalogTest, PitchReadsAsTheGrainsSound) {
    ReadyEngine engine;
    GrainNotes notes;
    engine.AddListener(notes);
    const auto& scales = Catalog()[kScaleIndex].choices;
    for (uint32_t scale = 0; scale < scales.size(); ++scale) {
        for (const float position : {0.0f, 0.31f, 0.5f, 0.77f, 1.0f}) {
            std::vector<ParameterValue> settings =
                AudibleSettings("MoteWeaver_RandomPitch=@0;MoteWeaver_Scale=" + scales[scale]);
            settings.push_back({kPitchIndex, position});
            engine.Restore(settings);
            notes.grains.clear();
            engine.Pass(44);
            ASSERT_FALSE(notes.grains.empty());
            const auto semitones = static_cast<double>(notes.grains.front().semitones);
            const TextContext context = TextContext::Of(engine.GetProcessor());
            EXPECT_NEAR(Catalog().Value(kPitchIndex, position, context), semitones, 1e-4)
                << scales[scale] << " at " << position;
            const std::string text = Catalog().Text(kPitchIndex, position, context);
            const TextResult back = Catalog().Position(kPitchIndex, text, context);
            EXPECT_EQ(Catalog().Text(kPitchIndex, *back.position, context), text);
        }
    }
}

TEST(ModulationNamesTest, EachNameIsThereOnceAndFindsItsRow) {
    for (uint32_t s = 0; s < kModulationSources; ++s)
        EXPECT_EQ(FindSource(SourceName(s)), s);
    for (uint32_t d = 0; d < kModulationDestinations; ++d)
        EXPECT_EQ(FindDestination(DestinationName(d)), d) << DestinationName(d);
    EXPECT_EQ(FindSource("macro 2"), 6u);
    EXPECT_EQ(Catalog().FindDestination("FX1 Filter Frequency"),
              FindDestination("FX1 Filter Freq"));
    EXPECT_EQ(Catalog().FindDestination("MoteWeaver_RandomDirection"), 14u);
    EXPECT_EQ(Catalog().FindDestination("Grain Size (Texture, Free)"), 9u);
    EXPECT_EQ(DestinationName(94), "FX2 Reverb Damping");
    EXPECT_EQ(Catalog()[AmountIndex(1, 6)].name, "Modulations_Dst7_Src2_Amount");
    EXPECT_EQ(Catalog()[ActivatedIndex(6, 94)].name, "Modulations_Dst95_Src7_Activated");
    EXPECT_EQ(Catalog()[AmountIndex(1, 6)].label, "Function 1 to Pitch");
    EXPECT_NE(UnknownDestination("Pich").find("\"Pitch\""), std::string::npos);
    EXPECT_NE(UnknownSource("LFO").find("Function 1"), std::string::npos);
}

}  // namespace
}  // namespace Quorvan::Host
