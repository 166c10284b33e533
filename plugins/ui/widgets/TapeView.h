#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "plugins/ui/widgets/Widget.h"

namespace Quorvan::Ui {

/// A grain as the tape shows it; places are shares of the tape.
struct TapeGrain {
    uint64_t number = 0;
    double place = 0.0, length = 0.0, progress = 0.0;
    double semitones = 0.0;
    double left = 1.0, right = 1.0;  ///< gains
    double light = 0.0;              ///< envelope, 0..1
    bool reversed = false;
};

/// All that the tape shows at one moment.
struct TapePicture {
    std::span<const float> lowest, highest;  ///< of equal stretches of the tape
    std::vector<TapeGrain> grains;
    std::vector<double> marks;  ///< transients or grid lines
    double writePlace = 0.0, playPlace = 0.0;
    double seconds = 0.0;
    double beats = 4.0;                           ///< quarter notes of the loop
    double sprayBack = 0.0, sprayAhead = 0.0;     ///< reach of the starts
    bool spraysBack = true, spraysAhead = false;  ///< where they may lie
    bool frozen = false, hasWriteHead = true, alive = false;
    bool canDragHead = false;
};

/// The tape with its heads and every grain that sounds: place across, pitch up, light as level. The
/// upper half of a grain is its left channel, the lower half its right one. The play head and the
/// edges of the spray are dragged, by tenths with Shift, moved by the wheel and set back by a
/// double click. Keys: Left and Right move the head, Up and Down the edges, Delete sets the head
/// back.
class TapeView final : public Widget {
public:
    struct Actions {
        std::function<bool(TapePicture&)> look;  ///< fills it; answers whether it is another one
        std::function<void(bool begins)> holdHead, holdSpray;  ///< or let go
        /// Brings the head that is held to a place, modulation included.
        std::function<void(double place)> bringHead;
        /// By a share of the tape from where it stood when it was taken hold of or brought.
        std::function<void(double way)> moveHead;
        std::function<void(double way)> moveSpray;    ///< outward
        std::function<Control*(bool spray)> control;  ///< null: nothing moves the head now
    };

    TapeView(const Rect& place, Actions itsActions);

    void Draw(Painter& painter) override;
    bool Tick(double seconds) override;
    void Press(const PointerEvent& event) override;
    void Drag(const PointerEvent& event) override;
    void Release(const PointerEvent& event) override;
    void Hover(Point at) override;
    void DoubleClick(const PointerEvent& event) override;
    bool Wheel(const WheelEvent& event) override;
    bool Key(const KeyEvent& event) override;
    bool CanFocus() const override { return true; }
    Point FocusPoint() const override;
    Control* ControlAt(Point at) override;

private:
    enum class Held : uint8_t { Nothing, Head, Back, Ahead };  ///< the two edges of the spray
    struct Flash {
        double place, semitones, y, since;
    };

    double XOf(double place) const { return box.x + place * box.width; }
    double YOf(double semitones) const;
    double YOf(const TapeGrain& grain) const;
    double PlaceOf(Point at) const;
    Held At(Point at) const;
    double EdgeOf(Held edge) const;
    /// Across the tape from one place to another, the shorter way round.
    double WayTo(Point at) const;
    static bool IsEdge(Held what) { return what == Held::Back || what == Held::Ahead; }
    void NoteStarts(double seconds);

    void DrawRuler(Painter& painter) const;
    void DrawPitches(Painter& painter) const;
    void DrawWave(Painter& painter) const;
    void DrawMarks(Painter& painter) const;
    void DrawSpray(Painter& painter) const;
    void DrawGrain(Painter& painter, const TapeGrain& grain) const;
    void DrawFlashes(Painter& painter) const;
    void DrawHeads(Painter& painter) const;
    void Stretch(Painter& painter, double from, double to, double y, double height,
                 const Colour& colour) const;

    Actions actions;
    TapePicture picture;
    std::vector<Flash> flashes;
    uint64_t newest = 0;  ///< number of the latest grain that was seen
    double now = 0.0;
    double moved = 0.0;  ///< what is held, so far
    Point last;
    Held held = Held::Nothing;
    Held struck = Held::Nothing;  ///< what the last press met
    Held under = Held::Nothing;   ///< the pointer
};

}  // namespace Quorvan::Ui
