#include "tools/ToolRig.h"

namespace Quorvan::test {
namespace {

constexpr size_t kSecond = 48000;

class RenderTest : public RenderRig {
protected:
    /// The dry signal alone.
    static Arguments Dry(const Arguments& more = {}) {
        return Arguments{"--set", "Dry / Wet=0", "--set", "Master Volume=1"} + more;
    }
};

TEST_F(RenderTest, SameSeedGivesTheSameFileInEveryFormat) {
    Input({Noise(1, kSecond, 0.3f), Noise(2, kSecond, 0.3f)});
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

TEST_F(RenderTest, LatencyIsTakenOffTheFront) {
    for (const int rate : {44100, 48000, 96000}) {
        std::vector<float> impulse(static_cast<size_t>(rate) / 4, 0.0f);
        impulse[0] = 0.25f;
        impulse[1234] = 0.5f;
        impulse.back() = -0.5f;
        Input({impulse, impulse}, rate);
        EXPECT_EQ(Render(Dry()), (Channels{impulse, impulse}));
    }
}

TEST_F(RenderTest, PipesCarryWhatFilesHold) {
    Input({Noise(3, 4800, 0.4f)}, 44100);
    Run({});
    const std::string file = ReadFile(folder / "out.wav");
    const auto pipe = [this](const std::string& options) {
        const std::string line = "cat " + (folder / "in.wav") + " | " TESSERAE_BINARY " render - " +
                                 options + " --seed 5 --tail 0 -o - 2>" + (folder / "words") +
                                 " | cat >" + (folder / "piped");
        EXPECT_EQ(std::system(line.c_str()), 0);
        return ReadFile(folder / "piped");
    };
    EXPECT_TRUE(pipe("") == file);
    EXPECT_NE(ReadFile(folder / "words").find("seed 5"), std::string::npos);
    // Without headers, the same sound at the same rate.
    const std::string raw = pipe("--format raw");
    EXPECT_EQ(raw.size(), 4800u * 2 * sizeof(float));
    WriteFile(folder / "in.wav", raw);
    EXPECT_TRUE(pipe("--raw-rate 44100 --format raw --set 'Dry / Wet=0' --set 'Master Volume=1'") ==
                raw);
}

TEST_F(RenderTest, IntegersComeThroughTheDryPathUnchanged) {
    const Outcome demo =
        RunTool({"demo-sound", folder / "in.wav", "--seconds", "0.5", "--format", "16"});
    ASSERT_EQ(demo.exitCode, 0);
    Run(Dry({"--format", "16"}));
    EXPECT_EQ(ReadSound(folder / "in.wav"), ReadSound(folder / "out.wav"));
}

TEST_F(RenderTest, BadSamplesBecomeSilenceAndAreCounted) {
    std::vector<float> sound = Noise(4, 9600, 0.3f);
    std::vector<float> clean = sound;
    for (const size_t at : {size_t{7}, size_t{5000}, size_t{9599}}) {
        sound[at] = at == 5000 ? INFINITY : NAN;
        clean[at] = 0.0f;
    }
    Input({sound, clean});
    EXPECT_EQ(Summary(Dry())["badInputSamples"], 3);
    EXPECT_EQ(Render(Dry()), (Channels{clean, clean}));
    const Outcome text = Run(Dry());
    EXPECT_NE(text.err.find("in.wav\" holds 3 samples"), std::string::npos) << text.err;
    EXPECT_NE(text.out.find("3 NaN or infinite input samples taken as 0"), std::string::npos)
        << text.out;
}

TEST_F(RenderTest, SummaryTellsWhatIsInTheFile) {
    // A sine of amplitude 0.5 on both sides: -6.0 dB peak and, by BS.1770 at 1 kHz, -6.0 LUFS.
    const std::vector<float> sine = Sine(997.0, 48000.0, 2 * kSecond, 0.5f);
    Input({sine, sine});
    const auto summary = Summary(Dry({"--picture", folder / "out.png"}));
    EXPECT_NEAR(summary["peakDb"].get<double>(), -6.02, 0.01);
    EXPECT_NEAR(summary["loudnessLufs"].get<double>(), -6.02, 0.1);
    EXPECT_EQ(summary["seconds"], 2.0);
    EXPECT_EQ(summary["seed"], 5);
    EXPECT_GT(summary["grains"].get<int>(), 10);
    EXPECT_GT(summary["cpuShare"].get<double>(), 0.0);
    EXPECT_EQ(summary["picture"], folder / "out.png");
    const std::string png = ReadFile(folder / "out.png");
    ASSERT_GT(png.size(), 20000u);
    EXPECT_EQ(png.substr(1, 3), "PNG");
    EXPECT_EQ(folder.Content(), (std::vector<std::string>{"in.wav", "out.png", "out.wav"}));
}

TEST_F(RenderTest, OverloadIsHeldAndCounted) {
    Input({{0.5f, 1.0f, 1.5f, -2.0f, -1.0f, 0.0f, 0.0f, 0.0f}});
    EXPECT_EQ(Summary(Dry({"--mono", "--format", "16"}))["clippedSamples"], 2);
    const std::vector<float> held = ReadSound(folder / "out.wav")[0];
    EXPECT_EQ(held[0], 0.5f);
    EXPECT_EQ(held[2], 32767.0f / 32768.0f);
    EXPECT_EQ(held[3], -1.0f);
}

TEST_F(RenderTest, ResamplesWhereTheRateAsksForIt) {
    Input({Sine(1000.0, 44100.0, 44100, 0.5f)}, 44100);
    const std::vector<float> out = Render(Dry({"--rate", "48000", "--mono"}))[0];
    const std::vector<float> ideal = Sine(1000.0, 48000.0, out.size(), 0.5f);
    ASSERT_EQ(out.size(), kSecond);
    for (size_t i = 2000; i + 2000 < out.size(); ++i)
        ASSERT_NEAR(out[i], ideal[i], 1.0e-4f) << i;
}

TEST_F(RenderTest, TailIsAsLongAsAskedForOrAsItSounds) {
    Input({Noise(1, kSecond / 2, 0.3f)});
    EXPECT_EQ(Summary({"--tail", "1.5", "--preset", "init"})["seconds"], 2.0);
    RunTool({"render", folder / "in.wav", "-o", folder / "b.wav", "--seed", "1"});
    const Channels sound = ReadSound(folder / "b.wav");
    // The follow offset of 125 ms and a grain of 150 ms are still to come when the input ends.
    EXPECT_GT(sound[0].size(), kSecond * 6 / 10);
    EXPECT_LT(sound[0].size(), kSecond * 12 / 10);
    EXPECT_GT(std::max(std::abs(sound[0].back()), std::abs(sound[1].back())), 3.0e-5f);
}

TEST_F(RenderTest, TailIsHeardToItsEndOrFadesOutWhereItHasNone) {
    Input({Noise(1, kSecond / 4, 0.3f)});
    const auto summary = [&](const char* intensity, const Arguments& more = {}) {
        Arguments all{"render", folder / "in.wav", "-o", folder / "b.wav", "--force", "--json"};
        for (const std::string set :
             {"ModuleType=Tape Echo", "Dry / Wet=50 %", "TapeEcho_DelayTime=900 ms", intensity})
            all = all + Arguments{"--set", "FX1_" + set};
        return nlohmann::json::parse(RunTool(all + more).out);
    };
    const auto fading = summary("TapeEcho_Intensity=50 %");
    EXPECT_EQ(fading["tailEnd"], "silence");
    EXPECT_LT(fading["tailSeconds"], 20.0);
    EXPECT_GT(fading["tailSeconds"], 5.0);
    EXPECT_EQ(summary("TapeEcho_Intensity=120 %", {"--tail-fade", "0"})["tailEnd"], "cut");
    const auto endless = summary("TapeEcho_Intensity=120 %");
    EXPECT_EQ(endless["tailEnd"], "fade");
    EXPECT_NEAR(endless["tailSeconds"].get<double>(), 30.0, 0.01);
    const std::vector<float> sound = ReadSound(folder / "b.wav")[0];
    EXPECT_GT(PeakLevel(std::vector<float>(sound.end() - 4 * kSecond, sound.end() - 2 * kSecond)),
              0.05f);
    EXPECT_LT(PeakLevel(std::vector<float>(sound.end() - kSecond / 20, sound.end())), 0.005f);
}

TEST_F(RenderTest, SideChainDrivesTheFollower) {
    Input({Sine(300.0, 48000.0, kSecond, 0.3f)});
    WriteFile(folder / "p.json",
              R"({"format": "tesserae-preset", "version": 1, "parameters": {
                  "Dry / Wet": 0, "Master Volume": 1, "Envelope Follower Source": "Side-Chain",
                  "Envelope Follower Gain": "0 dB"},
                  "routings": [{"source": "Envelope Follower", "destination": "Dry / Wet",
                                "amount": 1}]})");
    for (const float level : {0.0f, 0.9f}) {
        WriteWav(folder / "side.wav", {Sine(300.0, 44100.0, 22050, level)}, 44100);
        const Channels out =
            Render({"--preset", folder / "p.json", "--sidechain", folder / "side.wav"});
        EXPECT_EQ(out[0] == ReadSound(folder / "in.wav")[0], level == 0.0f);
    }
}

TEST_F(RenderTest, SetTakesPositionsAndValues) {
    Input({Noise(1, kSecond / 2, 0.3f)});
    const Channels texture = Render({"--set", "MoteWeaver_GranularMode=0.5"});
    const Channels pitch = Render({"--set", "MoteWeaver_Pitch=0.75"});
    // In whatever order: the size that is meant is the texture's.
    EXPECT_EQ(Render({"--set", "Grain Size=80 ms", "--set", "Granular Mode=Texture"}),
              Render({"--set", "MoteWeaver_GranularMode=Texture", "--set",
                      "MoteWeaver_TextureSizeAbsolute=80 ms"}));
    EXPECT_EQ(texture, Render({"--set", "MoteWeaver_GranularMode=texture"}));
    EXPECT_EQ(pitch, Render({"--set", "motewEaver_pitch = 18 st"}));
    EXPECT_EQ(Render({"--set", "Start Quantization=Grid", "--set", "Grid Size=16"}),
              Render({"--set", "Start Quantization=Grid", "--set", "Grid Size=0.5"}));
    EXPECT_NE(texture, pitch);
}

TEST_F(RenderTest, VariationsAreTheSeedsThatFollow) {
    Input({Noise(1, kSecond / 4, 0.3f)});
    const auto all = Summary({"--variations", "10", "--picture", folder / "out.png"})["variations"];
    ASSERT_EQ(all.size(), 10u);
    EXPECT_EQ(all[9]["seed"], 14);
    EXPECT_EQ(all[9]["picture"], folder / "out-10.png");
    Run({"--seed", "7"});
    EXPECT_TRUE(ReadFile(folder / "out.wav") == ReadFile(folder / "out-03.wav"));
    EXPECT_FALSE(ReadFile(folder / "out.wav") == ReadFile(folder / "out-04.wav"));
    Arguments again{"render", folder / "in.wav", "-o", folder / "new.wav", "--variations", "3"};
    WriteFile(folder / "new-3.wav", "older");
    EXPECT_EQ(RunTool(again).exitCode, 4);
    EXPECT_FALSE(std::filesystem::exists(folder / "new-1.wav")) << "all places are looked at first";
}

TEST_F(RenderTest, FilesTellWhatTheyAreAndHowTheyWereMade) {
    SF_INFO form{0, 48000, 1, SF_FORMAT_FLAC | SF_FORMAT_PCM_24, 0, 0};
    SNDFILE* const file = sf_open((folder / "in.flac").c_str(), SFM_WRITE, &form);
    sf_set_string(file, SF_STR_TITLE, "Im Fr\xc3\xbchling");
    sf_set_string(file, SF_STR_ARTIST, "Nobody");
    // A comment so long would break the headers of some containers.
    sf_set_string(file, SF_STR_COMMENT, (std::string(9000, 'x') + "\nfirst take").c_str());
    sf_writef_float(file, Noise(1, 4800, 0.3f).data(), 4800);
    sf_close(file);
    const Arguments recipe{"--preset", "dense-cloud",    "--seed",  "5",
                           "--set",    "Feedback=-6 dB", "--tempo", "97",
                           "--stop",   "--start-beat",   "2",       "--tail",
                           "0.1",      "--tail-fade",    "0.05",    "--mono"};
    for (const std::string name : {"a.wav", "a.aiff", "a.flac", "a.ogg", "a.opus", "a.caf"}) {
        RunTool(Arguments{"render", folder / "in.flac", "-o", folder / name} + recipe);
        const auto facts = nlohmann::json::parse(RunTool({"info", folder / name, "--json"}).out);
        EXPECT_EQ(facts["tags"]["title"], "Im Fr\xc3\xbchling") << name;
        EXPECT_EQ(facts["tags"]["artist"], "Nobody") << name;
        EXPECT_EQ(facts["comment"].get<std::string>().substr(0, 11), "first take\n") << name;
        EXPECT_EQ(facts["made"]["preset"], "dense-cloud") << name;
        EXPECT_EQ(facts["made"]["seed"], 5) << name;
        EXPECT_EQ(facts["made"]["options"], recipe) << name;
        EXPECT_EQ(facts["channels"], 1) << name;
    }
}

TEST_F(RenderTest, BashCompletesCommandLines) {
    WriteFile(folder / "complete", "source <(" TESSERAE_BINARY R"( completions bash)
        COMP_LINE=$1 COMP_POINT=${#1} COMP_WORDS=("$2") COMP_CWORD=0
        _tesserae )" TESSERAE_BINARY R"(
        printf '%s\n' "${COMPREPLY[@]}")");
    const auto complete = [this](const std::string& line, const std::string& word) {
        const std::string call = "bash " + (folder / "complete") + " 'tesserae " + line + "' '" +
                                 word + "' >" + (folder / "words") + " 2>/dev/null";
        EXPECT_EQ(std::system(call.c_str()), 0);
        return ReadFile(folder / "words");
    };
    EXPECT_EQ(complete("ren", "ren"), "render\n");
    EXPECT_EQ(complete("render in.wav --pres", "--pres"), "--preset\n");
    EXPECT_EQ(complete("render in.wav --preset dense-c", "dense-c"), "dense-cloud\n");
    EXPECT_EQ(complete("render in.wav --picture-levels l", "l"), "linear\n");
    EXPECT_EQ(complete("help rend", "rend"), "render\n");
    EXPECT_EQ(complete("render in.wav --set Master", "Master"), "Master\\ Volume=\n");
    EXPECT_EQ(complete("render in.wav --set \"Master V", "\"Master V"), "Master Volume=\n");
}

TEST_F(RenderTest, SavedPresetIsTheSound) {
    Input({Noise(1, kSecond / 2, 0.3f)});
    const Arguments sound{
        "--preset", "clockwork-arpeggio", "--set", "MoteWeaver_Pitch=7 st", "--tempo", "97"};
    Arguments saving = sound + Arguments{"--save-preset", folder / "mine.json"};
    const Channels first = Render(saving);
    EXPECT_EQ(Render({"--preset", folder / "mine.json"}), first);
    const auto preset = nlohmann::json::parse(ReadFile(folder / "mine.json"));
    EXPECT_EQ(preset["name"], "mine");
    EXPECT_FALSE(preset["routings"].empty());
    saving.back() = folder / "in.wav";
    EXPECT_EQ(RunTool(Command(saving)).exitCode, 2) << "the run reads it";
}

TEST_F(RenderTest, AutomationLandsOnTheBlockThatHoldsItsMoment) {
    Input({std::vector<float>(kSecond, 0.25f)});
    WriteFile(folder / "a.csv", "seconds,parameter,position\n0.25,Bypass,1\n0.5,Bypass,0\n");
    WriteFile(folder / "b.json",
              R"([{"beats": 0.5, "parameter": "Bypass", "position": "On"}, [0.5, "bypass", 0]])");
    // Silent but for the bypass, which fades in 10 ms.
    const auto render = [&](const std::string& automation) {
        return Render({"--set", "Master Volume=0", "--set", "Granular Volume=0", "--mono",
                       "--automation", folder / automation})[0];
    };
    const std::vector<float> sound = render("a.csv");
    // The crossfade comes behind the processor's latency, 144 frames, which the bypass lacks.
    const auto level = [&](double seconds) {
        return std::abs(sound[static_cast<size_t>(seconds * kSecond)]);
    };
    EXPECT_LT(level(0.24), 0.001f);
    EXPECT_NEAR(level(0.265), 0.25f, 1.0e-4f);
    EXPECT_NEAR(level(0.49), 0.25f, 1.0e-4f);
    EXPECT_LT(level(0.515), 0.001f);
    EXPECT_EQ(render("b.json"), sound);
}

TEST_F(RenderTest, NothingIsWithoutEffectInSilence) {
    Input({std::vector<float>(kSecond / 2, 8.0f)});
    WriteWav(folder / "side.wav", {Noise(1, 4800, 0.3f)});
    WriteFile(folder / "a.json", R"([
        {"beats": 0, "seconds": 0, "parameter": "FX1 Chorus Depth", "position": 1},
        {"seconds": -1, "parameter": "FX2 Dry / Wet", "position": 0, "rmap": "linear"},
        [0.2, "FX2 Effect", "Reverb"], [0.25, "Reverb Decay", "70 %"],
        [0.3, "FX2 Dry / Wet", 0.5], [9, "Feedback", 0.1]])");
    const auto warnings = [&](const Arguments& more) {
        std::string all;
        const nlohmann::json summary = Summary(more);  // alive as long as the loop
        for (const auto& warning : summary["warnings"])
            all += warning.get<std::string>() + "\n";
        return all;
    };
    const std::string found =
        warnings(Dry({"--sidechain", folder / "side.wav", "--automation", folder / "a.json",
                      "--set", "FX1 Effect=Delay", "--set", "MoteWeaver_TextureSizeAbsolute=90 ms",
                      "--set", "Grid Size=16", "--set", "Macro 1=0.7", "--set",
                      "Macro 2 to Pitch=50 %", "--set", "Macro 2 to Pitch On=Off"}));
    for (const char* words :
         {"side.wav\": the envelope follower takes the input", "The Delay in FX1 is not heard",
          "\"Grain Size (Free)\"", "\"Start Quantization=Grid\"",
          "line 2, column 9: \"beats\" counts", "\"-1\" lies ahead of the start", "\"ramp\"?",
          "\"FX1 Chorus Depth\" without effect: FX1 holds the Delay",
          "Macro 1 is routed to nothing", "\"Macro 2 to Pitch On=On\"",
          "\"Grid Size\" and what else is asked of the grains are not heard: \"Dry / Wet\"",
          "line 5, column 38 at 9.00 s lies behind", "in.wav\" goes 18.1 dB above", "were clipped"})
        EXPECT_NE(found.find(words), std::string::npos) << words << " is not in:\n" << found;
    EXPECT_EQ(std::count(found.begin(), found.end(), '\n'), 14) << found;
    for (const auto& [sets, words] : std::vector<std::pair<Arguments, std::string>>{
             {{"FX2 Effect=Delay", "FX2 Dry / Wet=1", "FX2 Position=Wet Signal"},
              "\"FX1 Position=Wet Signal\""},
             {{"FX1 Effect=Delay", "FX1 Dry / Wet=1", "FX1 Position=Feedback Loop"},
              "\"Feedback=-6 dB\""},
             {{"FX2 Bypass=On"}, "FX2 holds no effect"},
             {{"Envelope Follower Source=Side-Chain", "Envelope Follower to Pitch=50 %",
               "Envelope Follower to Pitch On=On"},
              "--sidechain FILE"},
             {{"Random Pan=1"}, "\"Spatializer On=On\""},
             {{"Granular Mode=Texture", "Random Density=1"}, "\"Random Density Kind=Skip\""},
             {{"Granular Mode=Beat"}, "\"Beat Sequencer Step 1 On=On\""},
             {{"Granular Mode=Beat", "Step 1 On=On", "Sequencer Retrigger=On"}, ""}}) {
        Arguments more{"--set", "Master Volume=-24 dB"};
        for (const std::string& set : sets)
            more = more + Arguments{"--set", set};
        const std::string all = warnings(more);
        EXPECT_EQ(std::count(all.begin(), all.end(), '\n'), words.empty() ? 1 : 2) << all;
        EXPECT_NE(all.find(words), std::string::npos) << words << " is not in:\n" << all;
    }
    // The gain that a clipped render names is enough.
    const size_t at = found.find("\"Master Volume=") + 1;
    const std::string volume = found.substr(at, found.find('"', at) - at);
    EXPECT_EQ(warnings({"--set", "Dry / Wet=0", "--set", volume}).find("clipped"),
              std::string::npos);
}

}  // namespace
}  // namespace Quorvan::test
