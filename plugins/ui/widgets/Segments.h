#pragma once

#include <vector>

#include "plugins/ui/widgets/ControlWidget.h"

namespace Quorvan::Ui {

/// All names of a choice beside each other, of which one is chosen.
class Segments final : public ControlWidget {
public:
    /// names: to show in place of the choices' own, or none.
    Segments(const Rect& place, Stage& face, std::unique_ptr<Control> moved,
             std::vector<std::string> names = {});

    void Draw(Painter& painter) override;
    void Press(const PointerEvent& event) override;
    void DoubleClick(const PointerEvent& event) override { Press(event); }

private:
    std::vector<std::string> names;
};

}  // namespace Quorvan::Ui
