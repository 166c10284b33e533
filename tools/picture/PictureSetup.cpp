#include "tools/picture/PictureSetup.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <optional>
#include <string>

#include "host/parameters/Sentence.h"
#include "tools/render/AutomationPoint.h"
#include "tools/render/AutomationTime.h"
#include "tools/support/Failure.h"
#include "tools/support/Numbers.h"
#include "tools/support/StandardStreams.h"

namespace Quorvan::Tools {

namespace {

/// "120", or "90-140" where it changes.
std::string TempoText(const TempoMap& song) {
    const auto [slowest, fastest] =
        std::minmax_element(song.Spans().begin(), song.Spans().end(),
                            [](const auto& a, const auto& b) { return a.tempo < b.tempo; });
    const std::string low = Fixed(slowest->tempo, 0), high = Fixed(fastest->tempo, 0);
    return low == high ? low : low + "\xe2\x80\x93" + high;
}

std::string SampleRateText(double rate) { return Fixed(rate / 1000.0, 1) + " kHz"; }

std::optional<uint64_t> FrameOf(const char* option, const std::string& moment, const Meter& meter,
                                const TempoMap& song) {
    if (moment.empty())
        return std::nullopt;
    const auto time = AutomationTime::Read(moment, TimeUnit::Seconds, meter);
    const double frame = !time          ? -1.0
                         : time->isBeat ? song.FrameAt(time->time)
                                        : time->time * song.Rate();
    if (!(frame >= 0.0 && frame < kLastFrame))
        throw Failure(ExitCode::Usage,
                      std::string(option) + " can't be " + Host::Quoted(moment) +
                          ". Write seconds of the render, \"4 beats\" or bar and beat as \"5:3\".");
    return static_cast<uint64_t>(std::llround(frame));
}

}  // namespace

PictureData::Section SectionOf(const RenderSettings& settings, const TempoMap& song) {
    PictureData::Section section;
    section.from = FrameOf("--picture-from", settings.pictureFrom, settings.meter, song)
                       .value_or(section.from);
    section.to =
        FrameOf("--picture-to", settings.pictureTo, settings.meter, song).value_or(section.to);
    if (section.from >= section.to)
        throw Failure(ExitCode::Usage,
                      "--picture-to has to lie behind --picture-from. Swap the two.");
    return section;
}

void Caption(PictureData& picture, const RenderSettings& settings, const Summary& summary,
             const TempoMap& song) {
    picture.song = settings.playing ? &song : nullptr;
    picture.meter = settings.meter;
    picture.levels = settings.pictureLevels;
    const auto name = [](const std::filesystem::path& file, const char* stream) {
        return StandardStreams::IsMeant(file) ? stream : file.filename().string();
    };
    picture.inputName = name(settings.input, "standard input");
    picture.outputName = name(settings.output, "standard output");
    picture.preset = "Preset \xe2\x80\x9c" + summary.preset + "\xe2\x80\x9d";
    picture.subtitle = "   \xc2\xb7   " + TempoText(song) + " BPM, song " +
                       (settings.playing ? "playing" : "stopped") + "   \xc2\xb7   " +
                       SampleRateText(picture.rate) + "   \xc2\xb7   " + Fixed(summary.seconds, 2) +
                       " s   \xc2\xb7   peak " + summary.PeakText() + "   \xc2\xb7   loudness " +
                       summary.LoudnessText() + "   \xc2\xb7   " + Grouped(summary.grains) +
                       " grains   \xc2\xb7   seed " + std::to_string(summary.seed);
}

std::optional<std::string> EmptyPictureWarning(const PictureData& picture) {
    if (picture.section.from < picture.outputFrames)
        return std::nullopt;
    return "The picture is empty: --picture-from lies behind the end of the sound at " +
           Fixed(static_cast<double>(picture.outputFrames) / picture.rate, 2) + " s.";
}

}  // namespace Quorvan::Tools
