#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "presets/FactoryPresets.h"
#include "tools/ToolRig.h"
#include "tools/audio/AudioWriter.h"
#include "tools/audio/DemoSound.h"
#include "tools/render/RenderJob.h"

namespace Quorvan::Tools {
namespace {

constexpr double kRate = 48000.0;
constexpr double kSeconds = 5.0;

/// Every factory preset on the demo sound.
class FactoryPresetTest : public ::testing::Test {
protected:
    FactoryPresetTest() {
        AtomicOutput file(folder / "demo.wav", true);
        const AudioFormat form = AudioFormat::Choose(folder / "demo.wav", "float", kRate, 2);
        AudioWriter writer(file, form, kRate, 2, demo.Frames());
        writer.Write(demo.Pointers(), demo.Frames());
        writer.Finish();
        file.Commit();
    }

    Summary Render(const std::string& preset) const {
        RenderSettings settings;
        settings.input = folder / "demo.wav";
        settings.output = folder / "out.wav";
        settings.preset = preset;
        settings.seed = 11;
        settings.tail = 0.0;
        settings.format = "float";
        settings.force = true;
        settings.progress = false;
        return RenderJob(settings, catalog).Run();
    }

    /// What is left of the output when the best-fitting copy of the input is taken away, as a share
    /// of its energy: 0 where the output is the input at another level.
    double Difference(const test::Channels& out) const {
        double dryDry = 0.0, dryWet = 0.0, wetWet = 0.0;
        for (uint32_t c = 0; c < 2; ++c) {
            for (size_t i = 0; i < demo.Frames(); ++i) {
                const auto dry = static_cast<double>(demo[c][i]);
                const auto wet = static_cast<double>(out[c][i]);
                dryDry += dry * dry;
                dryWet += dry * wet;
                wetWet += wet * wet;
            }
        }
        return 1.0 - dryWet * dryWet / (dryDry * wetWet);
    }

    test::Folder folder;
    Host::ParameterCatalog catalog;
    Planes demo = MakeDemoSound(kRate, kSeconds);
};

TEST_F(FactoryPresetTest, AllAreAudibleUnclippedAndDifferentFromTheInput) {
    for (const Host::FactoryPreset& preset : Host::FactoryPresets()) {
        SCOPED_TRACE(preset.id);
        const Summary summary = Render(std::string(preset.id));
        EXPECT_TRUE(summary.warnings.empty()) << summary.warnings.front();
        EXPECT_GT(summary.loudness.value_or(-100.0), -24.0);
        EXPECT_LT(summary.loudness.value_or(0.0), -12.0);
        EXPECT_LT(summary.peak, 1.0f);
        EXPECT_GT(summary.grains, 8u);
        EXPECT_GT(Difference(test::ReadSound(folder / "out.wav")), 0.2);
    }
}

TEST_F(FactoryPresetTest, AllAreTold) {
    ASSERT_GE(Host::FactoryPresets().size(), 11u);
    EXPECT_EQ(Host::FactoryPresets().front().id, "init");
    for (const Host::FactoryPreset& preset : Host::FactoryPresets()) {
        SCOPED_TRACE(preset.id);
        std::vector<std::string> warnings;
        const Host::Preset read = LoadPreset(std::string(preset.id), catalog, warnings);
        EXPECT_FALSE(read.description.empty());
        EXPECT_FALSE(read.tags.empty());
        EXPECT_TRUE(read.tempo.has_value());
        EXPECT_EQ(Host::FindFactoryPreset(read.name), Host::FindFactoryPreset(preset.id));
    }
}

TEST_F(FactoryPresetTest, ConstructedProcessorIsSilentAndInitIsNot) {
    test::WriteFile(folder / "bare.json", R"({"format": "tesserae-preset", "version": 1})");
    EXPECT_LT(Render(folder / "bare.json").peak, 0.001f);
    EXPECT_GT(Render("init").peak, 0.1f);
}

TEST(DemoSoundTest, IsMusicOfTheSameBitsEveryTime) {
    const Planes sound = MakeDemoSound(kRate, 2.0);
    const Planes again = MakeDemoSound(kRate, 2.0);
    float peak = 0.0f;
    for (uint32_t c = 0; c < 2; ++c) {
        EXPECT_EQ(sound[c], again[c]);
        for (const float sample : sound[c])
            peak = std::max(peak, std::abs(sample));
    }
    EXPECT_NEAR(peak, 0.708f, 0.001f);
    EXPECT_NE(sound[0], sound[1]);
}

}  // namespace
}  // namespace Quorvan::Tools
