#include "plugins/live/JackClient.h"

#include <jack/midiport.h>

#include <algorithm>

namespace Quorvan::Live {

namespace {

constexpr size_t kMostEvents = 4096;

float* Buffer(jack_port_t* port, jack_nframes_t frames) {
    return static_cast<float*>(jack_port_get_buffer(port, frames));
}

}  // namespace

std::unique_ptr<JackClient> JackClient::Open(Host::Instrument& played, const std::string& name,
                                             bool& refused) {
    jack_status_t status{};
    jack_client_t* const opened = jack_client_open(name.c_str(), JackNoStartServer, &status);
    refused = opened == nullptr && (status & JackServerFailed) == 0;
    if (opened == nullptr)
        return nullptr;
    std::unique_ptr<JackClient> made(new JackClient(played, opened));
    return made->Start() ? std::move(made) : nullptr;
}

JackClient::JackClient(Host::Instrument& played, jack_client_t* opened)
    : instrument(played), client(opened) {
    events.reserve(kMostEvents);
}

JackClient::~JackClient() {
    jack_client_close(client);
    instrument.Deactivate();
}

bool JackClient::Start() {
    const auto open = [this](const char* name, const char* type, unsigned long flags) {
        return jack_port_register(client, name, type, flags, 0);
    };
    const char* const names[2][3]{{"in_l", "side_l", "out_l"}, {"in_r", "side_r", "out_r"}};
    for (int c = 0; c < 2; ++c) {
        inputs[c] = open(names[c][0], JACK_DEFAULT_AUDIO_TYPE, JackPortIsInput);
        sides[c] = open(names[c][1], JACK_DEFAULT_AUDIO_TYPE, JackPortIsInput);
        outputs[c] = open(names[c][2], JACK_DEFAULT_AUDIO_TYPE, JackPortIsOutput);
    }
    midi = open("midi", JACK_DEFAULT_MIDI_TYPE, JackPortIsInput);
    if (midi == nullptr || outputs[1] == nullptr)
        return false;
    Host::StreamFormat format;
    format.sampleRate = Rate();
    format.sideChainInputs = 2;
    instrument.Activate(format, instrument.Song().Tempo());

    jack_set_process_callback(
        client,
        [](jack_nframes_t frames, void* self) {
            return static_cast<JackClient*>(self)->Process(frames);
        },
        this);
    jack_on_shutdown(
        client, [](void* self) { static_cast<JackClient*>(self)->lost.store(true); }, this);
    jack_set_sample_rate_callback(
        client,
        [](jack_nframes_t rate, void* self) {
            auto* const me = static_cast<JackClient*>(self);
            me->otherRate.store(static_cast<double>(rate) != me->Rate());
            return 0;
        },
        this);
    jack_set_freewheel_callback(
        client,
        [](int on, void* self) { static_cast<JackClient*>(self)->instrument.SetOffline(on != 0); },
        this);
    jack_set_latency_callback(client, TellLatency, this);
    return jack_activate(client) == 0;
}

double JackClient::Rate() const { return static_cast<double>(jack_get_sample_rate(client)); }
uint32_t JackClient::BufferFrames() const { return jack_get_buffer_size(client); }
std::string JackClient::Name() const { return jack_get_client_name(client); }

int JackClient::ConnectToMachine() {
    int wires = 0;
    const auto list = [this](const char* type, unsigned long flags) {
        return std::unique_ptr<const char*, void (*)(const char**)>(
            jack_get_ports(client, nullptr, type, flags | JackPortIsPhysical),
            [](const char** names) { jack_free(names); });
    };
    const auto connect = [&](const char* from, const char* to) {
        wires += jack_connect(client, from, to) == 0 ? 1 : 0;
    };
    const auto captures = list(JACK_DEFAULT_AUDIO_TYPE, JackPortIsOutput);
    for (int c = 0; captures && c < 2 && captures.get()[c] != nullptr; ++c)
        connect(captures.get()[c], jack_port_name(inputs[c]));
    const auto playbacks = list(JACK_DEFAULT_AUDIO_TYPE, JackPortIsInput);
    for (int c = 0; playbacks && c < 2 && playbacks.get()[c] != nullptr; ++c)
        connect(jack_port_name(outputs[c]), playbacks.get()[c]);
    const auto devices = list(JACK_DEFAULT_MIDI_TYPE, JackPortIsOutput);
    for (int i = 0; devices && devices.get()[i] != nullptr; ++i)
        connect(devices.get()[i], jack_port_name(midi));
    return wires;
}

void JackClient::ReadMidi(jack_nframes_t frames) {
    events.clear();
    void* const buffer = jack_port_get_buffer(midi, frames);
    const uint32_t count = std::min<uint32_t>(jack_midi_get_event_count(buffer), kMostEvents);
    for (uint32_t i = 0; i < count; ++i) {
        jack_midi_event_t heard{};
        if (jack_midi_event_get(&heard, buffer, i) != 0 || heard.size == 0 || heard.size > 3)
            continue;
        Host::InstrumentEvent event;
        event.frame = heard.time;
        event.kind = Host::InstrumentEvent::Kind::Midi;
        std::copy_n(heard.buffer, heard.size, event.midi.begin());
        events.push_back(event);
    }
}

std::optional<Host::Transport> JackClient::Place(jack_nframes_t frames) {
    jack_position_t position{};
    const jack_transport_state_t state = jack_transport_query(client, &position);
    if ((position.valid & JackPositionBBT) == 0 || !(position.beat_type > 0.0f))
        return std::nullopt;
    const double beats = (position.bar_start_tick + position.tick) / position.ticks_per_beat +
                         static_cast<double>(position.beat - 1);
    // Beats are those of the time signature, eighths in 6/8; the tempo counts quarter notes.
    const Host::Transport told{position.beats_per_minute,
                               beats * 4.0 / static_cast<double>(position.beat_type),
                               state == JackTransportRolling};
    return steady.Steady(told, position.frame, frames, instrument);
}

int JackClient::Process(jack_nframes_t frames) {
    ReadMidi(frames);
    const float* const in[]{Buffer(inputs[0], frames), Buffer(inputs[1], frames)};
    const float* const side[]{Buffer(sides[0], frames), Buffer(sides[1], frames)};
    float* const out[]{Buffer(outputs[0], frames), Buffer(outputs[1], frames)};
    Host::InstrumentBuffer buffer;
    buffer.audio.inputs = in;
    buffer.audio.sideChain = side;
    buffer.audio.outputs = out;
    buffer.audio.frames = frames;
    buffer.events = events;
    buffer.transport = Place(frames);
    instrument.Process(buffer, nobody);
    return 0;
}

/// What comes in at the inputs is heard that much later at the outputs.
void JackClient::TellLatency(jack_latency_callback_mode_t mode, void* self) {
    auto& me = *static_cast<JackClient*>(self);
    const bool isCapture = mode == JackCaptureLatency;
    jack_latency_range_t sum{};
    for (jack_port_t* const port : isCapture ? me.inputs : me.outputs) {
        jack_latency_range_t range{};
        jack_port_get_latency_range(port, mode, &range);
        sum.min = std::max(sum.min, range.min);
        sum.max = std::max(sum.max, range.max);
    }
    const uint32_t own = me.instrument.LatencyFrames();
    sum.min += own;
    sum.max += own;
    for (jack_port_t* const port : isCapture ? me.outputs : me.inputs)
        jack_port_set_latency_range(port, mode, &sum);
}

}  // namespace Quorvan::Live
