#pragma once

#include <array>
#include <cmath>
#include <vector>

#include "clap/events.h"

namespace Quorvan::ClapHost {

union Event {
    clap_event_header_t header;
    clap_event_param_value_t value;
    clap_event_param_mod_t modulation;
    clap_event_note_t note;
    clap_event_midi_t midi;
    clap_event_transport_t song;
};

template <class Kind>
clap_event_header_t Header(uint32_t frame, uint16_t type) {
    return {sizeof(Kind), frame, CLAP_CORE_EVENT_SPACE_ID, type, 0};
}
inline Event ValueAt(uint32_t frame, clap_id id, double value) {
    const auto header = Header<clap_event_param_value_t>(frame, CLAP_EVENT_PARAM_VALUE);
    return {.value = {header, id, nullptr, -1, -1, -1, -1, value}};
}
inline Event ModulationAt(uint32_t frame, clap_id id, double amount, int32_t note = -1) {
    const auto header = Header<clap_event_param_mod_t>(frame, CLAP_EVENT_PARAM_MOD);
    return {.modulation = {header, id, nullptr, note, -1, -1, -1, amount}};
}
inline Event SongAt(uint32_t frame, double tempo, double beat, bool playing) {
    clap_event_transport_t song{};
    song.header = Header<clap_event_transport_t>(frame, CLAP_EVENT_TRANSPORT);
    song.flags = CLAP_TRANSPORT_HAS_TEMPO | CLAP_TRANSPORT_HAS_BEATS_TIMELINE |
                 (playing ? static_cast<uint32_t>(CLAP_TRANSPORT_IS_PLAYING) : 0u);
    song.tempo = tempo;
    song.song_pos_beats = std::llround(beat * static_cast<double>(CLAP_BEATTIME_FACTOR));
    return {.song = song};
}

/// Events of a host, in order of their frames.
struct EventList {
    std::vector<Event> events{};

    void Add(const Event& event) { events.push_back(event); }
    /// Those of frames from..end - 1, counted from there, in any namespace.
    EventList Between(uint32_t from, uint32_t end, uint16_t space = 0) const {
        EventList part;
        for (Event event : events) {
            if (event.header.time < from || event.header.time >= end)
                continue;
            event.header.time -= from;
            event.header.space_id = space;
            part.Add(event);
        }
        return part;
    }
    /// For one call; the list has to outlive it.
    clap_input_events_t Input() const {
        using List = const clap_input_events_t*;
        clap_input_events_t input{};
        input.ctx = const_cast<EventList*>(this);
        input.size = [](List list) {
            return static_cast<uint32_t>(static_cast<EventList*>(list->ctx)->events.size());
        };
        input.get = [](List list, uint32_t index) -> const clap_event_header_t* {
            return &static_cast<EventList*>(list->ctx)->events[index].header;
        };
        return input;
    }
};

/// What a plug-in gives out; checks it, and keeps nothing, so that nothing is allocated.
struct EventSink {
    uint32_t frames, last = 0;
    bool isWrong = false;               ///< out of order, behind the buffer's end, or no value
    std::array<uint32_t, 16> counts{};  ///< of the core's types of events

    bool Take(const Event& event) {
        const uint32_t frame = event.header.time;
        isWrong =
            isWrong || frame < last || (frame >= frames && frame != 0) ||
            event.header.size < sizeof event.header ||
            (event.header.type == CLAP_EVENT_PARAM_VALUE && !std::isfinite(event.value.value));
        last = frame;
        if (event.header.type < counts.size())
            ++counts[event.header.type];
        return true;
    }
    clap_output_events_t Output() {
        return {this, [](const clap_output_events_t* list, const clap_event_header_t* event) {
                    return static_cast<EventSink*>(list->ctx)->Take(
                        *reinterpret_cast<const Event*>(event));
                }};
    }
};

}  // namespace Quorvan::ClapHost
