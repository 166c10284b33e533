#include "plugins/ui/panels/Layout.h"
#include "plugins/ui/panels/Pages.h"

namespace Quorvan::Ui {

namespace {

using Kind = PlacedControl::Kind;

bool IsMode(const FaceModel& model, uint32_t mode) {
    return model.ChoiceOf("Play Head Mode") == mode;
}
bool IsScan(const FaceModel& model) { return IsMode(model, 0); }
bool IsFollow(const FaceModel& model) { return IsMode(model, 1); }
bool IsManual(const FaceModel& model) { return IsMode(model, 2); }
bool IsBeat(const FaceModel& model) { return model.ChoiceOf("Granular Mode") == 2; }
bool FollowsBeats(const FaceModel& model) { return IsFollow(model) && IsBeat(model); }
bool FollowsFree(const FaceModel& model) { return IsFollow(model) && !IsBeat(model); }
bool IsGrid(const FaceModel& model) { return model.ChoiceOf("Start Quantization") == 2; }
bool IsTransients(const FaceModel& model) { return model.ChoiceOf("Start Quantization") == 1; }

constexpr PlacedControl kOnTape[]{
    {Kind::Toggle, "Freeze", "Freeze", 8.0, 200.0, 72.0, 24.0},
    {Kind::Trigger, "Clear", "Clear", 88.0, 200.0, 64.0, 24.0},
    {Kind::Segments, "Play Head Mode", "", 160.0, 200.0, 192.0, 24.0},
};

constexpr PlacedControl kBelow[]{
    {Kind::Choice, "Buffer Length", "Loop", 16.0, 24.0, 72.0, 40.0},
    {Kind::Toggle, "Write Head Crossfade", "Soft seam", 96.0, 40.0, 80.0, 24.0},
    {Kind::Knob, "Persistence", "Persistence", 176.0, 0.0},
    {Kind::Segments, "Start Quantization", "Starts", 264.0, 24.0, 216.0, 40.0},
    {Kind::Choice, "Grid Size", "Grid cells", 488.0, 24.0, 80.0, 40.0, IsGrid},
    {Kind::Knob, "Transient Sensitivity", "Sensitivity", 488.0, 0.0, 0.0, 0.0, IsTransients},
    {Kind::Knob, "Play Head Offset", "Offset", 576.0, 0.0, 0.0, 0.0, IsFollow},
    {Kind::Bipolar, "Play Head Speed", "Speed", 576.0, 0.0, 0.0, 0.0, IsScan},
    {Kind::Knob, "Play Head Position", "Position", 576.0, 0.0, 0.0, 0.0, IsManual},
    {Kind::Choice, "Play Head Offset Sync", "Offset in", 664.0, 24.0, 88.0, 40.0, FollowsFree},
    {Kind::Choice, "Play Head Offset Sync (Beat)", "Offset in", 664.0, 24.0, 88.0, 40.0,
     FollowsBeats},
    {Kind::Toggle, "Play Head Retrigger", "Each round", 664.0, 40.0, 88.0, 24.0, IsScan},
    {Kind::Knob, "Spray", "Spray", 760.0, 0.0},
    {Kind::Choice, "Spray Direction", "Spray to", 848.0, 24.0, 96.0, 40.0},
    {Kind::Toggle, "Stereo", "Stereo tape", 968.0, 16.0, 96.0, 24.0},
    {Kind::Toggle, "Mute While Stopped", "Mute at stop", 968.0, 48.0, 96.0, 24.0},
};

}  // namespace

Panels MakeTapeControls(FaceModel& model, Stage& stage) {
    Panels panels;
    panels.push_back(std::make_unique<TablePanel>(Layout::kTape, "", model, stage, kOnTape));
    panels.push_back(
        std::make_unique<TablePanel>(Layout::kTapeControls, " ", model, stage, kBelow));
    return panels;
}

}  // namespace Quorvan::Ui
