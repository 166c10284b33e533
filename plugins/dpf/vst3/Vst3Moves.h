#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "host/instrument/InstrumentEvent.h"
#include "travesty/audio_processor.h"

namespace Quorvan::Plugins {

/// What a VST3 host moves within one buffer, in order of its frames: points of parameters, which
/// the framework gets one frame at a time, and MIDI, which hosts tell as events and as parameters
/// from kFirstMidiParameter on. What stands at a buffer's end belongs to the next one. Of more than
/// kMost in a buffer the rest is left out.
///
/// Threads  audio thread; neither allocates nor waits.
class Vst3Moves {
public:
    static constexpr size_t kMost = 4096;
    static constexpr v3_param_id kFirstMidiParameter = 0x10000;
    /// 128 controllers, channel pressure and pitch bend, in this order.
    static constexpr v3_param_id kMidiParameters = 130;

    Vst3Moves();
    Vst3Moves(const Vst3Moves&) = delete;
    Vst3Moves& operator=(const Vst3Moves&) = delete;

    void Gather(const v3_process_data& data);
    /// The first frame behind this one at which a parameter moves, else the buffer's end.
    int32_t NextCut(int32_t frame) const;
    /// The parameters' moves at a frame.
    v3_param_changes** At(int32_t frame);
    /// MIDI from a frame on up to another, counted from the first of both.
    std::span<const Host::InstrumentEvent> Midi(int32_t from, int32_t to);
    /// For a host that does not want to hear of the plug-in's own moves.
    v3_param_changes** Nobody() { return Face(nobody); }

private:
    struct Point {
        int32_t frame;
        size_t order;
        v3_param_id id;
        double value;
    };
    struct Message {
        int32_t frame;
        size_t order;
        std::array<uint8_t, 3> bytes;
    };
    struct Queue {
        const v3_param_value_queue_cpp* functions;
        v3_param_id id;
        double value;
    };
    struct Changes {
        const v3_param_changes_cpp* functions;
        std::vector<Queue>* queues;
    };

    static v3_param_changes** Face(Changes& changes);
    static const v3_param_value_queue_cpp kQueueFunctions;
    static const v3_param_changes_cpp kChangesFunctions;

    void ReadQueue(v3_param_value_queue** queue);
    void ReadEvent(const v3_event& event);
    void AddMidi(int32_t frame, std::array<uint8_t, 3> bytes);
    /// Leaves what is still to come, from now on at frame 0.
    void Forget();

    int32_t frames = 0;
    /// What the hidden parameters were told last: hosts tell all of them when they begin.
    std::array<double, kMidiParameters> told{};
    std::vector<Point> points;
    std::vector<Message> midi;
    std::vector<Queue> queues, none;  ///< of one frame; a place to throw away to
    std::vector<Host::InstrumentEvent> part;
    Changes changes, nobody;
};

/// Where a hidden parameter stands at first, 0 to 1.
double RestOfParameter(v3_param_id id);
/// The MIDI message of a hidden parameter at a place of 0 to 1, on the first channel.
std::array<uint8_t, 3> MidiOfParameter(v3_param_id id, double value);

}  // namespace Quorvan::Plugins
