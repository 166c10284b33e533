#pragma once

#include <cairo.h>

#include <string_view>
#include <vector>

#include "host/instrument/Instrument.h"
#include "host/instrument/PresetLibrary.h"
#include "plugins/ui/Events.h"

namespace Quorvan::Ui {

/// What a Face is inside.
class FaceCore {
public:
    FaceCore(Host::Instrument& instrument, Host::PresetLibrary& presets);
    ~FaceCore();
    FaceCore(const FaceCore&) = delete;
    FaceCore& operator=(const FaceCore&) = delete;

    void Resize(int width, int height);
    double Scale() const { return scale; }
    std::vector<Rect> Idle(double seconds);
    void Draw(cairo_t* target, const Rect& clip);
    bool Press(const PointerEvent& event);
    bool Release(const PointerEvent& event);
    bool Move(const PointerEvent& event);
    bool Wheel(const WheelEvent& event);
    bool Key(const KeyEvent& event);
    bool Text(std::string_view signs);
    void Leave();
    bool IsTyping() const { return false; }

private:
    Host::Instrument& instrument;
    Host::PresetLibrary& presets;
    int windowWidth = 1280, windowHeight = 800;
    double scale = 1.0;
    bool isStale = true;
};

}  // namespace Quorvan::Ui
