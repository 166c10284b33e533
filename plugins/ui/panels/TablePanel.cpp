#include "plugins/ui/panels/TablePanel.h"

#include "plugins/ui/model/ParameterControl.h"
#include "plugins/ui/widgets/ChoiceBox.h"
#include "plugins/ui/widgets/Knob.h"
#include "plugins/ui/widgets/RandomDial.h"
#include "plugins/ui/widgets/Segments.h"
#include "plugins/ui/widgets/Slider.h"
#include "plugins/ui/widgets/Toggle.h"

namespace Quorvan::Ui {

using Kind = PlacedControl::Kind;

TablePanel::TablePanel(const Rect& place, std::string itsTitle, FaceModel& faceModel, Stage& face,
                       std::span<const PlacedControl> controls,
                       std::span<const PlacedChance> chances, std::string namePrefix)
    : Panel(place, std::move(itsTitle)),
      model(faceModel),
      stage(face),
      prefix(std::move(namePrefix)) {
    for (const PlacedControl& line : controls)
        Place(line);
    for (const PlacedChance& line : chances)
        PlaceChance(line, controls);
}

Widget& TablePanel::Place(const PlacedControl& line) {
    auto control = std::make_unique<ParameterControl>(model, prefix + line.name);
    const auto at = [&](double width, double height) {
        return At(line.x, line.y, line.width > 0.0 ? line.width : width,
                  line.height > 0.0 ? line.height : height);
    };
    Widget* widget = nullptr;
    switch (line.kind) {
        case Kind::Knob:
        case Kind::Bipolar:
        case Kind::Chance: {
            Knob& knob =
                Add<Knob>(at(Knob::kWidth, Knob::kHeight), stage, std::move(control), line.label);
            if (line.kind == Kind::Bipolar)
                knob.MakeBipolar();
            if (line.kind == Kind::Chance)
                knob.MakeChance();
            widget = &knob;
            break;
        }
        case Kind::Choice:
            widget = &Add<ChoiceBox>(at(104.0, 40.0), stage, std::move(control), line.label,
                                     ChoiceBox::Label::Above);
            break;
        case Kind::Field:
            widget = &Add<ChoiceBox>(at(72.0, 24.0), stage, std::move(control), line.label,
                                     ChoiceBox::Label::None);
            break;
        case Kind::Segments:
            widget = &Add<Segments>(at(176.0, 24.0), stage, std::move(control), line.label);
            break;
        case Kind::Toggle:
            widget = &Add<Toggle>(at(72.0, 24.0), stage, std::move(control), line.label);
            break;
        case Kind::Trigger: {
            Toggle& trigger = Add<Toggle>(at(72.0, 24.0), stage, std::move(control), line.label);
            trigger.MakeTrigger();
            widget = &trigger;
            break;
        }
        case Kind::Slider:
            widget = &Add<Slider>(at(160.0, 24.0), stage, std::move(control), line.label);
            break;
    }
    named.emplace_back(line.name, widget);
    if (line.shown != nullptr)
        conditionals.push_back({widget, line.shown});
    return *widget;
}

void TablePanel::PlaceChance(const PlacedChance& line, std::span<const PlacedControl> controls) {
    for (size_t i = 0; i < controls.size(); ++i) {
        if (std::string_view(controls[i].name) != line.knob)
            continue;
        auto& knob = static_cast<Knob&>(*named[i].second);
        const Rect place{knob.box.Right() - RandomDial::kSize, knob.box.y, RandomDial::kSize,
                         RandomDial::kSize};
        const auto control = [&](const std::string& name) {
            return name.empty() ? nullptr
                                : std::make_unique<ParameterControl>(model, prefix + name);
        };
        RandomDial& dial =
            Add<RandomDial>(place, stage, control(line.amount), control(line.direction));
        if (line.share >= 0.0)
            knob.ShowChance(dial, line.share);
        if (line.shown != nullptr)
            conditionals.push_back({&dial, line.shown});
    }
}

void TablePanel::Update() {
    for (const Conditional& conditional : conditionals)
        conditional.widget->Show(conditional.shown(model));
}

}  // namespace Quorvan::Ui
