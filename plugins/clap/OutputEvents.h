#pragma once

#include "clap/events.h"
#include "host/instrument/Instrument.h"

namespace Quorvan::Clap {

/// Tells the host what the instrument moves by itself.
class OutputEvents final : public Host::ControlSink {
public:
    OutputEvents(const Host::Instrument& toldInstrument, const clap_output_events_t* hostList)
        : instrument(toldInstrument), list(hostList) {}

    void OnControlMove(uint32_t frame, uint32_t id, double position) override;
    void OnGesture(uint32_t id, bool begins) override;
    /// Added to the frames of what comes.
    void ShiftBy(uint32_t frames) { shift = frames; }

private:
    const Host::Instrument& instrument;
    const clap_output_events_t* list;
    uint32_t shift = 0;
};

}  // namespace Quorvan::Clap
