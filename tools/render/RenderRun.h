#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include "host/engine/Engine.h"
#include "host/parameters/ParameterCatalog.h"
#include "tools/audio/AudioSource.h"
#include "tools/render/Automation.h"
#include "tools/render/RenderSettings.h"
#include "tools/render/RenderSink.h"
#include "tools/render/SettingsCourse.h"
#include "tools/render/SoundChoice.h"
#include "tools/render/Summary.h"
#include "tools/render/TailPlan.h"
#include "tools/render/TempoMap.h"

namespace Quorvan::Tools {

/// What makes the sound of a render, wherever its input comes from and its output goes: the engine
/// with its preset, the song, the course of the automation, and the tail.
///
/// Order  make it, Plan, Prepare, Start, Run
class RenderRun {
public:
    /// All references have to outlive it; what is found out goes into summary. Of wanted count the
    /// sound and the time, not the files. Throws Failure for assignments that make no sense.
    RenderRun(const RenderSettings& wanted, Host::Preset preset, Automation moves,
              const Host::ParameterCatalog& parameters, Summary& found);

    /// Song and course at a rate. Throws Failure where the automation makes no sense.
    void Plan(double sampleRate);
    /// An engine that stands at the preset with the assignments.
    void Prepare(uint32_t inputs, uint32_t outputs, uint32_t sideChainInputs, bool sendsFeedback);
    /// Puts the shell's own levers, and starts the song.
    void Start();
    /// Runs all of main through. Sinks get the output without latency and with its tail trimmed.
    /// passed hears the frames that are done.
    void Run(AudioSource& main, AudioSource* side, const std::vector<RenderSink*>& sinks,
             const std::function<void(uint64_t)>& passed);

    Host::Engine& GetEngine() { return *engine; }
    const SoundChoice& Sound() const { return sound; }
    const Automation& Moves() const { return automation; }
    const SettingsCourse& Course() const { return *course; }
    const TempoMap& Song() const { return *song; }
    /// The longest tail that there may be, in frames.
    uint64_t TailFrames() const;

private:
    double TailSeconds() const;
    TailPlan PlanTail() const;
    bool HasFaded(uint64_t quietFrames);

    const RenderSettings& settings;
    const Host::ParameterCatalog& catalog;
    Summary& summary;
    SoundChoice sound;
    Automation automation;
    std::optional<SettingsCourse> course;
    std::optional<TempoMap> song;
    double rate = 0.0;
    bool showsFeedback = false;
    std::optional<Host::Engine> engine;
    std::optional<double> memory;  ///< of the chain, in seconds, while it has been quiet
};

}  // namespace Quorvan::Tools
