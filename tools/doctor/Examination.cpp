#include "tools/doctor/Examination.h"

#include <cairo.h>

#include <algorithm>
#include <cmath>
#include <exception>
#include <numbers>

#include "presets/FactoryPresets.h"
#include "tools/audio/AudioReader.h"
#include "tools/audio/AudioWriter.h"
#include "tools/audio/Planes.h"
#include "tools/audio/Resampler.h"
#include "tools/render/RenderJob.h"
#include "tools/render/SoundChoice.h"
#include "tools/support/Numbers.h"
#include "tools/support/TextFile.h"

namespace Quorvan::Tools {

namespace {

constexpr double kRate = 48000.0;  // hertz
constexpr double kToneHertz = 440.0;
constexpr double kToneLevel = 0.25;
constexpr double kToneSeconds = 1.0;
constexpr uint64_t kSeed = 1;

double Tone(double time) {
    return kToneLevel * std::sin(2.0 * std::numbers::pi * kToneHertz * time);
}

/// The whole of a source in memory.
Planes ReadAll(AudioSource& source) {
    Planes sound(source.Channels(), static_cast<size_t>(*source.Frames()) + 64);
    const size_t frames = source.Read(sound.Pointers(), sound.Frames());
    Planes exact(source.Channels(), frames);
    for (uint32_t c = 0; c < exact.Channels(); ++c)
        std::copy_n(sound[c].begin(), frames, exact[c].begin());
    return exact;
}

/// How far the sound lies from the tone, leaving out its ends, where a filter swings in.
double ErrorAgainstTone(const Planes& sound, double rate, size_t margin) {
    double worst = 0.0;
    for (size_t i = margin; i + margin < sound.Frames(); ++i) {
        const double right = Tone(static_cast<double>(i) / rate);
        for (uint32_t c = 0; c < sound.Channels(); ++c)
            worst = std::max(worst, std::abs(static_cast<double>(sound[c][i]) - right));
    }
    return worst;
}

}  // namespace

Examination::Examination()
    : checks{{"factory presets can be read", &Examination::CheckPresets},
             {"sound files of every kind can be written and read", &Examination::CheckSoundFiles},
             {"resampling keeps a tone", &Examination::CheckResampler},
             {"the dry signal comes through unchanged and in time", &Examination::CheckDryPath},
             {"grains sound", &Examination::CheckGrains},
             {"the same seed gives the same file", &Examination::CheckRepeat},
             {"a picture can be drawn", &Examination::CheckPicture}} {}

std::string Examination::Try(const Check& check) {
    try {
        return (this->*check.run)();
    } catch (const std::exception& fault) {
        return fault.what();
    }
}

std::string Examination::WriteTone(const std::string& name, double rate,
                                   const std::string& format) {
    std::string path = folder.File(name);
    Planes tone(2, static_cast<size_t>(kToneSeconds * rate));
    for (size_t i = 0; i < tone.Frames(); ++i) {
        const auto sample = static_cast<float>(Tone(static_cast<double>(i) / rate));
        tone[0][i] = tone[1][i] = sample;
    }
    AtomicOutput file(path, true);
    AudioWriter writer(file, AudioFormat::Choose(path, format, rate, 2), rate, 2, tone.Frames());
    writer.Write(tone.Pointers(), tone.Frames());
    writer.Finish();
    file.Commit();
    return path;
}

Summary Examination::Render(const std::string& input, const std::string& output,
                            const std::vector<std::string>& assignments, bool picture) {
    RenderSettings settings;
    settings.input = input;
    settings.output = folder.File(output);
    settings.assignments = assignments;
    settings.seed = kSeed;
    settings.tail = 0.0;
    settings.force = true;
    settings.progress = false;
    settings.format = "float";
    if (picture)
        settings.picture = folder.File(output + ".png");
    return RenderJob(settings, catalog).Run();
}

std::string Examination::CheckPresets() {
    for (const Host::FactoryPreset& preset : Host::FactoryPresets()) {
        std::vector<std::string> warnings;
        LoadPreset(std::string(preset.id), catalog, warnings);
        if (!warnings.empty())
            return warnings.front();
    }
    return Host::FactoryPresets().empty() ? "There are none." : "";
}

std::string Examination::CheckSoundFiles() {
    struct Kind {
        const char* name;
        const char* format;
        double tolerance;  // Vorbis changes the wave, not the sound
    };
    for (const Kind& kind : {Kind{"tone.wav", "16", 2.0e-5}, Kind{"tone.wav", "float", 0.0},
                             Kind{"tone.aiff", "24", 1.0e-7}, Kind{"tone.flac", "24", 1.0e-7},
                             Kind{"tone.caf", "32", 1.0e-7}, Kind{"tone.ogg", "vorbis", 0.05}}) {
        AudioReader reader(WriteTone(kind.name, kRate, kind.format));
        const double error = ErrorAgainstTone(ReadAll(reader), kRate, 1000);
        if (error > kind.tolerance + 1.0e-7)
            return std::string(kind.name) + " as " + kind.format + " comes back " +
                   Fixed(error, 6) + " away from what was written.";
    }
    return "";
}

std::string Examination::CheckResampler() {
    const auto source = Resampler::At(
        kRate, std::make_unique<AudioReader>(WriteTone("slow.wav", 44100.0, "float")));
    const double error = ErrorAgainstTone(ReadAll(*source), kRate, 2000);
    return error < 1.0e-4 ? "" : "A tone comes out " + Fixed(error, 6) + " away from itself.";
}

std::string Examination::CheckDryPath() {
    const std::string tone = WriteTone("tone.wav", kRate, "float");
    Render(tone, "dry.wav", {"Dry / Wet=0", "Master Volume=1"}, false);
    AudioReader reader(folder.File("dry.wav"));
    const double error = ErrorAgainstTone(ReadAll(reader), kRate, 0);
    return error < 1.0e-6 ? "" : "It comes out " + Fixed(error, 6) + " away from the input.";
}

std::string Examination::CheckGrains() {
    const std::string tone = WriteTone("tone.wav", kRate, "float");
    const Summary summary = Render(tone, "grains.wav", {}, false);
    if (summary.grains == 0)
        return "No grain started.";
    if (summary.badOutputs > 0)
        return Grouped(summary.badOutputs) + " samples came out as no finite numbers.";
    if (summary.loudness.value_or(-100.0) < -40.0)
        return "The tone comes out at " + summary.LoudnessText() + ", which is hardly heard.";
    return summary.peak <= 1.0f ? ""
                                : "The tone comes out with a peak of " + summary.PeakText() + ".";
}

std::string Examination::CheckRepeat() {
    const std::string tone = WriteTone("tone.wav", kRate, "float");
    Render(tone, "first.wav", {}, false);
    Render(tone, "second.wav", {}, false);
    return ReadTextFile(folder.File("first.wav")) == ReadTextFile(folder.File("second.wav"))
               ? ""
               : "Two renders with one seed differ.";
}

std::string Examination::CheckPicture() {
    const std::string tone = WriteTone("tone.wav", kRate, "float");
    Render(tone, "drawn.wav", {}, true);
    cairo_surface_t* const image =
        cairo_image_surface_create_from_png(folder.File("drawn.wav.png").c_str());
    const bool isWhole = cairo_surface_status(image) == CAIRO_STATUS_SUCCESS &&
                         cairo_image_surface_get_width(image) > 0;
    cairo_surface_destroy(image);
    return isWhole ? "" : "It can't be read back.";
}

}  // namespace Quorvan::Tools
