#include "host/instrument/EditHistory.h"

#include <algorithm>
#include <utility>

namespace Quorvan::Host {

namespace {

bool ChangesNothing(const EditHistory::Change& change) {
    return change.before == change.after && change.ownBefore == change.ownAfter;
}

}  // namespace

void EditHistory::Add(Step step) {
    std::erase_if(step.changes, ChangesNothing);
    if (step.changes.empty() && step.before == step.after && step.wiringBefore == step.wiringAfter)
        return;
    steps.resize(present);
    steps.push_back(std::move(step));
    if (steps.size() > kSteps)
        steps.pop_front();
    present = steps.size();
    lastGesture = 0;
}

void EditHistory::AddMove(uint64_t gesture, const std::string& name, const Change& change) {
    if (gesture == 0 || gesture != lastGesture || !CanUndo() || CanRedo()) {
        // A gesture that has not moved anything yet must not join the step before it.
        if (ChangesNothing(change))
            return;
        const size_t before = steps.size();
        Add({name, {change}, {}, {}});
        if (present > 0 && (steps.size() != before || steps.back().name == name))
            lastGesture = gesture;
        return;
    }
    std::vector<Change>& changes = steps.back().changes;
    const auto known = std::find_if(changes.begin(), changes.end(), [&](const Change& earlier) {
        return earlier.index == change.index;
    });
    if (known == changes.end())
        changes.push_back(change);
    else
        known->after = change.after, known->ownAfter = change.ownAfter;
}

void EditHistory::EndGesture(uint64_t gesture) {
    if (gesture == 0 || gesture != lastGesture || !CanUndo() || CanRedo())
        return;
    lastGesture = 0;
    std::vector<Change>& changes = steps.back().changes;
    std::erase_if(changes, ChangesNothing);
    if (!changes.empty() || steps.back().before != steps.back().after)
        return;
    steps.pop_back();
    present = steps.size();
}

const EditHistory::Step* EditHistory::Undo() {
    lastGesture = 0;
    return CanUndo() ? &steps[--present] : nullptr;
}

const EditHistory::Step* EditHistory::Redo() {
    lastGesture = 0;
    return CanRedo() ? &steps[present++] : nullptr;
}

void EditHistory::Clear() {
    steps.clear();
    present = 0;
    lastGesture = 0;
}

}  // namespace Quorvan::Host
