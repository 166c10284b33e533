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
    {Kind::Segments, "Granular Mode", "", 12.0, 30.0, 320.0, 26.0},
    {Kind::Knob, "Density", "Density", 12.0, 66.0, 76.0, 0.0},
    {Kind::Choice, "Density Sync", "Starts in", 92.0, 86.0, 76.0, 40.0, IsClassic},
    {Kind::Choice, "Density Sync (Beat)", "Starts in", 92.0, 86.0, 76.0, 40.0, IsBeat},
    {Kind::Knob, "Grain Size", "Grain Size", 176.0, 66.0, 76.0, 0.0},
    {Kind::Choice, "Grain Size Sync", "Size in", 256.0, 86.0, 76.0, 40.0, IsNoTexture},
    {Kind::Toggle, "Grain Size Sync (Texture)", "In notes", 256.0, 100.0, 76.0, 26.0, IsTexture},
    {Kind::Toggle, "Size Follows Density", "Size follows density", 12.0, 172.0, 156.0, 26.0,
     IsClassic},
    {Kind::Choice, "Beat Sequencer Steps", "Steps", 224.0, 160.0, 108.0, 36.0, IsBeat},
    {Kind::Field, "Beat Sequencer Loop Mode", "Runs", 224.0, 202.0, 108.0, 26.0, IsBeat},
    {Kind::Choice, "Trigger Mode", "Grains start by", 12.0, 236.0, 104.0, 40.0},
    {Kind::Toggle, "Grain Trigger", "Trigger", 124.0, 250.0, 80.0, 26.0, IsGated},
    {Kind::Choice, "Grain Limit", "At most", 256.0, 236.0, 76.0, 40.0},
};
constexpr PlacedChance kStartChances[]{
    {"Density", "Random Density", "Random Density Kind", -1.0, IsNoTexture},
    {"Density", "Random Layers", "Random Layers Direction", 0.0, IsTexture},
    {"Grain Size", "Random Size", "Random Size Direction", 0.0},
};

constexpr PlacedControl kPitch[]{
    {Kind::Bipolar, "Pitch", "Pitch", 12.0, 30.0, 88.0, 0.0},
    {Kind::Knob, "Random Fine Pitch", "Fine", 100.0, 30.0, 80.0, 0.0},
    {Kind::Choice, "Scale", "Scale", 184.0, 50.0, 124.0, 40.0},
};
constexpr PlacedChance kPitchChances[]{
    // At 100 % it reaches three octaves, half of the knob.
    {"Pitch", "Random Pitch", "Random Pitch Direction", 0.5},
};

constexpr PlacedControl kShape[]{
    {Kind::Choice, "Grain Shape", "Shape", 12.0, 136.0, 160.0, 40.0},
    {Kind::Slider, "Grain Shape Amount", "Amount", 12.0, 186.0, 160.0, 26.0},
    {Kind::Choice, "Lo-Fi", "Lo-Fi", 12.0, 236.0, 160.0, 40.0},
};

constexpr PlacedControl kPlace[]{
    {Kind::Knob, "Forward Grains", "Forward", 16.0, 26.0, 84.0, 0.0},
    {Kind::Knob, "Width", "Width", 108.0, 26.0, 84.0, 0.0},
    {Kind::Knob, "Random Pan", "Random Pan", 16.0, 112.0, 84.0, 0.0},
    {Kind::Bipolar, "Stereo Position", "Position", 108.0, 112.0, 84.0, 0.0},
    {Kind::Knob, "Distance", "Distance", 16.0, 198.0, 84.0, 0.0},
    {Kind::Knob, "Random Distance", "Random Dist.", 108.0, 198.0, 84.0, 0.0},
};

/// With what is drawn and not only turned.
class StartsPanel final : public TablePanel {
public:
    StartsPanel(const Rect& place, FaceModel& faceModel, Stage& face)
        : TablePanel(place, "Starts and size", faceModel, face, kStarts, kStartChances),
          steps(Add<BarEditor>(At(12.0, 164.0, 204.0, 64.0), "Beat pattern",
                               "One bar a step: silent, or 1, 2 or 3 times the clock.",
                               BeatSteps(faceModel))),
          count(Add<DrawnView>(At(176.0, 160.0, 156.0, 60.0), "Grains",
                               "How many sound now, left and right ones counted singly, and how "
                               "many pairs start in a second.",
                               GrainCount(faceModel))) {}
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
        Add<DrawnView>(At(12.0, 128.0, 296.0, 148.0), "Pitches",
                       "Lit keys are what the scale allows; every grain that sounds stands over "
                       "its key. Click to set the pitch.",
                       ScaleKeyboard(faceModel));
    }
};

class ShapePanel final : public TablePanel {
public:
    ShapePanel(const Rect& place, FaceModel& faceModel, Stage& face)
        : TablePanel(place, "Shape", faceModel, face, kShape) {
        Add<DrawnView>(At(12.0, 30.0, 160.0, 100.0), "Shape",
                       "How a grain fades in and out. Drag across to bend it.",
                       ShapeCurve(faceModel));
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
    panels.push_back(
        std::make_unique<TablePanel>(Column(872.0, 208.0), "Stereo", model, stage, kPlace));
    return panels;
}

}  // namespace Quorvan::Ui
