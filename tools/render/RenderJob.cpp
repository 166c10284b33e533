#include "tools/render/RenderJob.h"

#include <chrono>
#include <cmath>
#include <utility>

#include "host/engine/TailEstimator.h"
#include "host/parameters/ShellIndex.h"
#include "host/state/PresetFormat.h"
#include "host/state/StateTransfer.h"
#include "primitives/Clock.h"
#include "tools/audio/Resampler.h"
#include "tools/render/FileSink.h"
#include "tools/render/GrainCounter.h"
#include "tools/render/LevelWarnings.h"
#include "tools/render/Recipe.h"
#include "tools/render/Renderer.h"
#include "tools/render/SavedPreset.h"
#include "tools/render/TailTrimmer.h"
#include "tools/render/WarningFinder.h"
#include "tools/support/Numbers.h"
#include "tools/support/Progress.h"

namespace Quorvan::Tools {

namespace {

constexpr double kUsualTempo = 120.0;
/// The longest tail that comes without being asked for, in seconds.
constexpr double kLongestTail = 30.0;
/// The fade of what is still sounding then.
constexpr double kUsualFade = 2.0;
/// Still sounding is what was heard in the last seconds ahead of it.
constexpr double kNearLimit = 2.0;

}  // namespace

RenderJob::RenderJob(RenderSettings wanted, const Host::ParameterCatalog& parameters)
    : settings(std::move(wanted)), catalog(parameters) {
    std::vector<std::string> warnings;
    sound = SoundChoice::Make(LoadPreset(settings.preset, catalog, warnings), settings.assignments,
                              catalog);
    summary.warnings = std::move(warnings);
    summary.preset = sound.preset.name;
    summary.seed = settings.seed.value_or(prims::SeedFromClock());
    tempo = settings.tempo.value_or(sound.preset.tempo.value_or(kUsualTempo));
    if (WantsModulation())
        modulation.emplace(FindDestinations(settings.modulationDestinations, catalog));
    if (settings.automation)
        automation = Automation::Load(*settings.automation, settings.meter);
}

RenderJob::~RenderJob() = default;

Summary RenderJob::Run() {
    const auto start = std::chrono::steady_clock::now();
    OpenSources();
    PlanCourse();
    OpenOutputs();
    PrepareEngine();
    Render();
    WritePicture();
    WriteModulation();
    Account();
    outputs->Commit();
    summary.elapsed =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    return summary;
}

std::unique_ptr<AudioSource> RenderJob::OpenSource(const std::filesystem::path& path,
                                                   double wantedRate, AudioReader*& reader) const {
    std::optional<RawSound> raw;
    if (&path == &settings.input && settings.rawRate)
        raw = RawSound{*settings.rawRate, settings.rawChannels};
    auto opened = std::make_unique<AudioReader>(path, raw);
    reader = opened.get();
    const double target = wantedRate > 0.0 ? wantedRate : reader->Rate();
    return Resampler::At(target, std::move(opened));
}

void RenderJob::OpenSources() {
    main = OpenSource(settings.input, settings.rate.value_or(0), mainReader);
    rate = main->Rate();
    if (settings.sideChain)
        side = OpenSource(*settings.sideChain, rate, sideReader);
}

void RenderJob::OpenOutputs() {
    summary.channels = settings.mono ? 1 : 2;
    format = AudioFormat::Choose(settings.output, settings.format, rate, summary.channels);
    outputs.emplace(settings);
}

void RenderJob::PrepareEngine() {
    engine.emplace(summary.seed);
    // Set ahead of Prepare, so that the loop takes its length from the tempo at once.
    engine->SetTransport({tempo, settings.startBeat, settings.playing});
    engine->Prepare({.sampleRate = rate,
                     .inputs = main->Channels(),
                     .outputs = summary.channels,
                     .sideChainInputs = side != nullptr ? side->Channels() : 0,
                     .sendsFeedback = WantsModulation()});
    Host::ApplyPreset(sound.preset, *engine, catalog);
    WritePreset();
    for (const Host::ParameterValue& lever : sound.levers)
        engine->Write(lever.index, lever.position);
    if (WantsModulation())
        engine->Write(Host::kGuiVisibleIndex, 1.0f);
    // The first block after a preset clears what sounds; only then can a start of the song be seen.
    engine->Idle(1);
    if (!settings.picture)
        return;
    picture.emplace(*engine, settings, catalog, *song);
    picture->NoteRoutes();
}

/// Called ahead of the levers and of the first block: the sound and nothing else.
void RenderJob::WritePreset() {
    if (!outputs->preset)
        return;
    const std::string text = Host::WritePreset(
        SavedPreset(Host::CapturePreset(*engine, catalog), sound.preset, settings), catalog);
    outputs->preset->Write(text.data(), static_cast<int64_t>(text.size()));
    summary.savedPreset = *settings.savePreset;
}

double RenderJob::TailSeconds() const { return settings.tail.value_or(kLongestTail); }

void RenderJob::PlanCourse() {
    song.emplace(automation.Tempos({rate, tempo, settings.startBeat}));
    tempo = song->Spans().front().tempo;
    course.emplace(automation.Resolve(*song, sound.Settings(catalog), catalog));
    WarningFinder finder(catalog, sound, automation);
    for (const auto& found : {automation.Warnings(), finder.Find(*course, settings.sideChain)})
        summary.warnings.insert(summary.warnings.end(), found.begin(), found.end());
}

TailPlan RenderJob::PlanTail() const {
    const auto frames = [this](double seconds) {
        return static_cast<uint64_t>(std::llround(seconds * rate));
    };
    return {.limit = frames(TailSeconds()),
            .fade = frames(settings.tailFade.value_or(settings.tail ? 0.0 : kUsualFade)),
            .nearLimit = frames(kNearLimit),
            .isExact = settings.tail.has_value(),
            .settled = course->LastChange()};
}

/// Whether nothing can follow any more: it has been quiet for longer than the chain remembers.
bool RenderJob::HasFaded(uint64_t quietFrames) {
    if (settings.tail || quietFrames == 0) {
        memory.reset();
        return false;
    }
    if (!memory)
        memory = Host::EstimateTail(*engine, catalog).memory;
    return static_cast<double>(quietFrames) > *memory * rate;
}

void RenderJob::Render() {
    const auto tail = static_cast<uint64_t>(std::llround(TailSeconds() * rate));
    const std::optional<uint64_t> inputFrames = main->Frames();
    AudioWriter writer(outputs->sound, format, rate, summary.channels,
                       inputFrames.value_or(0) + tail, Tags());
    FileSink file(writer, rate, summary.channels);
    GrainCounter grains;
    engine->AddListener(grains);
    if (modulation)
        engine->AddListener(*modulation);

    Renderer renderer(*engine, *main, side.get());
    TailTrimmer trimmer(PlanTail());
    renderer.SetWrites(course->writes);
    renderer.SetSong(*song);
    renderer.SetTail(tail);
    renderer.SetStop([&] { return HasFaded(trimmer.QuietFrames()); });
    renderer.AddSink(trimmer);
    trimmer.AddSink(file);
    trimmer.AddSink(grains);
    if (picture)
        trimmer.AddSink(picture->Sink());

    const std::optional<uint64_t> total =
        inputFrames ? std::optional(*inputFrames + tail) : std::nullopt;
    Progress progress(rate, total, settings.tail.has_value(), settings.progress);
    const bool routesMove = picture && settings.automation;
    renderer.Run([&](uint64_t frames) {
        progress.Show(frames);
        if (watch)
            watch(static_cast<double>(frames) / rate);
        if (routesMove)
            picture->NoteRoutes();
    });
    progress.Clear();
    engine->RemoveListener(grains);
    if (modulation)
        engine->RemoveListener(*modulation);
    writer.Finish();

    file.Report(summary);
    summary.clipped = writer.ClippedSamples();
    summary.grains = grains.Count();
    summary.inputSeconds = static_cast<double>(renderer.InputFrames()) / rate;
    summary.tailEnd = trimmer.End();
    summary.tailLimit = TailSeconds();
    summary.tailFade = settings.tailFade.value_or(kUsualFade);
    summary.engineSeconds = renderer.CpuSeconds();
    summary.cpuShare = renderer.CpuSeconds() * rate / static_cast<double>(engine->FramesIn());
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
    Warn(ClippingWarning(summary.clipped, summary.peak, course->End(), catalog));
    Warn(WritesBehindEnd(automation, *course, rate, summary.seconds));
    Warn(LostWrites(engine->Counts().refusedWrites));
}

/// What is known of the whole only behind its end.
void RenderJob::Account() {
    summary.output = settings.output;
    summary.format = format.text;
    summary.rate = rate;
    summary.tempo = tempo;
    summary.latencyFrames = engine->LatencyFrames();
    summary.badInputs = mainReader->BadSamples();
    summary.badSideChain = sideReader != nullptr ? sideReader->BadSamples() : 0;
    summary.badOutputs = engine->Counts().badOutputs;
    WarnOfSource(settings.input, *mainReader);
    if (settings.sideChain)
        WarnOfSource(*settings.sideChain, *sideReader);
    WarnOfOutput();
}

}  // namespace Quorvan::Tools
