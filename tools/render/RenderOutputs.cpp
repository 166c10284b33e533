#include "tools/render/RenderOutputs.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <string>

#include "host/parameters/NumberText.h"
#include "host/parameters/Sentence.h"
#include "tools/support/Failure.h"
#include "tools/support/StandardStreams.h"
#include "tools/support/TemporaryFiles.h"

namespace Quorvan::Tools {

namespace {

/// A file with its part in the run.
struct Use {
    std::string what;
    std::optional<std::filesystem::path> file;
};

std::array<Use, 4> OutputsOf(const RenderSettings& settings) {
    return {Use{"Sound", settings.output}, Use{"Picture", settings.picture},
            Use{"Modulation", settings.modulationCsv}, Use{"Saved preset", settings.savePreset}};
}

std::array<Use, 4> SourcesOf(const RenderSettings& settings) {
    return {Use{"sound", settings.input}, Use{"side-chain", settings.sideChain},
            Use{"automation", settings.automation}, Use{"preset", settings.preset}};
}

bool IsStream(const Use& use) { return use.file && StandardStreams::IsMeant(*use.file); }

/// One file can have several names: "out.wav", "./out.wav", a link.
bool IsSame(const Use& one, const Use& other) {
    return one.file && other.file &&
           AtomicOutput::PlaceOf(*one.file) == AtomicOutput::PlaceOf(*other.file);
}

void RefuseSharedOutputs(const RenderSettings& settings) {
    const auto outputs = OutputsOf(settings);
    for (const Use& one : outputs)
        for (const Use& other : outputs)
            if (&one < &other && IsSame(one, other))
                throw Failure(
                    ExitCode::Usage,
                    one.what + " and " + Host::Lower(other.what) + " can't both go to " +
                        (IsStream(one) ? "standard output" : Host::Quoted(one.file->string())) +
                        ". Name two files.");
}

void RefuseSharedSources(const RenderSettings& settings) {
    const auto sources = SourcesOf(settings);
    if (IsStream(sources[0]) && IsStream(sources[1]))
        throw Failure(ExitCode::Usage,
                      "Sound and side-chain can't both come from standard input. Name a file.");
    for (const Use& output : OutputsOf(settings))
        for (const Use& source : sources)
            if (IsSame(output, source) && !IsStream(output))
                throw Failure(ExitCode::Usage, Host::Quoted(output.file->string()) + " is the " +
                                                   source.what +
                                                   " that this run reads. Name another file to "
                                                   "write to.");
}

void RefuseOtherPictures(const RenderSettings& settings) {
    if (settings.picture && !StandardStreams::IsMeant(*settings.picture) &&
        Host::Lower(settings.picture->extension().string()) != ".png")
        throw Failure(ExitCode::Usage, "Pictures are written as PNG only. Let the name " +
                                           Host::Quoted(settings.picture->string()) +
                                           " end in .png.");
}

PartFile::Search SearchFor(const RenderSettings& settings) {
    return settings.isOneOfMany ? PartFile::Search::Name : PartFile::Search::Folder;
}

/// The settings, if they make sense.
const RenderSettings& Checked(const RenderSettings& settings) {
    RefuseSharedOutputs(settings);
    RefuseSharedSources(settings);
    RefuseOtherPictures(settings);
    return settings;
}

}  // namespace

RenderOutputs::RenderOutputs(const RenderSettings& wanted)
    : sound(Checked(wanted).output, wanted.force, SearchFor(wanted)) {
    const auto open = [&wanted](std::optional<AtomicOutput>& file, const auto& name) {
        if (name)
            file.emplace(*name, wanted.force, SearchFor(wanted));
    };
    open(picture, wanted.picture);
    open(modulation, wanted.modulationCsv);
    open(preset, wanted.savePreset);
}

bool RenderOutputs::UseStandardOutput(const RenderSettings& settings) {
    const auto outputs = OutputsOf(settings);
    return std::any_of(outputs.begin(), outputs.end(), IsStream);
}

void RenderOutputs::Commit() {
    const auto commit = [this](bool streams) {
        for (std::optional<AtomicOutput>* file : {&picture, &modulation, &preset})
            if (*file && (*file)->IsStandardOutput() == streams)
                (*file)->Commit();
        if (sound.IsStandardOutput() == streams)
            sound.Commit();
    };
    // Standard output comes first and without the pause: its reader may be slow, or gone.
    commit(true);
    const SignalPause pause;
    commit(false);
}

}  // namespace Quorvan::Tools
