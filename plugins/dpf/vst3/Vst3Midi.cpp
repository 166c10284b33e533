#include "plugins/dpf/vst3/Vst3Midi.h"

#include <algorithm>
#include <string>

#include "plugins/dpf/vst3/Vst3Moves.h"

namespace Quorvan::Plugins {

namespace {

constexpr v3_param_id kFirst = Vst3Moves::kFirstMidiParameter;
constexpr v3_param_id kCount = Vst3Moves::kMidiParameters;

bool IsMidi(v3_param_id id) { return id >= kFirst && id < kFirst + kCount; }

/// The framework's functions for all instances; those below stand in their place in each of its
/// controllers.
v3_edit_controller_cpp framework;

v3_result Query(void* self, const v3_tuid id, void** object) {
    return v3_tuid_match(id, v3_midi_mapping_iid) ? Vst3Midi::OfferMapping(object)
                                                  : framework.query_interface(self, id, object);
}

int32_t ParameterCount(void* self) {
    return framework.ctrl.get_parameter_count(self) + static_cast<int32_t>(kCount);
}

std::string NameOf(v3_param_id number) {
    if (number < 128)
        return std::string("MIDI controller ") + std::to_string(number);
    return number == 128 ? "MIDI channel pressure" : "MIDI pitch bend";
}

v3_result ParameterInfo(void* self, int32_t place, v3_param_info* info) {
    const int32_t own = framework.ctrl.get_parameter_count(self);
    if (place < own)
        return framework.ctrl.get_parameter_info(self, place, info);
    const auto number = static_cast<v3_param_id>(place - own);
    if (number >= kCount)
        return V3_INVALID_ARG;
    *info = {};
    info->param_id = kFirst + number;
    const std::string name = NameOf(number);
    std::copy(name.begin(), name.end(), info->title);
    std::copy(name.begin(), name.end(), info->short_title);
    info->default_normalised_value = RestOfParameter(info->param_id);
    info->flags = V3_PARAM_CAN_AUTOMATE | V3_PARAM_IS_HIDDEN;
    return V3_OK;
}

double Normalised(void* self, v3_param_id id) {
    return IsMidi(id) ? RestOfParameter(id) : framework.ctrl.get_parameter_normalised(self, id);
}

/// A host's controller hears of moves that its processor gets as well.
v3_result SetNormalised(void* self, v3_param_id id, double value) {
    return IsMidi(id) ? V3_OK : framework.ctrl.set_parameter_normalised(self, id, value);
}

v3_result TextOf(void* self, v3_param_id id, double value, v3_str_128 text) {
    if (!IsMidi(id))
        return framework.ctrl.get_parameter_string_for_value(self, id, value, text);
    const std::string number = std::to_string(MidiOfParameter(kFirst, value)[2]);
    *std::copy(number.begin(), number.end(), text) = 0;
    return V3_OK;
}

v3_result MappingQuery(void* self, const v3_tuid id, void** object) {
    const bool known = v3_tuid_match(id, v3_funknown_iid) || v3_tuid_match(id, v3_midi_mapping_iid);
    *object = known ? self : nullptr;
    return known ? V3_OK : V3_NO_INTERFACE;
}

v3_result Assignment(void*, int32_t bus, int16_t channel, int16_t controller, v3_param_id* id) {
    const bool exists = bus == 0 && channel >= 0 && channel < 16 && controller >= 0 &&
                        static_cast<v3_param_id>(controller) < kCount;
    if (exists)
        *id = kFirst + static_cast<v3_param_id>(controller);
    return exists ? V3_TRUE : V3_FALSE;
}

v3_midi_mapping_cpp MappingFunctions() {
    v3_midi_mapping_cpp to;
    to.query_interface = MappingQuery;
    to.ref = to.unref = [](void*) -> uint32_t { return 1; };
    to.map.get_midi_controller_assignment = Assignment;
    return to;
}

}  // namespace

void Vst3Midi::AddParameters(v3_edit_controller** controller) {
    void* const object = *controller;
    auto& functions = *static_cast<v3_edit_controller_cpp*>(object);
    if (functions.query_interface == Query)
        return;
    [[maybe_unused]] static const bool isKept = (framework = functions, true);
    functions.query_interface = Query;
    functions.ctrl.get_parameter_count = ParameterCount;
    functions.ctrl.get_parameter_info = ParameterInfo;
    functions.ctrl.get_parameter_normalised = Normalised;
    functions.ctrl.set_parameter_normalised = SetNormalised;
    functions.ctrl.get_parameter_string_for_value = TextOf;
}

v3_result Vst3Midi::OfferMapping(void** object) {
    static const v3_midi_mapping_cpp functions = MappingFunctions();
    static const v3_midi_mapping_cpp* mapping = &functions;
    *object = &mapping;
    return V3_OK;
}

}  // namespace Quorvan::Plugins
