#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <vector>

#include "host/instrument/SoundDesk.h"
#include "host/instrument/Wiring.h"

namespace Quorvan::Host {

/// The user's edits, to be taken back and made again. A step is a gesture, a whole new sound or
/// another wiring of MIDI and the free controls: what it changed, and what people call it.
class EditHistory {
public:
    static constexpr size_t kSteps = 200;

    /// Positions: what was heard, and what the sound that is played had itself.
    struct Change {
        uint32_t index;
        float before, after;
        float ownBefore, ownAfter;
    };
    struct Step {
        std::string name;
        std::vector<Change> changes;
        std::optional<SoundDesk::Scene> before, after;        ///< of steps that may change it
        std::optional<Wiring> wiringBefore{}, wiringAfter{};  ///< likewise
    };

    /// A finished step; forgets all that was taken back. Changes that change nothing are left out,
    /// and a step without changes is none unless it changes the scene or the wiring.
    void Add(Step step);
    /// A further move of a gesture that has not ended: joins the last step where that is of the
    /// same gesture.
    void AddMove(uint64_t gesture, const std::string& name, const Change& change);
    /// The gesture has ended: where all of it has come back to its start, it was no step.
    void EndGesture(uint64_t gesture);

    bool CanUndo() const { return present > 0; }
    bool CanRedo() const { return present < steps.size(); }
    /// The step to take back, newest first; null where there is none. Valid until the next call.
    const Step* Undo();
    /// The step to make again; null where there is none.
    const Step* Redo();
    /// What Undo and Redo would do, for a menu; empty where there is nothing.
    std::string UndoName() const { return CanUndo() ? steps[present - 1].name : std::string(); }
    std::string RedoName() const { return CanRedo() ? steps[present].name : std::string(); }
    void Clear();

private:
    std::deque<Step> steps;
    size_t present = 0;        ///< steps that are made
    uint64_t lastGesture = 0;  ///< of the last step; 0: of none
};

}  // namespace Quorvan::Host
