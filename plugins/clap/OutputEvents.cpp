#include "plugins/clap/OutputEvents.h"

namespace Quorvan::Clap {

namespace {

clap_event_header_t Header(uint32_t size, uint32_t frame, uint16_t type) {
    return {size, frame, CLAP_CORE_EVENT_SPACE_ID, type, 0};
}

}  // namespace

void OutputEvents::OnControlMove(uint32_t frame, uint32_t id, double position) {
    if (list == nullptr)
        return;
    clap_event_param_value_t event{};
    event.header = Header(sizeof event, shift + frame, CLAP_EVENT_PARAM_VALUE);
    event.param_id = id;
    event.note_id = -1;
    event.port_index = event.channel = event.key = -1;
    event.value = instrument.ControlValue(id, static_cast<float>(position));
    list->try_push(list, &event.header);
}

void OutputEvents::OnGesture(uint32_t id, bool begins) {
    if (list == nullptr)
        return;
    clap_event_param_gesture_t event{};
    event.header = Header(sizeof event, shift,
                          begins ? CLAP_EVENT_PARAM_GESTURE_BEGIN : CLAP_EVENT_PARAM_GESTURE_END);
    event.param_id = id;
    list->try_push(list, &event.header);
}

}  // namespace Quorvan::Clap
