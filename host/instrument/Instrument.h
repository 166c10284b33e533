#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/engine/TailEstimator.h"
#include "host/instrument/ControlBoard.h"
#include "host/instrument/ControlFace.h"
#include "host/instrument/EditHistory.h"
#include "host/instrument/InstrumentEvent.h"
#include "host/instrument/InstrumentPlayer.h"
#include "host/instrument/InstrumentState.h"
#include "host/instrument/PositionBoard.h"
#include "host/instrument/SettingsMirror.h"
#include "host/instrument/SoundDesk.h"
#include "host/instrument/Wiring.h"
#include "host/state/Issue.h"

namespace Quorvan::Host {

/// One instance of the processor as its user knows it: an engine with the controls that hosts see,
/// presets, undo, two sounds to compare, chance, and a state for projects.
///
/// Life     make it; Activate for a format; Process again and again; Deactivate; Activate again,
/// also
///          for another format. Everything but Process and Clear works at any time, active or not.
/// Threads  Process and Clear belong to the audio thread: they neither allocate, lock nor wait.
///          Activate and Deactivate while that stands still. All the rest from any other thread,
///          several at once too (a lock makes them come in turn); those marked "any thread" from
///          the audio thread as well.
/// Changes  an edit reaches the sound with the next buffer. While no buffers come, edits are kept.
class Instrument {
public:
    /// The catalog is shared by all instruments and has to outlive them.
    explicit Instrument(const ParameterCatalog& parameters);
    ~Instrument();
    Instrument(const Instrument&) = delete;
    Instrument& operator=(const Instrument&) = delete;

    // ---- Sound

    /// Takes all memory that running needs, and starts from silence; tempo is what the song will
    /// begin at, where it is known. Throws std::invalid_argument, with a sentence, for a format
    /// that nothing can run at, and std::bad_alloc where memory lacks.
    void Activate(const StreamFormat& format, double tempo = 120.0);
    void Deactivate();
    bool IsActive() const;
    /// In frames; changes with Activate only. 0 before the first.
    uint32_t LatencyFrames() const;
    /// As the settings stand now; see EstimateTail.
    Tail GetTail();
    /// Audio thread. Takes and gives buffer.audio.frames frames, any number; with none of them
    /// events are taken up all the same. May also be called between Deactivate and Activate, for
    /// events only.
    void Process(const InstrumentBuffer& buffer, ControlSink& sink);
    /// Audio thread: clears all that sounds.
    void Clear();
    /// Any thread: whether the host runs it for an export, without real time. The sound is the
    /// same.
    void SetOffline(bool on) { player.SetOffline(on); }

    // ---- Controls and parameters (any thread, unless it says otherwise)

    /// The host puts a control somewhere, from the next buffer on; for formats that have no events.
    void PutControl(uint32_t id, float position);

    const ParameterCatalog& Catalog() const { return catalog; }
    /// Where a parameter stands, 0..1; offsets by the host are not in it.
    float Position(uint32_t index) const { return positions.Position(index); }
    /// Position of a host control. A free control that points nowhere stands at 0.
    float ControlPosition(uint32_t id) const;
    /// Index that a host control moves now, or kUnassigned.
    uint32_t ControlTarget(uint32_t id) const { return controls.TargetOf(id); }
    /// What hosts and people see of a control; see ControlFace.
    uint32_t ControlSteps(uint32_t id) const { return face.Steps(id); }
    double ControlValue(uint32_t id, float position) const { return face.Value(id, position); }
    float PositionOfControlValue(uint32_t id, double value) const {
        return face.PositionOfValue(id, value);
    }
    std::string ControlText(uint32_t id, float position) const { return face.Text(id, position); }
    TextResult ControlPositionOf(uint32_t id, std::string_view text) const {
        return face.PositionOf(id, text);
    }

    /// The user moves a parameter on the instrument's own face. Not on the audio thread.
    void Edit(uint32_t index, float position);
    /// Edits between these two are one step to undo, and the host hears of both ends for whatever
    /// they move. One that begins ends the one before.
    void BeginGesture(uint32_t index);
    void EndGesture(uint32_t index);

    /// Points a free control (number below kAssignments) at a parameter, or nowhere.
    void Assign(uint32_t number, uint32_t index);
    /// The same by the user's hand, as a step to undo.
    void EditAssignment(uint32_t number, uint32_t index);
    uint32_t Assignment(uint32_t number) const { return controls.Assignment(number); }

    // ---- Whole sounds

    void LoadPreset(const Preset& preset);
    /// The present sound, under the name of the preset that it came from.
    Preset GetPreset();
    /// Of the sound that is played. Empty where none was loaded.
    std::string PresetName() const;
    /// Whether what is heard is another sound than the preset's.
    bool IsModified();

    /// A step is a gesture, a whole sound with its preset's name, a change to the other sound, a
    /// source that MIDI has taught or that was forgotten, or a free control's new target.
    bool CanUndo() const;
    bool CanRedo() const;
    void Undo();
    void Redo();

