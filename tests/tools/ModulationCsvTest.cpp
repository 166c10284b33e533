// What a render tells of its modulation: the table, the panel of the picture, the list of
// destinations.
#include "tools/ToolRig.h"
#include "tools/support/CsvLine.h"

namespace Quorvan::test {
namespace {

constexpr size_t kSecond = 48000;
constexpr double kSampleTime = 0.004;  // four blocks of a millisecond
constexpr double kSourceStep = 1.0 / 127.0;
constexpr double kPositionStep = 1.0 / 255.0;

using Table = std::map<std::string, std::vector<double>>;

Table ReadTable(const std::string& path) {
    std::istringstream lines(ReadFile(path));
    std::string line;
    std::getline(lines, line);
    const std::vector<std::string> heads = Tools::SplitCsvLine(line);
    Table table;
    while (std::getline(lines, line)) {
        const std::vector<std::string> fields = Tools::SplitCsvLine(line);
        EXPECT_EQ(fields.size(), heads.size()) << line;
        for (size_t i = 0; i < heads.size(); ++i)
            table[heads[i]].push_back(std::stod(fields[i]));
    }
    return table;
}

class ModulationCsvTest : public RenderRig {
protected:
    Table TableOf(const Arguments& more) const {
        Run(more + Arguments{"--modulation-csv", folder / "m.csv"});
        return ReadTable(folder / "m.csv");
    }
};

TEST_F(ModulationCsvTest, AMacroAndWhatItMovesStandAtTheirPositions) {
    Input({Noise(1, kSecond, 0.2f)});
    const Table table = TableOf({"--set", "Macro 1=0.5", "--set", "Macro 2=1", "--set",
                                 "Modulations_Dst7_Src6_Amount=0.75",  // pitch: half its travel
                                 "--modulation-destinations", "pitch,FX1 Filter Freq"});
    ASSERT_EQ(table.size(), 10u);
    const auto& seconds = table.at("seconds");
    EXPECT_NEAR(static_cast<double>(seconds.size()), 1.0 / kSampleTime, 9.0);  // but a last chunk
    for (size_t i = 0; i < seconds.size(); ++i) {
        EXPECT_NEAR(i > 0 ? seconds[i] - seconds[i - 1] : kSampleTime, kSampleTime, 1.5e-4);
        EXPECT_NEAR(table.at("Macro 1")[i], 0.5, kSourceStep);
        EXPECT_EQ(table.at("Macro 2")[i], 1.0);
        EXPECT_NEAR(table.at("Envelope Follower")[i], 0.1, 0.11);
        EXPECT_NEAR(table.at("Pitch")[i], 0.75, kPositionStep);
    }
}

TEST_F(ModulationCsvTest, ASyncedFunctionTakesItsNoteValueAndLocksToTheSong) {
    Input({std::vector<float>(4 * kSecond, 0.0f)});
    WriteFile(folder / "saw.json", R"({"format": "tesserae-preset", "version": 1, "parameters": {
        "Function1_Mode": "Free", "Function1_RateType": "Straight", "Function1_RateSynced": "1/4",
        "Function1_LastActivePointIndex": "1", "Function1_PointY1": "0 %",
        "Function1_PointY2": "100 %", "Function1_Tension1": 0.5}})");
    const Table table =
        TableOf({"--preset", folder / "saw.json", "--tempo", "100", "--start-beat", "2.5"});
    const auto& seconds = table.at("seconds");
    const auto& values = table.at("Function 1");
    std::vector<double> wraps;
    for (size_t i = 1; i < values.size(); ++i) {
        if (values[i] < values[i - 1] - 0.5)
            wraps.push_back(seconds[i]);
    }
    // A beat takes 0.6 s; the song starts in the middle of one.
    ASSERT_EQ(wraps.size(), 7u);
    for (size_t k = 0; k < wraps.size(); ++k)
        EXPECT_NEAR(wraps[k], 0.3 + 0.6 * static_cast<double>(k), 1.3 * kSampleTime);
}

TEST_F(ModulationCsvTest, WatchingDoesNotChangeTheSound) {
    Input({Noise(5, kSecond, 0.3f)});
    Run({"--preset", "loud-blooms"});
    const std::string alone = ReadFile(folder / "out.wav");
    TableOf({"--preset", "loud-blooms"});
    EXPECT_TRUE(ReadFile(folder / "out.wav") == alone);
}

nlohmann::json Destinations(const std::string& preset) {
    const Outcome outcome = RunTool({"destinations", "--preset", preset, "--json"});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
    return nlohmann::json::parse(outcome.out);
}

TEST(DestinationsTest, RowsTellWhatTheyMoveNow) {
    const nlohmann::json plain = Destinations("init");
    ASSERT_EQ(plain.size(), 95u);
    for (size_t i = 0; i < plain.size(); ++i) {
        EXPECT_EQ(plain[i]["number"], i + 1);
        EXPECT_TRUE(plain[i]["sources"].empty());
    }
    EXPECT_EQ(plain[6]["parameter"], "MoteWeaver_Pitch");
    EXPECT_EQ(plain[94]["name"], "FX2 Reverb Damping");
    EXPECT_EQ(plain[94]["index"], 1509);

    const nlohmann::json synced = Destinations("clockwork-arpeggio");
    EXPECT_EQ(synced[11]["parameter"], "MoteWeaver_GranularPhaseHelper_RateSynced");
    EXPECT_EQ(synced[11]["title"], "Density (Synced)");
    EXPECT_EQ(synced[6]["sources"].dump(),
              R"([{"amount":0.25,"source":"Function 1"},{"amount":0.1,"source":"Function 2"}])");
}

TEST(ParamsTest, WhatIsLookedForStandsFirstAmongItsGroup) {
    const auto first = [](const Arguments& filter) {
        const Outcome outcome = RunTool(Arguments{"params", "--json"} + filter);
        return nlohmann::json::parse(outcome.out)[0]["name"].get<std::string>();
    };
    EXPECT_EQ(first({"Pitch"}), "MoteWeaver_Pitch");
    EXPECT_EQ(first({"reverb", "decay"}), "FX1_Reverb_Decay");
    EXPECT_EQ(first({"grain size", "--preset", "beat-slicer"}), "MoteWeaver_GrainSizeRatio");
    EXPECT_EQ(first({"_Dst7_"}), "Modulations_Dst7_Src1_Amount");
    const auto list = [](const char* columns) {
        return RunTool({"params", "grain size"}, [=] { setenv("COLUMNS", columns, 1); }).out;
    };
    const std::string wide = list("0"), narrow = list("72");
    EXPECT_NE(wide.find("\n\nGranular\n  Grain Size (Free) *"), std::string::npos) << wide;
    std::istringstream lines(narrow);
    for (std::string line; std::getline(lines, line);)
        EXPECT_LE(line.size(), line[0] == '*' ? 80u : 72u) << line;
    EXPECT_NE(narrow.find("MoteWeaver_GrainSizeAbsolute, 100\n"), std::string::npos) << narrow;
    EXPECT_NE(RunTool({"params", "scale"}).out.find("Mixolydian | Dorian\n"), std::string::npos);
}

}  // namespace
}  // namespace Quorvan::test
