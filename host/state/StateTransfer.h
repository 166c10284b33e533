#pragma once

#include "host/engine/Engine.h"
#include "host/parameters/ParameterCatalog.h"
#include "host/state/Preset.h"

namespace Quorvan::Host {

/// The way of presets and states into an engine and out of it. All between two calls of Process.

/// Puts every setting to the preset's position or, where it names none, to that of a new processor,
/// and lets the processor start afresh (Engine::Restore). The tempo hint is for the caller.
void ApplyPreset(const Preset& preset, Engine& engine, const ParameterCatalog& catalog);
/// The same for a state, with the levers of the shell that it names; "PresetLoading" never.
void ApplyState(const State& state, Engine& engine, const ParameterCatalog& catalog);

/// The present sound as a nameless preset: settings that differ from a new processor's, and the
/// routings of the matrix.
Preset CapturePreset(const Engine& engine, const ParameterCatalog& catalog);
/// Every setting, and "Bypass".
State CaptureState(const Engine& engine, const ParameterCatalog& catalog);

}  // namespace Quorvan::Host
