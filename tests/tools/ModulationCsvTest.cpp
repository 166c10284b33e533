// What a render tells of its modulation: the table, the panel of the picture, the list of
// destinations.
#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <sstream>

#include <nlohmann/json.hpp>

#include "support/TestSignals.h"
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

/// Renders and answers the table.
class ModulationCsvTest : public ::testing::Test {
protected:
    Arguments Command(const Arguments& more) const {
        Arguments arguments{"render", folder / "in.wav", "-o", folder / "out.wav", "--seed",
                            "3",      "--tail",          "0",  "--force"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return arguments;
    }
    Table Render(Arguments more) const {
        more.insert(more.end(), {"--modulation-csv", folder / "m.csv"});
        const Outcome outcome = RunTool(Command(more));
        EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
        return ReadTable(folder / "m.csv");
    }
    void WriteInput(const std::vector<float>& sound) const {
        WriteWav(folder / "in.wav", {sound, sound});
    }

    Folder folder;
};

TEST_F(ModulationCsvTest, AMacroAndWhatItMovesStandAtTheirPositions) {
    WriteInput(Noise(1, kSecond, 0.2f));
    const Table table = Render({"--set", "Macro 1=0.5", "--set", "Macro 2=1", "--set",
                                "Modulations_Dst7_Src6_Amount=0.75",  // pitch: half its travel
                                "--modulation-destinations", "pitch,FX1 Filter Freq"});
    ASSERT_EQ(table.size(), 10u);
    const auto& seconds = table.at("seconds");
    EXPECT_NEAR(static_cast<double>(seconds.size()), 1.0 / kSampleTime, 9.0);  // but a last chunk
    for (size_t i = 0; i < seconds.size(); ++i) {
        if (i > 0) {
            EXPECT_NEAR(seconds[i] - seconds[i - 1], kSampleTime, 1.5e-4);
        }
        EXPECT_NEAR(table.at("Macro 1")[i], 0.5, kSourceStep);
        EXPECT_EQ(table.at("Macro 2")[i], 1.0);
        EXPECT_NEAR(table.at("Envelope Follower")[i], 0.1, 0.11);
        EXPECT_NEAR(table.at("Pitch")[i], 0.75, kPositionStep);
    }
}

TEST_F(ModulationCsvTest, ASyncedFunctionTakesItsNoteValueAndLocksToTheSong) {
    WriteInput(std::vector<float>(4 * kSecond, 0.0f));
    WriteFile(folder / "saw.json", R"({"format": "tesserae-preset", "version": 1, "parameters": {
        "Function1_Mode": "Free", "Function1_RateType": "Straight", "Function1_RateSynced": "1/4",
        "Function1_LastActivePointIndex": "1", "Function1_PointY1": "0 %",
        "Function1_PointY2": "100 %", "Function1_Tension1": 0.5}})");
    const Table table =
        Render({"--preset", folder / "saw.json", "--tempo", "100", "--start-beat", "2.5"});
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

TEST_F(ModulationCsvTest, TheFollowerFollows) {
    std::vector<float> step(kSecond, 0.0f);
    std::fill(step.begin() + kSecond / 2, step.end(), 0.5f);
    WriteInput(step);
    const Table table = Render({"--set", "Envelope Follower Gain=0 dB", "--set",
                                "EnvFollower_Attack=0", "--set", "EnvFollower_Release=0"});
    const auto& seconds = table.at("seconds");
    for (size_t i = 0; i < seconds.size(); ++i) {
        const double wanted = seconds[i] < 0.5 ? 0.0 : 0.5;
        if (std::abs(seconds[i] - 0.5) > kSampleTime) {
            EXPECT_NEAR(table.at("Envelope Follower")[i], wanted, 1.5 * kSourceStep) << seconds[i];
        }
    }
}

TEST_F(ModulationCsvTest, WatchingDoesNotChangeTheSound) {
    WriteInput(Noise(5, kSecond, 0.3f));
    ASSERT_EQ(RunTool(Command({"--preset", "loud-blooms"})).exitCode, 0);
    const std::string alone = ReadFile(folder / "out.wav");
    Render({"--preset", "loud-blooms"});
    EXPECT_TRUE(ReadFile(folder / "out.wav") == alone);
}

