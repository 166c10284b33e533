#pragma once

#include <atomic>

#include "plugins/dpf/vst3/Vst3Processor.h"
#include "travesty/component.h"

namespace Quorvan::Plugins {

/// One instance as a VST3 host holds it: the framework's component, all of whose calls go on to it,
/// with a Vst3Processor around its processor, a bus for MIDI and a mono input. It is an object of
/// the interface's: its first member points at the functions. It goes when the host has let go of
/// both faces.
class Vst3Component {
public:
    /// Takes over the host's hold of the framework's component.
    static void* Surround(void* framework);

private:
    struct ProcessorFace {
        const v3_audio_processor_cpp* functions;
        Vst3Component* owner;
    };

    explicit Vst3Component(v3_component** framework) : inner(framework) {}

    static const v3_component_cpp kFunctions;
    static const v3_audio_processor_cpp kProcessorFunctions;
    static v3_component_cpp Functions();
    static v3_audio_processor_cpp ProcessorFunctions();

    static Vst3Component& Of(void* self) { return *static_cast<Vst3Component*>(self); }
    static Vst3Component& OfProcessor(void* self) {
        return *static_cast<ProcessorFace*>(self)->owner;
    }

    v3_result Query(const v3_tuid id, void** object);
    v3_result QueryProcessor(const v3_tuid id, void** object);
    v3_result Initialize(v3_funknown** context);
    v3_result Terminate();
    v3_result BusInfo(int32_t media, int32_t direction, int32_t bus, v3_bus_info& info);
    v3_result ActivateBus(int32_t media, int32_t direction, int32_t bus, bool on);
    void LetGo();

    const v3_component_cpp* functions = &kFunctions;
    ProcessorFace face{&kProcessorFunctions, this};
    std::atomic<int> holds{1};  ///< the host's, of both faces
    v3_component** inner;
    Vst3Processor processor;
};

}  // namespace Quorvan::Plugins
