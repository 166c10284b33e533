// Runs the VST3 with the trap set, states coming and going beside it: vst3host Tesserae.so

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <memory>
#include <random>
#include <thread>
#include <tuple>

#include "plugins/claphost/Trap.h"
#include "travesty/audio_processor.h"
#include "travesty/component.h"
#include "travesty/edit_controller.h"
#include "travesty/factory.h"

namespace Quorvan::test {

static void* library = nullptr;

v3_result No(void*, const v3_tuid, void**) { return V3_NO_INTERFACE; }
uint32_t One(void*) { return 1; }

/// A state as a host keeps it.
struct Stream {
    struct Functions : v3_funknown {
        v3_bstream stream;
    };
    static v3_result Read(void* self, void* to, int32_t most, int32_t* count) {
        auto& me = *static_cast<Stream*>(self);
        const auto size = static_cast<size_t>(most);
        *count = static_cast<int32_t>(me.bytes.copy(static_cast<char*>(to), size, me.at));
        me.at += static_cast<size_t>(*count);
        return V3_OK;
    }
    static v3_result Write(void* self, void* from, int32_t size, int32_t* count) {
        static_cast<Stream*>(self)->bytes.append(static_cast<char*>(from),
                                                 static_cast<size_t>(size));
        *count = size;
        return V3_OK;
    }
    static inline const Functions kFunctions{{No, One, One}, {Read, Write, nullptr, nullptr}};
    const void* functions = &kFunctions;
    std::string bytes;
    size_t at = 0;
};

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
const v3_param_value_queue_cpp Moves::kQueue{
    {No, One, One},
    {[](void* self) { return Of(self).id; },
     [](void* self) { return static_cast<int32_t>(Of(self).points.size()); },
     [](void* self, int32_t index, int32_t* frame, double* value) -> v3_result {
         std::tie(*frame, *value) = Of(self).points[static_cast<size_t>(index)];
         return V3_OK;
     },
     nullptr}};
const v3_param_changes_cpp Moves::kList{{No, One, One},
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

/// An active instance at 48000 Hz.
struct Vst3 {
    explicit Vst3(v3_speaker_arrangement input = 3, int32_t size = V3_SAMPLE_32)
        : sampleSize(size) {
        auto* const get = reinterpret_cast<void* (*)()>(dlsym(library, "GetPluginFactory"));
        auto** const factory = As<v3_plugin_factory>(get());
        v3_class_info info{};
        v3_cpp_obj(factory)->get_class_info(factory, 0, &info);
        void* made = nullptr;
        v3_cpp_obj(factory)->create_instance(factory, info.class_id, v3_component_iid, &made);
        component = As<v3_component>(made);
        v3_cpp_obj_initialize(component, nullptr);
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
        mainChannels = input == 3 ? 2 : 1;
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
        v3_process_data data{
            V3_REALTIME, sampleSize,
            frames,      2,
            1,           in,
            &out,        moves == nullptr ? nullptr : As<v3_param_changes>(&moves->list),
            nullptr,     nullptr,
            nullptr,     nullptr};
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
        const int32_t count = v3_cpp_obj(controller)->get_parameter_count(controller);
        for (int32_t i = 0; i < count; ++i) {
            v3_cpp_obj(controller)->get_parameter_info(controller, i, &info);
            if (std::equal(name.begin(), name.end(), info.title) && info.title[name.size()] == 0)
                return info.param_id;
        }
        ADD_FAILURE() << name;
        return 0;
    }
    double Place(v3_param_id id) {
        return v3_cpp_obj(controller)->get_parameter_normalised(controller, id);
    }

    static constexpr int32_t kMost = 2048;
    float floats[6][kMost]{};
    double doubles[6][kMost]{};
    int32_t sampleSize, mainChannels = 2;
    v3_component** component = nullptr;
    v3_audio_processor** processor = nullptr;
    v3_edit_controller** controller = nullptr;
};

/// A state with a seed, so that chance repeats, and other settings.
std::string With(std::string state, const std::string& entries, const std::string& settings) {
    const size_t at = state.find("\"parameters\"");
    EXPECT_NE(at, std::string::npos) << state;
    return state.insert(state.find('}', at), "," + settings).insert(at, entries + ",\n ");
}

TEST(Vst3Test, ProcessNeitherAllocatesNorLocksAndStatesComeBackToTheByte) {
    Vst3 vst3, second;
    const std::string plain = vst3.Save();
    const std::string seeded = With(plain, "\"seed\": 7", "\"Feedback\": 0.5");
    std::atomic<bool> ends{false};
    std::thread other([&] {
        for (; !ends; vst3.Restore(plain)) {
            vst3.Restore(seeded);
            vst3.Save();
        }
    });
    std::mt19937 random(3);
    Moves moves;
    float loudest = 0.0f;
    for (int i = 0; i < 2000; ++i) {
        const auto frames = static_cast<int32_t>(random() % (Vst3::kMost + 1));
        for (size_t n = 0; n < 4 * Vst3::kMost; ++n)
            vst3.floats[n % 4][n / 4] = static_cast<float>(random() % 2001) / 2000.0f - 0.5f;
        moves.id = i % 2 == 0 ? vst3.Find("Dry / Wet") : vst3.Find("MIDI controller 7");
        moves.points = {{0, 0.3}, {frames / 2, 0.7}, {frames + 5, 0.5}};
        vst3.Run(frames, &moves);
        for (int32_t n = 0; n < frames; ++n)
            loudest = std::max(loudest, std::abs(vst3.floats[4][n]));
    }
    ends = true;
    other.join();
    EXPECT_TRUE(loudest > 0.05f && loudest < 10.0f) << loudest;
    EXPECT_EQ(ClapHost::Trap::Caught(), 0u);
    vst3.Restore(seeded);
    const std::string saved = vst3.Save();
    second.Restore(saved);
    EXPECT_TRUE(saved != plain && second.Save() == saved);
}

/// Dry only and fully: what comes out is what went in, late by the latency.
TEST(Vst3Test, AutomationCountsAtItsFrameInAnyCutAndWidth) {
    const auto render = [](int32_t cut, int32_t size) {
        auto vst3 = std::make_unique<Vst3>(3, size);
        vst3->Restore(With(vst3->Save(), "\"seed\": 7", "\"Feedback\": 0.1"));
        Moves moves;
        moves.id = vst3->Find("Dry / Wet");
        std::vector<float> heard;
        for (int32_t frame = 0; frame < 24000; frame += cut) {
            moves.points.clear();
            for (int32_t n = 0; n < cut; ++n) {
                const float sample = std::sin(static_cast<float>(frame + n) * 0.03f) * 0.5f;
                vst3->floats[0][n] = vst3->floats[1][n] = sample;
                vst3->doubles[0][n] = vst3->doubles[1][n] = static_cast<double>(sample);
                if ((frame + n) % 3000 == 1234)
                    moves.points.emplace_back(n, (frame + n) / 3000 % 2 == 0 ? 0.1 : 0.9);
            }
            vst3->Run(cut, &moves);
            for (int32_t n = 0; n < cut; ++n)
                heard.push_back(size == V3_SAMPLE_64 ? static_cast<float>(vst3->doubles[4][n])
                                                     : vst3->floats[4][n]);
        }
        heard.resize(24000);
        return heard;
    };
    const std::vector<float> whole = render(2000, V3_SAMPLE_32);
    EXPECT_EQ(whole, render(2, V3_SAMPLE_32));
    EXPECT_EQ(whole, render(2000, V3_SAMPLE_64));
    EXPECT_GT(*std::max_element(whole.begin(), whole.end()), 0.1f);
}

TEST(Vst3Test, SideChainMonoMidiAndTailReachTheInstrument) {
    // The dry sound of one channel on both, until the follower hears the side-chain.
    Vst3 mono(V3_SPEAKER_M);
    mono.Restore(With(mono.Save(), "\"seed\": 7",
                      R"("Modulations_Dst1_Src1_Amount": 1.0,
                         "Envelope Follower Source": 1.0, "Envelope Follower Gain": 1.0)"));
    Moves moves;
    moves.id = mono.Find("Dry / Wet");
    moves.points = {{0, 0.0}};
    for (const float side : {0.0f, 0.9f}) {
        std::fill_n(mono.floats[0], Vst3::kMost, 0.25f);
        std::fill_n(mono.floats[3], Vst3::kMost, side);
        for (int i = 0; i < 20; ++i)
            mono.Run(Vst3::kMost, &moves);
        EXPECT_EQ(mono.floats[5][2000] > 0.2f, side == 0.0f) << mono.floats[5][2000];
        EXPECT_EQ(mono.floats[5][2000], mono.floats[4][2000]);
    }

    Vst3 vst3;
    const v3_param_id dryWet = vst3.Find("Dry / Wet");
    const std::string map =
        R"("midi": [{"source": "controller", "number": 7, "parameter": "Dry / Wet"}])";
    std::string state = vst3.Save();
    const std::string none = "\"midi\": []";
    ASSERT_NE(state.find(none), std::string::npos);
    vst3.Restore(state.replace(state.find(none), none.size(), map));
    moves.id = vst3.Find("MIDI controller 7");
    moves.points = {{100, 1.0}};
    vst3.Run(512, &moves);
    vst3.Run(512);
    EXPECT_EQ(vst3.Place(dryWet), 1.0);

    std::this_thread::sleep_for(std::chrono::milliseconds(700));
    const uint32_t tail = v3_cpp_obj(vst3.processor)->get_tail_samples(vst3.processor);
    EXPECT_TRUE(tail > 4800 && tail < 48000 * 60) << tail;
}

}  // namespace Quorvan::test

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    Quorvan::test::library = dlopen(argc > 1 ? argv[1] : "Tesserae.so", RTLD_NOW | RTLD_LOCAL);
    if (Quorvan::test::library == nullptr)
        return 2;
    reinterpret_cast<bool (*)(void*)>(dlsym(Quorvan::test::library, "ModuleEntry"))(nullptr);
    return RUN_ALL_TESTS();
}