TEST_F(ModulationCsvTest, WhatMakesNoSenseIsRefusedWithoutTraces) {
    WriteInput(Noise(5, 4800, 0.3f));
    const auto refused = [&](const Arguments& more, const std::string& word) {
        const Outcome outcome = RunTool(Command(more));
        EXPECT_EQ(outcome.exitCode, 2);
        EXPECT_NE(outcome.err.find(word), std::string::npos) << outcome.err;
    };
    const std::string csv = folder / "m.csv";
    refused({"--modulation-csv", csv, "--modulation-destinations", "Pich"}, "\"Pitch\"");
    refused({"--modulation-destinations", "Pitch"}, "--modulation-csv");
    refused({"--modulation-csv", folder / "out.wav"}, "Name two files");
    refused({"--modulation-csv", csv, "--picture", csv}, "Name two files");
    EXPECT_EQ(folder.Content(), std::vector<std::string>{"in.wav"});
}

TEST_F(ModulationCsvTest, ThePictureShowsModulationWhereThereIsSomeOrWhereAsked) {
    WriteInput(Noise(5, kSecond / 4, 0.3f));
    const auto heightOf = [&](const Arguments& more) {
        Arguments all{"--picture", folder / "p.png"};
        all.insert(all.end(), more.begin(), more.end());
        EXPECT_EQ(RunTool(Command(all)).exitCode, 0);
        const std::string png = ReadFile(folder / "p.png");
        return static_cast<uint8_t>(png.at(22)) * 256 + static_cast<uint8_t>(png.at(23));
    };
    const int plain = heightOf({"--preset", "init"});
    EXPECT_EQ(plain, 1200);
    EXPECT_GT(heightOf({"--preset", "loud-blooms"}), plain);
    EXPECT_GT(heightOf({"--picture-modulation"}), plain);
    // Routed by automation on the way.
    WriteFile(folder / "a.csv", "0.1,Modulations_Dst7_Src6_Amount,0.9\n");
    EXPECT_GT(heightOf({"--automation", folder / "a.csv"}), plain);
    EXPECT_EQ(heightOf({"--preset", "loud-blooms", "--set", "Modulations_Dst10_Src1_Activated=Off",
                        "--set", "Modulations_Dst17_Src1_Activated=Off", "--set",
                        "Modulations_Dst8_Src1_Activated=Off"}),
              plain);
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
    EXPECT_EQ(plain[6]["name"], "Pitch");
    EXPECT_EQ(plain[6]["index"], 92);
    EXPECT_EQ(plain[6]["parameter"], "MoteWeaver_Pitch");
    EXPECT_EQ(plain[9]["parameter"], "MoteWeaver_GrainSizeAbsolute");
    EXPECT_EQ(plain[11]["parameter"], "MoteWeaver_GranularPhaseHelper_RateUnSynced");
    EXPECT_EQ(plain[94]["name"], "FX2 Reverb Damping");
    EXPECT_EQ(plain[94]["index"], 1509);

    const nlohmann::json synced = Destinations("clockwork-arpeggio");
    EXPECT_EQ(synced[11]["parameter"], "MoteWeaver_GranularPhaseHelper_RateSynced");
    EXPECT_EQ(synced[27]["parameter"], "Function1_RateSynced");
    EXPECT_EQ(synced[6]["sources"].dump(),
              R"([{"amount":0.25,"source":"Function 1"},{"amount":0.1,"source":"Function 2"}])");
    EXPECT_EQ(Destinations("two-hands")[9]["parameter"], "MoteWeaver_TextureSizeAbsolute");
}

TEST(DestinationsTest, TheListForPeopleHoldsTheSame) {
    const Outcome outcome = RunTool({"destinations", "--preset", "ducked-halo"});
    EXPECT_EQ(outcome.exitCode, 0);
    std::istringstream lines(outcome.out);
    std::string line;
    size_t count = 0;
    while (std::getline(lines, line)) {
        ++count;
        if (line.starts_with("3 ")) {
            EXPECT_NE(line.find("Envelope Follower -0.35"), std::string::npos) << line;
        }
    }
    EXPECT_EQ(count, 96u);
}

}  // namespace
}  // namespace Quorvan::test
