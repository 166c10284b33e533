#pragma once

#include "host/engine/Engine.h"
#include "host/engine/TailEstimator.h"
#include "host/instrument/PositionBoard.h"
#include "host/parameters/ParameterCatalog.h"
#include "host/state/Preset.h"

namespace Quorvan::Host {

/// The settings on a position board as presets and states, and back. Holds a processor that never
/// sounds, so that all of it goes the way that it goes with a sounding one.
///
/// Threads  not on the audio thread; calls in turn.
class SettingsMirror {
public:
    SettingsMirror(const ParameterCatalog& parameters, PositionBoard& positionBoard)
        : catalog(parameters), positions(positionBoard) {}

    Preset CapturePreset();
    State CaptureState();
    /// Puts all settings of the board to those of the preset, and asks the audio side to start
    /// afresh from them.
    void Apply(const Preset& preset);
    /// The same; a state also has the "Bypass".
    void Apply(const State& state);
    Tail EstimateTail(double tempo);
    /// A processor that stands where the board does, to be read until the next call.
    Engine& Synced();

private:
    void Publish();

    const ParameterCatalog& catalog;
    PositionBoard& positions;
    Engine engine{0};
};

}  // namespace Quorvan::Host
