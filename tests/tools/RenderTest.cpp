#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include <nlohmann/json.hpp>

#include "support/TestSignals.h"
#include "tools/ToolRig.h"

namespace Quorvan::test {
namespace {

constexpr size_t kSecond = 48000;

/// Arguments of a render that is over quickly.
Arguments Render(const std::string& in, const std::string& out, const Arguments& more = {}) {
    Arguments arguments{"render", in, "-o", out, "--seed", "5", "--tail", "0", "--format", "float"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return arguments;
}

nlohmann::json Summary(Arguments arguments) {
    arguments.push_back("--json");
    const Outcome outcome = RunTool(arguments);
    EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
    return nlohmann::json::parse(outcome.out);
}

const Arguments kDry{"--set", "Dry / Wet=0", "--set", "Master Volume=1"};

TEST(RenderTest, SameSeedGivesTheSameFileInEveryFormat) {
    const Folder folder;
    WriteWav(folder / "in.wav", {Noise(1, kSecond, 0.3f), Noise(2, kSecond, 0.3f)});
    const auto render = [&](const std::string& name, const std::string& seed) {
        EXPECT_EQ(
            RunTool({"render", folder / "in.wav", "-o", folder / name, "--seed", seed, "--force"})
                .exitCode,
            0);
        return ReadFile(folder / name);
    };
    for (const std::string name : {"a.wav", "a.aiff", "a.flac", "a.caf", "a.ogg"}) {
        const std::string first = render(name, "5");
        EXPECT_GT(first.size(), 1000u);
        EXPECT_TRUE(render(name, "5") == first) << name;
        EXPECT_FALSE(render(name, "6") == first) << name;
    }
}

TEST(RenderTest, LatencyIsTakenOffTheFront) {
    const Folder folder;
    for (const int rate : {44100, 48000, 96000}) {
        std::vector<float> impulse(static_cast<size_t>(rate) / 4, 0.0f);
        impulse[0] = 0.25f;
        impulse[1234] = 0.5f;
        impulse.back() = -0.5f;
        WriteWav(folder / "in.wav", {impulse, impulse}, rate);
        ASSERT_EQ(RunTool(Render(folder / "in.wav", folder / (std::to_string(rate) + ".wav"), kDry))
                      .exitCode,
                  0);
        EXPECT_EQ(ReadSound(folder / (std::to_string(rate) + ".wav")),
                  (Channels{impulse, impulse}));
    }
}

TEST(RenderTest, MonoGoesInAsMonoAndComesOutOnBothSides) {
    const Folder folder;
    const std::vector<float> noise = Noise(3, 4800, 0.4f);
    WriteWav(folder / "in.wav", {noise});
    ASSERT_EQ(RunTool(Render(folder / "in.wav", folder / "out.wav", kDry)).exitCode, 0);
    EXPECT_EQ(ReadSound(folder / "out.wav"), (Channels{noise, noise}));
    Arguments mono = kDry;
    mono.push_back("--mono");
    ASSERT_EQ(RunTool(Render(folder / "in.wav", folder / "mono.wav", mono)).exitCode, 0);
    EXPECT_EQ(ReadSound(folder / "mono.wav").size(), 1u);
}

TEST(RenderTest, IntegersComeThroughTheDryPathUnchanged) {
    const Folder folder;
    ASSERT_EQ(
        RunTool({"demo-sound", folder / "in.wav", "--seconds", "0.5", "--format", "16"}).exitCode,
        0);
    Arguments more = kDry;
    more.insert(more.end(), {"--format", "16"});
    Arguments arguments{"render", folder / "in.wav", "-o", folder / "out.wav", "--tail", "0"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    ASSERT_EQ(RunTool(arguments).exitCode, 0);
    EXPECT_EQ(ReadFile(folder / "in.wav"), ReadFile(folder / "out.wav"));
}

TEST(RenderTest, BadSamplesBecomeSilenceAndAreCounted) {
    const Folder folder;
    std::vector<float> sound = Noise(4, 9600, 0.3f);
    std::vector<float> clean = sound;
    for (const size_t at : {size_t{7}, size_t{5000}, size_t{9599}}) {
        sound[at] = at == 5000 ? INFINITY : NAN;
        clean[at] = 0.0f;
    }
    WriteWav(folder / "in.wav", {sound, clean});
    const auto summary = Summary(Render(folder / "in.wav", folder / "out.wav", kDry));
    EXPECT_EQ(summary["badInputSamples"], 3);
    EXPECT_EQ(ReadSound(folder / "out.wav"), (Channels{clean, clean}));
    const Outcome text = RunTool(Render(folder / "in.wav", folder / "text.wav", kDry));
    EXPECT_NE(text.err.find("in.wav\" holds 3 samples"), std::string::npos) << text.err;
    EXPECT_NE(text.out.find("3 NaN or infinite input samples taken as 0"), std::string::npos)
        << text.out;
}

TEST(RenderTest, SummaryTellsWhatIsInTheFile) {
    const Folder folder;
    // A sine of amplitude 0.5 on both sides: -6.0 dB peak; loudness by BS.1770 is -6.0 LUFS at 1
    // kHz.
    const std::vector<float> sine = Sine(997.0, 48000.0, 2 * kSecond, 0.5f);
    WriteWav(folder / "in.wav", {sine, sine});
    const auto summary = Summary(Render(folder / "in.wav", folder / "out.wav", kDry));
    EXPECT_NEAR(summary["peakDb"].get<double>(), -6.02, 0.01);
    EXPECT_NEAR(summary["loudnessLufs"].get<double>(), -6.02, 0.1);
    EXPECT_EQ(summary["seconds"], 2.0);
    EXPECT_EQ(summary["seed"], 5);
    EXPECT_GT(summary["grains"].get<int>(), 10);
    EXPECT_GT(summary["cpuShare"].get<double>(), 0.0);
}

TEST(RenderTest, OverloadIsHeldAndCounted) {
    const Folder folder;
    WriteWav(folder / "in.wav", {{0.5f, 1.0f, 1.5f, -2.0f, -1.0f, 0.0f, 0.0f, 0.0f}});
    Arguments arguments{"render", folder / "in.wav", "-o", folder / "o.wav", "--tail", "0",
                        "--mono", "--format",        "16"};
    arguments.insert(arguments.end(), kDry.begin(), kDry.end());
    EXPECT_EQ(Summary(arguments)["clippedSamples"], 2);
    const Channels held = ReadSound(folder / "o.wav");
    EXPECT_EQ(held[0][0], 0.5f);
    EXPECT_EQ(held[0][2], 32767.0f / 32768.0f);
    EXPECT_EQ(held[0][3], -1.0f);
}

TEST(RenderTest, ResamplesWhereTheRateAsksForIt) {
    const Folder folder;
    WriteWav(folder / "in.wav", {Sine(1000.0, 44100.0, 44100, 0.5f)}, 44100);
    Arguments more = kDry;
    more.insert(more.end(), {"--rate", "48000", "--mono"});
    const auto summary = Summary(Render(folder / "in.wav", folder / "out.wav", more));
    EXPECT_EQ(summary["rate"], 48000);
    const std::vector<float> out = ReadSound(folder / "out.wav")[0];
    const std::vector<float> ideal = Sine(1000.0, 48000.0, out.size(), 0.5f);
    ASSERT_EQ(out.size(), kSecond);
    for (size_t i = 2000; i + 2000 < out.size(); ++i)
        ASSERT_NEAR(out[i], ideal[i], 1.0e-4f) << i;
}

TEST(RenderTest, TailIsAsLongAsAskedForOrAsItSounds) {
    const Folder folder;
    WriteWav(folder / "in.wav", {Noise(1, kSecond / 2, 0.3f)});
    Arguments arguments{"render", folder / "in.wav", "-o",  folder / "a.wav", "--seed",
                        "1",      "--tail",          "1.5", "--preset",       "init"};
    EXPECT_EQ(Summary(arguments)["seconds"], 2.0);
    arguments = {"render", folder / "in.wav", "-o", folder / "b.wav", "--seed", "1"};
    const double seconds = Summary(arguments)["seconds"];
    const Channels sound = ReadSound(folder / "b.wav");
    // The follow offset of 125 ms and a grain of 150 ms are still to come when the input ends.
    EXPECT_GT(seconds, 0.6);
    EXPECT_LT(seconds, 1.2);
    EXPECT_GT(std::max(std::abs(sound[0].back()), std::abs(sound[1].back())), 3.0e-5f);
}

TEST(RenderTest, SideChainDrivesTheFollower) {
    const Folder folder;
    WriteWav(folder / "in.wav", {Sine(300.0, 48000.0, kSecond, 0.3f)});
    WriteWav(folder / "quiet.wav", {std::vector<float>(22050, 0.0f)}, 44100);
    WriteWav(folder / "loud.wav", {Sine(300.0, 44100.0, 22050, 0.9f)}, 44100);
    WriteFile(folder / "p.json",
              R"({"format": "tesserae-preset", "version": 1, "parameters": {
                  "Dry / Wet": 0, "Master Volume": 1, "Envelope Follower Source": "Side-Chain",
                  "Envelope Follower Gain": "0 dB"},
                  "routings": [{"source": "Envelope Follower", "destination": "Dry / Wet",
                                "amount": 1}]})");
    for (const std::string key : {"quiet", "loud"})
        ASSERT_EQ(
            RunTool(Render(folder / "in.wav",
                           folder / std::string("out-").append(key).append(".wav"),
                           {"--preset", folder / "p.json", "--sidechain", folder / (key + ".wav")}))
                .exitCode,
            0);
    EXPECT_EQ(ReadSound(folder / "out-quiet.wav")[0], ReadSound(folder / "in.wav")[0]);
    EXPECT_NE(ReadSound(folder / "out-loud.wav")[0], ReadSound(folder / "in.wav")[0]);
}

TEST(RenderTest, SetTakesPositionsAndValues) {
    const Folder folder;
    WriteWav(folder / "in.wav", {Noise(1, kSecond / 2, 0.3f)});
    const auto render = [&](const std::string& name, const std::string& assignment) {
        const Outcome outcome =
            RunTool(Render(folder / "in.wav", folder / name, {"--set", assignment}));
        EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
        return ReadSound(folder / name);
    };
    EXPECT_EQ(render("a.wav", "MoteWeaver_GranularMode=0.5"),
              render("b.wav", "MoteWeaver_GranularMode=texture"));
    EXPECT_EQ(render("c.wav", "MoteWeaver_Pitch=0.75"),
              render("d.wav", "motewEaver_pitch = 18 st"));
    EXPECT_NE(ReadSound(folder / "a.wav"), ReadSound(folder / "c.wav"));
}

TEST(RenderTest, AutomationLandsOnTheBlockThatHoldsItsMoment) {
    const Folder folder;
    WriteWav(folder / "in.wav", {std::vector<float>(kSecond, 0.25f)});
    WriteFile(folder / "a.csv", "seconds,parameter,position\n0.25,Bypass,1\n0.5,Bypass,0\n");
    WriteFile(folder / "b.json",
              R"([{"beats": 0.5, "parameter": "Bypass", "position": "On"}, [0.5, "bypass", 0]])");
    // Silent but for the bypass, which fades in 10 ms.
    Arguments silent{"--set", "Master Volume=0", "--set", "Granular Volume=0", "--mono"};
    const auto render = [&](const std::string& automation) {
        Arguments more = silent;
        more.insert(more.end(), {"--automation", folder / automation});
        EXPECT_EQ(RunTool(Render(folder / "in.wav", folder / (automation + ".wav"), more)).exitCode,
                  0);
        return ReadSound(folder / (automation + ".wav"))[0];
    };
    const std::vector<float> sound = render("a.csv");
    // The crossfade is behind the latency of the processor, 144 frames, which the bypass doesn't
    // have.
    const auto level = [&](double seconds) {
        return std::abs(sound[static_cast<size_t>(seconds * kSecond)]);
    };
    EXPECT_LT(level(0.24), 0.001f);
    EXPECT_NEAR(level(0.265), 0.25f, 1.0e-4f);
    EXPECT_NEAR(level(0.49), 0.25f, 1.0e-4f);
    EXPECT_LT(level(0.515), 0.001f);
    EXPECT_EQ(render("b.json"), sound);
}

TEST(RenderTest, PictureIsDrawn) {
    const Folder folder;
    WriteWav(folder / "in.wav", {Noise(1, kSecond, 0.3f)});
    const auto summary =
        Summary(Render(folder / "in.wav", folder / "out.wav", {"--picture", folder / "out.png"}));
    EXPECT_EQ(summary["picture"], folder / "out.png");
    const std::string png = ReadFile(folder / "out.png");
    ASSERT_GT(png.size(), 20000u);
    EXPECT_EQ(png.substr(1, 3), "PNG");
    EXPECT_EQ(folder.Content(), (std::vector<std::string>{"in.wav", "out.png", "out.wav"}));
}

}  // namespace
}  // namespace Quorvan::test
