#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <thread>

#include "tools/ToolRig.h"

namespace Quorvan::test {
namespace {

class FailureTest : public ::testing::Test {
protected:
    FailureTest() {
        WriteWav(folder / "in.wav", {Noise(1, 4800, 0.3f)});
        WriteFile(folder / "older.wav", kOlder);
        before = folder.Content();
    }

    /// The run must end with code and a sentence that holds all of words, and leave everything as
    /// it was.
    void ExpectFailure(const Arguments& arguments, int code, const std::vector<std::string>& words,
                       const std::function<void()>& inChild = {}) {
        const Outcome outcome = RunTool(arguments, inChild);
        EXPECT_EQ(outcome.exitCode, code) << outcome.err;
        for (const std::string& word : words)
            EXPECT_NE(outcome.err.find(word), std::string::npos)
                << "\"" << word << "\" is not in: " << outcome.err;
        ExpectUntouched();
    }
    void ExpectUntouched() const {
        EXPECT_EQ(folder.Content(), before);
        EXPECT_EQ(ReadFile(folder / "older.wav"), kOlder);
    }
    void Add(const std::string& name, const std::string& content) {
        WriteFile(folder / name, content);
        before = folder.Content();
    }
    Arguments RenderTo(const std::string& out, const Arguments& more = {}) const {
        return Arguments{"render", folder / "in.wav", "-o", out} + more;
    }
    Arguments Render(const Arguments& more = {}) const {
        return RenderTo(folder / "out.wav", more);
    }

