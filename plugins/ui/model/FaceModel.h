#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/instrument/Instrument.h"
#include "host/instrument/PresetLibrary.h"
#include "host/parameters/PresentSettings.h"
#include "plugins/ui/widgets/Control.h"

namespace Quorvan::Ui {

/// What the face knows of the instrument: the one place that asks and tells it.
class FaceModel {
public:
    FaceModel(Host::Instrument& instrument, Host::PresetLibrary& library);

    /// Takes up the newest picture and the positions of the moment. seconds as in Face::Idle.
    void Refresh(double seconds);
    double Now() const { return now; }

    const Host::DisplayFrame& Frame() const { return instrument.Display().Latest(); }
    /// Whether Frame is another one than before the last Refresh.
    bool IsFrameNew() const { return frameIsNew; }
    /// Whether sound comes at all; a picture that stands still tells nothing of the present.
    bool IsAlive() const { return lastFrame >= 0.0 && now - lastFrame < 0.5; }
    /// Calls take(moment) for each of the picture's moments that has not been taken yet. heard:
    /// those that have been so far, kept by the caller.
    template <class Take>
    void Listen(uint64_t& heard, Take&& take) const {
        if (!frameIsNew)
            return;
        const Host::DisplayFrame& frame = Frame();
        heard = frame.FirstToTake(heard);
        for (; heard < frame.moments; ++heard)
            take(frame.At(heard));
    }
    /// Counts up when names may mean other parameters, or texts read otherwise.
    uint64_t Revision() const { return revision; }

    const Host::ParameterCatalog& Catalog() const { return instrument.Catalog(); }
    /// Index of what a name means now.
    std::optional<uint32_t> Find(std::string_view name) const;
    float Position(uint32_t index) const { return instrument.Position(index); }
    float PositionOf(std::string_view name) const;
    /// Where a new plug-in has it; of an effect's settings, where the effect begins.
    float Default(uint32_t index) const;
    uint32_t ChoiceOf(std::string_view name) const;
    /// The number behind a parameter's text.
    double ValueOf(std::string_view name) const;
    std::string Text(uint32_t index) const;
    /// What a slot ("FX1") holds, as the groups of its parameters call it.
    std::string EffectIn(const std::string& slot) const;
    Host::TextContext Texts() const { return settings.Texts(); }

    void Begin(uint32_t index) { instrument.BeginGesture(index); }
    /// An effect that comes into a slot brings its first settings along, in the same step.
    void Edit(uint32_t index, float position);
    void End(uint32_t index) { instrument.EndGesture(index); }
    /// All of it is one step.
    void EditOnce(uint32_t index, float position);
    /// Answers a sentence where the text means nothing.
    std::string Type(uint32_t index, std::string_view text);

    Influence InfluenceOn(uint32_t row, uint32_t index) const;
    /// -1..1, 0 where the cell is off.
    float Amount(uint32_t source, uint32_t row) const;
    bool IsRouted(uint32_t source, uint32_t row) const;
    /// One step, but for those between BeginRoute and EndRoute, which are one together.
    void Route(uint32_t source, uint32_t row, float amount);
    void BeginRoute(uint32_t source, uint32_t row);
    void EndRoute();
    void Unroute(uint32_t source, uint32_t row);
    uint32_t RoutesFrom(uint32_t source) const;

    Host::Instrument& TheInstrument() { return instrument; }
    const Host::Instrument& TheInstrument() const { return instrument; }
    Host::PresetLibrary& Presets() { return presets; }
    /// Loads an entry of the library; answers a sentence where it can't be read.
    std::string LoadPreset(size_t entry);
    void StepPreset(int step);
    /// As IsModified, asked a few times in a second.
    bool IsModified() const { return modified; }

private:
    float PresentPosition(uint32_t row, uint32_t index) const;
    /// One of an effect's first settings.
    struct Start {
        uint32_t index = 0;
        float position = 0.0f;
    };
    std::vector<Start> StartsIn(const char* slot, uint32_t effect) const;
    float StartMix(uint32_t effect) const;
    void Furnish(size_t slot, uint32_t before);

    Host::Instrument& instrument;
    std::vector<float> fresh;                               ///< a position for each parameter
    std::array<uint32_t, 2> effectIndices{}, mixIndices{};  ///< of the slots
    Host::PresetLibrary& presets;
    Host::PresentSettings settings;
    std::vector<uint32_t> deciders;       ///< indices that names and texts depend on
    std::vector<uint32_t> foldedIndices;  ///< of depths that the feed shows folded
    std::vector<float> decided;           ///< where they stood
    uint64_t revision = 1;
    double now = 0.0;
    double lastFrame = -1.0;  ///< when it came; negative: none yet
    double nextCheck = 0.0;
    std::optional<uint32_t> heldRoute;  ///< index of the amount
    bool frameIsNew = false;
    bool modified = false;
};

}  // namespace Quorvan::Ui
