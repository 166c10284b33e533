#pragma once

#include <algorithm>
#include <map>
#include <string>
#include <tuple>
#include <vector>

#include "plugins/claphost/Beside.h"
#include "travesty/audio_processor.h"
#include "travesty/component.h"
#include "travesty/edit_controller.h"
#include "travesty/factory.h"
#include "travesty/host.h"
#include "travesty/message.h"

namespace Quorvan::test {

inline v3_result No(void*, const v3_tuid, void**) { return V3_NO_INTERFACE; }
inline uint32_t One(void*) { return 1; }

/// A state as a host keeps it.
struct Stream {
    struct Functions : v3_funknown {
        v3_bstream stream;
    };
    static const Functions kFunctions;
    static Stream& Of(void* self) { return *static_cast<Stream*>(self); }
    const void* functions = &kFunctions;
    std::string bytes;
    size_t at = 0;
};
inline const Stream::Functions Stream::kFunctions{
    {No, One, One},
    {[](void* self, void* to, int32_t most, int32_t* count) -> v3_result {
         const std::string part = Of(self).bytes.substr(Of(self).at, static_cast<size_t>(most));
         Of(self).at += part.copy(static_cast<char*>(to), part.size());
         *count = static_cast<int32_t>(part.size());
         return V3_OK;
     },
     [](void* self, void* from, int32_t size, int32_t* count) -> v3_result {
         Of(self).bytes.append(static_cast<char*>(from), static_cast<size_t>(size));
         *count = size;
         return V3_OK;
     },
     nullptr, nullptr}};

/// The moves of one parameter, and the list that holds them.
struct Moves {
    struct List {
        const void* functions;
        Moves* owner;
    };
    static const v3_param_value_queue_cpp kQueue;
    static const v3_param_changes_cpp kList;
    static Moves& Of(void* self) { return *static_cast<Moves*>(self); }
    const void* functions = &kQueue;
    List list{&kList, this};
    v3_param_id id = 0;
    std::vector<std::pair<int32_t, double>> points;
};
inline const v3_param_value_queue_cpp Moves::kQueue{
    {No, One, One},
    {[](void* self) { return Of(self).id; },
     [](void* self) { return static_cast<int32_t>(Of(self).points.size()); },
     [](void* self, int32_t index, int32_t* frame, double* value) -> v3_result {
         std::tie(*frame, *value) = Of(self).points[static_cast<size_t>(index)];
         return V3_OK;
     },
     nullptr}};
inline const v3_param_changes_cpp Moves::kList{
    {No, One, One},
    {[](void*) { return 1; },
     [](void* self, int32_t) {
         void* const queue = static_cast<List*>(self)->owner;
         return static_cast<v3_param_value_queue**>(queue);
     },
     nullptr}};

template <class Face>
Face** As(void* object) {
    return static_cast<Face**>(object);
}

/// What a window and its processor tell each other: numbers and texts under names.
struct Message {
    struct Attributes {
        const void* functions;
        Message* owner;
    };
    static Message& Of(void* self) { return *static_cast<Attributes*>(self)->owner; }
    static const v3_message_cpp kMessage;
    static const v3_attribute_list_cpp kAttributes;
    const void* functions = &kMessage;
    Attributes attributes{&kAttributes, this};
    std::string id;
    std::map<std::string, int64_t> whole;
    std::map<std::string, double> real;
    std::map<std::string, std::vector<int16_t>> texts;  ///< each with its end
    template <auto Kept, class Value>
    static v3_result Set(void* self, const char* name, Value value) {
        (Of(self).*Kept)[name] = value;
        return V3_OK;
    }
    template <auto Kept, class Value>
    static v3_result Get(void* self, const char* name, Value* value) {
        const auto found = (Of(self).*Kept).find(name);
        const bool isThere = found != (Of(self).*Kept).end();
        *value = isThere ? found->second : Value{};
        return isThere ? V3_OK : V3_INVALID_ARG;
    }
};
inline const v3_message_cpp Message::kMessage{
    {No, One,
     [](void* self) {
         delete static_cast<Message*>(self);
         return 0u;
     }},
    {[](void* self) { return static_cast<Message*>(self)->id.c_str(); },
     [](void* self, const char* name) { static_cast<Message*>(self)->id = name; },
     [](void* self) { return As<v3_attribute_list>(&static_cast<Message*>(self)->attributes); }}};
inline const v3_attribute_list_cpp Message::kAttributes{
    {No, One, One},
    {Message::Set<&Message::whole, int64_t>, Message::Get<&Message::whole, int64_t>,
     Message::Set<&Message::real, double>, Message::Get<&Message::real, double>,
     [](void* self, const char* name, const int16_t* value) -> v3_result {
         Of(self).texts[name] = {value, std::find(value, value + 4096, 0) + 1};
         return V3_OK;
     },
     [](void* self, const char* name, int16_t* value, uint32_t bytes) -> v3_result {
         const std::vector<int16_t>& kept = Of(self).texts[name];
         std::copy_n(kept.begin(), std::min(kept.size(), size_t{bytes / 2}), value);
         return kept.empty() ? V3_INVALID_ARG : V3_OK;
     },
     nullptr, nullptr}};

/// A host application, whom plug-ins ask for messages.
inline const v3_host_application_cpp kApplication{
    {[](void* self, const v3_tuid iid, void** object) -> v3_result {
         *object = v3_tuid_match(iid, v3_host_application_iid) ? self : nullptr;
         return *object == nullptr ? V3_NO_INTERFACE : V3_OK;
     },
     One, One},
    {nullptr, [](void*, v3_tuid, v3_tuid, void** object) -> v3_result {
         *object = new Message;
         return V3_OK;
     }}};

/// An active instance at 48000 Hz.
struct Vst3 {
    explicit Vst3(v3_speaker_arrangement input = 3, int32_t size = V3_SAMPLE_32)
        : sampleSize(size), mainChannels(input == 3 ? 2 : 1) {
        auto** const factory = As<v3_plugin_factory>(Symbol<void* (*)()>("GetPluginFactory")());
        v3_class_info info{};
        v3_cpp_obj(factory)->get_class_info(factory, 0, &info);
        v3_cpp_obj(factory)->create_instance(factory, info.class_id, v3_component_iid,
                                             reinterpret_cast<void**>(&component));
        v3_cpp_obj_initialize(component, As<v3_funknown>(&application));
        v3_cpp_obj_query_interface(component, v3_audio_processor_iid, &processor);
        v3_cpp_obj_query_interface(component, v3_edit_controller_iid, &controller);
        v3_speaker_arrangement in[2]{input, 3}, out = 3, told = 0;
        EXPECT_EQ(v3_cpp_obj(processor)->set_bus_arrangements(processor, in, 2, &out, 1), V3_OK);
        v3_cpp_obj(processor)->get_bus_arrangement(processor, V3_INPUT, 0, &told);
        EXPECT_EQ(told, input);
        for (int32_t bus = 0; bus < 2; ++bus)
            v3_cpp_obj(component)->activate_bus(component, V3_AUDIO, V3_INPUT, bus, 1);
        v3_process_setup setup{V3_REALTIME, size, kMost, 48000.0};
        EXPECT_EQ(v3_cpp_obj(processor)->setup_processing(processor, &setup), V3_OK);
        v3_cpp_obj(component)->set_active(component, 1);
        v3_cpp_obj_unref(factory);
    }
    ~Vst3() {
        v3_cpp_obj(component)->set_active(component, 0);
        v3_cpp_obj_unref(controller);
        v3_cpp_obj_unref(processor);
        v3_cpp_obj_terminate(component);
        v3_cpp_obj_unref(component);
    }

