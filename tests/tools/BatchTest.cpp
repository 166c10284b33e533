#include <csignal>
#include <sstream>

#include "tools/ToolRig.h"
#include "tools/audio/SoundShelf.h"

namespace Quorvan::test {
namespace {

/// Lists of jobs in a folder of their own, whose names are relative to it.
class BatchTest : public ::testing::Test {
protected:
    BatchTest() { WriteWav(folder / "in.wav", {Noise(1, 48000, 0.3f)}); }

    std::function<void()> Inside() const {
        return [this] { ASSERT_EQ(chdir((folder / ".").c_str()), 0); };
    }
    Outcome Run(const Arguments& arguments) const { return RunTool(arguments, Inside()); }
    Outcome Batch(const Arguments& more = {}) const {
        return Run(Arguments{"batch", "jobs", "--results", "results"} + more);
    }
    std::vector<nlohmann::json> Results() const {
        std::vector<nlohmann::json> lines;
        std::istringstream text(ReadFile(folder / "results"));
        for (std::string line; std::getline(text, line);)
            lines.push_back(nlohmann::json::parse(line));
        return lines;
    }
    /// Jobs that take a while, one of each seed, into seed.wav.
    void LongJobs(int count) const {
        Run({"plan", "in.wav", "--seeds", "1-" + std::to_string(count), "--word", "tail=60",
             "--name", "{seed}.wav", "-o", "jobs"});
    }

    Folder folder;
};

TEST_F(BatchTest, FilesAreThoseOfRenderAndFailuresStopNobody) {
    WriteFile(folder / "jobs", R"(input,output,preset,seed,set,mono
in.wav,a.flac,dense-cloud,7,Feedback=-6 dB,
in.wav,b.wav,tape-brake,,,yes
nowhere.wav,c.wav,,,,
in.wav,./a.flac,,,,
in.wav,d.wav,dense-clud,,,)");
    EXPECT_EQ(Batch({"--workers", "3"}).exitCode, 6);
    std::map<int, nlohmann::json> lines;
    for (const nlohmann::json& line : Results())
        lines[line["line"]] = line;
    ASSERT_EQ(lines.size(), 5u);
    EXPECT_GT(lines[2]["grains"], 0);
    EXPECT_LT(lines[2]["loudnessLufs"], 0);
    const auto sentence = [&](int line) { return lines[line]["sentence"].get<std::string>(); };
    EXPECT_NE(sentence(4).find("\"nowhere.wav\" does not exist"), std::string::npos);
    EXPECT_NE(sentence(5).find("same file"), std::string::npos);
    EXPECT_NE(sentence(6).find("\"dense-cloud\""), std::string::npos);
    const std::string seed = lines[3]["seed"].dump();
    Run({"render", "in.wav", "-o", "x.flac", "--preset", "dense-cloud", "--seed", "7", "--set",
         "Feedback=-6 dB"});
    Run({"render", "in.wav", "-o", "x.wav", "--preset", "tape-brake", "--seed", seed, "--mono"});
    EXPECT_EQ(ReadFile(folder / "x.flac"), ReadFile(folder / "a.flac"));
    EXPECT_EQ(ReadFile(folder / "x.wav"), ReadFile(folder / "b.wav"));
}

TEST_F(BatchTest, ResumeSkipsWhatTheSameJobHasMadeAndNothingElse) {
    LongJobs(4);
    EXPECT_EQ(Batch({"--no-loudness"}).exitCode, 0);
    EXPECT_FALSE(Results()[0].contains("loudnessLufs"));
    EXPECT_EQ(Batch().exitCode, 4);  // the results are there
    std::filesystem::remove(folder / "1.wav");
    std::filesystem::resize_file(folder / "2.wav", 1000);
    std::string text = ReadFile(folder / "jobs");
    text.replace(text.rfind("60"), 2, "61");
    WriteFile(folder / "jobs", text);
    EXPECT_EQ(Batch({"--resume", "--force"}).exitCode, 0);
    std::map<int, int> times;
    for (const nlohmann::json& line : Results())
        ++times[line["line"]];
    EXPECT_EQ(times, (std::map<int, int>{{1, 2}, {2, 2}, {3, 1}, {4, 2}}));
    WriteWav(folder / "in.wav", {Noise(2, 48000, 0.3f)});
    EXPECT_EQ(Batch({"--resume"}).exitCode, 0);  // replaces what these jobs made of another input
    EXPECT_EQ(Results().size(), 11u);
}

TEST_F(BatchTest, KeptInputsAreReadAnewWhereTheyHaveChanged) {
    Tools::SoundShelf shelf;
    const auto read = [&] {
        std::vector<float> sound(50000);
        float* const row = sound.data();
        sound.resize(shelf.Open(folder / "in.wav", {}).source->Read(&row, sound.size()));
        return sound;
    };
    const std::vector<float> first = read();
    EXPECT_EQ(first.size(), 48000u);
    for (int time = 0; time < 3; ++time)
        EXPECT_EQ(read(), first);
    WriteWav(folder / "in.wav", {Noise(2, 48000, 0.3f)});
    EXPECT_NE(read(), first);
}

TEST_F(BatchTest, KilledRunsLeaveNothingHalfAndGoOnToTheSameFiles) {
    LongJobs(12);
    for (const int signal : {SIGTERM, SIGKILL}) {
        const size_t before = std::filesystem::exists(folder / "results") ? Results().size() : 0;
        const int process = StartTool({"batch", "jobs", "--results", "results", "--resume"},
                                      folder / "out", folder / "err", Inside());
        while (!std::filesystem::exists(folder / "results") || Results().size() < before + 2)
            usleep(5000);
        kill(process, signal);
        EXPECT_EQ(AwaitTool(process), signal == SIGTERM ? 143 : -1);
        EXPECT_LT(Results().size(), 12u);
        for (const std::string& name : folder.Content())
            EXPECT_TRUE(signal == SIGKILL || !name.ends_with(".part")) << name;
    }
    EXPECT_EQ(Batch({"--resume"}).exitCode, 0);
    EXPECT_EQ(folder.Content().size(), 12u + 5u);  // in.wav, jobs, results, out, err
    Run({"render", "in.wav", "-o", "x.wav", "--seed", "12", "--tail", "60"});
    EXPECT_EQ(ReadFile(folder / "x.wav"), ReadFile(folder / "12.wav"));
}

TEST_F(BatchTest, PlansDealOutEveryCombinationOnce) {
    WriteWav(folder / "other.wav", {Noise(3, 480, 0.3f)});
    for (const std::string list : {"jobs.csv", "jobs.jsonl"}) {
        Run({"plan", "*.wav", "--preset", "tape-*", "--seeds", "1,3-4", "--vary", "Dry / Wet=0|1",
             "--word", "tail=0", "--name", "{stem}-{preset}-{seed}-{variant}.flac", "-o", list});
        for (const std::string part : {"1/3", "2/3", "3/3"})
            EXPECT_EQ(Run({"batch", list, "--shard", part, "--force"}).exitCode, 0);
        EXPECT_EQ(folder.Content().size(), (list == "jobs.csv" ? 3u : 4u) + 2 * 2 * 3 * 2);
    }
    EXPECT_EQ(Run({"plan", "in.wav", "--seeds", "1-2", "--name", "{stem}.wav"}).exitCode, 2);
    EXPECT_EQ(Run({"plan", "in.wav", "--name", "{step}.wav"}).exitCode, 2);
}

}  // namespace
}  // namespace Quorvan::test
