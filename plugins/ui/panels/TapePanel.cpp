#include "plugins/ui/panels/TapePanel.h"

#include <charconv>
#include <cmath>

#include "plugins/ui/panels/Layout.h"

namespace Quorvan::Ui {

namespace {

enum PlayHead : uint32_t { kScan, kFollow, kManual };

}  // namespace

double BeatsOfNote(std::string_view note) {
    double above = 0.0, below = 1.0;
    const size_t slash = note.find('/');
    const std::string_view first = note.substr(0, slash);
    std::from_chars(first.data(), first.data() + first.size(), above);
    if (slash != std::string_view::npos)
        std::from_chars(note.data() + slash + 1, note.data() + note.size(), below);
    return below > 0.0 ? 4.0 * above / below : 0.0;
}

TapePanel::TapePanel(FaceModel& faceModel)
    : Panel(Layout::kTape),
      model(faceModel),
      spray(faceModel, "Spray"),
      position(faceModel, "Play Head Position"),
      offset(faceModel, "Play Head Offset"),
      freeze(faceModel, "Freeze") {
    TapeView::Actions actions;
    actions.look = [this](TapePicture& picture) { return Look(picture); };
    actions.holdHead = [this](bool begins) { Take(begins ? Head() : nullptr); };
    actions.holdSpray = [this](bool begins) { Take(begins ? &spray : nullptr); };
    actions.bringHead = [this](double place) { BringHead(place); };
    actions.moveHead = [this](double way) { MoveHead(way); };
    actions.moveSpray = [this](double way) { MoveHeld(100.0 * way); };
    actions.control = [this](bool isSpray) -> Control* { return isSpray ? &spray : Head(); };
    AddView<TapeView>("Tape", box, std::move(actions));
}

/// What dragging the play head moves, as its mode has it.
ParameterControl* TapePanel::Head() {
    const uint32_t mode = model.ChoiceOf("Play Head Mode");
    if (mode == kManual)
        return &position;
    return mode == kFollow && offset.Steps() == 0 ? &offset : nullptr;
}

/// Takes hold of a control, with where it stands, or lets go of the one before. What modulation
/// adds stays on top: it is the head or the edge that is seen which follows the pointer.
void TapePanel::Take(ParameterControl* control) {
    if (held != nullptr)
        held->End();
    held = control;
    if (held == nullptr)
        return;
    const float present = held->Influences().present;
    heldValue = model.Catalog().Value(*held->Index(), present, model.Texts());
    heldModulation = present - held->Position();
    held->Begin();
}

void TapePanel::MoveHeld(double way) {
    if (held != nullptr)
        held->Move(std::clamp(
            model.Catalog().PositionOfValue(*held->Index(), heldValue + way, model.Texts()) -
                heldModulation,
            0.0f, 1.0f));
}

/// An offset is told in milliseconds behind the write head, and never beyond a round.
void TapePanel::BringHead(double place) {
    const Host::DisplayFrame& frame = model.Frame();
    const double behind = static_cast<double>(frame.writePlace) - place;
    heldValue = held == &position ? 100.0 * place
                                  : 1000.0 * static_cast<double>(frame.tapeSeconds) *
                                        (behind - std::floor(behind));
    MoveHeld(0.0);
}

/// An offset lies the other way, in milliseconds.
void TapePanel::MoveHead(double way) {
    MoveHeld(held == &position ? 100.0 * way
                               : -1000.0 * way * static_cast<double>(model.Frame().tapeSeconds));
}

void TapePanel::LookAtSettings(TapePicture& picture) const {
    const uint32_t direction = model.ChoiceOf("Spray Direction");
    const double reach = model.Catalog().Value(*spray.Index(), spray.Influences().present) / 100.0;
    picture.spraysBack = direction != 1;
    picture.spraysAhead = direction != 0;
    picture.sprayBack = direction != 1 ? reach : 0.0;
    picture.sprayAhead = direction != 0 ? reach : 0.0;
    picture.frozen = freeze.Influences().present > 0.5f;
    picture.beats = BeatsOfNote(model.Text(*model.Find("Buffer Length")));
    picture.alive = model.IsAlive();
    if (!picture.alive) {
        // Nobody tells where they are.
        picture.grains.clear();
        if (model.ChoiceOf("Play Head Mode") == kManual)
            picture.playPlace = static_cast<double>(position.Influences().present);
    }
}

bool TapePanel::Look(TapePicture& picture) {
    LookAtSettings(picture);
    picture.canDragHead = Head() != nullptr;
    const std::array<double, 8> now{picture.sprayBack,
                                    picture.sprayAhead,
                                    picture.frozen ? 1.0 : 0.0,
                                    picture.beats,
                                    picture.alive ? 1.0 : 0.0,
                                    picture.canDragHead ? 1.0 : 0.0,
                                    picture.alive ? 0.0 : picture.playPlace,
                                    picture.spraysBack ? 1.0 : 0.0};
    const bool isOther = std::exchange(seen, now) != now;
    if (!model.IsFrameNew())
        return isOther;
    const Host::DisplayFrame& frame = model.Frame();
    picture.lowest = frame.tape.lowest;
    picture.highest = frame.tape.highest;
    picture.writePlace = static_cast<double>(frame.writePlace);
    picture.playPlace = static_cast<double>(frame.playPlace);
    picture.seconds = static_cast<double>(frame.tapeSeconds);
    picture.marks.assign(frame.markers.begin(), frame.markers.begin() + frame.markerCount);
    picture.grains.clear();
    for (uint32_t i = 0; i < frame.grainCount; ++i) {
        const Host::ShownGrain& grain = frame.grains[i];
        const double pan = static_cast<double>(grain.pan), gain = static_cast<double>(grain.gain);
        picture.grains.push_back(
            {grain.number, static_cast<double>(grain.place), static_cast<double>(grain.length),
             static_cast<double>(grain.progress), static_cast<double>(grain.semitones),
             gain * std::min(1.0, 2.0 * (1.0 - pan)), gain * std::min(1.0, 2.0 * pan),
             static_cast<double>(grain.envelope), grain.reversed});
    }
    return true;
}

}  // namespace Quorvan::Ui
