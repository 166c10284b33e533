#pragma once

#include <functional>
#include <vector>

#include "host/instrument/OwnTransport.h"
#include "plugins/ui/model/FaceModel.h"
#include "plugins/ui/panels/Panel.h"
#include "plugins/ui/widgets/Stage.h"

namespace Quorvan::Ui {

/// The top: preset, undo, the two sounds, chance, what the machine does.
class HeaderPanel final : public Panel {
public:
    HeaderPanel(FaceModel& faceModel, Stage& face, const std::function<void()>& openBrowser);

    void DrawGround(Painter& painter) const override;

private:
    void AddPreset(const std::function<void()>& openBrowser);
    void AddHistory();
    void AddSounds();
    void AddChance();
    void AddMachine();
    void OfferRandomise(const Rect& anchor);
    void OfferSong(const Rect& anchor);
    void AddOwnSong(const Rect& anchor, std::vector<MenuItem>& items);
    void AddMidi(std::vector<MenuItem>& items);
    void AddAssignments(const Rect& anchor, std::vector<MenuItem>& items);
    void OfferAssignment(const Rect& anchor, uint32_t number);
    void AskSeed(const Rect& anchor);

    FaceModel& model;
    Stage& stage;
    Host::TapTempo taps;
    uint64_t rolls = 0;
};

}  // namespace Quorvan::Ui
