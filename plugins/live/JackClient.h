#pragma once

#include <jack/jack.h>

#include <atomic>
#include <memory>
#include <string>
#include <vector>

#include "host/instrument/Instrument.h"
#include "plugins/shared/SteadyPlace.h"

namespace Quorvan::Live {

/// An instrument between the ports of a JACK server: "in_l" and "in_r", "side_l" and "side_r",
/// "out_l" and "out_r", "midi". JACK's transport drives the song where it tells bars and beats;
/// otherwise MIDI clock or the instrument's own song does.
///
/// Threads  made, looked at and destroyed on one thread; JACK calls back on its own.
class JackClient {
public:
    /// Null where no server runs, or where refused is set: one runs that does not take the client.
    /// Nothing is started. Throws std::invalid_argument for a rate that nothing can run at.
    static std::unique_ptr<JackClient> Open(Host::Instrument& played, const std::string& name,
                                            bool& refused);
    ~JackClient();
    JackClient(const JackClient&) = delete;
    JackClient& operator=(const JackClient&) = delete;

    /// Wires inputs to the first capture ports and outputs to the first playback ports of the
    /// machine, and every MIDI device to the MIDI port. Answers how many wires there are.
    int ConnectToMachine();
    /// The server has gone, or has cut this client off.
    bool IsLost() const { return lost.load(); }
    /// The server runs at another rate than the instrument: open the client anew.
    bool IsOutOfRate() const { return otherRate.load(); }
    double Rate() const;
    uint32_t BufferFrames() const;
    std::string Name() const;

private:
    JackClient(Host::Instrument& played, jack_client_t* opened);
    bool Start();
    int Process(jack_nframes_t frames);
    void ReadMidi(jack_nframes_t frames);
    std::optional<Host::Transport> Place(jack_nframes_t frames);
    static void TellLatency(jack_latency_callback_mode_t mode, void* self);

    Host::Instrument& instrument;
    jack_client_t* client;
    jack_port_t* inputs[2]{};
    jack_port_t* sides[2]{};
    jack_port_t* outputs[2]{};
    jack_port_t* midi = nullptr;
    std::vector<Host::InstrumentEvent> events;
    Plugins::SteadyPlace steady;
    Host::ControlSink nobody;
    std::atomic<bool> lost{false}, otherRate{false};
};

}  // namespace Quorvan::Live
