#pragma once

#include <cairo.h>

#include <memory>
#include <string_view>
#include <vector>

#include "plugins/ui/Events.h"

namespace Quorvan::Host {
class Instrument;
class PresetLibrary;
}  // namespace Quorvan::Host

namespace Quorvan::Ui {

class FaceCore;

/// The face of an instrument: draws what it does and takes hold of it. Knows no window: a shell
/// hands it events and something to draw on.
///
/// Life     while there is one, the instrument's display feed watches; instrument and presets have
///          to outlive it. One face at a time for an instrument.
/// Drawing  call Idle some 60 times a second; have what it answers drawn anew with Draw. What rests
///          is kept in a picture of the face's own, so that a Draw of more than that costs little.
/// Size     any; the face keeps its shape and stands in the middle. Scale 1 is 1280 x 800.
/// Events   answer whether the face made something of them; keys that it does not want are the
///          host's.
/// Threads  one, not that of the audio.
class Face {
public:
    static constexpr int kWidth = 1280;
    static constexpr int kHeight = 800;
    static constexpr double kSmallest = 0.75, kLargest = 3.0;  ///< scales that it is made for

    Face(Host::Instrument& instrument, Host::PresetLibrary& presets);
    ~Face();
    Face(const Face&) = delete;
    Face& operator=(const Face&) = delete;

    /// Pixels of the window.
    void Resize(int width, int height);
    /// Window pixels for one logical pixel.
    double Scale() const;

    /// Looks at what has moved since the last call. seconds: a clock that never goes back. Answers
    /// rectangles of the window that have to be drawn anew.
    std::vector<Rect> Idle(double seconds);
    /// clip: the part of the window that is wanted.
    void Draw(cairo_t* target, const Rect& clip);

    bool Press(const PointerEvent& event);
    bool Release(const PointerEvent& event);
    bool Move(const PointerEvent& event);
    bool Wheel(const WheelEvent& event);
    bool Key(const KeyEvent& event);
    /// Signs that were typed, in UTF-8.
    bool Text(std::string_view signs);
    /// The pointer has left the window.
    void Leave();
    /// Whether typed signs are wanted now, so that a shell may ask its host for the keyboard.
    bool IsTyping() const;

private:
    std::unique_ptr<FaceCore> core;
};

}  // namespace Quorvan::Ui
