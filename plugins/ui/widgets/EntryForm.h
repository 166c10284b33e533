#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "plugins/ui/widgets/Stage.h"
#include "plugins/ui/widgets/TextField.h"

namespace Quorvan::Ui {

/// Lines to write in, over the rest of the face. Enter hands them on, Escape or a press elsewhere
/// drops them; Tab and arrows go from line to line. What is wrong with them stands below.
class EntryForm final : public Widget {
public:
    /// Stands about the middle of anchor, inside whole. One line without a label has no ground.
    EntryForm(const Rect& anchor, const Rect& whole, const std::vector<EntryLine>& lines,
              Stage::AcceptLines take);

    void Draw(Painter& painter) override;
    void Press(const PointerEvent& event) override;
    bool Key(const KeyEvent& event) override;
    bool Text(std::string_view signs) override;
    bool IsDone() const { return done; }
    /// All that it has drawn on so far.
    const Rect& Reach() const { return reach; }

private:
    void Choose(size_t line);
    void Finish();
    void Complain(std::string sentence);

    Rect room, reach;
    std::string problem;
    Rect problemBox;
    std::vector<std::string> labels;
    std::vector<std::unique_ptr<TextField>> fields;
    size_t chosen = 0;
    Stage::AcceptLines accept;
    bool done = false;
};

}  // namespace Quorvan::Ui
