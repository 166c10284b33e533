#include "plugins/ui/Face.h"

#include "plugins/ui/FaceCore.h"

namespace Quorvan::Ui {

Face::Face(Host::Instrument& instrument, Host::PresetLibrary& presets)
    : core(std::make_unique<FaceCore>(instrument, presets)) {}

Face::~Face() = default;

void Face::Resize(int width, int height) { core->Resize(width, height); }

double Face::Scale() const { return core->Scale(); }

std::vector<Rect> Face::Idle(double seconds) { return core->Idle(seconds); }

void Face::Draw(cairo_t* target, const Rect& clip) { core->Draw(target, clip); }

bool Face::Press(const PointerEvent& event) { return core->Press(event); }

bool Face::Release(const PointerEvent& event) { return core->Release(event); }

bool Face::Move(const PointerEvent& event) { return core->Move(event); }

bool Face::Wheel(const WheelEvent& event) { return core->Wheel(event); }

bool Face::Key(const KeyEvent& event) { return core->Key(event); }

bool Face::Text(std::string_view signs) { return core->Text(signs); }

void Face::Leave() { core->Leave(); }

bool Face::IsTyping() const { return core->IsTyping(); }

}  // namespace Quorvan::Ui
