#include "python/src/Rendering.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include <pybind11/stl.h>

#include "host/parameters/Sentence.h"
#include "python/src/ArrayViews.h"
#include "python/src/Errors.h"
#include "python/src/GrainList.h"
#include "tools/render/ModulationLog.h"
#include "tools/render/RenderRun.h"

namespace py = pybind11;

namespace Quorvan::Python {

namespace {

constexpr double kLowestRate = 1000.0, kHighestRate = 768000.0;  // hertz

/// An array as the renderer reads it.
class ArraySource final : public Tools::AudioSource {
public:
    ArraySource(const ArrayView& sound, double sampleRate) : array(sound), rate(sampleRate) {}
    double Rate() const override { return rate; }
    uint32_t Channels() const override { return array.Count(); }
    std::optional<uint64_t> Frames() const override { return array.Frames(); }
    size_t Read(float* const* channels, size_t frames) override {
        const size_t count = std::min(frames, array.Frames() - at);
        for (uint32_t c = 0; c < array.Count(); ++c)
            std::copy_n(array.Channels()[c] + at, count, channels[c]);
        at += count;
        return count;
    }

private:
    const ArrayView& array;
    double rate;
    size_t at = 0;
};

/// Gathers the output, in an array of Python's as long as was expected, and what there is beyond
/// it.
class PlaneSink final : public Tools::RenderSink {
public:
    PlaneSink(uint32_t channels, size_t expectedFrames)
        : array(channels, expectedFrames), expected(expectedFrames), beyond(channels) {}
    void OnOutput(const Tools::SoundPiece& piece) override {
        const size_t at = std::min(frames, expected);
        const size_t fits = std::min(piece.frames, expected - at);
        for (size_t c = 0; c < beyond.size(); ++c) {
            std::copy_n(piece.channels[c], fits, array.rows[c] + at);
            beyond[c].insert(beyond[c].end(), piece.channels[c] + fits,
                             piece.channels[c] + piece.frames);
        }
        frames += piece.frames;
    }
    size_t Frames() const { return frames; }
    py::array_t<float> Array() const {
        if (frames == expected)
            return array.array;
        NewArray whole(static_cast<uint32_t>(beyond.size()), frames);
        for (size_t c = 0; c < beyond.size(); ++c) {
            std::copy_n(array.rows[c], std::min(frames, expected), whole.rows[c]);
            std::copy(beyond[c].begin(), beyond[c].end(),
                      whole.rows[c] + std::min(frames, expected));
        }
        return whole.array;
    }

private:
    NewArray array;
    size_t expected, frames = 0;
    std::vector<std::vector<float>> beyond;
};

Tools::RenderSettings SettingsOf(const RenderWish& wish, const Host::Preset& preset) {
    const auto within = [](const std::optional<double>& number, double low, double high,
                           const char* sentence) {
        if (number && !(*number >= low && *number <= high))
            RefuseValue(sentence);
    };
    within(wish.sampleRate, kLowestRate, kHighestRate,
           "The sample rate goes from 1000 to 768000 Hz.");
    within(wish.tail, 0.0, 3600.0, "The tail goes from 0 to 3600 seconds, or is \"auto\".");
    within(wish.tailFade, 0.0, 30.0, "The fade of the tail goes from 0 to 30 seconds.");
    within(wish.tempo, 1.0, 999.0, "The tempo goes from 1 to 999 beats per minute.");
    within(wish.startBeat, -1.0e6, 1.0e6, "The first beat goes from -1000000 to 1000000.");
    Tools::RenderSettings settings;
    settings.assignments = Assignments(preset, wish.set);
    settings.seed = wish.seed;
    settings.tail = wish.tail;
    settings.tailFade = wish.tailFade;
    settings.tempo = wish.tempo;
    settings.playing = wish.playing;
    settings.startBeat = wish.startBeat;
    const std::optional<Tools::Meter> meter = Tools::Meter::Read(wish.meter);
    if (!meter)
        RefuseValue(Host::Quoted(wish.meter) + " is no time signature. Write one such as 3/4.");
    settings.meter = *meter;
    return settings;
}

py::array ArrayOf(const std::vector<GrainRow>& rows) {
    return py::array_t<GrainRow>(static_cast<py::ssize_t>(rows.size()), rows.data());
}

/// Names of the columns, the first of which is the time, and the table (samples, columns).
py::object TableOf(const Tools::ModulationLog& log, double rate, uint64_t end) {
    size_t samples = 0;
    while (samples < log.Samples() && log.Frame(samples) < end)
        ++samples;
    py::list names;
    names.append("time");
    for (size_t column = 0; column < log.Columns(); ++column)
        names.append(log.Name(column));
    py::array_t<double> table({samples, log.Columns() + 1});
    auto cells = table.mutable_unchecked<2>();
    for (size_t i = 0; i < samples; ++i) {
        const auto row = static_cast<py::ssize_t>(i);
        cells(row, 0) = static_cast<double>(log.Frame(i)) / rate;
        for (size_t column = 0; column < log.Columns(); ++column)
            cells(row, static_cast<py::ssize_t>(column + 1)) = log.Value(i, column);
    }
    return py::make_tuple(names, table);
}

}  // namespace

void RegisterGrains() {
    PYBIND11_NUMPY_DTYPE_EX(GrainRow, time, "time", duration, "duration", tapePosition,
                            "tape_position", tapeLength, "tape_length", sourceDuration,
                            "source_duration", semitones, "semitones", pan, "pan", gain, "gain",
                            shape, "shape", right, "right", reversed, "reversed");
}

py::dict Render(const py::object& sound, const py::object& sideChain, const RenderWish& wish) {
    const ArrayView input(sound);
    const std::optional<ArrayView> side =
        sideChain.is_none() ? std::nullopt : std::optional<ArrayView>(sideChain);
    Host::Preset preset = LoadSound(wish.preset);
    Tools::RenderSettings settings = SettingsOf(wish, preset);
    if (side)
        settings.sideChain = "sidechain";  // for the sentences
    Tools::Automation automation;
    if (!wish.automationFile.empty())
        automation = Tools::Automation::Load(wish.automationFile, settings.meter);
    else if (!wish.automation.empty())
        automation = Tools::Automation::ReadJson("automation", wish.automation, settings.meter);
    Tools::ModulationLog modulation(Tools::FindDestinations(wish.destinations, Catalog()));
    Tools::Summary summary;
    const double tail = std::round(wish.tail.value_or(0.0) * wish.sampleRate);
    PlaneSink output(wish.mono ? 1 : 2, input.Frames() + static_cast<size_t>(tail));
    GrainList grains(wish.sampleRate);
    {
        const py::gil_scoped_release others;
        Tools::RenderRun run(settings, std::move(preset), std::move(automation), Catalog(),
                             summary);
        run.Plan(wish.sampleRate);
        run.Prepare(input.Count(), wish.mono ? 1 : 2, side ? side->Count() : 0,
                    wish.showsModulation);
        run.Start();
        run.GetEngine().AddListener(grains);
        if (wish.showsModulation)
            run.GetEngine().AddListener(modulation);
        ArraySource source(input, wish.sampleRate);
        std::optional<ArraySource> sideSource;
        if (side)
            sideSource.emplace(*side, wish.sampleRate);
        run.Run(source, sideSource ? &*sideSource : nullptr, {&output}, [](uint64_t) {});
    }
    py::dict result;
    result["audio"] = output.Array();
    result["grains"] = ArrayOf(grains.Ahead(output.Frames()));
    result["modulation"] = wish.showsModulation
                               ? TableOf(modulation, wish.sampleRate, output.Frames())
                               : py::object(py::none());
    result["seed"] = summary.seed;
    result["tempo"] = summary.tempo;
    result["preset"] = summary.preset;
    result["warnings"] = py::cast(summary.warnings);
    result["engine_seconds"] = summary.engineSeconds;
    return result;
}

}  // namespace Quorvan::Python
