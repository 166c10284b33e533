#pragma once

#include <optional>
#include <vector>

#include "clap/events.h"
#include "host/instrument/Instrument.h"

namespace Quorvan::Clap {

/// A host's events as the instrument takes them. Events of foreign namespaces and of kinds that the
/// plug-in does not know are left out.
class EventReader {
public:
    explicit EventReader(const Host::Instrument& readInstrument) : instrument(readInstrument) {
        events.reserve(kMost);
    }

    /// Calls run(events) with the events of list in order, in as many pieces as its memory asks
    /// for; each piece but the last ends at a frame that has come whole. Neither allocates nor
    /// waits.
    template <class Run>
    void Read(const clap_input_events_t* list, Run&& run) {
        events.clear();
        const uint32_t count = list != nullptr ? list->size(list) : 0;
        for (uint32_t i = 0; i < count; ++i) {
            if (events.size() == kMost) {
                run(events, false);
                events.clear();
            }
            if (const clap_event_header_t* const header = list->get(list, i))
                Add(*header);
        }
        run(events, true);
    }

    /// What the host says of the song; nothing where it says nothing. What it leaves out stays as
    /// it is in the instrument.
    std::optional<Host::Transport> TransportOf(const clap_event_transport_t* event) const;

private:
    static constexpr size_t kMost = 4096;

    void Add(const clap_event_header_t& header);
    void AddMidi(uint32_t frame, uint8_t status, uint8_t first, uint8_t second);

    const Host::Instrument& instrument;
    std::vector<Host::InstrumentEvent> events;
};

}  // namespace Quorvan::Clap