    static constexpr const char* kOlder = "an older file";
    Folder folder;
    std::vector<std::string> before;
};

TEST_F(FailureTest, TyposGiveTheNearestNames) {
    ExpectFailure(Render({"--set", "MoteWeaver_GrainSizeAbsolut=0.5"}), 2,
                  {"MoteWeaver_GrainSizeAbsolut", "MoteWeaver_GrainSizeAbsolute"});
    ExpectFailure(Render({"--presett", "dense-cloud"}), 2, {"\"--presett\"", "\"--preset\""});
    ExpectFailure({"params", "--jsn"}, 2, {"\"--jsn\"", "\"--json\""});
    ExpectFailure(Render({"--preset", "dense-clud"}), 2, {"\"dense-clud\"", "\"dense-cloud\""});
}

TEST_F(FailureTest, ValuesThatMakeNoSenseAreExplained) {
    ExpectFailure(Render({"--set", "Dry / Wet"}), 2, {"NAME=POSITION"});
    ExpectFailure(Render({"--set", "=3"}), 2, {"is missing"});
    ExpectFailure(Render({"--set", "Tempo=90"}), 2, {"--tempo 90"});
    ExpectFailure(Render({"--set", "Dry / Wet=1.5"}), 2, {"\"Dry / Wet\"", "0 to 1", "\"1.5 %\""});
    ExpectFailure(Render({"--set", "Grid Size=9"}), 2, {"\"8\", \"16\" or \"32\""});
    ExpectFailure(Render({"--set", "PresetLoading=1"}), 2, {"PresetLoading", "can't be set"});
    for (const auto& [option, value] : {std::pair{"--tempo", "0"},
                                        {"--tempo", "nan"},
                                        {"--tail", "nan"},
                                        {"--start-beat", "inf"},
                                        {"--seed", "-1"},
                                        {"--seed", "18446744073709551616"}})
        ExpectFailure(Render({option, value}), 2, {option, value});
    ExpectFailure(Render({"--play", "--stop"}), 2, {"--stop"});
    ExpectFailure(Render({"--format", "mp7"}), 2, {"\"mp7\"", "flac"});
    ExpectFailure(RenderTo(folder / "out.xyz"), 2, {"out.xyz", ".flac"});
    ExpectFailure(RenderTo(folder / "out.flac", {"--format", "float"}), 2, {"FLAC"});
    ExpectFailure(RenderTo(folder / "out.ogg", {"--format", "opus", "--rate", "44100"}), 2,
                  {"44100", "--rate 48000"});
    ExpectFailure({"rendre"}, 2, {"rendre"});
    ExpectFailure({"help", "rendre"}, 2, {"\"render\""});
    ExpectFailure(Render({"--picture-levels", "loud"}), 2, {"auto, linear or db"});
    ExpectFailure(Render({"--picture", folder / "out.wav"}), 2, {"two files"});
    ExpectFailure(Render({"--picture", folder / "./out.wav"}), 2, {"two files"});
    ExpectFailure(Render({"--picture", folder / "out.jpg"}), 2, {".png"});
    ExpectFailure({"params", "nothing-like-it"}, 2, {"nothing-like-it"});
    const std::string csv = folder / "m.csv";
    ExpectFailure(Render({"--modulation-csv", csv, "--modulation-destinations", "Pich"}), 2,
                  {"\"Pitch\""});
    ExpectFailure(Render({"--modulation-destinations", "Pitch"}), 2, {"--modulation-csv"});
    ExpectFailure(Render({"--modulation-csv", folder / "out.wav"}), 2, {"Name two files"});
    ExpectFailure(Render({"--modulation-csv", csv, "--picture", csv}), 2, {"Name two files"});
}

TEST_F(FailureTest, InputsThatCannotBeUsedAreNamed) {
    const auto expect = [this](const std::string& name, const std::vector<std::string>& words) {
        const Arguments all = Arguments{name} + words;
        ExpectFailure({"render", folder / name, "-o", folder / "out.wav"}, 3, all);
        ExpectFailure(Render({"--sidechain", folder / name}), 3, all);
    };
    Add("empty.wav", "");
    Add("text.wav", "this is no sound at all, but it is long enough for a header");
    WriteWav(folder / "three.wav", Channels(3, std::vector<float>(100, 0.1f)));
    WriteWav(folder / "header.wav", {std::vector<float>{}});
    std::filesystem::create_symlink("gone.wav", folder / "link.wav");
    before = folder.Content();
    expect("missing.wav", {"does not exist"});
    expect("link.wav", {"is a link to \"gone.wav\""});
    expect("empty.wav", {"empty"});
    expect("text.wav", {"no sound file"});
    expect("three.wav", {"3 channels"});
    expect("header.wav", {"no sound"});
    expect(".", {"folder"});
}

TEST_F(FailureTest, PresetAndAutomationFilesAreNamed) {
    Add("p.json", "{\"format\": \"tesserae-preset\", ");
    Add("later.json", R"({"format": "tesserae-preset", "version": 99, "parameters": {}})");
    Add("a.csv", "seconds,parameter,position\n0.1,Feedback,0.5\n0.2,Fedback,0.5\n");
    Add("b.json",
        "[[0, \"Feedback\", 1],\n  {\"beats\": 1, \"parameter\": \"Feedback\",\n"
        "\"position\": 7}]");
    Add("c.json", "[[0, \"Feedback\", 1],\n[1 \"Feedback\", 1]]");
    ExpectFailure(Render({"--preset", folder / "p.json"}), 3, {"p.json", "JSON"});
    ExpectFailure(Render({"--preset", folder / "missing.json"}), 3, {"missing.json"});
    ExpectFailure(Render({"--automation", folder / "a.csv"}), 3,
                  {"a.csv", "line 3", "\"Fedback\"", "\"Feedback\""});
    ExpectFailure(Render({"--automation", folder / "b.json"}), 3,
                  {"b.json", "line 2, column 3", "0 to 1"});
    ExpectFailure(Render({"--automation", folder / "c.json"}), 3, {"c.json", "line 2", "JSON"});
}

TEST_F(FailureTest, OtherPresetsAreMendedAndReported) {
    WriteFile(folder / "p.json",
              R"({"format": "tesserae-preset", "version": 1,
                  "parameters": {"Dry / Wet": 0, "Master Volume": 1, "Sparkle": 0.5}})");
    const Outcome outcome = RunTool(Render({"--preset", folder / "p.json"}));
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_NE(outcome.err.find("\"Sparkle\""), std::string::npos) << outcome.err;
}

TEST_F(FailureTest, OutputsThatExistNeedForce) {
    Add("older.png", "an older picture");
    ExpectFailure(RenderTo(folder / "older.wav"), 4, {"older.wav", "exists", "--force"});
    ExpectFailure(Render({"--picture", folder / "older.png"}), 4, {"older.png", "--force"});
    EXPECT_EQ(RunTool(RenderTo(folder / "older.wav", {"--force"})).exitCode, 0);
    EXPECT_EQ(ReadSound(folder / "older.wav").size(), 2u);
}

TEST_F(FailureTest, PlacesThatCannotBeWrittenAreNamed) {
    const auto expect = [this](const std::string& out, const std::vector<std::string>& words) {
        ExpectFailure(RenderTo(out, {"--force", "--format", "wav"}), 4, words);
    };
    expect(folder / "nowhere/out.wav", {"nowhere/out.wav", "does not exist"});
    expect(folder / ".", {"folder"});
    expect("/dev/full", {"/dev/full", "device"});
    expect(folder / (std::string(300, 'x') + ".wav"), {"too long"});
    expect(folder / "no\n\x1b[2Jwhere/out.wav", {"/no\\n\\x1b[2Jwhere/out.wav\""});
    std::filesystem::create_symlink("gone.wav", folder / "link.wav");
    before = folder.Content();
    expect(folder / "link.wav", {"is a link", "\"gone.wav\"", "does not exist"});
    if (geteuid() != 0) {  // root may write anywhere
        mkdir((folder / "locked").c_str(), 0500);
        before = folder.Content();
        expect(folder / "locked/out.wav", {"permission"});
    }
}

TEST_F(FailureTest, FullDiskLeavesNothing) {
    const auto limit = [](rlim_t bytes) {
        return [bytes] {
            const rlimit files{bytes, bytes};
            setrlimit(RLIMIT_FSIZE, &files);
        };
    };
    // Room for a header, for some of the sound, for the sound but not for the picture.
    ExpectFailure(Render(), 4, {"out.wav", "could not be written"}, limit(400));
    ExpectFailure(Render(), 4, {"out.wav", "could not be written"}, limit(20000));
    for (const char* name : {"o.ogg", "o.flac"})
        ExpectFailure(RenderTo(folder / name), 4, {name}, limit(1000));
    ExpectFailure(Render({"--tail", "0", "--picture", folder / "o.png"}), 4, {"o.png"},
                  limit(32000));
    ExpectFailure(RenderTo(folder / "older.wav", {"--force"}), 4, {"older.wav"}, limit(20000));
    const auto full = [] { dup2(open("/dev/full", O_WRONLY), STDOUT_FILENO); };
    for (const char* command : {"params", "presets", "destinations", "info", "help", "--version"})
        ExpectFailure({command}, 4, {"could not be written"}, full);
    ExpectFailure(RenderTo("-"), 4, {"Standard output"}, full);
    EXPECT_EQ(RunTool(Render({"--json"}), full).exitCode, 4) << "what was told is not whole";
}

TEST_F(FailureTest, ReaderThatHasGoneEndsTheRunWithoutAWord) {
    const auto closed = [] {
        int ends[2];
        if (pipe(ends) == 0 && close(ends[0]) == 0)
            dup2(ends[1], STDOUT_FILENO);
    };
    const std::string picture = folder / "out.png";
    for (const Arguments& arguments :
         {Arguments{"params"}, RenderTo("-", {"--picture", picture, "--force"})}) {
        const Outcome outcome = RunTool(arguments, closed);
        EXPECT_EQ(outcome.exitCode, -1) << "ended by the signal";
        EXPECT_EQ(outcome.err, "");
        ExpectUntouched();
    }
}

TEST_F(FailureTest, NothingThatIsReadIsReplaced) {
    const std::string in = folder / "in.wav", preset = folder / "sound.json";
    std::filesystem::create_symlink(in, folder / "link.wav");
    Add("sound.json", R"({"format": "tesserae-preset", "version": 1, "name": "Sound"})");
    for (const std::string& name : {in, folder / "./in.wav", folder / "link.wav"})
        ExpectFailure(RenderTo(name, {"--force"}), 2, {"is the sound", "reads"});
    WriteWav(folder / "side.wav", {Noise(2, 4800, 0.3f)});
    before = folder.Content();
    const std::string side = folder / "side.wav";
    ExpectFailure(RenderTo(side, {"--sidechain", side, "--force"}), 2, {"side-chain"});
    ExpectFailure(Render({"--preset", preset, "--picture", preset, "--force"}), 2, {"preset"});
}

TEST_F(FailureTest, InterruptedRunsLeaveNothing) {
    for (const auto& [signal, code] : {std::pair(SIGINT, 130), std::pair(SIGTERM, 143)}) {
        const Folder texts;
        const int process = StartTool({"render", folder / "in.wav", "-o", folder / "older.wav",
                                       "--force", "--picture", folder / "o.png", "--tail", "3600"},
                                      texts / "out", texts / "err");
        // The files under way are there as soon as the render has begun.
        for (int i = 0; i < 2000 && folder.Content().size() < before.size() + 2; ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        EXPECT_EQ(folder.Content().size(), before.size() + 2);
        kill(process, signal);
        EXPECT_EQ(AwaitTool(process), code);
        EXPECT_NE(ReadFile(texts / "err").find("Interrupted"), std::string::npos);
        ExpectUntouched();
    }
}

}  // namespace
}  // namespace Quorvan::test