    /// Channels from frame 0 on: in, side-chain, out.
    void Run(int32_t frames, Moves* moves = nullptr) {
        void* all[6];
        for (size_t c = 0; c < 6; ++c)
            all[c] = sampleSize == V3_SAMPLE_64 ? static_cast<void*>(doubles[c]) : floats[c];
        v3_audio_bus_buffers in[2]{{mainChannels, 0, {reinterpret_cast<float**>(all)}},
                                   {2, 0, {reinterpret_cast<float**>(all + 2)}}};
        v3_audio_bus_buffers out{2, 0, {reinterpret_cast<float**>(all + 4)}};
        auto** const changes = moves == nullptr ? nullptr : As<v3_param_changes>(&moves->list);
        v3_process_data data{V3_REALTIME, sampleSize, frames,  2,       1,       in,
                             &out,        changes,    nullptr, nullptr, nullptr, nullptr};
        const ClapHost::Trap trap;
        v3_cpp_obj(processor)->process(processor, &data);
    }
    std::string Save() {
        Stream stream;
        v3_cpp_obj(component)->get_state(component, As<v3_bstream>(&stream));
        return stream.bytes;
    }
    void Restore(const std::string& bytes) {
        Stream stream;
        stream.bytes = bytes;
        v3_cpp_obj(component)->set_state(component, As<v3_bstream>(&stream));
    }
    /// The number of a parameter by its name.
    v3_param_id Find(const std::string& name) const {
        v3_param_info info{};
        for (int32_t i = 0;
             v3_cpp_obj(controller)->get_parameter_info(controller, i, &info) == V3_OK; ++i)
            if (std::equal(name.begin(), name.end(), info.title) && info.title[name.size()] == 0)
                return info.param_id;
        ADD_FAILURE() << name;
        return 0;
    }
    double Place(v3_param_id id) {
        return v3_cpp_obj(controller)->get_parameter_normalised(controller, id);
    }

    const void* application = &kApplication;
    static constexpr int32_t kMost = 2048;
    float floats[6][kMost]{};
    double doubles[6][kMost]{};
    int32_t sampleSize, mainChannels;
    v3_component** component = nullptr;
    v3_audio_processor** processor = nullptr;
    v3_edit_controller** controller = nullptr;
};

}  // namespace Quorvan::test
