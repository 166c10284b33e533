#include "tools/render/RenderRun.h"

#include <cmath>
#include <utility>

#include "host/engine/TailEstimator.h"
#include "host/parameters/ShellIndex.h"
#include "host/state/StateTransfer.h"
#include "primitives/Clock.h"
#include "tools/render/Renderer.h"
#include "tools/render/TailTrimmer.h"
#include "tools/render/WarningFinder.h"

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

RenderRun::RenderRun(const RenderSettings& wanted, Host::Preset preset, Automation moves,
                     const Host::ParameterCatalog& parameters, Summary& found)
    : settings(wanted),
      catalog(parameters),
      summary(found),
      sound(SoundChoice::Make(std::move(preset), wanted.assignments, parameters)),
      automation(std::move(moves)) {
    summary.preset = sound.preset.name;
    summary.seed = settings.seed.value_or(prims::SeedFromClock());
    summary.tempo = settings.tempo.value_or(sound.preset.tempo.value_or(kUsualTempo));
}

void RenderRun::Plan(double sampleRate) {
    rate = sampleRate;
    song.emplace(automation.Tempos({rate, summary.tempo, settings.startBeat}));
    summary.tempo = song->Spans().front().tempo;
    course.emplace(automation.Resolve(*song, sound.Settings(catalog), catalog));
    WarningFinder finder(catalog, sound, automation);
    for (const auto& found : {automation.Warnings(), finder.Find(*course, settings.sideChain)})
        summary.warnings.insert(summary.warnings.end(), found.begin(), found.end());
}

void RenderRun::Prepare(uint32_t inputs, uint32_t outputs, uint32_t sideChainInputs,
                        bool sendsFeedback) {
    showsFeedback = sendsFeedback;
    engine.emplace(summary.seed);
    // Set ahead of Prepare, so that the loop takes its length from the tempo at once.
    engine->SetTransport({summary.tempo, settings.startBeat, settings.playing});
    engine->Prepare({.sampleRate = rate,
                     .inputs = inputs,
                     .outputs = outputs,
                     .sideChainInputs = sideChainInputs,
                     .sendsFeedback = sendsFeedback});
    Host::ApplyPreset(sound.preset, *engine, catalog);
    summary.latencyFrames = engine->LatencyFrames();
}

void RenderRun::Start() {
    for (const Host::ParameterValue& lever : sound.levers)
        engine->Write(lever.index, lever.position);
    if (showsFeedback)
        engine->Write(Host::kGuiVisibleIndex, 1.0f);
    // The first block after a preset clears what sounds; only then can a start of the song be seen.
    engine->Idle(1);
}

double RenderRun::TailSeconds() const { return settings.tail.value_or(kLongestTail); }

uint64_t RenderRun::TailFrames() const {
    return static_cast<uint64_t>(std::llround(TailSeconds() * rate));
}

TailPlan RenderRun::PlanTail() const {
    const auto frames = [this](double seconds) {
        return static_cast<uint64_t>(std::llround(seconds * rate));
    };
    return {.limit = TailFrames(),
            .fade = frames(settings.tailFade.value_or(settings.tail ? 0.0 : kUsualFade)),
            .nearLimit = frames(kNearLimit),
            .isExact = settings.tail.has_value(),
            .settled = course->LastChange()};
}

/// Whether nothing can follow any more: it has been quiet for longer than the chain remembers.
bool RenderRun::HasFaded(uint64_t quietFrames) {
    if (settings.tail || quietFrames == 0) {
        memory.reset();
        return false;
    }
    if (!memory)
        memory = Host::EstimateTail(*engine, catalog).memory;
    return static_cast<double>(quietFrames) > *memory * rate;
}

void RenderRun::Run(AudioSource& main, AudioSource* side, const std::vector<RenderSink*>& sinks,
                    const std::function<void(uint64_t)>& passed) {
    Renderer renderer(*engine, main, side);
    TailTrimmer trimmer(PlanTail());
    renderer.SetWrites(course->writes);
    renderer.SetSong(*song);
    renderer.SetTail(TailFrames());
    renderer.SetStop([&] { return HasFaded(trimmer.QuietFrames()); });
    if (settings.picture)
        renderer.StopAtSlices();
    renderer.AddSink(trimmer);
    for (RenderSink* sink : sinks)
        trimmer.AddSink(*sink);
    renderer.Run(passed);

    summary.inputSeconds = static_cast<double>(renderer.InputFrames()) / rate;
    summary.tailEnd = trimmer.End();
    summary.tailLimit = TailSeconds();
    summary.tailFade = settings.tailFade.value_or(kUsualFade);
    summary.engineSeconds = renderer.CpuSeconds();
    summary.cpuShare = renderer.CpuSeconds() * rate / static_cast<double>(engine->FramesIn());
}

}  // namespace Quorvan::Tools
