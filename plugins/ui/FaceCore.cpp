#include "plugins/ui/FaceCore.h"

#include "plugins/ui/Face.h"

namespace Quorvan::Ui {

FaceCore::FaceCore(Host::Instrument& anInstrument, Host::PresetLibrary& library)
    : instrument(anInstrument), presets(library) {
    instrument.Display().Watch(true);
}

FaceCore::~FaceCore() { instrument.Display().Watch(false); }

void FaceCore::Resize(int width, int height) {
    windowWidth = std::max(1, width);
    windowHeight = std::max(1, height);
    scale = std::min(static_cast<double>(windowWidth) / Face::kWidth,
                     static_cast<double>(windowHeight) / Face::kHeight);
    isStale = true;
}

std::vector<Rect> FaceCore::Idle(double) {
    if (!std::exchange(isStale, false))
        return {};
    return {{0.0, 0.0, static_cast<double>(windowWidth), static_cast<double>(windowHeight)}};
}

void FaceCore::Draw(cairo_t* target, const Rect& clip) {
    cairo_save(target);
    cairo_rectangle(target, clip.x, clip.y, clip.width, clip.height);
    cairo_clip(target);
    cairo_set_source_rgb(target, 0.06, 0.065, 0.08);
    cairo_paint(target);
    cairo_scale(target, scale, scale);
    cairo_set_source_rgb(target, 0.9, 0.9, 0.92);
    cairo_set_font_size(target, 16.0);
    cairo_move_to(target, 16.0, 30.0);
    const std::string title = std::string("Tesserae  ") + instrument.PresetName() + " (" +
                              std::to_string(presets.Entries().size()) + " presets)";
    cairo_show_text(target, title.c_str());
    cairo_restore(target);
}

bool FaceCore::Press(const PointerEvent&) { return false; }
bool FaceCore::Release(const PointerEvent&) { return false; }
bool FaceCore::Move(const PointerEvent&) { return false; }
bool FaceCore::Wheel(const WheelEvent&) { return false; }
bool FaceCore::Key(const KeyEvent&) { return false; }
bool FaceCore::Text(std::string_view) { return false; }
void FaceCore::Leave() {}

}  // namespace Quorvan::Ui
