#include "plugins/dpf/vst3/Vst3Component.h"

#include <algorithm>
#include <string_view>

#include "plugins/dpf/vst3/Vst3Midi.h"
#include "plugins/dpf/vst3/Vst3View.h"

namespace Quorvan::Plugins {

const v3_component_cpp Vst3Component::kFunctions = Vst3Component::Functions();
const v3_audio_processor_cpp Vst3Component::kProcessorFunctions =
    Vst3Component::ProcessorFunctions();

void* Vst3Component::Surround(void* framework) {
    return new Vst3Component(static_cast<v3_component**>(framework));
}

v3_component_cpp Vst3Component::Functions() {
    v3_component_cpp to;
    to.query_interface = [](void* self, const v3_tuid id, void** object) {
        return Of(self).Query(id, object);
    };
    to.ref = [](void* self) {
        ++Of(self).holds;
        return v3_cpp_obj_ref(Of(self).inner);
    };
    to.unref = [](void* self) {
        const uint32_t left = v3_cpp_obj_unref(Of(self).inner);
        Of(self).LetGo();
        return left;
    };
    to.base.initialize = [](void* self, v3_funknown** context) {
        return Of(self).Initialize(context);
    };
    to.base.terminate = [](void* self) { return Of(self).Terminate(); };
    to.comp.get_controller_class_id = [](void* self, v3_tuid id) {
        v3_component** const inner = Of(self).inner;
        return v3_cpp_obj(inner)->get_controller_class_id(inner, id);
    };
    to.comp.set_io_mode = [](void* self, int32_t mode) {
        v3_component** const inner = Of(self).inner;
        return v3_cpp_obj(inner)->set_io_mode(inner, mode);
    };
    to.comp.get_bus_count = [](void* self, int32_t media, int32_t direction) {
        v3_component** const inner = Of(self).inner;
        return media == V3_EVENT ? (direction == V3_INPUT ? 1 : 0)
                                 : v3_cpp_obj(inner)->get_bus_count(inner, media, direction);
    };
    to.comp.get_bus_info = [](void* self, int32_t media, int32_t direction, int32_t bus,
                              v3_bus_info* info) {
        return Of(self).BusInfo(media, direction, bus, *info);
    };
    to.comp.get_routing_info = [](void* self, v3_routing_info* input, v3_routing_info* output) {
        v3_component** const inner = Of(self).inner;
        return v3_cpp_obj(inner)->get_routing_info(inner, input, output);
    };
    to.comp.activate_bus = [](void* self, int32_t media, int32_t direction, int32_t bus,
                              v3_bool on) {
        return Of(self).ActivateBus(media, direction, bus, on != 0);
    };
    to.comp.set_active = [](void* self, v3_bool on) {
        v3_component** const inner = Of(self).inner;
        return v3_cpp_obj(inner)->set_active(inner, on);
    };
    to.comp.set_state = [](void* self, v3_bstream** stream) {
        v3_component** const inner = Of(self).inner;
        return v3_cpp_obj(inner)->set_state(inner, stream);
    };
    to.comp.get_state = [](void* self, v3_bstream** stream) {
        v3_component** const inner = Of(self).inner;
        return v3_cpp_obj(inner)->get_state(inner, stream);
    };
    return to;
}

v3_audio_processor_cpp Vst3Component::ProcessorFunctions() {
    v3_audio_processor_cpp to;
    to.query_interface = [](void* self, const v3_tuid id, void** object) {
        return OfProcessor(self).QueryProcessor(id, object);
    };
    to.ref = [](void* self) {
        ++OfProcessor(self).holds;
        return v3_cpp_obj_ref(OfProcessor(self).processor.Inner());
    };
    to.unref = [](void* self) {
        const uint32_t left = v3_cpp_obj_unref(OfProcessor(self).processor.Inner());
        OfProcessor(self).LetGo();
        return left;
    };
    to.proc.set_bus_arrangements = [](void* self, v3_speaker_arrangement* inputs,
                                      int32_t inputCount, v3_speaker_arrangement* outputs,
                                      int32_t outputCount) {
        return OfProcessor(self).processor.SetArrangements(inputs, inputCount, outputs,
                                                           outputCount);
    };
    to.proc.get_bus_arrangement = [](void* self, int32_t direction, int32_t bus,
                                     v3_speaker_arrangement* arrangement) {
        return OfProcessor(self).processor.GetArrangement(direction, bus, arrangement);
    };
    to.proc.can_process_sample_size = [](void*, int32_t size) -> v3_result {
        return size == V3_SAMPLE_32 || size == V3_SAMPLE_64 ? V3_OK : V3_NOT_IMPLEMENTED;
    };
    to.proc.get_latency_samples = [](void* self) {
        v3_audio_processor** const inner = OfProcessor(self).processor.Inner();
        return v3_cpp_obj(inner)->get_latency_samples(inner);
    };
    to.proc.setup_processing = [](void* self, v3_process_setup* setup) {
        return OfProcessor(self).processor.SetUp(*setup);
    };
    to.proc.set_processing = [](void* self, v3_bool on) {
        v3_audio_processor** const inner = OfProcessor(self).processor.Inner();
        return v3_cpp_obj(inner)->set_processing(inner, on);
    };
    to.proc.process = [](void* self, v3_process_data* data) {
        return OfProcessor(self).processor.Process(*data);
    };
    to.proc.get_tail_samples = [](void* self) { return OfProcessor(self).processor.TailSamples(); };
    return to;
}

v3_result Vst3Component::Query(const v3_tuid id, void** object) {
    if (v3_tuid_match(id, v3_midi_mapping_iid))
        return Vst3Midi::OfferMapping(object);
    const v3_result result = v3_cpp_obj_query_interface(
        inner, id, static_cast<v3_funknown***>(static_cast<void*>(object)));
    if (result != V3_OK)
        return result;
    if (*object == inner) {
        ++holds;
        *object = this;
    } else if (v3_tuid_match(id, v3_audio_processor_iid)) {
        ++holds;
        processor.Surround(static_cast<v3_audio_processor**>(*object));
        *object = &face;
    } else if (v3_tuid_match(id, v3_edit_controller_iid)) {
        auto** const controller = static_cast<v3_edit_controller**>(*object);
        Vst3Midi::AddParameters(controller);
        Vst3View::AddSizes(controller, processor);
    }
    return result;
}

v3_result Vst3Component::QueryProcessor(const v3_tuid id, void** object) {
    v3_audio_processor** const framework = processor.Inner();
    const v3_result result = v3_cpp_obj_query_interface(
        framework, id, static_cast<v3_funknown***>(static_cast<void*>(object)));
    if (result == V3_OK && *object == framework) {
        ++holds;
        *object = &face;
    }
    return result;
}

v3_result Vst3Component::Initialize(v3_funknown** context) {
    DpfPlugin::Newest() = nullptr;
    const v3_result result = v3_cpp_obj_initialize(inner, context);
    if (result == V3_OK)
        processor.Begin(DpfPlugin::Newest());
    return result;
}

v3_result Vst3Component::Terminate() {
    processor.Begin(nullptr);
    return v3_cpp_obj_terminate(inner);
}

v3_result Vst3Component::BusInfo(int32_t media, int32_t direction, int32_t bus, v3_bus_info& info) {
    if (media == V3_AUDIO) {
        const v3_result result =
            v3_cpp_obj(inner)->get_bus_info(inner, media, direction, bus, &info);
        if (result == V3_OK && direction == V3_INPUT && bus == 0 && processor.IsMono())
            info.channel_count = 1;
        return result;
    }
    if (media != V3_EVENT || direction != V3_INPUT || bus != 0)
        return V3_INVALID_ARG;
    info = {V3_EVENT, V3_INPUT, 16, {}, V3_MAIN, V3_DEFAULT_ACTIVE};
    constexpr std::string_view kName = "MIDI";
    std::copy(kName.begin(), kName.end(), info.bus_name);
    return V3_OK;
}

v3_result Vst3Component::ActivateBus(int32_t media, int32_t direction, int32_t bus, bool on) {
    if (media == V3_EVENT)
        return direction == V3_INPUT && bus == 0 ? V3_OK : V3_INVALID_ARG;
    if (direction == V3_INPUT && bus == 1)
        processor.ActivateSideChain(on);
    return v3_cpp_obj(inner)->activate_bus(inner, media, direction, bus, on);
}

void Vst3Component::LetGo() {
    if (--holds > 0)
        return;
    Vst3View::Forget(processor);
    delete this;
}

}  // namespace Quorvan::Plugins
