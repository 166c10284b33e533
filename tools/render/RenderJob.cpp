#include "tools/render/RenderJob.h"

#include <cmath>
#include <utility>

#include "host/state/PresetFormat.h"
#include "host/state/StateTransfer.h"
#include "tools/audio/Resampler.h"
#include "tools/render/FileSink.h"
#include "tools/render/GrainCounter.h"
#include "tools/render/LevelWarnings.h"
#include "tools/render/Recipe.h"
#include "tools/render/SavedPreset.h"
#include "tools/render/WarningFinder.h"
#include "tools/support/Numbers.h"
#include "tools/support/Progress.h"

namespace Quorvan::Tools {

RenderJob::RenderJob(RenderSettings wanted, const Host::ParameterCatalog& parameters)
    : settings(std::move(wanted)), catalog(parameters) {
    Host::Preset preset = LoadPreset(settings.preset, catalog, summary.warnings);
    if (WantsModulation())
        modulation.emplace(FindDestinations(settings.modulationDestinations, catalog));
    Automation automation;
    if (settings.automation)
        automation = Automation::Load(*settings.automation, settings.meter);
    run.emplace(settings, std::move(preset), std::move(automation), catalog, summary);
}

RenderJob::~RenderJob() = default;

Summary RenderJob::Run() {
    Make();
    return Finish();
}

void RenderJob::Make() {
    start = std::chrono::steady_clock::now();
    OpenSources();
    run->Plan(rate);
    OpenOutputs();
    PrepareEngine();
    Render();
    WritePicture();
    WriteModulation();
    Account();
    LetGo();
}

/// Of all that takes memory and is no longer needed, in the order in which it hangs together.
void RenderJob::LetGo() {
    picture.reset();
    run.reset();
    main.reset();
    side.reset();
    mainReader.reset();
    sideReader.reset();
    modulation.reset();
    watch = nullptr;
}

Summary RenderJob::Finish() {
    outputs->Commit();
    summary.elapsed =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    return summary;
}

std::unique_ptr<AudioSource> RenderJob::OpenSource(
    const std::filesystem::path& path, double wantedRate, SoundShelf& files,
    std::shared_ptr<const AudioReader>& reader) const {
    std::optional<RawSound> raw;
    if (&path == &settings.input && settings.rawRate)
        raw = RawSound{*settings.rawRate, settings.rawChannels};
    SoundShelf::Opened opened = files.Open(path, raw);
    reader = std::move(opened.reader);
    const double target = wantedRate > 0.0 ? wantedRate : reader->Rate();
    return Resampler::At(target, std::move(opened.source));
}

void RenderJob::OpenSources() {
    SoundShelf empty;
    main = OpenSource(settings.input, settings.rate.value_or(0), shelf != nullptr ? *shelf : empty,
                      mainReader);
    rate = main->Rate();
    if (settings.sideChain)
        side = OpenSource(*settings.sideChain, rate, empty, sideReader);
}

void RenderJob::OpenOutputs() {
    summary.channels = settings.mono ? 1 : 2;
    format = AudioFormat::Choose(settings.output, settings.format, rate, summary.channels);
    outputs.emplace(settings);
}

void RenderJob::PrepareEngine() {
    run->Prepare(main->Channels(), summary.channels, side != nullptr ? side->Channels() : 0,
                 WantsModulation());
    WritePreset();
    run->Start();
    if (!settings.picture)
        return;
    picture.emplace(run->GetEngine(), settings, catalog, run->Song());
    picture->NoteRoutes();
}

/// Called ahead of the levers and of the first block: the sound and nothing else.
void RenderJob::WritePreset() {
    if (!outputs->preset)
        return;
    const std::string text = Host::WritePreset(
        SavedPreset(Host::CapturePreset(run->GetEngine(), catalog), run->Sound().preset, settings),
        catalog);
    outputs->preset->Write(text.data(), static_cast<int64_t>(text.size()));
    summary.savedPreset = *settings.savePreset;
}

void RenderJob::Render() {
    const std::optional<uint64_t> inputFrames = main->Frames();
    AudioWriter writer(outputs->sound, format, rate, summary.channels,
                       inputFrames.value_or(0) + run->TailFrames(), Tags());
    FileSink file(writer, rate, summary.channels, settings.measuresLoudness || settings.picture);
    GrainCounter grains;
    Host::Engine& engine = run->GetEngine();
    engine.AddListener(grains);
    if (modulation)
        engine.AddListener(*modulation);

    std::vector<RenderSink*> sinks{&file, &grains};
    if (picture)
        sinks.push_back(&picture->Sink());
    const std::optional<uint64_t> total =
        inputFrames ? std::optional(*inputFrames + run->TailFrames()) : std::nullopt;
    Progress progress(rate, total, settings.tail.has_value(), settings.progress);
    const bool routesMove = picture && settings.automation;
    run->Run(*main, side.get(), sinks, [&](uint64_t frames) {
        progress.Show(frames);
        if (watch)
            watch(static_cast<double>(frames) / rate);
        if (routesMove)
            picture->NoteRoutes();
    });
    progress.Clear();
    engine.RemoveListener(grains);
    if (modulation)
        engine.RemoveListener(*modulation);
    writer.Finish();

    file.Report(summary);
    summary.clipped = writer.ClippedSamples();
    summary.grains = grains.Count();
}

void RenderJob::WritePicture() {
    if (!picture)
        return;
    Warn(picture->Draw(summary, *modulation, *outputs->picture));
    summary.picture = *settings.picture;
}

void RenderJob::WriteModulation() {
    if (!outputs->modulation)
        return;
    const auto end = static_cast<uint64_t>(std::llround(summary.seconds * rate));
    const std::string text = modulation->Csv(rate, end);
    outputs->modulation->Write(text.data(), static_cast<int64_t>(text.size()));
    summary.modulationCsv = *settings.modulationCsv;
}

/// Those of the input, with how the render was made.
SoundTags RenderJob::Tags() {
    SoundTags tags = mainReader->Tags();
    tags.SetSoftware("Tesserae " TESSERAE_VERSION);
    const std::string recipe = Recipe::Of(settings, summary.seed).Line();
    tags.AddToComment(recipe);
    if (recipe.size() > SoundTags::kLongest)
        summary.warnings.emplace_back(
            "The options are too many for the comment of the file, which does not tell the last "
            "of them. --save-preset keeps the whole sound.");
    return tags;
}

void RenderJob::Warn(std::optional<std::string> sentence) {
    if (sentence)
        summary.warnings.push_back(std::move(*sentence));
}

void RenderJob::WarnOfSource(const std::filesystem::path& path, const AudioReader& reader) {
    const std::string named = StandardStreams::InputText(path);
    Warn(BadSamplesWarning(named, reader.BadSamples()));
    Warn(HotInputWarning(named, reader.Peak()));
}

void RenderJob::WarnOfOutput() {
    Warn(ClippingWarning(summary.clipped, summary.peak, run->Course().End(), catalog));
    Warn(WritesBehindEnd(run->Moves(), run->Course(), rate, summary.seconds));
    Warn(LostWrites(run->GetEngine().Counts().refusedWrites));
}

/// What is known of the whole only behind its end.
void RenderJob::Account() {
    summary.output = settings.output;
    summary.format = format.text;
    summary.rate = rate;
    summary.badInputs = mainReader->BadSamples();
    summary.badSideChain = sideReader != nullptr ? sideReader->BadSamples() : 0;
    summary.badOutputs = run->GetEngine().Counts().badOutputs;
    WarnOfSource(settings.input, *mainReader);
    if (settings.sideChain)
        WarnOfSource(*settings.sideChain, *sideReader);
    WarnOfOutput();
}

}  // namespace Quorvan::Tools
