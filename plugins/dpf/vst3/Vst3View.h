#pragma once

#include "plugins/dpf/vst3/Vst3Processor.h"
#include "travesty/edit_controller.h"

namespace Quorvan::Plugins {

/// The size of a window that is not open yet. The framework tells the face's own, whatever scale
/// the host has told before and whatever size the state keeps, and hosts make their frame after it.
///
/// Threads  the host's main one, as all that has to do with windows.
class Vst3View {
public:
    /// Has the views of the framework's controller come with sizes for what this processor plays.
    static void AddSizes(v3_edit_controller** controller, const Vst3Processor& processor);
    /// The processor is about to go.
    static void Forget(const Vst3Processor& processor);
};

}  // namespace Quorvan::Plugins
