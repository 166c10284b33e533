// Runs the LV2 with the trap set, states coming and going beside it: lv2host Tesserae.so

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <map>
#include <random>
#include <thread>

#include "lv2/atom.h"
#include "lv2/control-input-port-change-request.h"
#include "lv2/lv2.h"
#include "lv2/options.h"
#include "lv2/state.h"
#include "lv2/urid.h"
#include "lv2/worker.h"
#include "plugins/claphost/Trap.h"

namespace Quorvan::test {

/// An active LV2 plug-in behind the plain C interface; ports that nobody connects stay so.
struct Lv2Instance {
    explicit Lv2Instance(const char* binary) {
        auto* const find = dlsym(dlopen(binary, RTLD_NOW | RTLD_LOCAL), "lv2_descriptor");
        plugin = reinterpret_cast<LV2_Descriptor_Function>(find)(0);
        handle = plugin->instantiate(plugin, 48000.0, "", features);
        state =
            static_cast<const LV2_State_Interface*>(plugin->extension_data(LV2_STATE__interface));
        const bool isMono = std::string_view(plugin->URI).ends_with(":mono");
        uint32_t port = 0;
        for (auto& channel : audio)
            if (!isMono || &channel != &audio[1])
                Connect(port++, channel[0]);
        plugin->connect_port(handle, port, &eventsIn);
        plugin->connect_port(handle, port + 1, eventsOut.data());
        dryWetPort = port + 4;  // behind the latency and "enabled"
        plugin->activate(handle);
    }
    ~Lv2Instance() {
        plugin->deactivate(handle);
        plugin->cleanup(handle);
    }

    void Connect(uint32_t port, float& value) { plugin->connect_port(handle, port, &value); }
    /// At most kMost frames, with the trap set.
    void Run(uint32_t frames) {
        *reinterpret_cast<LV2_Atom*>(eventsOut.data()) = {8000, 0};
        const ClapHost::Trap trap;
        plugin->run(handle, frames);
    }
    std::string Save() {
        std::string text;
        const auto store = [](void* kept, uint32_t, const void* value, size_t size, uint32_t,
                              uint32_t) {
            static_cast<std::string*>(kept)->assign(static_cast<const char*>(value), size);
            return LV2_STATE_SUCCESS;
        };
        state->save(handle, store, &text, 0, features);
        return text;
    }
    void Restore(std::string text) {
        const auto retrieve = [](void* held, uint32_t, size_t* size, uint32_t* type, uint32_t*) {
            *size = static_cast<std::string*>(held)->size();
            *type = Map(nullptr, LV2_ATOM__String);
            return static_cast<const void*>(static_cast<std::string*>(held)->c_str());
        };
        state->restore(handle, retrieve, &text, 0, features);
    }
    static LV2_URID Map(void*, const char* uri) {
        static std::map<std::string, LV2_URID> numbers;
        return numbers.try_emplace(uri, static_cast<LV2_URID>(numbers.size() + 1)).first->second;
    }

    uint32_t dryWetPort;
    static constexpr uint32_t kMost = 512;
    float audio[6][kMost]{};  ///< in, side-chain, out
    LV2_URID_Map map{nullptr, Map};
    LV2_Worker_Schedule schedule{
        nullptr, [](void*, uint32_t, const void*) { return LV2_WORKER_ERR_NO_SPACE; }};
    LV2_Options_Option options[1]{};
    std::array<float, 100> asked{};  ///< values that the plug-in wants its ports to have
    static LV2_ControlInputPort_Change_Status Ask(void* values, uint32_t port, float value) {
        static_cast<float*>(values)[port] = value;
        return LV2_CONTROL_INPUT_PORT_CHANGE_SUCCESS;
    }
    LV2_ControlInputPort_Change_Request request{asked.data(), Ask};
    LV2_Feature all[4]{{LV2_URID__map, &map},
                       {LV2_WORKER__schedule, &schedule},
                       {LV2_OPTIONS__options, options},
                       {LV2_CONTROL_INPUT_PORT_CHANGE_REQUEST_URI, &request}};
    const LV2_Feature* features[5]{&all[0], &all[1], &all[2], &all[3], nullptr};
    LV2_Atom_Sequence eventsIn{{sizeof(LV2_Atom_Sequence_Body), 0}, {0, 0}};
    std::vector<uint64_t> eventsOut = std::vector<uint64_t>(1024);
    const LV2_Descriptor* plugin;
    LV2_Handle handle;
    const LV2_State_Interface* state;
};

static const char* binary = nullptr;

TEST(Lv2Test, RunNeitherAllocatesNorLocksAndStatesComeBackToTheByte) {
    Lv2Instance lv2(binary), second(binary);
    const std::string plain = lv2.Save();
    std::string seeded = plain;
    seeded.insert(seeded.find("\"parameters\""), "\"seed\": 7,\n \"preset\": \"Other\",\n ");
    std::atomic<bool> ends{false};
    std::thread other([&] {
        for (; !ends; lv2.Restore(plain)) {
            lv2.Restore(seeded);
            lv2.Save();
        }
    });
    std::mt19937 random(3);
    float dryWet = 50.0f, loudest = 0.0f;
    lv2.Connect(lv2.dryWetPort, dryWet);
    for (int i = 0; i < 3000; ++i) {
        const uint32_t frames = static_cast<uint32_t>(random()) % (Lv2Instance::kMost + 1);
        for (uint32_t n = 0; n < 2 * frames; ++n)
            lv2.audio[n % 2][n / 2] = static_cast<float>(random() % 2001) / 2000.0f - 0.5f;
        dryWet = static_cast<float>(random() % 101);
        lv2.Run(frames);
        for (uint32_t n = 0; n < frames; ++n)
            loudest = std::isfinite(lv2.audio[4][n]) ? std::max(loudest, lv2.audio[4][n]) : 1e9f;
    }
    ends = true;
    other.join();
    EXPECT_TRUE(loudest > 0.05f && loudest < 10.0f) << loudest;
    EXPECT_EQ(ClapHost::Trap::Caught(), 0u);
    lv2.Restore(seeded);
    const std::string saved = lv2.Save();
    second.Restore(saved);
    EXPECT_TRUE(saved != plain && second.Save() == saved);
}

TEST(Lv2Test, AStateWinsOverPortsThatDidNotFollowIt) {
    Lv2Instance lv2(binary), again(binary);
    const std::string plain = lv2.Save();
    float port = 30.0f;
    lv2.Connect(lv2.dryWetPort, port);
    lv2.Run(64);
    lv2.Restore(plain);
    lv2.Run(64);
    EXPECT_EQ(lv2.asked[lv2.dryWetPort], 50.0f);
    const std::string saved = lv2.Save();
    again.Connect(again.dryWetPort, port);
    again.Restore(saved);
    again.Run(64);
    EXPECT_EQ(again.Save(), saved);
}

}  // namespace Quorvan::test

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    Quorvan::test::binary = argc > 1 ? argv[1] : "Tesserae.so";
    return RUN_ALL_TESTS();
}
