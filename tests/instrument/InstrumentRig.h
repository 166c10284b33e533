#pragma once

#include "host/HostRig.h"
#include "host/instrument/Instrument.h"

namespace Quorvan::test {

using Host::InstrumentEvent;

inline InstrumentEvent Midi(uint32_t frame, int status, int first = 0, int second = 0) {
    return {.frame = frame,
            .kind = InstrumentEvent::Kind::Midi,
            .midi = {static_cast<uint8_t>(status), static_cast<uint8_t>(first),
                     static_cast<uint8_t>(second)}};
}

inline InstrumentEvent ControlAt(uint32_t frame, uint32_t id, double position) {
    return {.frame = frame, .kind = InstrumentEvent::Kind::Control, .id = id, .value = position};
}

/// Notes what an instrument tells its host.
struct NotingSink : Host::ControlSink {
    std::vector<std::pair<uint32_t, double>> moves;
    int begun = 0, ended = 0;
    void OnControlMove(uint32_t, uint32_t id, double position) override {
        moves.emplace_back(id, position);
    }
    void OnGesture(uint32_t, bool begins) override { ++(begins ? begun : ended); }
};

/// An instrument with a sound that the input is heard through, and a fixed seed.
class ReadyInstrument : public Host::Instrument {
public:
    explicit ReadyInstrument(std::string_view more = {}, const Host::StreamFormat& format = {})
        : Instrument(test::Catalog()) {
        SetSeed(7);
        LoadPreset(Sound(std::string(more)));
        Activate(format);
    }
    static Host::Preset Sound(const std::string& more) {
        Host::Preset preset;
        preset.name = "Test";
        preset.parameters = AudibleSettings(more);
        return preset;
    }
    /// Events are at frames of the whole signal; nextCut gives the length of each buffer.
    StereoSignal Run(
        const StereoSignal& input, const std::vector<InstrumentEvent>& events = {},
        const std::function<size_t()>& nextCut = [] { return size_t{512}; }) {
        StereoSignal output = input;  // in place, as hosts do
        size_t done = 0, next = 0;
        while (done < input[0].size()) {
            const size_t frames = std::min(nextCut(), input[0].size() - done);
            std::vector<InstrumentEvent> now;
            for (; next < events.size() && events[next].frame < done + frames; ++next) {
                now.push_back(events[next]);
                now.back().frame -= static_cast<uint32_t>(done);
            }
            float* channels[]{output[0].data() + done, output[1].data() + done};
            Host::InstrumentBuffer buffer;
            buffer.audio = {
                .inputs = channels, .outputs = channels, .frames = static_cast<uint32_t>(frames)};
            buffer.events = now;
            buffer.transport = transport;
            Process(buffer, sink);
            done += frames;
        }
        return output;
    }
    /// Events alone.
    void Flush(const std::vector<InstrumentEvent>& events) {
        Host::InstrumentBuffer buffer;
        buffer.events = events;
        Process(buffer, sink);
    }

    NotingSink sink;
    std::optional<Host::Transport> transport;  ///< for each buffer as it is
};

}  // namespace Quorvan::test
