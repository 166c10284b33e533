#include "plugins/claphost/EventList.h"

#include <cmath>

namespace Quorvan::ClapHost {

Event ValueAt(uint32_t frame, clap_id id, double value, void* cookie) {
    auto event = Blank<clap_event_param_value_t>(frame, CLAP_EVENT_PARAM_VALUE);
    event.param_id = id;
    event.cookie = cookie;
    event.note_id = event.port_index = event.channel = event.key = -1;
    event.value = value;
    return event;
}

Event ModulationAt(uint32_t frame, clap_id id, double amount, int32_t note) {
    auto event = Blank<clap_event_param_mod_t>(frame, CLAP_EVENT_PARAM_MOD);
    event.param_id = id;
    event.note_id = note;
    event.port_index = event.channel = event.key = -1;
    event.amount = amount;
    return event;
}

Event NoteAt(uint32_t frame, uint16_t type, int channel, int key, int32_t note) {
    auto event = Blank<clap_event_note_t>(frame, type);
    event.note_id = note;
    event.port_index = static_cast<int16_t>(channel < 0 ? -1 : 0);
    event.channel = static_cast<int16_t>(channel);
    event.key = static_cast<int16_t>(key);
    event.velocity = 0.7;
    return event;
}

Event MidiAt(uint32_t frame, uint8_t status, uint8_t first, uint8_t second) {
    auto event = Blank<clap_event_midi_t>(frame, CLAP_EVENT_MIDI);
    event.data[0] = status;
    event.data[1] = first;
    event.data[2] = second;
    return event;
}

clap_event_transport_t SongAt(uint32_t frame, double tempo, double beat, bool playing) {
    auto song = Blank<clap_event_transport_t>(frame, CLAP_EVENT_TRANSPORT);
    song.flags = CLAP_TRANSPORT_HAS_TEMPO | CLAP_TRANSPORT_HAS_BEATS_TIMELINE |
                 (playing ? static_cast<uint32_t>(CLAP_TRANSPORT_IS_PLAYING) : 0u);
    song.tempo = tempo;
    song.song_pos_beats = std::llround(beat * static_cast<double>(CLAP_BEATTIME_FACTOR));
    song.tsig_num = song.tsig_denom = 4;
    return song;
}

EventList EventList::Between(uint32_t from, uint32_t end) const {
    EventList part;
    for (const Event& event : events) {
        const uint32_t frame = HeaderOf(event).time;
        if (frame < from || frame >= end)
            continue;
        part.Add(event);
        HeaderOf(part.events.back()).time = frame - from;
    }
    return part;
}

EventList EventList::Foreign() const {
    EventList foreign = *this;
    for (Event& event : foreign.events)
        HeaderOf(event).space_id = 0xb33f;
    return foreign;
}

clap_input_events_t EventList::Input() const {
    clap_input_events_t input{};
    input.ctx = const_cast<EventList*>(this);
    input.size = [](const clap_input_events_t* list) {
        return static_cast<uint32_t>(static_cast<const EventList*>(list->ctx)->Size());
    };
    input.get = [](const clap_input_events_t* list, uint32_t index) {
        return &HeaderOf(static_cast<const EventList*>(list->ctx)->events[index]);
    };
    return input;
}

clap_output_events_t EventSink::Output() {
    return {this, [](const clap_output_events_t* list, const clap_event_header_t* event) {
                return static_cast<EventSink*>(list->ctx)->Take(*event);
            }};
}

bool EventSink::Take(const clap_event_header_t& event) {
    if (event.size < sizeof event)
        problem = "An event that was given out is smaller than its header.";
    else if (event.time < last || (event.time >= frames && event.time != 0))
        problem = "Events that were given out are not in order, or behind the buffer's end.";
    else if (event.space_id == CLAP_CORE_EVENT_SPACE_ID && event.type == CLAP_EVENT_PARAM_VALUE &&
             !std::isfinite(reinterpret_cast<const clap_event_param_value_t&>(event).value))
        problem = "A value that was given out is no number.";
    last = event.time;
    return true;
}

}  // namespace Quorvan::ClapHost
