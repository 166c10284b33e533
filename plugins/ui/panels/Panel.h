#pragma once

#include <algorithm>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "plugins/ui/help/HelpTable.h"
#include "plugins/ui/widgets/Widget.h"

namespace Quorvan::Ui {

/// A ground with a title and widgets on it.
class Panel {
public:
    /// Without a title there is no ground.
    explicit Panel(const Rect& place, std::string itsTitle = {})
        : box(place), title(std::move(itsTitle)) {}
    virtual ~Panel() = default;
    Panel(const Panel&) = delete;
    Panel& operator=(const Panel&) = delete;

    /// Called before each picture: shows what belongs to the present settings and hides the rest.
    virtual void Update() {}
    virtual bool IsShown() const { return true; }
    virtual void DrawGround(Painter& painter) const;

    std::vector<std::unique_ptr<Widget>>& Widgets() { return widgets; }
    const Rect& Box() const { return box; }
    bool Has(const Widget& widget) const {
        return std::any_of(widgets.begin(), widgets.end(),
                           [&](const auto& one) { return one.get() == &widget; });
    }

protected:
    template <class Made, class... Arguments>
    Made& Add(Arguments&&... arguments) {
        auto made = std::make_unique<Made>(std::forward<Arguments>(arguments)...);
        Made& widget = *made;
        widgets.push_back(std::move(made));
        return widget;
    }
    /// A widget that moves no parameter; name: in the table of help.
    template <class Made, class... Arguments>
    Made& AddView(std::string_view name, Arguments&&... arguments) {
        Made& widget = Add<Made>(std::forward<Arguments>(arguments)...);
        const HelpEntry& help = HelpOnView(name);
        widget.Explain(help.Title(), help.sentence);
        return widget;
    }
    /// A place inside, from the panel's upper left.
    Rect At(double x, double y, double width, double height) const {
        return {box.x + x, box.y + y, width, height};
    }

    Rect box;
    std::string title;

private:
    std::vector<std::unique_ptr<Widget>> widgets;
};

}  // namespace Quorvan::Ui
