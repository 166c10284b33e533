#include "plugins/ui/panels/GrainViews.h"
#include "plugins/ui/panels/Layout.h"
#include "plugins/ui/panels/Pages.h"

namespace Quorvan::Ui {

namespace {

using Kind = PlacedControl::Kind;

bool IsMode(const FaceModel& model, uint32_t mode) {
    return model.ChoiceOf("Granular Mode") == mode;
}
bool IsClassic(const FaceModel& model) { return IsMode(model, 0); }
bool IsTexture(const FaceModel& model) { return IsMode(model, 1); }
bool IsBeat(const FaceModel& model) { return IsMode(model, 2); }
bool IsNoTexture(const FaceModel& model) { return !IsTexture(model); }
bool IsGated(const FaceModel& model) { return model.ChoiceOf("Trigger Mode") == 1; }

constexpr PlacedControl kStarts[]{
    {Kind::Segments, "Granular Mode", "", 16.0, 32.0, 312.0, 24.0},
    {Kind::Knob, "Density", "Density", 8.0, 64.0},
    {Kind::Choice, "Density Sync", "Starts in", 96.0, 80.0, 72.0, 40.0, IsClassic},
    {Kind::Choice, "Density Sync (Beat)", "Starts in", 96.0, 80.0, 72.0, 40.0, IsBeat},
    {Kind::Knob, "Grain Size", "Grain Size", 168.0, 64.0},
    {Kind::Choice, "Grain Size Sync", "Size in", 256.0, 80.0, 72.0, 40.0, IsNoTexture},
    {Kind::Toggle, "Grain Size Sync (Texture)", "In notes", 256.0, 96.0, 72.0, 24.0, IsTexture},
    {Kind::Toggle, "Size Follows Density", "Size follows density", 16.0, 176.0, 152.0, 24.0,
     IsClassic},
    {Kind::Choice, "Beat Sequencer Steps", "Steps", 224.0, 152.0, 104.0, 40.0, IsBeat},
    {Kind::Field, "Beat Sequencer Loop Mode", "Runs", 224.0, 200.0, 104.0, 24.0, IsBeat},
    {Kind::Choice, "Trigger Mode", "Grains start by", 16.0, 232.0, 104.0, 40.0},
    {Kind::Toggle, "Grain Trigger", "Trigger", 128.0, 248.0, 80.0, 24.0, IsGated},
    {Kind::Choice, "Grain Limit", "At most", 256.0, 232.0, 72.0, 40.0},
};
constexpr PlacedChance kStartChances[]{
    {"Density", "Random Density", "Random Density Kind", -1.0, IsNoTexture},
    {"Density", "Random Layers", "Random Layers Direction", 0.0, IsTexture},
    {"Grain Size", "Random Size", "Random Size Direction", 0.0},
};

constexpr PlacedControl kPitch[]{
    {Kind::Bipolar, "Pitch", "Pitch", 8.0, 32.0},
    {Kind::Chance, "Random Fine Pitch", "Fine", 96.0, 32.0},
    {Kind::Choice, "Scale", "Scale", 184.0, 48.0, 120.0, 40.0},
};
constexpr PlacedChance kPitchChances[]{
    // At 100 % it reaches three octaves, half of the knob.
    {"Pitch", "Random Pitch", "Random Pitch Direction", 0.5},
};

constexpr PlacedControl kShape[]{
    {Kind::Choice, "Grain Shape", "Shape", 16.0, 136.0, 152.0, 40.0},
    {Kind::Slider, "Grain Shape Amount", "Amount", 16.0, 184.0, 152.0, 24.0},
    {Kind::Choice, "Lo-Fi", "Lo-Fi", 16.0, 232.0, 152.0, 40.0},
};

constexpr PlacedControl kStereo[]{
    {Kind::Knob, "Forward Grains", "Forward", 16.0, 32.0},
    {Kind::Knob, "Width", "Width", 112.0, 32.0},
    {Kind::Bipolar, "Stereo Position", "Position", 16.0, 120.0},
    {Kind::Knob, "Distance", "Distance", 112.0, 120.0},
};
constexpr PlacedChance kStereoChances[]{
    // At 100 % from side to side, and by half of the distance.
    {"Stereo Position", "Random Pan", "", 0.5},
    {"Distance", "Random Distance", "", 0.25},
};

/// With what is drawn and not only turned.
class StartsPanel final : public TablePanel {
public:
    StartsPanel(const Rect& place, FaceModel& faceModel, Stage& face)
        : TablePanel(place, "Starts and size", faceModel, face, kStarts, kStartChances),
          steps(AddView<BarEditor>("Beat pattern", At(16.0, 160.0, 200.0, 64.0), Theme::kOn,
                                   BeatSteps(faceModel))),
          count(
              AddView<DrawnView>("Grains", At(176.0, 160.0, 152.0, 64.0), GrainCount(faceModel))) {}
    void Update() override {
        TablePanel::Update();
        steps.Show(IsBeat(model));
        count.Show(!IsBeat(model));
    }

private:
    BarEditor& steps;
    DrawnView& count;
};

class PitchPanel final : public TablePanel {
public:
    PitchPanel(const Rect& place, FaceModel& faceModel, Stage& face)
        : TablePanel(place, "Pitch", faceModel, face, kPitch, kPitchChances) {
        AddView<DrawnView>("Pitches", At(16.0, 128.0, 288.0, 144.0), ScaleKeyboard(faceModel));
    }
};

class ShapePanel final : public TablePanel {
public:
    ShapePanel(const Rect& place, FaceModel& faceModel, Stage& face)
        : TablePanel(place, "Shape", faceModel, face, kShape) {
        AddView<DrawnView>("Shape", At(16.0, 32.0, 152.0, 96.0), ShapeCurve(faceModel));
    }
};

class StereoPanel final : public TablePanel {
public:
    StereoPanel(const Rect& place, FaceModel& faceModel, Stage& face)
        : TablePanel(place, "Stereo", faceModel, face, kStereo, kStereoChances) {
        AddView<DrawnView>("Stereo", At(16.0, 216.0, 176.0, 56.0), StereoField(faceModel));
    }
};

Rect Column(double x, double width) {
    return {Layout::kPage.x + x, Layout::kPage.y, width, Layout::kPage.height};
}

}  // namespace

Panels MakeGrainPage(FaceModel& model, Stage& stage) {
    Panels panels;
    panels.push_back(std::make_unique<StartsPanel>(Column(0.0, 344.0), model, stage));
    panels.push_back(std::make_unique<PitchPanel>(Column(352.0, 320.0), model, stage));
    panels.push_back(std::make_unique<ShapePanel>(Column(680.0, 184.0), model, stage));
    panels.push_back(std::make_unique<StereoPanel>(Column(872.0, 208.0), model, stage));
    return panels;
}

}  // namespace Quorvan::Ui
