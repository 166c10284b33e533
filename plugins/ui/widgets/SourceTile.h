#pragma once

#include <functional>
#include <span>
#include <vector>

#include "plugins/ui/widgets/RunningLine.h"
#include "plugins/ui/widgets/Stage.h"
#include "plugins/ui/widgets/Widget.h"

namespace Quorvan::Ui {

/// A source of modulation with its running scope. Dragged onto a control, it moves that.
class SourceTile final : public Widget {
public:
    struct Actions {
        /// Appends what has come since the last call, -1..1.
        std::function<void(std::vector<float>&)> listen;
        std::function<uint32_t()> routes;
        std::function<bool()> chosen;
        std::function<void()> choose;
        double foot = 0.0;  ///< room that something else has below; what has it is never below 0
    };

    SourceTile(const Rect& place, Stage& face, uint32_t itsSource, std::string itsName,
               Actions itsActions);

    void Draw(Painter& painter) override;
    bool Tick(double seconds) override;
    void Press(const PointerEvent& event) override;
    void Drag(const PointerEvent& event) override;
    void Release(const PointerEvent& event) override;
    bool Key(const KeyEvent& event) override;
    bool CanFocus() const override { return true; }

private:
    static constexpr size_t kKept = 200;

    Stage& stage;
    uint32_t source;
    std::string name;
    Actions actions;
    std::vector<float> fresh;
    RunningLine history{kKept};
    uint32_t shownRoutes = 0;
    bool shownChosen = false;
    Point pressed;
    bool carrying = false;
};

}  // namespace Quorvan::Ui
