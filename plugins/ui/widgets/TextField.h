#pragma once

#include <functional>
#include <string>

#include "plugins/ui/widgets/Widget.h"

namespace Quorvan::Ui {

/// A line to write in.
class TextField final : public Widget {
public:
    /// begun is chosen as a whole, so that the first sign replaces it, unless it is only one sign.
    /// hint stands in the line while it is empty.
    explicit TextField(const Rect& place, std::string begun = {}, std::string itsHint = {});

    void Draw(Painter& painter) override;
    void Press(const PointerEvent& event) override;
    bool Key(const KeyEvent& event) override;
    bool Text(std::string_view signs) override;
    bool CanFocus() const override { return true; }
    /// Told of every change, for searches.
    void OnChange(std::function<void(const std::string&)> told) { changed = std::move(told); }
    void OnEnter(std::function<void()> act) { entered = std::move(act); }
    /// So that the next sign replaces all of it.
    void ChooseAll() { allChosen = !text.empty(); }
    const std::string& Written() const { return text; }
    static constexpr double kHeight = 24.0;

private:
    size_t Before(size_t at) const;
    size_t Behind(size_t at) const;
    void Changed();
    void Erase(bool before);

    std::string text, hint;
    std::function<void(const std::string&)> changed;
    std::function<void()> entered;
    size_t caret = 0;
    bool allChosen = true;
};

}  // namespace Quorvan::Ui
