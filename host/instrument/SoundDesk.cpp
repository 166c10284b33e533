#include "host/instrument/SoundDesk.h"

#include <algorithm>
#include <utility>

#include "host/parameters/ShellIndex.h"
#include "host/state/ParameterReader.h"

namespace Quorvan::Host {

bool IsInSounds(const ParameterInfo& info) {
    return IsStored(info, ParameterScope::Sound) || info.index == kBypassIndex;
}

std::vector<float> SoundDesk::Heard() const {
    std::vector<float> all(kProcessorParameters);
    for (uint32_t index = 0; index < kProcessorParameters; ++index)
        all[index] = positions.Position(index);
    return all;
}

std::vector<float> SoundDesk::Own() const {
    std::vector<float> all(kProcessorParameters);
    for (uint32_t index = 0; index < kProcessorParameters; ++index)
        all[index] = positions.Own(index);
    return all;
}

State SoundDesk::StateOf(const std::vector<float>& all) const {
    State state;
    for (const ParameterInfo& info : catalog.All())
        if (IsInSounds(info))
            state.parameters.push_back({info.index, all[info.index]});
    return state;
}

std::vector<float> SoundDesk::AllOf(const State& state) const {
    std::vector<float> all = Own();
    for (const ParameterValue& value : state.parameters)
        all[value.index] = value.position;
    return all;
}

State SoundDesk::Swap() {
    State own = StateOf(Own());
    if (!other)
        presets[1 - played] = presets[played];
    State arriving = other.value_or(own);
    other = std::move(own);
    played = 1 - played;
    return arriving;
}

void SoundDesk::Copy() {
    other = StateOf(Heard());
    presets[1 - played] = presets[played];
}

void SoundDesk::LoadedPreset(const std::string& name) {
    presets[played] = {name, std::make_shared<const std::vector<float>>(Heard())};
}

bool SoundDesk::IsModified() const { return Differs(Heard(), presets[played]); }

/// A state that was saved with a modified preset knows the name only.
bool SoundDesk::Differs(const std::vector<float>& all, const PresetMark& preset) const {
    if (preset.name.empty())
        return false;
    if (preset.positions == nullptr)
        return true;
    return std::any_of(catalog.All().begin(), catalog.All().end(), [&](const ParameterInfo& info) {
        return IsStored(info, ParameterScope::Sound) &&
               all[info.index] != (*preset.positions)[info.index];
    });
}

SoundPair SoundDesk::Save(std::string& preset, bool& modified) const {
    const std::vector<float> own = Own();
    preset = presets[played].name;
    modified = Differs(own, presets[played]);
    SoundPair pair;
    pair.played = played;
    if (!other)
        return pair;
    pair.kept[played] = StateOf(own);
    pair.kept[1 - played] = other;
    pair.otherPreset = presets[1 - played].name;
    pair.otherModified = Differs(AllOf(*other), presets[1 - played]);
    return pair;
}

void SoundDesk::Load(const SoundPair& saved, const std::string& preset, bool modified) {
    const auto markOf = [](const std::string& name, bool differs, std::vector<float> all) {
        PresetMark mark{name, nullptr};
        if (!differs)
            mark.positions = std::make_shared<const std::vector<float>>(std::move(all));
        return mark;
    };
    played = saved.played;
    other = saved.kept[1 - played];
    presets[played] = markOf(preset, modified, Own());
    presets[1 - played] = {};
    if (other)
        presets[1 - played] = markOf(saved.otherPreset, saved.otherModified, AllOf(*other));
}

}  // namespace Quorvan::Host
