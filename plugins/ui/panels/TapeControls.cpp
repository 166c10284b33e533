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

constexpr PlacedControl kControls[]{
    {Kind::Toggle, "Freeze", "Freeze", 12.0, 14.0, 80.0, 26.0},
    {Kind::Trigger, "Clear", "Clear", 12.0, 48.0, 80.0, 26.0},
    {Kind::Choice, "Buffer Length", "Loop", 104.0, 6.0, 72.0, 38.0},
    {Kind::Toggle, "Write Head Crossfade", "Soft seam", 104.0, 48.0, 72.0, 26.0},
    {Kind::Knob, "Persistence", "Persistence", 180.0, 0.0},
    {Kind::Segments, "Play Head Mode", "", 272.0, 14.0, 208.0, 26.0},
    {Kind::Segments, "Start Quantization", "", 272.0, 48.0, 208.0, 26.0},
    {Kind::Knob, "Play Head Offset", "Offset", 488.0, 0.0, 0.0, 0.0, IsFollow},
    {Kind::Bipolar, "Play Head Speed", "Speed", 488.0, 0.0, 0.0, 0.0, IsScan},
    {Kind::Knob, "Play Head Position", "Position", 488.0, 0.0, 0.0, 0.0, IsManual},
    {Kind::Choice, "Play Head Offset Sync", "Offset in", 568.0, 22.0, 88.0, 40.0, FollowsFree},
    {Kind::Choice, "Play Head Offset Sync (Beat)", "Offset in", 568.0, 22.0, 88.0, 40.0,
     FollowsBeats},
    {Kind::Toggle, "Play Head Retrigger", "Each round", 568.0, 34.0, 88.0, 26.0, IsScan},
    {Kind::Knob, "Spray", "Spray", 672.0, 0.0},
    {Kind::Choice, "Spray Direction", "Spray to", 748.0, 22.0, 96.0, 40.0},
    {Kind::Choice, "Grid Size", "Grid cells", 860.0, 22.0, 88.0, 40.0, IsGrid},
    {Kind::Knob, "Transient Sensitivity", "Sensitivity", 860.0, 0.0, 88.0, 0.0, IsTransients},
    {Kind::Toggle, "Stereo", "Stereo tape", 968.0, 14.0, 100.0, 26.0},
    {Kind::Toggle, "Mute While Stopped", "Mute at stop", 968.0, 48.0, 100.0, 26.0},
};

}  // namespace

std::unique_ptr<Panel> MakeTapeControls(FaceModel& model, Stage& stage) {
    return std::make_unique<TablePanel>(Layout::kTapeControls, " ", model, stage, kControls);
}

}  // namespace Quorvan::Ui
