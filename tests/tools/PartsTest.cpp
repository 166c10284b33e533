#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "host/state/StateTransfer.h"
#include "tools/ToolRig.h"
#include "tools/render/Automation.h"
#include "tools/render/AutomationTime.h"
#include "tools/render/SlotText.h"
#include "tools/render/TailTrimmer.h"
#include "tools/render/WriteFeeder.h"
#include "tools/support/AtomicOutput.h"
#include "tools/support/CsvLine.h"
#include "tools/support/Failure.h"

namespace Quorvan::Tools {
namespace {

TEST(AutomationTest, TimesAreSecondsBeatsOrBars) {
    const auto read = [](const char* text, TimeUnit bare) {
        const auto time = AutomationTime::Read(text, bare, Meter::Read("6/8").value());
        return time ? std::pair(time->time, time->isBeat) : std::pair(-999.0, false);
    };
    EXPECT_EQ(read("1.5", TimeUnit::Seconds), std::pair(1.5, false));
    EXPECT_EQ(read("1.5", TimeUnit::Beats), std::pair(1.5, true));
    EXPECT_EQ(read("250 ms", TimeUnit::Bars), std::pair(0.25, false));
    EXPECT_EQ(read("-4 beats", TimeUnit::Seconds), std::pair(-4.0, true));
    EXPECT_EQ(read(" 3:2.5 ", TimeUnit::Seconds), std::pair(6.75, true));
    EXPECT_EQ(read("0", TimeUnit::Bars), std::pair(-3.0, true));
    for (const char* text : {"soon", "-inf", "3:7", "3:0", "2.5:1"})
        EXPECT_EQ(read(text, TimeUnit::Seconds).first, -999.0) << text;
}

TEST(AutomationTest, WritesComeInOrderOfTimeAndReadTheScaleOfTheirMoment) {
    const Host::ParameterCatalog catalog;
    const char* const text =
        "beats,parameter,position\n6,Feedback,0.25\n2 s,MoteWeaver_Pitch,12 st\n"
        "0.5,MoteWeaver_Scale,Octaves\n# a remark\n3 s,grain size,@0.5\n"
        "2.5 s,Granular Mode,Texture\n6,Feedback,0.75\n";
    const auto automation = Automation::ReadCsv("x.csv", text);
    // The song starts at beat 4 and runs at 120 BPM: beat 6 comes after a second.
    const auto writes =
        automation.Resolve({1000.0, 120.0, 4.0}, Host::PresentSettings(catalog), catalog).writes;
    ASSERT_EQ(writes.size(), 6u);
    EXPECT_EQ(writes[0].frame, 0u);
    EXPECT_EQ(writes[1].frame, 1000u);
    EXPECT_EQ(writes[1].position, 0.25f);
    EXPECT_EQ(writes[2].position, 0.75f);
    EXPECT_EQ(writes[3].frame, 2000u);
    // In octaves from -36 to 36, +12 is the fifth of seven steps.
    EXPECT_NEAR(writes[3].position, 4.5f / 7.0f, 0.5f / 7.0f);
    EXPECT_EQ(writes[5].index, catalog.Find("MoteWeaver_TextureSizeAbsolute"));
}

TEST(AutomationTest, RampsAndTemposComeOutAsTheirFormulasSay) {
    const Host::ParameterCatalog catalog;
    // 60 BPM to 180 in the first half second is one beat; then half a second of 180: 1.5 beats.
    const auto automation = Automation::ReadJson("x.json", R"([
        [0.1, "Feedback", 0.2], [0.6, "Feedback", 0.7, "linear"],
        {"beats": 1, "parameter": "Tempo", "position": "180 BPM", "ramp": "linear"},
        {"beats": 1, "parameter": "Macro 1", "position": 0.01},
        {"bars": "1:3.5", "parameter": "Macro 1", "position": 1, "ramp": "exponential"}])");
    const TempoMap song = automation.Tempos({48000.0, 60.0, 0.0});
    for (const auto& [frame, beat] :
         std::map<double, double>{{12000.0, 0.375}, {24000.0, 1.0}, {48000.0, 2.5}}) {
        EXPECT_NEAR(song.BeatAt(frame), beat, 0.0002);
        EXPECT_NEAR(song.FrameAt(beat), frame, 5.0);
    }
    Host::Engine engine(1);
    engine.Prepare({.sampleRate = 48000.0, .inputs = 1});
    WriteFeeder feeder(automation.Resolve(song, Host::PresentSettings(catalog), catalog).writes);
    std::vector<float> silence(480);
    const float* const input = silence.data();
    for (uint64_t at = 480; at <= 48480; at += 480) {
        feeder.Feed(engine, at - 480, at);
        engine.Process({.inputs = &input, .frames = 480});
        const double time = static_cast<double>(at) / 48000.0;
        const auto position = [&](const char* name) {
            return engine.Position(*catalog.Find(name));
        };
        // Only once each ramp is under way.
        EXPECT_NEAR(position("Feedback"), std::min(0.1 + time, 0.7), time > 0.105 ? 0.003 : 1.0);
        EXPECT_NEAR(position("Macro 1"), std::min(std::pow(0.01, 2.0 - 2.0 * time), 1.0),
                    time > 0.515 ? 0.02 : 1.0);
    }
}

TEST(AutomationTest, BrokenListsAreRefused) {
    for (const char* text :
         {"[1, 2", "{}", "[1]", "[[1, \"Feedback\"]]",
          R"([{"seconds": 1, "parameter": "Feedback"}])", R"([["then", "Feedback", 0.5]])",
          R"([[1, "Tempo", 0]])", R"([[1, "Feedback", 0.5, "fast"]])"})
        EXPECT_THROW(Automation::ReadJson("x.json", text), Failure) << text;
    EXPECT_THROW(Automation::ReadCsv("x.csv", "1,Feedback"), Failure);
}

/// What a trimmer passes on of a mono sound behind 10 frames of input, in pieces of cut frames.
struct Trimmed : RenderSink {
    Trimmed(const TailPlan& plan, const std::vector<float>& whole, size_t cut) : trimmer(plan) {
        trimmer.AddSink(*this);
        trimmer.OnInputEnd(10);
        for (size_t at = 0; at < whole.size(); at += cut) {
            const float* const channel = whole.data() + at;
            trimmer.OnOutput({at, std::min(cut, whole.size() - at), &channel, 1});
        }
        quiet = trimmer.QuietFrames();
        trimmer.OnEnd();
    }
    void OnOutput(const SoundPiece& piece) override {
        EXPECT_EQ(piece.frame, sound.size());
        sound.insert(sound.end(), piece.channels[0], piece.channels[0] + piece.frames);
    }
    TailTrimmer trimmer;
    std::vector<float> sound;
    uint64_t quiet = 0;
};

TEST(TailTrimmerTest, OnlyTheSilenceBehindTheTailGoes) {
    // Input silent itself at its end; an echo at 25; then nothing.
    std::vector<float> sound(60, 1.0e-5f);
    sound[3] = 0.5f;
    std::fill(sound.begin() + 12, sound.begin() + 24, 0.0f);
    sound[25] = -0.1f;
    for (const size_t cut : {size_t{1}, size_t{7}, size_t{60}}) {
        const Trimmed trimmed({}, sound, cut);
        EXPECT_EQ(trimmed.sound, std::vector<float>(sound.begin(), sound.begin() + 26));
        EXPECT_EQ(trimmed.quiet, 34u);
        EXPECT_EQ(trimmed.trimmer.End(), TailEnd::Silence);
        EXPECT_EQ(Trimmed({.settled = 40}, sound, cut).quiet, 20u);
    }
    EXPECT_EQ(Trimmed({}, std::vector<float>(20, 0.0f), 20).sound.size(), 10u) << "input is kept";
}

TEST(TailTrimmerTest, WhatReachesTheLimitFadesAheadOfIt) {
    const std::vector<float> loud(40, 0.5f);
    for (const size_t cut : {size_t{1}, size_t{7}, size_t{40}}) {
        const Trimmed faded({.limit = 30, .fade = 8, .nearLimit = 4}, loud, cut);
        EXPECT_EQ(faded.trimmer.End(), TailEnd::Fade);
        ASSERT_EQ(faded.sound.size(), 40u);
        for (size_t i = 0; i < 40; ++i)
            EXPECT_EQ(faded.sound[i] < 0.5f, i >= 32) << i;
        EXPECT_NEAR(faded.sound[35], 0.25f, 1.0e-6f);
        EXPECT_EQ(faded.sound[39], 0.0f);
        EXPECT_EQ(Trimmed({.limit = 30, .fade = 8, .isExact = true}, loud, cut).sound, faded.sound);
        EXPECT_EQ(Trimmed({.limit = 30, .nearLimit = 4}, loud, cut).trimmer.End(), TailEnd::Cut);
        std::vector<float> early = loud;
        std::fill(early.begin() + 34, early.end(), 0.0f);
        EXPECT_EQ(Trimmed({.limit = 30, .fade = 8, .nearLimit = 4}, early, cut).sound,
                  std::vector<float>(34, 0.5f));
    }
}

TEST(AtomicOutputTest, NothingIsThereUntilCommit) {
    const Folder folder;
    AtomicOutput(folder / "a", false).Write("half", 4);
    EXPECT_TRUE(folder.Content().empty());
    AtomicOutput output(folder / "a", false);
    output.Write("whole", 5);
    EXPECT_FALSE(std::filesystem::exists(folder / "a"));
    output.Commit();
    EXPECT_EQ(ReadFile(folder / "a"), "whole");
    EXPECT_EQ(folder.Content().size(), 1u);
    AtomicOutput late(folder / "b", false);
    WriteFile(folder / "b", "came meanwhile");
    EXPECT_THROW(late.Commit(), Failure);
    EXPECT_EQ(ReadFile(folder / "b"), "came meanwhile");
}

TEST(AtomicOutputTest, LinksAndPermissionsStay) {
    const Folder folder;
    WriteFile(folder / "real", "old");
    chmod((folder / "real").c_str(), 0640);
    std::filesystem::create_symlink("real", folder / "link");
    AtomicOutput output(folder / "link", true);
    output.Write("new", 3);
    output.Commit();
    EXPECT_TRUE(std::filesystem::is_symlink(folder / "link"));
    EXPECT_EQ(ReadFile(folder / "real"), "new");
    struct stat there {};
    stat((folder / "real").c_str(), &there);
    EXPECT_EQ(there.st_mode & 0777u, 0640u);
}

TEST(AtomicOutputTest, LongestNamesFit) {
    const Folder folder;
    for (const char ending : {'a', 'b'}) {
        const std::string name = std::string(254, 'x') + ending;
        AtomicOutput other(folder / (std::string(254, 'x') + 'c'), false);
        AtomicOutput output(folder / name, false);
        output.Commit();
        EXPECT_EQ(folder.Content().front().front(), '.');  // the other one's
        EXPECT_TRUE(std::filesystem::exists(folder / name));
    }
}

TEST(AtomicOutputTest, LeftoversGoAndFilesOfLiveRunsStay) {
    const Folder folder;
    for (const char* name :
         {".a.1.part", ".a.99999999.part", ".a.b.1.part", ".a.x1.part", ".a.part"})
        WriteFile(folder / name, "left");
    const AtomicOutput live(folder / "a", false);
    const auto before = folder.Content();
    EXPECT_EQ(before.size(), 4u) << "the two of \"a\" are gone, the live one is there";
    EXPECT_THROW(AtomicOutput(folder / "a", false), Failure) << "is being written";
    EXPECT_EQ(folder.Content(), before);
}

}  // namespace
}  // namespace Quorvan::Tools
