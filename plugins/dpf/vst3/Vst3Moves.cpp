#include "plugins/dpf/vst3/Vst3Moves.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace Quorvan::Plugins {

namespace {

uint8_t SevenBits(double value) {
    return static_cast<uint8_t>(std::lround(std::clamp(value, 0.0, 1.0) * 127.0));
}

/// By their frames, those of one frame as they came.
template <class Moves>
void Sort(Moves& moves) {
    std::sort(moves.begin(), moves.end(), [](const auto& a, const auto& b) {
        return a.frame != b.frame ? a.frame < b.frame : a.order < b.order;
    });
}

/// The first move at a frame or behind it.
template <class Moves>
auto From(const Moves& moves, int32_t frame) {
    return std::lower_bound(moves.begin(), moves.end(), frame,
                            [](const auto& move, int32_t at) { return move.frame < at; });
}

// Both kinds of objects live as long as the moves do, and are the host's in no other way.
v3_result NoInterface(void*, const v3_tuid, void** object) {
    *object = nullptr;
    return V3_NO_INTERFACE;
}
uint32_t CountOne(void*) { return 1; }

}  // namespace

double RestOfParameter(v3_param_id id) {
    return id == Vst3Moves::kFirstMidiParameter + 129 ? 0.5 : 0.0;
}

std::array<uint8_t, 3> MidiOfParameter(v3_param_id id, double value) {
    const v3_param_id number = id - Vst3Moves::kFirstMidiParameter;
    if (number < 128)
        return {0xB0, static_cast<uint8_t>(number), SevenBits(value)};
    if (number == 128)
        return {0xD0, SevenBits(value), 0};
    const auto bend = static_cast<uint32_t>(std::lround(std::clamp(value, 0.0, 1.0) * 16383.0));
    return {0xE0, static_cast<uint8_t>(bend & 127), static_cast<uint8_t>(bend >> 7)};
}

const v3_param_value_queue_cpp Vst3Moves::kQueueFunctions = [] {
    v3_param_value_queue_cpp functions;
    functions.query_interface = NoInterface;
    functions.ref = functions.unref = CountOne;
    functions.queue.get_param_id = [](void* self) { return static_cast<Queue*>(self)->id; };
    functions.queue.get_point_count = [](void*) -> int32_t { return 1; };
    functions.queue.get_point = [](void* self, int32_t index, int32_t* frame,
                                   double* value) -> v3_result {
        *frame = 0;
        *value = static_cast<Queue*>(self)->value;
        return index == 0 ? V3_OK : V3_INVALID_ARG;
    };
    functions.queue.add_point = [](void*, int32_t, double, int32_t* index) -> v3_result {
        *index = 0;
        return V3_OK;
    };
    return functions;
}();

const v3_param_changes_cpp Vst3Moves::kChangesFunctions = [] {
    v3_param_changes_cpp functions;
    functions.query_interface = NoInterface;
    functions.ref = functions.unref = CountOne;
    functions.changes.get_param_count = [](void* self) {
        return static_cast<int32_t>(static_cast<Changes*>(self)->queues->size());
    };
    functions.changes.get_param_data = [](void* self, int32_t index) {
        std::vector<Queue>& queues = *static_cast<Changes*>(self)->queues;
        void* const queue = &queues[static_cast<size_t>(index)];
        return static_cast<v3_param_value_queue**>(queue);
    };
    functions.changes.add_param_data = [](void* self, v3_param_id*, int32_t* index) {
        *index = 0;
        void* const queue = static_cast<Changes*>(self)->queues->data();
        return static_cast<v3_param_value_queue**>(queue);
    };
    return functions;
}();

v3_param_changes** Vst3Moves::Face(Changes& changes) {
    void* const object = &changes;
    return static_cast<v3_param_changes**>(object);
}

Vst3Moves::Vst3Moves()
    : none(1, Queue{&kQueueFunctions, 0, 0.0}),
      changes{&kChangesFunctions, &queues},
      nobody{&kChangesFunctions, &none} {
    points.reserve(kMost);
    queues.reserve(kMost);
    midi.reserve(kMost);
    part.reserve(kMost);
    for (v3_param_id number = 0; number < kMidiParameters; ++number)
        told[number] = RestOfParameter(kFirstMidiParameter + number);
}

