#include "plugins/dpf/FaceUi.h"

#include "host/parameters/SharedCatalog.h"
#include "plugins/ui/window/FaceWindow.h"
#include "presets/FactoryPresets.h"

namespace Quorvan::Plugins {

namespace {

DpfPlugin& PluginOf(const DISTRHO_NAMESPACE::UI& ui) {
    return *static_cast<DpfPlugin*>(
        static_cast<DISTRHO_NAMESPACE::Plugin*>(ui.getPluginInstancePointer()));
}

Host::PresetLibrary Presets() {
    return {Host::SharedCatalog(), Host::FactoryPresets(), Host::PresetLibrary::UsualFolder()};
}

}  // namespace

FaceUi::FaceUi()
    : FaceWidget([](UI& ui) -> Host::Instrument& { return PluginOf(ui).Played(); }, Presets(),
                 unsigned{Ui::Face::kWidth}, unsigned{Ui::Face::kHeight}),
      plugin(PluginOf(*this)) {
    for (uint32_t id = 0; id < Host::HostControls().size(); ++id)
        told.push_back(plugin.getParameterValue(id));
    isEdited.resize(told.size());
    const auto least = [](int length) {
        return static_cast<unsigned>(length * Ui::Face::kSmallest);
    };
    setGeometryConstraints(least(Ui::Face::kWidth), least(Ui::Face::kHeight), true);
    const auto size = Ui::FaceWindow::FirstSize(plugin.Played(), getScaleFactor());
    setSize(size.width, size.height);
}

void FaceUi::parameterChanged(uint32_t index, float value) {
    if (index < told.size())
        told[index] = value;
}

/// A host may tell it with the window open already; a size that is kept stays.
void FaceUi::uiScaleFactorChanged(double scale) {
    const auto size = Ui::FaceWindow::FirstSize(plugin.Played(), scale);
    setSize(size.width, size.height);
}

void FaceUi::uiIdle() {
    Look();
    const Host::WindowSize size{getWidth(), getHeight()};
    if (size != plugin.Played().GetWindowSize())
        plugin.Played().SetWindowSize(size);
    const bool isHeld = IsHeld();
    for (uint32_t id = 0; id < told.size(); ++id) {
        const float value = plugin.getParameterValue(id);
        if (isHeld && value != told[id]) {
            if (!isEdited[id])
                editParameter(id, true);
            isEdited[id] = true;
            told[id] = value;
            setParameterValue(id, value);
        } else if (!isHeld && isEdited[id]) {
            isEdited[id] = false;
            editParameter(id, false);
        }
    }
}

}  // namespace Quorvan::Plugins

START_NAMESPACE_DISTRHO

UI* createUI() { return new Quorvan::Plugins::FaceUi(); }

END_NAMESPACE_DISTRHO
