#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/instrument/PositionBoard.h"
#include "host/instrument/SoundPair.h"
#include "host/parameters/ParameterCatalog.h"

namespace Quorvan::Host {

/// A preset as what a sound came from.
struct PresetMark {
    std::string name;  ///< empty: none
    /// Of its settings, by index. Null where only the name is known.
    std::shared_ptr<const std::vector<float>> positions;

    bool operator==(const PresetMark& mark) const {
        const bool bothKnown = positions != nullptr && mark.positions != nullptr;
        return name == mark.name &&
               (bothKnown ? *positions == *mark.positions : positions == mark.positions);
    }
};

/// The sounds A and B while they are worked on, and the presets that they came from. The one that
/// is played stands on the position board, where everything that moves a setting moves it; the
/// other one is kept here.
///
/// Threads  not on the audio thread; calls in turn.
class SoundDesk {
public:
    /// The sound that is not played, and its preset.
    struct OtherSound {
        std::optional<State> sound;
        PresetMark preset;
    };
    /// Which sound is played, and its preset.
    struct Scene {
        uint32_t played = 0;  ///< 0: A, 1: B
        PresetMark preset;
        /// What a step has done to the sound that is not played; null: nothing.
        std::shared_ptr<const OtherSound> other;

        bool operator==(const Scene&) const = default;
    };

    SoundDesk(const ParameterCatalog& parameters, const PositionBoard& positionBoard)
        : catalog(parameters), positions(positionBoard) {}

    uint32_t Played() const { return played; }
    /// The sound that is not played; nothing where it is the same as the played one.
    const std::optional<State>& Other() const { return other; }
    /// Keeps the played sound and plays the other one, with the settings that are returned; to put
    /// them on the board is the caller's.
    State Swap();
    /// Makes the sound that is not played the same as what is heard.
    void Copy();

    const PresetMark& PlayedPreset() const { return presets[played]; }
    void SetPlayedPreset(PresetMark preset) { presets[played] = std::move(preset); }
    /// The whole of what is heard came from a preset.
    void LoadedPreset(const std::string& name);
    Scene Present() const { return {played, presets[played], nullptr}; }
    /// The same, with the sound that is not played.
    Scene PresentPair() const {
        return {played, presets[played],
                std::make_shared<const OtherSound>(OtherSound{other, presets[1 - played]})};
    }
    void SetOther(const OtherSound& sound) {
        other = sound.sound;
        presets[1 - played] = sound.preset;
    }
    /// Whether what is heard is another sound than its preset.
    bool IsModified() const;

    /// Of all settings, by index: what is heard, and what the played sound itself has.
    std::vector<float> Heard() const;
    std::vector<float> Own() const;

    /// For a state, with the name of the played preset and whether the sound differs from it.
    SoundPair Save(std::string& preset, bool& modified) const;
    /// From a state whose sound stands on the board already.
    void Load(const SoundPair& saved, const std::string& preset, bool modified);

private:
    State StateOf(const std::vector<float>& all) const;
    std::vector<float> AllOf(const State& state) const;
    bool Differs(const std::vector<float>& all, const PresetMark& preset) const;

    const ParameterCatalog& catalog;
    const PositionBoard& positions;
    uint32_t played = 0;
    std::optional<State> other;
    std::array<PresetMark, 2> presets;  ///< of A and B
};

/// Whether sounds and states hold a parameter: all settings, and "Bypass".
bool IsInSounds(const ParameterInfo& info);

}  // namespace Quorvan::Host
