#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "plugins/ui/Events.h"
#include "plugins/ui/look/Colour.h"

namespace Quorvan::Ui {

class Control;

struct MenuItem {
    std::string text;
    std::function<void()> action;  ///< none: a heading
    bool ticked = false;
    bool startsGroup = false;  ///< a line above it
    Colour mark{0.0, 0.0, 0.0, 0.0};
};

/// A line of a form: what it is for, and what stands in it at first.
struct EntryLine {
    std::string label, begun;
};

/// What a widget asks of the face that it is on.
class Stage {
public:
    virtual ~Stage() = default;

    /// Below anchor, or above it where that has more room.
    virtual void OpenMenu(const Rect& anchor, std::vector<MenuItem> items) = 0;
    /// A line to write in; accept takes what was written and answers a sentence where it is wrong.
    virtual void OpenEntry(const Rect& anchor, const std::string& text,
                           std::function<std::string(const std::string&)> accept) = 0;
    /// The same with several lines.
    using AcceptLines = std::function<std::string(const std::vector<std::string>&)>;
    virtual void OpenForm(const Rect& anchor, const std::vector<EntryLine>& lines,
                          AcceptLines accept) = 0;
    /// A source of modulation is being dragged, to be dropped on a control.
    virtual void CarrySource(uint32_t source, Point at) = 0;
    virtual void DropSource(uint32_t source, Point at) = 0;
    /// A word to the user, for a moment.
    virtual void Say(const std::string& sentence) = 0;
};

/// Opens a line to type a control's value in.
void TypeValue(Stage& stage, Control& control, const Rect& anchor, const std::string& begun = {});

}  // namespace Quorvan::Ui
