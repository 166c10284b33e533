#pragma once

#include <functional>
#include <string>

#include "plugins/ui/widgets/Widget.h"

namespace Quorvan::Ui {

/// A line to write in. What is wrong with it stands below.
class TextField final : public Widget {
public:
    using Accept = std::function<std::string(const std::string&)>;

    /// begun is chosen as a whole, so that the first sign replaces it, unless it is only one sign.
    TextField(const Rect& place, std::string begun, Accept take);

    void Draw(Painter& painter) override;
    void Press(const PointerEvent& event) override;
    bool Key(const KeyEvent& event) override;
    bool Text(std::string_view signs) override;
    bool CanFocus() const override { return lasting; }
    bool IsDone() const { return done; }
    /// Told of every change, for searches.
    void OnChange(std::function<void(const std::string&)> told) { changed = std::move(told); }
    const std::string& Written() const { return text; }
    /// Stays when Enter is pressed or the pointer goes elsewhere; shows hint while it is empty.
    void MakeLasting(std::string itsHint);
    /// Shows what is wrong with it, until it changes.
    void Complain(std::string sentence);
    static constexpr double kHeight = 26.0;

private:
    size_t Before(size_t at) const;
    size_t Behind(size_t at) const;
    void Changed();
    void Finish();

    std::string text, problem, hint;
    Accept accept;
    std::function<void(const std::string&)> changed;
    size_t caret = 0;
    bool allChosen = true, done = false, lasting = false;
};

}  // namespace Quorvan::Ui
