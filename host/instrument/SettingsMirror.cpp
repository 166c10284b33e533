#include "host/instrument/SettingsMirror.h"

#include "host/instrument/SoundDesk.h"
#include "host/state/StateTransfer.h"
#include "processor/IProcessor.h"

namespace Quorvan::Host {

Engine& SettingsMirror::Synced() {
    for (const ParameterInfo& info : catalog.All())
        if (IsInSounds(info))
            engine.GetProcessor().SetParameter(info.index, positions.Position(info.index));
    return engine;
}

void SettingsMirror::Publish() {
    for (const ParameterInfo& info : catalog.All())
        if (IsInSounds(info))
            positions.Note(info.index, engine.Position(info.index));
    positions.AskForRestore();
}

Preset SettingsMirror::CapturePreset() { return Host::CapturePreset(Synced(), catalog); }

State SettingsMirror::CaptureState() { return Host::CaptureState(Synced(), catalog); }

void SettingsMirror::Apply(const Preset& preset) {
    ApplyPreset(preset, Synced(), catalog);
    Publish();
}

void SettingsMirror::Apply(const State& state) {
    ApplyState(state, Synced(), catalog);
    Publish();
}

Tail SettingsMirror::EstimateTail(double tempo) {
    Synced().SetTempo(tempo);
    return Host::EstimateTail(engine, catalog);
}

}  // namespace Quorvan::Host
