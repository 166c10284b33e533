#pragma once

#include <span>

#include "plugins/ui/model/FaceModel.h"
#include "plugins/ui/panels/Panel.h"
#include "plugins/ui/widgets/Stage.h"

namespace Quorvan::Ui {

/// One line of a panel: which parameter, how it looks, where it stands.
struct PlacedControl {
    enum class Kind : uint8_t {
        Knob,
        Bipolar,
        Chance,
        Choice,
        Field,
        Segments,
        Toggle,
        Trigger,
        Slider
    };
    using Condition = bool (*)(const FaceModel& model);

    Kind kind = Kind::Knob;  ///< Bipolar: a knob that rests in the middle; Chance: one that is
                             ///< itself a reach of chance; Field: without label; Trigger: a switch
                             ///< that acts whenever it is moved
    const char* name = "";   ///< as the catalog knows it, behind the panel's prefix
    const char* label = "";
    double x = 0.0, y = 0.0;           ///< from the panel's upper left
    double width = 0.0, height = 0.0;  ///< 0: usual for the kind
    Condition shown = nullptr;         ///< none: always
};

/// Chance that belongs to a knob: a small dial at its shoulder.
struct PlacedChance {
    const char* knob = "";  ///< name of the knob's line
    const char* amount = "";
    const char* direction = "";  ///< none: always both
    double share = 0.0;          ///< see Knob::ShowChance; negative: no reach to show on the knob
    PlacedControl::Condition shown = nullptr;
};

/// A panel that is nothing but controls of parameters. A new one is one line in its table.
class TablePanel : public Panel {
public:
    TablePanel(const Rect& place, std::string itsTitle, FaceModel& faceModel, Stage& face,
               std::span<const PlacedControl> controls, std::span<const PlacedChance> chances = {},
               std::string namePrefix = {});

    void Update() override;

protected:
    Widget& Place(const PlacedControl& line);

    FaceModel& model;
    Stage& stage;

private:
    struct Conditional {
        Widget* widget;
        PlacedControl::Condition shown;
    };
    void PlaceChance(const PlacedChance& line, std::span<const PlacedControl> controls);

    std::string prefix;
    std::vector<std::pair<std::string, Widget*>> named;
    std::vector<Conditional> conditionals;
};

}  // namespace Quorvan::Ui
