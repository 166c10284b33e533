#include <filesystem>
#include <fstream>
#include <set>

#include "plugins/claphost/Check.h"

namespace Quorvan::ClapHost {

using WithParameters = With<CLAP_EXT_PARAMS>;
using WithState = With<CLAP_EXT_PARAMS, CLAP_EXT_STATE>;

TEST_F(WithParameters, NewInstancesAreAtTheDefaultsTold) {
    const ClapInstance instance(Library());
    std::set<clap_id> ids;
    for (const clap_param_info_t& info : instance.Parameters()) {
        EXPECT_TRUE(ids.insert(info.id).second) << info.name;
        EXPECT_LT(info.min_value, info.max_value) << info.name;
        EXPECT_EQ(instance.Value(info.id), info.default_value) << info.name;
    }
    const auto& params = instance.Get<clap_plugin_params_t>(CLAP_EXT_PARAMS);
    const clap_plugin_t* const plugin = instance.plugin;
    clap_param_info_t info{};
    double value = 0.0;
    char text[16];
    EXPECT_FALSE(params.get_info(plugin, params.count(plugin), &info));
    EXPECT_FALSE(params.get_value(plugin, 0x7777, &value));
    EXPECT_FALSE(params.value_to_text(plugin, 0x7777, 0.0, text, sizeof text));
    EXPECT_FALSE(params.text_to_value(plugin, 0x7777, "1", &value));
}

TEST_F(WithParameters, ValuesAndTextsGoBothWays) {
    const ClapInstance instance(Library());
    const auto& params = instance.Get<clap_plugin_params_t>(CLAP_EXT_PARAMS);
    size_t reads = 0, texts = 0;
    for (const clap_param_info_t& info : instance.Parameters()) {
        double value = NAN;
        for (int i = 0; i <= 20; ++i) {
            const std::string text = instance.Text(
                info.id, info.min_value + i / 20.0 * (info.max_value - info.min_value));
            const bool isRead =
                params.text_to_value(instance.plugin, info.id, text.c_str(), &value);
            reads += isRead;
            ++texts;
            if (!isRead)
                continue;
            EXPECT_TRUE(value >= info.min_value && value <= info.max_value) << info.name;
            EXPECT_EQ(instance.Text(info.id, value), text) << info.name;
        }
        params.text_to_value(instance.plugin, info.id, "\xff no such text", &value);
    }
    EXPECT_TRUE(reads == 0 || reads == texts) << reads << " of " << texts << " own texts are read.";
}

TEST_F(WithState, FlushDoesWhatProcessDoes) {
    ClapInstance idle(Library()), flushed(Library()), processed(Library());
    flushed.Activate();
    processed.Activate();
    for (int i = 0; i < 10; ++i) {
        const EventList events = SetAll(idle);
        const std::vector<double> before = idle.Values();
        for (ClapInstance* instance : {&idle, &flushed, &processed}) {
            instance->Flush(events.Between(0, 1, 0xb33f));
            EXPECT_EQ(instance->Values(), before) << "Events of a foreign namespace are heard.";
        }
        idle.Flush(events);
        flushed.Flush(events);
        processed.Run(Noise(64), events);
        EXPECT_NE(idle.Values(), before);
        EXPECT_EQ(idle.Values(), flushed.Values());
        EXPECT_EQ(idle.Values(), processed.Values());
        EXPECT_TRUE(idle.Save() == processed.Save());
    }
}

TEST_F(Check, ValuesStayInTheirRange) {
    ClapInstance instance(Library());
    instance.Activate();
    for (uint32_t i = 0; i < 52; ++i)
        instance.Run(Noise(2000, i), SetAll(instance, i < 50 ? -1.0 : i - 50.0));
    for (const double odd : {double{NAN}, double{INFINITY}, -double{INFINITY}, 1e300, -1e300}) {
        EventList events{{ValueAt(0, 0x7777, 0.5)}};
        for (const clap_param_info_t& info : instance.Parameters()) {
            events.Add(ValueAt(0, info.id, odd));
            events.Add(ModulationAt(0, info.id, odd));
        }
        instance.Run(Noise(2000), events);
        for (const clap_param_info_t& info : instance.Parameters()) {
            EXPECT_GE(instance.Value(info.id), info.min_value) << info.name;
            EXPECT_LE(instance.Value(info.id), info.max_value) << info.name;
        }
    }
}

TEST_F(WithState, ModulationIsHeardAndLeavesNoTrace) {
    ClapInstance instance(Library()), plain(Library());
    const bool repeats = instance.FixChance() && plain.FixChance();
    instance.Activate();
    plain.Activate();
    const std::string state = instance.Save();
    const std::vector<double> values = instance.Values();
    for (const int32_t voice : {-1, 3}) {
        EventList on, off;
        for (const clap_param_info_t& info : instance.Parameters()) {
            if ((info.flags & CLAP_PARAM_IS_MODULATABLE) == 0)
                continue;
            on.Add(ModulationAt(0, info.id, any.Within(info) - info.default_value, voice));
            off.Add(ModulationAt(0, info.id, 0.0, voice));
        }
        const Sound moved = instance.Run(Noise(9600), on);
        EXPECT_TRUE(!repeats || moved != plain.Run(Noise(9600)));
        EXPECT_EQ(instance.Values(), values);
        instance.Run(Noise(4800), off);
        EXPECT_TRUE(instance.Save() == state);
    }
}

TEST_F(WithState, StatesComeBackToTheByte) {
    ClapInstance instance(Library());
    for (int i = 0; i < 8; ++i) {
        if (i == 4)
            instance.Activate();
        i < 4 ? instance.Flush(SetAll(instance))
              : static_cast<void>(instance.Run(Noise(512), SetAll(instance)));
        const std::string saved = instance.Save();
        for (const uint64_t piece : {17u, 23u, 1u << 20}) {
            EXPECT_TRUE(instance.Save(piece) == saved) << piece;
            ClapInstance other(Library());
            ASSERT_TRUE(other.Load(saved, piece));
            for (int time = 0; time < 2; ++time) {
                EXPECT_EQ(other.Values(), instance.Values());
                EXPECT_TRUE(other.Save() == saved);
                if (time == 0)
                    other.Activate();
                other.Run(Noise(512));
            }
        }
    }
}

TEST_F(WithState, BrokenStatesAndPresetsChangeNothing) {
    ClapInstance instance(Library());
    instance.Activate();
    for (const std::string& key : options.presets) {
        EXPECT_TRUE(instance.LoadPreset(Clap::kLocationPlugin, nullptr, key.c_str()))
            << key << ": " << instance.presetError;
        instance.Run(Noise(9600));
    }
    EXPECT_EQ(instance.presetsLoaded, options.presets.size());
    instance.Flush(SetAll(instance));
    const std::string before = instance.Save();
    std::string noise(3 << 20, '\0');
    for (char& byte : noise)
        byte = static_cast<char>(any.random());
    const std::string half = before.substr(0, before.size() / 2);
    for (const std::string& broken : {std::string(), std::string("{"), noise, half})
        EXPECT_FALSE(instance.Load(broken));
    const std::string path = testing::TempDir() + "claphost-broken.json";
    std::ofstream(path) << half;
    const std::vector<std::tuple<uint32_t, const char*, const char*>> presets{
        {Clap::kLocationFile, path.c_str(), nullptr},
        {Clap::kLocationFile, "/no/such/file", nullptr},
        {Clap::kLocationFile, nullptr, nullptr},
        {Clap::kLocationPlugin, nullptr, "no such preset"},
        {Clap::kLocationPlugin, nullptr, nullptr}};
    for (const auto& [kind, location, key] : presets) {
        if (!Has(Clap::kPresetLoadExtension))
            break;
        EXPECT_FALSE(instance.LoadPreset(kind, location, key));
        EXPECT_FALSE(instance.presetError.empty());
    }
    std::filesystem::remove(path);
    EXPECT_TRUE(instance.Save() == before);
}

}  // namespace Quorvan::ClapHost