void Vst3Moves::AddMidi(int32_t frame, std::array<uint8_t, 3> bytes) {
    if (midi.size() < kMost)
        midi.push_back({std::clamp(frame, 0, frames), midi.size(), bytes});
}

void Vst3Moves::ReadQueue(v3_param_value_queue** queue) {
    const v3_param_id id = v3_cpp_obj(queue)->get_param_id(queue);
    const int32_t count = v3_cpp_obj(queue)->get_point_count(queue);
    for (int32_t i = 0; i < count && points.size() < kMost; ++i) {
        int32_t frame = 0;
        double value = 0.0;
        if (v3_cpp_obj(queue)->get_point(queue, i, &frame, &value) != V3_OK)
            return;
        if (id < kFirstMidiParameter)
            points.push_back({std::clamp(frame, 0, frames), points.size(), id, value});
        else if (id < kFirstMidiParameter + kMidiParameters &&
                 std::exchange(told[id - kFirstMidiParameter], value) != value)
            AddMidi(frame, MidiOfParameter(id, value));
    }
}

void Vst3Moves::ReadEvent(const v3_event& event) {
    const auto status = [](int kind, int16_t channel) {
        return static_cast<uint8_t>(kind | (channel & 15));
    };
    const auto key = [](int16_t pitch) { return static_cast<uint8_t>(pitch & 127); };
    if (event.type == V3_EVENT_NOTE_ON) {
        // A note-on of no velocity would be a note-off; this one is only soft.
        const uint8_t velocity = std::max<uint8_t>(SevenBits(event.note_on.velocity), 1);
        AddMidi(event.sample_offset,
                {status(0x90, event.note_on.channel), key(event.note_on.pitch), velocity});
    } else if (event.type == V3_EVENT_NOTE_OFF) {
        AddMidi(event.sample_offset,
                {status(0x80, event.note_off.channel), key(event.note_off.pitch),
                 SevenBits(event.note_off.velocity)});
    }
}

void Vst3Moves::Forget() {
    const auto keep = [this](auto& moves) {
        moves.erase(moves.begin(), From(moves, frames));
        for (size_t i = 0; i < moves.size(); ++i) {
            moves[i].frame = 0;
            moves[i].order = i;
        }
    };
    keep(points);
    keep(midi);
}

void Vst3Moves::Gather(const v3_process_data& data) {
    Forget();
    frames = data.nframes;
    if (v3_param_changes** const all = data.input_params) {
        const int32_t count = v3_cpp_obj(all)->get_param_count(all);
        for (int32_t i = 0; i < count; ++i)
            if (v3_param_value_queue** const queue = v3_cpp_obj(all)->get_param_data(all, i))
                ReadQueue(queue);
    }
    if (v3_event_list** const events = data.input_events) {
        const auto count = static_cast<int32_t>(v3_cpp_obj(events)->get_event_count(events));
        v3_event event;
        for (int32_t i = 0; i < count && midi.size() < kMost; ++i)
            if (v3_cpp_obj(events)->get_event(events, i, &event) == V3_OK)
                ReadEvent(event);
    }
    Sort(points);
    Sort(midi);
}

int32_t Vst3Moves::NextCut(int32_t frame) const {
    const auto next = From(points, frame + 1);
    return next != points.end() ? next->frame : frames;
}

v3_param_changes** Vst3Moves::At(int32_t frame) {
    queues.clear();
    for (auto point = From(points, frame); point != From(points, frame + 1); ++point)
        queues.push_back({&kQueueFunctions, point->id, point->value});
    return Face(changes);
}

std::span<const Host::InstrumentEvent> Vst3Moves::Midi(int32_t from, int32_t to) {
    part.clear();
    for (auto message = From(midi, from); message != From(midi, to); ++message) {
        Host::InstrumentEvent event{.frame = static_cast<uint32_t>(message->frame - from),
                                    .kind = Host::InstrumentEvent::Kind::Midi};
        event.midi = message->bytes;
        part.push_back(event);
    }
    return part;
}

}  // namespace Quorvan::Plugins
