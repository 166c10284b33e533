#pragma once

#include <vector>

#include "DistrhoUI.hpp"
#include "plugins/dpf/DpfPlugin.h"
#include "plugins/ui/window/FaceWidget.h"

namespace Quorvan::Plugins {

/// The face as the framework shows it. It works on the plug-in's own instrument, and tells the host
/// what the user moves.
class FaceUi final : public Ui::FaceWidget<DISTRHO_NAMESPACE::UI> {
public:
    FaceUi();

protected:
    void parameterChanged(uint32_t index, float value) override;
    void programLoaded(uint32_t) override {}
    void stateChanged(const char*, const char*) override {}
    void uiScaleFactorChanged(double scale) override;
    void uiIdle() override;

private:
    DpfPlugin& plugin;
    std::vector<float> told;     ///< values of the controls as the host knows them
    std::vector<bool> isEdited;  ///< the host thinks that it is being moved
};

}  // namespace Quorvan::Plugins
