#include "host/parameters/ParameterCatalog.h"

#include <random>
#include <set>

#include <gtest/gtest.h>

#include "host/HostRig.h"
#include "host/parameters/ModulationNames.h"
#include "host/parameters/ShellIndex.h"
#include "processor/ProcessorInternals.h"

namespace Quorvan::Host {
namespace {

using namespace test;

std::string TextOf(std::string_view name, float position, const TextContext& context = {}) {
    return Catalog().Text(IndexOf(name), position, context);
}

std::string ProblemOf(std::string_view name, std::string_view text) {
    const TextResult result = Catalog().Position(IndexOf(name), text);
    EXPECT_FALSE(result.position.has_value());
    return result.problem;
}

TEST(ParameterCatalogTest, EveryParameterIsDescribed) {
    ASSERT_EQ(Catalog().Count(), 3152u);
    std::set<std::string> names;
    std::set<std::string> labels;
    for (const ParameterInfo& info : Catalog().All()) {
        EXPECT_TRUE(names.insert(info.name).second) << info.name;
        EXPECT_NE(info.group, "Other") << info.name;
        EXPECT_FALSE(info.label.empty()) << info.name;
        if (info.role == ParameterRole::Setting) {
            EXPECT_TRUE(labels.insert(info.group + "/" + info.label).second)
                << info.group << " " << info.label;
        }
        EXPECT_EQ(Catalog().Find(info.name), info.index) << info.name;
        if (info.kind == ParameterKind::Choice || info.kind == ParameterKind::Switch) {
            EXPECT_GE(info.choices.size(), 2u) << info.name;
        }
    }
}

TEST(ParameterCatalogTest, ChoicesAreAsManyAsTheProcessorsSteps) {
    Engine engine(1);
    for (const ParameterInfo& info : Catalog().All()) {
        const dsp::Parameter* record =
            Processor::ParameterRecordOf(engine.GetProcessor(), info.index);
        if (record == nullptr)
            continue;
        const bool stepped = record->kind == dsp::PotardKind::kStepped;
        if (info.kind == ParameterKind::Choice) {
            EXPECT_TRUE(stepped) << info.name;
            EXPECT_EQ(static_cast<float>(info.choices.size()), record->steps) << info.name;
        }
        if (info.kind == ParameterKind::Switch && stepped) {
            EXPECT_EQ(record->steps, 2.0f) << info.name;
        }
        if (info.kind == ParameterKind::Continuous) {
            EXPECT_FALSE(stepped) << info.name;
        }
    }
}

TEST(ParameterCatalogTest, TextsComeBackAsTheyWere) {
    std::mt19937 random(5);
    std::uniform_real_distribution<float> draw(0.0f, 1.0f);
    for (const ParameterInfo& info : Catalog().All()) {
        if (info.kind == ParameterKind::Binary)
            continue;
        std::vector<float> positions{0.0f, 1.0f, 0.5f, 0.001f, 0.999f, info.defaultPosition};
        for (int i = 0; i < 30; ++i)
            positions.push_back(draw(random));
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
TEST(ParameterCatalogTest, ShownChoicesAreTheOnesInForce) {
    Engine engine(1);
    for (const ParameterInfo& info : Catalog().All()) {
        dsp::Parameter* const record =
            Processor::ParameterRecordOf(engine.GetProcessor(), info.index);
        if (record == nullptr || info.kind != ParameterKind::Choice)
            continue;
        for (uint32_t choice = 0; choice < info.choices.size(); ++choice) {
            const TextResult wanted = Catalog().Position(info.index, info.choices[choice]);
            ASSERT_TRUE(wanted.position.has_value()) << wanted.problem;
            const float value = record->ValueOf(*wanted.position);
            EXPECT_EQ((value - record->minValue) / record->stepSize, static_cast<float>(choice))
                << info.name << " " << info.choices[choice];
        }
    }
}

TEST(ParameterCatalogTest, TextsAreInUnitsThatPeopleUse) {
    EXPECT_EQ(TextOf("Master Volume", 1.0f), "0.0 dB");
    EXPECT_EQ(TextOf("Master Volume", 0.0f), "-70.0 dB");
    EXPECT_EQ(TextOf("Feedback", 0.0f), "-inf dB");
    EXPECT_EQ(TextOf("MoteWeaver_GranularMode", 0.5f), "Texture");
    EXPECT_EQ(TextOf("MoteWeaver_Scale", 0.5f), "Major Pentatonic");
    EXPECT_EQ(TextOf("MoteWeaver_GrainSizeSynced", 0.5f), "1/8");
    EXPECT_EQ(TextOf("MoteWeaver_BufferLengthSynced", 0.6f), "3/2");
    EXPECT_EQ(TextOf("MoteWeaver_OffsetSynced", 0.0f), "0");
    EXPECT_EQ(TextOf("MoteWeaver_MaxGrains", 1.0f), "256");
    EXPECT_EQ(TextOf("MoteWeaver_Speed", 0.75f), "1.00 x");
    EXPECT_EQ(TextOf("MoteWeaver_RandomFine", 1.0f), "100.0 ct");
    EXPECT_EQ(TextOf("MoteWeaver_BufferPersistence", 1.0f), "80.0 %");
    EXPECT_EQ(TextOf("MoteWeaver_BufferFreeze", 1.0f), "On");
    EXPECT_EQ(TextOf("FX1_MultiModeFilter_Slope", 0.5f), "24 dB/oct");
    EXPECT_EQ(TextOf("FX2_Compressor_Ratio", 0.0f), "1.00:1");
    EXPECT_EQ(TextOf("FX1_Chorus_Voices", 1.0f), "3");
    EXPECT_EQ(TextOf("FX1_Delay_DelayTimeMs", 1.0f), "2.00 s");
    EXPECT_EQ(TextOf("FX2_Reverb_Predelay", 1.0f), "200 ms");
    EXPECT_EQ(TextOf("Modulations_Dst7_Src2_Amount", 0.25f), "-50.0 %");
    EXPECT_EQ(TextOf("Modulations_Dst7_Src2_Activated", 1.0f), "On");
    EXPECT_EQ(TextOf("StepSeq_Swing", 1.0f), "75.0 %");
    EXPECT_EQ(TextOf("MoteWeaver_VisualizedBuffer", 0.3f), "");
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

TEST(ParameterCatalogTest, ProblemsNameTheThingAndSayWhatToDo) {
    EXPECT_EQ(ProblemOf("MoteWeaver_GranularMode", "Textile"),
              "\"MoteWeaver_GranularMode\" has no choice \"Textile\". Use \"Classic\", \"Texture\" "
              "or \"Beat\".");
    EXPECT_EQ(
        ProblemOf("Master Volume", "6 dB"),
        "\"6 dB\" is out of range for \"Master Volume\". Use a value from -70.0 dB to 0.0 dB.");
    EXPECT_NE(ProblemOf("MoteWeaver_Offset", "soon").find("Write a number such as \"500 ms\""),
              std::string::npos);
    EXPECT_NE(ProblemOf("Dry / Wet", "@2").find("from 0 to 1"), std::string::npos);
    EXPECT_NE(ProblemOf("Dry / Wet", "").find("Dry / Wet"), std::string::npos);
    EXPECT_NE(ProblemOf("Feedback_BigChunk", "1").find("leave it out"), std::string::npos);
    EXPECT_NE(ProblemOf("MoteWeaver_SprayDirection", "").find("Backward"), std::string::npos);
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
    EXPECT_EQ(best("Modulations_Dst7_Src9_Amount").substr(0, 19), "Modulations_Dst7_Sr");
    EXPECT_TRUE(Catalog().Nearest("qqqqqqqqqqqqqq").empty());
    EXPECT_EQ(Catalog().UnknownName("Marco 1"),
              "There is no parameter called \"Marco 1\". Did you mean \"Macro 1\" or \"Macro 2\"?");
    EXPECT_EQ(Catalog().Find("dry / WET"), IndexOf("Dry / Wet"));
}

/// Notes the pitches of grains.
struct GrainNotes : EngineListener {
    void OnGrainStart(const GrainStart& grain) override { grains.push_back(grain); }
    std::vector<GrainStart> grains;
};

TEST(ParameterCatalogTest, PitchReadsAsTheGrainsSound) {
    Engine engine(1);
    engine.Prepare({});
    GrainNotes notes;
    engine.AddListener(notes);
    const auto& scales = Catalog()[kScaleIndex].choices;
    for (uint32_t scale = 0; scale < scales.size(); ++scale) {
        for (const float position : {0.0f, 0.31f, 0.5f, 0.77f, 1.0f}) {
            std::vector<ParameterValue> settings = AudibleSettings();
            settings.push_back({IndexOf("MoteWeaver_RandomPitch"), 0.0f});
            settings.push_back(Set("MoteWeaver_Scale", scales[scale]));
            settings.push_back({kPitchIndex, position});
            engine.Restore(settings);
            notes.grains.clear();
            HostStream(engine).Run(Silence(44), 44);
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
    EXPECT_EQ(DestinationName(94), "FX2 Reverb Damping");
    EXPECT_EQ(Catalog()[AmountIndex(1, 6)].name, "Modulations_Dst7_Src2_Amount");
    EXPECT_EQ(Catalog()[ActivatedIndex(6, 94)].name, "Modulations_Dst95_Src7_Activated");
    EXPECT_EQ(Catalog()[AmountIndex(1, 6)].label, "Function 1 to Pitch");
    EXPECT_NE(UnknownDestination("Pich").find("\"Pitch\""), std::string::npos);
    EXPECT_NE(UnknownSource("LFO").find("Function 1"), std::string::npos);
}

TEST(ModulationNamesTest, NamesAgreeWithWhatTheRowsMove) {
    Engine engine(1);
    engine.Prepare({});
    const auto target = [&](std::string_view destination) {
        return Catalog()[TargetOfDestination(engine.GetProcessor(), *FindDestination(destination))]
            .name;
    };
    EXPECT_EQ(target("Pitch"), "MoteWeaver_Pitch");
    EXPECT_EQ(target("Spray"), "MoteWeaver_Spray");
    EXPECT_EQ(target("Random Layers"), "MoteWeaver_RandomLayers");
    EXPECT_EQ(target("Function 3 Scale"), "Function3_Scale");
    EXPECT_EQ(target("FX1 Filter Freq"), "FX1_MultiModeFilter_Freq");
    EXPECT_EQ(target("FX2 Octaver Detune"), "FX2_OctaverDelay_Detune");
    EXPECT_EQ(target("FX1 Tape Echo Input"), "FX1_TapeEcho_InputVolume");
    EXPECT_EQ(target("FX2 Flanger Feedback"), "FX2_Flanger_Chorus_Feedback");
    EXPECT_EQ(target("FX1 Reverb Predelay"), "FX1_Reverb_Predelay");
    EXPECT_EQ(target("Grain Size"), "MoteWeaver_GrainSizeAbsolute");
    engine.Restore(std::array{Set("MoteWeaver_GranularMode", "Texture")});
    EXPECT_EQ(target("Grain Size"), "MoteWeaver_TextureSizeAbsolute");
}

}  // namespace
}  // namespace Quorvan::Host
