#pragma once

#include <variant>
#include <vector>

#include "clap/events.h"

namespace Quorvan::ClapHost {

using Event = std::variant<clap_event_param_value_t, clap_event_param_mod_t, clap_event_note_t,
                           clap_event_midi_t, clap_event_transport_t>;

inline clap_event_header_t& HeaderOf(Event& event) {
    return std::visit([](auto& one) -> clap_event_header_t& { return one.header; }, event);
}
inline const clap_event_header_t& HeaderOf(const Event& event) {
    return HeaderOf(const_cast<Event&>(event));
}

template <class Kind>
Kind Blank(uint32_t frame, uint16_t type) {
    Kind event{};
    event.header = {sizeof event, frame, CLAP_CORE_EVENT_SPACE_ID, type, 0};
    return event;
}

Event ValueAt(uint32_t frame, clap_id id, double value, void* cookie = nullptr);
Event ModulationAt(uint32_t frame, clap_id id, double amount, int32_t note = -1);
Event NoteAt(uint32_t frame, uint16_t type, int channel, int key, int32_t note = -1);
Event MidiAt(uint32_t frame, uint8_t status, uint8_t first, uint8_t second);
clap_event_transport_t SongAt(uint32_t frame, double tempo, double beat, bool playing);

/// Events of a host, in order of their frames.
class EventList {
public:
    EventList(std::vector<Event> all = {}) : events(std::move(all)) {}

    void Add(Event event) { events.push_back(event); }
    size_t Size() const { return events.size(); }
    /// Those of frames from..end - 1, counted from there.
    EventList Between(uint32_t from, uint32_t end) const;
    /// The same in a namespace that no plug-in knows.
    EventList Foreign() const;
    /// For one call; the list has to outlive it.
    clap_input_events_t Input() const;

private:
    std::vector<Event> events;
};

/// What a plug-in gives out; checks it, and keeps nothing, so that nothing is allocated.
class EventSink {
public:
    explicit EventSink(uint32_t callFrames) : frames(callFrames) {}
    clap_output_events_t Output();
    /// The first thing wrong, or null.
    const char* Problem() const { return problem; }

private:
    bool Take(const clap_event_header_t& event);

    uint32_t frames, last = 0;
    const char* problem = nullptr;
};

}  // namespace Quorvan::ClapHost
