#pragma once

#include "travesty/edit_controller.h"

namespace Quorvan::Plugins {

/// MIDI in VST3: hosts tell notes as events, and everything else as moves of hidden parameters that
/// the plug-in points controllers at. Ours stand behind all others, so that hosts that care for the
/// first few hundred only find those that people want, and are the same for all channels.
class Vst3Midi {
public:
    /// Puts the hidden parameters behind those of the framework's controller.
    static void AddParameters(v3_edit_controller** controller);
    /// Which parameter a MIDI controller moves.
    static v3_result OfferMapping(void** object);
};

}  // namespace Quorvan::Plugins
