#include <cmath>
#include <cstdio>
#include <fstream>
#include <set>

#include <unistd.h>

#include "plugins/claphost/Check.h"

namespace Quorvan::ClapHost {

namespace {

/// A new instance with all parameters at random values.
EventList RandomSet(Session& s, const ClapInstance& instance) {
    return instance.SetAll([&s] { return s.Share(); });
}

void RequireSame(const std::vector<double>& one, const std::vector<double>& other,
                 const ClapInstance& instance, const std::string& when) {
    for (size_t i = 0; i < one.size(); ++i)
        Require(one[i] == other[i], std::string("\"") + instance.Parameters()[i].name + "\" is " +
                                        std::to_string(other[i]) + " and not " +
                                        std::to_string(one[i]) + " " + when + ".");
}

void Defaults(Session& s) {
    ClapInstance instance(s.library);
    std::set<clap_id> ids;
    for (const clap_param_info_t& info : instance.Parameters()) {
        const std::string name = std::string("\"") + info.name + "\"";
        Require(ids.insert(info.id).second, name + " has an id that another one has.");
        Require(info.min_value < info.max_value && info.default_value >= info.min_value &&
                    info.default_value <= info.max_value,
                name + " has a range that makes no sense.");
        Require(instance.Value(info.id) == info.default_value, name + " is not at its default.");
    }
    const auto& params = instance.Get<clap_plugin_params_t>(CLAP_EXT_PARAMS);
    clap_param_info_t info{};
    double value = 0.0;
    char text[16];
    Require(!params.get_info(instance.plugin, static_cast<uint32_t>(ids.size()), &info) &&
                !params.get_value(instance.plugin, 0x7777, &value) &&
                !params.value_to_text(instance.plugin, 0x7777, 0.0, text, sizeof text) &&
                !params.text_to_value(instance.plugin, 0x7777, "1", &value),
            "A parameter that nobody has is answered for.");
}

void Texts(Session& s) {
    ClapInstance instance(s.library);
    const auto& params = instance.Get<clap_plugin_params_t>(CLAP_EXT_PARAMS);
    for (const clap_param_info_t& info : instance.Parameters()) {
        for (int i = 0; i <= 20; ++i) {
            const double asked = info.min_value + i / 20.0 * (info.max_value - info.min_value);
            const std::string text = instance.Text(info.id, asked);
            double value = NAN;
            Require(params.text_to_value(instance.plugin, info.id, text.c_str(), &value) &&
                        value >= info.min_value && value <= info.max_value,
                    std::string("\"") + info.name + "\" does not read its own \"" + text + "\".");
            Require(instance.Text(info.id, value) == text,
                    std::string("\"") + info.name + "\" reads \"" + text + "\" as another text.");
        }
        double value = NAN;
        params.text_to_value(instance.plugin, info.id, "\xff no such text", &value);
    }
}

/// Flush, flush while active, and process give the same values and the same state, with and without
/// cookies.
void Flushes(Session& s) {
    ClapInstance first(s.library), second(s.library), third(s.library);
    second.Activate();
    third.Activate();
    for (int i = 0; i < 10; ++i) {
        const EventList events = RandomSet(s, first);
        const std::vector<double> before = first.Values();
        for (ClapInstance* instance : {&first, &second, &third}) {
            instance->Flush(events.Foreign());
            RequireSame(before, instance->Values(), first, "after events of a foreign namespace");
        }
        first.Flush(events);
        second.Flush(events);
        third.Run(Noise(64), events);
        RequireSame(first.Values(), second.Values(), first, "flushed while active");
        RequireSame(first.Values(), third.Values(), first, "processed");
        Require(first.Save() == third.Save(), "Flush and process leave different states.");
    }
}

void Fuzz(Session& s) {
    ClapInstance instance(s.library);
    instance.Activate();
    for (int i = 0; i < 52; ++i) {
        const auto share = [&] { return i < 50 ? s.Share() : i - 50.0; };
        Require(Peak(instance.Run(Noise(2000, static_cast<uint32_t>(i)), instance.SetAll(share))) <
                    64.0f,
                "The sound runs away.");
    }
    for (const double odd :
         std::initializer_list<double>{NAN, INFINITY, -INFINITY, 1e300, -1e300}) {
        EventList events;
        for (const clap_param_info_t& info : instance.Parameters()) {
            events.Add(ValueAt(0, info.id, odd));
            events.Add(ModulationAt(0, info.id, odd));
        }
        events.Add(ValueAt(0, 0x7777, 0.5));
        instance.Run(Noise(2000), events);
        for (const clap_param_info_t& info : instance.Parameters()) {
            const double value = instance.Value(info.id);
            Require(value >= info.min_value && value <= info.max_value,
                    "A value leaves its range.");
        }
    }
}

void Modulation(Session& s) {
    ClapInstance instance(s.library), plain(s.library);
    const bool fixed = instance.FixChance() && plain.FixChance();
    instance.Activate();
    plain.Activate();
    const std::string state = instance.Save();
    const std::vector<double> values = instance.Values();
    for (const int32_t note : {-1, 3}) {
        EventList on, off;
        for (const clap_param_info_t& info : instance.Parameters()) {
            if ((info.flags & CLAP_PARAM_IS_MODULATABLE) == 0)
                continue;
            const double amount = (s.Share() - 0.5) * (info.max_value - info.min_value);
            on.Add(ModulationAt(0, info.id, amount, note));
            off.Add(ModulationAt(0, info.id, 0.0, note));
        }
        const Sound moved = instance.Run(Noise(9600), on);
        Require(!fixed || moved != plain.Run(Noise(9600)), "Modulation is not heard.");
        RequireSame(values, instance.Values(), instance, "while it is modulated");
        instance.Run(Noise(4800), off);
        Require(instance.Save() == state, "Modulation leaves a trace in the state.");
    }
}

void BrokenStates(Session& s) {
    ClapInstance instance(s.library);
    instance.Flush(RandomSet(s, instance));
    const std::string before = instance.Save();
    std::string noise(3 << 20, '\0');
    for (char& byte : noise)
        byte = static_cast<char>(s.random());
    for (const std::string& broken :
         {std::string(), std::string("{"), noise, before.substr(0, before.size() / 2)}) {
        Require(!instance.Load(broken), "A broken state is taken.");
        Require(instance.Save() == before, "A broken state changes the instance.");
    }
}

void States(Session& s) {
    for (const bool runs : {false, true}) {
        ClapInstance instance(s.library);
        if (runs)
            instance.Activate();
        for (int i = 0; i < 4; ++i) {
            const EventList events = RandomSet(s, instance);
            runs ? static_cast<void>(instance.Run(Noise(512), events)) : instance.Flush(events);
            const std::string saved = instance.Save();
            Require(instance.Save(17) == saved && instance.Save(23) == saved,
                    "A state saved in small pieces is another one.");
            for (const uint64_t piece : {uint64_t{17}, uint64_t{23}, uint64_t{1} << 20}) {
                ClapInstance other(s.library);
                Require(other.Load(saved, piece), "A saved state is not taken.");
                RequireSame(instance.Values(), other.Values(), instance, "after loading");
                Require(other.Save() == saved, "Saved again, a state has other bytes.");
                other.Activate();
                other.Run(Noise(512));
                RequireSame(instance.Values(), other.Values(), instance, "after processing");
                Require(other.Save() == saved, "Processing changes a state.");
            }
        }
    }
}

void Presets(Session& s) {
    ClapInstance instance(s.library);
    instance.Activate();
    for (const std::string& key : s.presets) {
        Require(instance.LoadPreset(kPresetInPlugin, nullptr, key.c_str()),
                "Preset \"" + key + "\" is not taken: " + instance.presetError);
        instance.Run(Noise(9600));
    }
    Require(instance.presetsLoaded == static_cast<int>(s.presets.size()),
            "The host is not told of every preset loaded.");
    const std::string before = instance.Save();
    char path[] = "/tmp/claphost-XXXXXX";
    close(mkstemp(path));
    std::ofstream(path) << "{\"format\": \"tess";
    for (const auto& [kind, location, key] :
         {std::tuple{kPresetFile, static_cast<const char*>(path),
                     static_cast<const char*>(nullptr)},
          {kPresetFile, "/no/such/file", nullptr},
          {kPresetFile, nullptr, nullptr},
          {kPresetInPlugin, nullptr, "no such preset"},
          {kPresetInPlugin, nullptr, nullptr}})
        Require(!instance.LoadPreset(kind, location, key) && !instance.presetError.empty(),
                "A broken preset is taken, or no sentence says what is wrong with it.");
    std::remove(path);
    Require(instance.Save() == before, "A broken preset changes the instance.");
    s.note = std::to_string(s.presets.size()) + " presets";
}

constexpr Check kChecks[]{
    {"defaults", "a new instance is at the defaults told", Defaults},
    {"texts", "values and their texts go both ways", Texts},
    {"flushes", "flush does what process does; foreign events do nothing", Flushes},
    {"fuzz", "random values, all bounds, and what is no value", Fuzz},
    {"modulation", "moves no value and leaves no trace", Modulation},
    {"broken-states", "are refused and change nothing", BrokenStates},
    {"states", "come back to the byte, also in small pieces", States},
    {"presets", "load by name; broken ones are told of", Presets},
};

}  // namespace

std::span<const Check> ValueChecks() { return kChecks; }

}  // namespace Quorvan::ClapHost
