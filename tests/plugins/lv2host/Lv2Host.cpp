// Runs the LV2 with the trap set, states coming and going beside it: lv2host Tesserae.so

#include <map>

#include "lv2/atom.h"
#include "lv2/control-input-port-change-request.h"
#include "lv2/data-access.h"
#include "lv2/instance-access.h"
#include "lv2/lv2.h"
#include "lv2/options.h"
#include "lv2/state.h"
#include "lv2/ui.h"
#include "lv2/urid.h"
#include "lv2/worker.h"
#include "plugins/claphost/Beside.h"
// Behind all others, whose names X11 takes for macros.
#include "plugins/claphost/HostWindow.h"

namespace Quorvan::test {

/// An active LV2 plug-in behind the plain C interface; ports that nobody connects stay so.
struct Lv2Instance {
    Lv2Instance() {
        plugin = Symbol<LV2_Descriptor_Function>("lv2_descriptor")(0);
        handle = plugin->instantiate(plugin, 48000.0, "", features);
        state =
            static_cast<const LV2_State_Interface*>(plugin->extension_data(LV2_STATE__interface));
        const bool isMono = std::string_view(plugin->URI).ends_with(":mono");
        uint32_t port = 0;
        for (auto& channel : floats)
            if (!isMono || &channel != &floats[1])
                Connect(port++, channel[0]);
        plugin->connect_port(handle, port, &eventsIn);
        plugin->connect_port(handle, port + 1, eventsOut.data());
        dryWetPort = port + 4;  // behind the latency and "enabled"
        data.data_access = plugin->extension_data;
        access.data = handle;
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
    float floats[6][kMost]{};  ///< in, side-chain, out
    LV2_URID_Map map{nullptr, Map};
    LV2_Worker_Schedule schedule{
        nullptr, [](void*, uint32_t, const void*) { return LV2_WORKER_ERR_NO_SPACE; }};
    float scale = 1.0f;
    LV2_Options_Option options[2]{{LV2_OPTIONS_INSTANCE, 0, Map(nullptr, LV2_UI__scaleFactor),
                                   sizeof scale, Map(nullptr, LV2_ATOM__Float), &scale},
                                  {}};
    std::array<float, 100> asked{};  ///< values that the plug-in wants its ports to have
    LV2_ControlInputPort_Change_Request request{asked.data(),
                                                [](void* values, uint32_t port, float value) {
                                                    static_cast<float*>(values)[port] = value;
                                                    return LV2_CONTROL_INPUT_PORT_CHANGE_SUCCESS;
                                                }};
    LV2_Extension_Data_Feature data{};
    LV2_Feature parent{LV2_UI__parent, nullptr}, access{LV2_INSTANCE_ACCESS_URI, nullptr};
    LV2_Feature all[5]{{LV2_URID__map, &map},
                       {LV2_WORKER__schedule, &schedule},
                       {LV2_OPTIONS__options, options},
                       {LV2_CONTROL_INPUT_PORT_CHANGE_REQUEST_URI, &request},
                       {LV2_DATA_ACCESS_URI, &data}};
    const LV2_Feature* features[8]{&all[0], &all[1], &all[2], &all[3], &all[4], &parent, &access};
    LV2_Atom_Sequence eventsIn{{sizeof(LV2_Atom_Sequence_Body), 0}, {0, 0}};
    std::vector<uint64_t> eventsOut = std::vector<uint64_t>(1024);
    const LV2_Descriptor* plugin;
    LV2_Handle handle;
    const LV2_State_Interface* state;
};

TEST(Lv2Test, RunNeitherAllocatesNorLocksAndStatesComeBackToTheByte) {
    float dryWet = 50.0f;
    RunsBesideStates<Lv2Instance>([&](Lv2Instance& lv2, uint32_t frames, int turn) {
        lv2.Connect(lv2.dryWetPort, dryWet);
        dryWet = static_cast<float>(turn * 37 % 101);
        lv2.Run(frames);
    });
}

TEST(Lv2Test, AStateWinsOverPortsThatDidNotFollowIt) {
    Lv2Instance lv2, again;
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

using Lv2ViewTest = ClapHost::OnDisplay<testing::Test>;

TEST_F(Lv2ViewTest, OpensAtTheHostsScaleOrTheSizeThatTheStateKeeps) {
    const LV2UI_Descriptor* const ui = Symbol<LV2UI_DescriptorFunction>("lv2ui_descriptor")(0);
    const auto* const idle =
        static_cast<const LV2UI_Idle_Interface*>(ui->extension_data(LV2_UI__idleInterface));
    for (const auto& [scale, isKept, wide] :
         {std::tuple(1.0f, false, 1280), {2.0f, false, 2560}, {2.0f, true, 1600}}) {
        Lv2Instance lv2;
        if (isKept)
            lv2.Restore(With(lv2.Save(), R"("window": {"width": 1600, "height": 1000})"));
        lv2.scale = scale;
        const ClapHost::HostWindow window(display);
        lv2.parent.data = reinterpret_cast<void*>(window.window);
        LV2UI_Widget widget = nullptr;
        const LV2UI_Handle handle = ui->instantiate(
            ui, lv2.plugin->URI, "", [](auto...) {}, nullptr, &widget, lv2.features);
        ASSERT_NE(handle, nullptr);
        EXPECT_EQ(widget, reinterpret_cast<void*>(window.Child()));
        window.Look(wide, wide * 5 / 8, [&] {
            lv2.Run(480);
            EXPECT_EQ(idle->idle(handle), 0);
        });
        ui->cleanup(handle);
    }
}

}  // namespace Quorvan::test

int main(int argc, char** argv) { return Quorvan::test::Begin(argc, argv) ? RUN_ALL_TESTS() : 2; }