    /// Plays sound A (0) or B (1) as it was left, with its preset. Edits, presets, host and MIDI
    /// move the sound that is played; a morph makes a way between both heard, and moves neither.
    void PlaySound(uint32_t which);
    uint32_t PlayedSound() const;
    /// Makes the sound that is not played the same as what is heard; a step to undo.
    void CopySound();
    /// Moves every continuous setting of a group (ParameterInfo::group) by up to amount, 0..1, of
    /// its travel, up or down, held to its range. The same seed makes the same moves.
    void Randomise(std::string_view group, float amount, uint64_t seed);

    // ---- MIDI and song

    /// The next source that is heard moves this parameter from then on; kUnassigned, and what no
    /// control can be assigned to: none any more. goesOn: what was learnt since the last call
    /// without it is not meant again, so that a knob that is still turned does not teach twice.
    void LearnMidi(uint32_t index, bool goesOn = false);
    /// The parameter that waits for its source; kUnassigned where none does. Any thread.
    uint32_t LearningMidi() const { return player.Learning(); }
    MidiMap GetMidiMap() const;
    void SetMidiMap(MidiMap map);
    /// Takes its sources away from a parameter; a step to undo, as is each that is learnt.
    void ForgetMidi(uint32_t index);
    /// Counts what has been learnt.
    uint32_t Lessons() const { return lessons; }
    /// To be called now and then, some ten times a second: takes up what MIDI has asked for.
    /// Answers with the program of the last program change, if there was one.
    std::optional<uint32_t> Poll();

    /// Any thread. In force where neither the host nor a MIDI clock say where the song is.
    OwnTransport& Song() { return player.song; }
    /// Audio thread, or while it stands still: where the song is, whoever drives it.
    Transport Place() const {
        return player.GetEngine() != nullptr ? player.GetEngine()->GetTransport() : Transport{};
    }

    // ---- Display

    /// What a window draws, while it watches; the feed says which thread calls what of it.
    DisplayFeed& Display() { return player.display; }

    // ---- Chance

    /// A seed: the sound repeats to the bit from Activate on, and from each start of the host's
    /// song on, which cuts off what still sounds. None: each start is another one. While active the
    /// sound starts afresh.
    void SetSeed(std::optional<uint64_t> seed);
    std::optional<uint64_t> Seed() const;

    // ---- Projects

    /// All that a project needs, as a text. The same sound gives the same bytes. ports, by id, are
    /// those of a host that do not stand where their controls do, and will come back with them.
    std::string SaveState(std::vector<PortValue> ports = {});
    /// Loads what SaveState wrote, also of older and newer versions. Where the text is broken, the
    /// instrument stays as it was. Answers with sentences; an error among them means the latter.
    std::vector<Issue> LoadState(std::string_view text);
    /// Ports of the state that was loaded last.
    std::vector<PortValue> LoadedPorts() const;
    void SetWindowSize(WindowSize size);
    WindowSize GetWindowSize() const;
    /// Counts changes of what a state holds and hosts hear nothing else of: parameters that no host
    /// control moves, where they were edited; MIDI map, assignments, seed, the other sound, the
    /// window's size.
    uint32_t Changes() const { return changes; }

private:
    std::unique_ptr<Engine> MakeEngine(const StreamFormat& format, double tempo);
    void OfferFreshEngine();
    void OfferUnderstudy();
    /// All that a step may change.
    struct Moment {
        std::vector<float> heard, own;  ///< positions by index
        SoundDesk::Scene scene;
    };
    Moment Now() const { return {desk.Heard(), desk.Own(), desk.Present()}; }
    void Remember(const std::string& name, const Moment& before);
    uint32_t MovableOrNone(uint32_t index) const;
    void Move(uint32_t index, float position) { Move(index, position, position); }
    void Move(uint32_t index, float position, float own);
    void TellBegin(uint32_t index);
    void TellEnds();
    void TellHost(InstrumentPlayer::FaceMove::Kind kind, uint32_t index);
    void SwapSounds();
    void GoTo(const std::optional<SoundDesk::Scene>& scene);
    void OfferMorph();
    void Keep(const MidiSource& source, uint32_t index);
    Wiring PresentWiring() const;
    void Rewire(const std::optional<Wiring>& wiring);
    void RememberWiring(const std::string& name, uint32_t index, const Wiring& before);
    void OfferMidi() { player.OfferRoutes(std::make_unique<MidiRoutes>(kept.midi, catalog)); }
    InstrumentState Capture();

    const ParameterCatalog& catalog;
    PositionBoard positions;
    ControlBoard controls;
    ControlFace face;
    InstrumentPlayer player;

    mutable std::mutex mutex;  ///< over all below, and all that is not the audio thread's
    SettingsMirror mirror;
    SoundDesk desk;
    EditHistory history;
    uint64_t gesture = 0;  ///< number of the open one, 0: none
    uint64_t gestures = 0;
    std::vector<uint32_t> begun;  ///< in the open one, that hosts have been told of
    std::atomic<uint32_t> lessons = 0, changes = 0;
    InstrumentState kept;  ///< what nothing else holds: seed, MIDI map, window, foreign entries
    std::optional<StreamFormat> active;
    uint32_t latency = 0;
};

}  // namespace Quorvan::Host
