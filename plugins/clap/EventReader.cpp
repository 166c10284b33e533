#include "plugins/clap/EventReader.h"

#include <algorithm>
#include <cmath>

namespace Quorvan::Clap {

namespace {

using Kind = Host::InstrumentEvent::Kind;

template <class Event>
const Event& As(const clap_event_header_t& header) {
    return reinterpret_cast<const Event&>(header);
}

uint8_t Of7(double share) {
    return static_cast<uint8_t>(std::lround(std::clamp(share, 0.0, 1.0) * 127.0));
}

}  // namespace

std::optional<Host::Transport> EventReader::TransportOf(const clap_event_transport_t* event) const {
    if (event == nullptr)
        return std::nullopt;
    Host::Transport place = instrument.Place();
    if ((event->flags & CLAP_TRANSPORT_HAS_TEMPO) != 0)
        place.tempo = event->tempo;
    if ((event->flags & CLAP_TRANSPORT_HAS_BEATS_TIMELINE) != 0)
        place.beat =
            static_cast<double>(event->song_pos_beats) / static_cast<double>(CLAP_BEATTIME_FACTOR);
    place.playing = (event->flags & CLAP_TRANSPORT_IS_PLAYING) != 0;
    return place;
}

void EventReader::AddMidi(uint32_t frame, uint8_t status, uint8_t first, uint8_t second) {
    Host::InstrumentEvent event{.frame = frame, .kind = Kind::Midi};
    event.midi = {status, first, second};
    events.push_back(event);
}

void EventReader::Add(const clap_event_header_t& header) {
    if (header.space_id != CLAP_CORE_EVENT_SPACE_ID)
        return;
    switch (header.type) {
        case CLAP_EVENT_PARAM_VALUE: {
            const auto& event = As<clap_event_param_value_t>(header);
            events.push_back({.frame = header.time,
                              .kind = Kind::Control,
                              .id = event.param_id,
                              .value = static_cast<double>(
                                  instrument.PositionOfControlValue(event.param_id, event.value))});
            break;
        }
        case CLAP_EVENT_PARAM_MOD: {
            const auto& event = As<clap_event_param_mod_t>(header);
            const uint32_t steps = instrument.ControlSteps(event.param_id);
            events.push_back({.frame = header.time,
                              .kind = Kind::Offset,
                              .id = event.param_id,
                              .value = steps > 1 ? event.amount / (steps - 1) : event.amount});
            break;
        }
        case CLAP_EVENT_TRANSPORT:
            events.push_back({.frame = header.time,
                              .kind = Kind::Transport,
                              .place = *TransportOf(&As<clap_event_transport_t>(header))});
            break;
        case CLAP_EVENT_MIDI: {
            const auto& event = As<clap_event_midi_t>(header);
            AddMidi(header.time, event.data[0], event.data[1], event.data[2]);
            break;
        }
        case CLAP_EVENT_NOTE_ON:
        case CLAP_EVENT_NOTE_OFF: {
            // Wildcards end notes that nobody holds here.
            const auto& event = As<clap_event_note_t>(header);
            if (event.channel < 0 || event.channel > 15 || event.key < 0 || event.key > 127)
                break;
            const bool on = header.type == CLAP_EVENT_NOTE_ON;
            const auto status =
                static_cast<uint8_t>((on ? 0x90 : 0x80) | static_cast<uint8_t>(event.channel));
            // A note at velocity 0 would be an end of one.
            AddMidi(header.time, status, static_cast<uint8_t>(event.key),
                    on ? std::max<uint8_t>(Of7(event.velocity), 1) : uint8_t{0});
            break;
        }
        default:
            break;
    }
}

}  // namespace Quorvan::Clap
