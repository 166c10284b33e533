#include "plugins/claphost/ClapInstance.h"

#include <map>

#include "clap/ext/thread-check.h"
#include "clap/ext/timer-support.h"

namespace Quorvan::ClapHost {

bool ClapInstance::IsMain() const { return !Trap::IsSet() && std::this_thread::get_id() == owner; }
ClapInstance& ClapInstance::OnMain(const clap_host_t* host, const char* call) {
    auto& instance = *static_cast<ClapInstance*>(host->host_data);
    if (call != nullptr && !instance.IsMain())
        instance.complaint = call;
    return instance;
}
void ClapInstance::ThrowComplaints(bool wrongEvents) {
    Require(!wrongEvents, "Events given out are not in order, behind the end, or no values.");
    const char* const call = complaint.exchange(nullptr);
    Require(call == nullptr, std::string("From a wrong thread: ") + (call ? call : ""));
}

void ClapInstance::Take(const EventSink& sink) {
    for (size_t type = 0; type < eventsTold.size(); ++type)
        eventsTold[type] += sink.counts[type];
    ThrowComplaints(sink.isWrong);
}

const void* CLAP_ABI ClapInstance::Extension(const clap_host_t*, const char* id) {
    using Host = const clap_host_t*;
    static constexpr clap_host_params_t kParams{
        [](Host h, clap_param_rescan_flags) { OnMain(h, "params.rescan"); },
        [](Host h, clap_id, clap_param_clear_flags) { OnMain(h, "params.clear"); }, [](Host) {}};
    static constexpr clap_host_state_t kState{[](Host h) { OnMain(h, "state.mark_dirty"); }};
    static constexpr clap_host_latency_t kLatency{[](Host h) { OnMain(h, "latency.changed"); }};
    static constexpr Clap::HostTail kTail{[](Host h) {
        if (OnMain(h).IsMain())
            OnMain(h).complaint = "tail.changed, which is the audio thread's";
    }};
    static constexpr Clap::HostLog kLog{[](Host, int32_t, const char*) {}};
    static constexpr clap_host_thread_check_t kThreads{[](Host h) { return OnMain(h).IsMain(); },
                                                       [](Host) { return Trap::IsSet(); }};
    static constexpr clap_host_timer_support_t kTimers{
        [](Host h, uint32_t, clap_id* timer) {
            ClapInstance& instance = OnMain(h, "timer.register");
            *timer = instance.timers++;
            return instance.running.insert(*timer).second;
        },
        [](Host h, clap_id timer) {
            return OnMain(h, "timer.unregister").running.erase(timer) > 0;
        }};
    static constexpr Clap::HostPosixFd kFiles{
        [](Host h, int fd, uint32_t) {
            return OnMain(h, "posix-fd.register").files.insert(fd).second;
        },
        [](Host h, int fd, uint32_t) { return OnMain(h).files.count(fd) > 0; },
        [](Host h, int fd) { return OnMain(h, "posix-fd.unregister").files.erase(fd) > 0; }};
    static constexpr Clap::HostPresetLoad kPresets{
        [](Host h, uint32_t, const char*, const char*, int32_t, const char* text) {
            OnMain(h, "preset-load.on_error").presetError = text != nullptr ? text : "";
        },
        [](Host h, uint32_t, const char*, const char*) {
            ++OnMain(h, "preset-load.loaded").presetsLoaded;
        }};
    static const std::map<std::string_view, const void*> parts{
        {CLAP_EXT_PARAMS, &kParams},
        {CLAP_EXT_STATE, &kState},
        {CLAP_EXT_LATENCY, &kLatency},
        {Clap::kTailExtension, &kTail},
        {CLAP_EXT_THREAD_CHECK, &kThreads},
        {Clap::kLogExtension, &kLog},
        {CLAP_EXT_TIMER_SUPPORT, &kTimers},
        {Clap::kPosixFdExtension, &kFiles},
        {Clap::kPresetLoadExtension, &kPresets}};
    const auto part = parts.find(id);
    return part != parts.end() ? part->second : nullptr;
}

ClapInstance::ClapInstance(const ClapLibrary& library) {
    constexpr auto kNothing = [](const clap_host_t*) {};
    host = {CLAP_VERSION, this, "claphost", "", "", "1.0", Extension, kNothing, kNothing, kNothing};
    plugin = library.factory->create_plugin(library.factory, &host, library.descriptor->id);
    Require(plugin != nullptr, "The factory makes no plug-in.");
    Require(plugin->init(plugin), "The plug-in's init answers false.");
    const auto* const params = Find<clap_plugin_params_t>(CLAP_EXT_PARAMS);
    parameters.resize(params != nullptr ? params->count(plugin) : 0);
    for (uint32_t i = 0; i < parameters.size(); ++i)
        Require(params->get_info(plugin, i, &parameters[i]), "A parameter has no info.");
}

void ClapInstance::Activate(double rate) {
    const auto& ports = Get<clap_plugin_audio_ports_t>(CLAP_EXT_AUDIO_PORTS);
    takesWide = true;
    for (const bool isInput : {true, false}) {
        std::vector<uint32_t>& channels = isInput ? inputChannels : outputChannels;
        channels.resize(ports.count(plugin, isInput));
        for (uint32_t i = 0; i < channels.size(); ++i) {
            clap_audio_port_info_t info{};
            Require(ports.get(plugin, i, isInput, &info), "A port below the count has no info.");
            channels[i] = info.channel_count;
            takesWide = takesWide && (info.flags & CLAP_AUDIO_PORT_SUPPORTS_64BITS) != 0;
        }
    }
    active = plugin->activate(plugin, rate, 1, 4096);
    Require(active, "The plug-in refuses to be activated.");
    const bool started = Trapped([&] { return plugin->start_processing(plugin); });
    Require(started, "The plug-in refuses to start processing.");
}

void ClapInstance::Deactivate() {
    Trapped([&] { plugin->stop_processing(plugin); });
    plugin->deactivate(plugin);
    active = false;
}

template <class Sample>
Sound ClapInstance::ProcessOnce(const Sound& input, uint32_t frames, const EventList& events,
                                const RunPlan& plan, const clap_event_transport_t* song) {
    std::vector<Sound> given;
    for (const uint32_t channels : inputChannels) {
        const bool isNoise = plan.noisySides && !given.empty() && channels <= 2;
        given.push_back(given.empty() ? input
                        : isNoise     ? Noise(frames, static_cast<uint32_t>(steadyTime))
                                      : Sound(channels, std::vector<float>(frames)));
        given.back().resize(channels);
    }
    std::vector<Port<Sample>> inputs, outputs;
    for (const Sound& sound : given)
        inputs.emplace_back(sound);
    for (const uint32_t channels : outputChannels)
        outputs.emplace_back(Sound(channels, std::vector<float>(frames, 9.0f)));
    std::vector<clap_audio_buffer_t> in, out;
    for (auto& port : inputs)
        in.push_back(port.Buffer());
    for (auto& port : outputs)
        out.push_back(port.Buffer());
    const bool shared =
        plan.inPlace && !inputChannels.empty() && inputChannels[0] == outputChannels.at(0);
    if (shared)
        out[0] = in[0];
    EventSink sink{frames};
    const clap_output_events_t told = sink.Output();
    const clap_input_events_t taken = events.Input();
    const auto inPorts = static_cast<uint32_t>(in.size());
    const auto outPorts = static_cast<uint32_t>(out.size());
    const clap_process_t process{steadyTime, frames,   song,   in.data(), out.data(),
                                 inPorts,    outPorts, &taken, &told};
    steadyTime += frames;
    const int32_t status = Trapped([&] { return plugin->process(plugin, &process); });
    Require(status >= CLAP_PROCESS_CONTINUE && status <= CLAP_PROCESS_SLEEP,
            "process answers an error.");
    Take(sink);
    for (size_t i = shared ? 1 : 0; i < inputs.size(); ++i)
        Require(inputs[i].Holds(given[i]), "An input is written to.");
    for (size_t i = 0; i < outputs.size(); ++i)
        CheckOutput(i == 0 && shared ? inputs[0].Content() : outputs[i].Content(),
                    out[i].constant_mask, plan.loudest);
    const Sound sound = (shared ? inputs : outputs).at(0).Content();
    // Asleep is what needs no call until something comes in: it gives silence if called all the
    // same.
    isAsleep = isAsleep && events.events.empty() &&
               std::ranges::all_of(given, [](const Sound& one) { return Peak(one) == 0.0f; });
    Require(!isAsleep || Peak(sound) == 0.0f, "The plug-in sounds after it said that it sleeps.");
    isAsleep = status == CLAP_PROCESS_SLEEP;
    return sound;
}

Sound ClapInstance::Run(const Sound& input, const EventList& events, const RunPlan& plan) {
    Sound whole(outputChannels.at(0));
    const auto length = static_cast<uint32_t>(input[0].size());
    for (uint32_t done = 0, frames = 0; done < length; done += frames) {
        frames = std::min(plan.nextFrames(), length - done);
        Sound part;
        for (const auto& channel : input)
            part.emplace_back(channel.begin() + done, channel.begin() + done + frames);
        const auto process = plan.wide && takesWide ? &ClapInstance::ProcessOnce<double>
                                                    : &ClapInstance::ProcessOnce<float>;
        const Sound out = (this->*process)(part, frames, events.Between(done, done + frames), plan,
                                           plan.song ? plan.song(done) : nullptr);
        for (size_t c = 0; c < whole.size(); ++c)
            whole[c].insert(whole[c].end(), out[c].begin(), out[c].end());
    }
    return whole;
}

void ClapInstance::Flush(const EventList& events) {
    EventSink sink{1};
    const clap_output_events_t given = sink.Output();
    const clap_input_events_t taken = events.Input();
    const auto* const params = Find<clap_plugin_params_t>(CLAP_EXT_PARAMS);
    if (params == nullptr)
        return;
    const auto flush = [&] { params->flush(plugin, &taken, &given); };
    active ? Trapped(flush) : flush();
    Take(sink);
}

void ClapInstance::RunTimers() {
    if (active)
        Run(Noise(800, static_cast<uint32_t>(steadyTime)));
    for (const clap_id id : std::set<clap_id>(running))
        Get<clap_plugin_timer_support_t>(CLAP_EXT_TIMER_SUPPORT).on_timer(plugin, id);
    for (const int fd : std::set<int>(files))
        Get<Clap::PluginPosixFd>(Clap::kPosixFdExtension).onFd(plugin, fd, Clap::kFdReadable);
}

double ClapInstance::Value(clap_id id) const {
    double value = NAN;
    const auto& params = Get<clap_plugin_params_t>(CLAP_EXT_PARAMS);
    Require(params.get_value(plugin, id, &value) && std::isfinite(value), "A value is missing.");
    return value;
}
std::vector<double> ClapInstance::Values() const {
    std::vector<double> values;
    for (const clap_param_info_t& info : parameters)
        values.push_back(Value(info.id));
    return values;
}
std::string ClapInstance::Text(clap_id id, double value) const {
    char text[256] = "";
    const auto& params = Get<clap_plugin_params_t>(CLAP_EXT_PARAMS);
    Require(params.value_to_text(plugin, id, value, text, sizeof text), "A value has no text.");
    return text;
}

std::string ClapInstance::Save(uint64_t bytesAtATime) const {
    std::pair<std::string, uint64_t> target{"", bytesAtATime};
    const auto write = [](const clap_ostream_t* to, const void* bytes, uint64_t size) {
        auto& [text, most] = *static_cast<decltype(target)*>(to->ctx);
        text.append(static_cast<const char*>(bytes), std::min(size, most));
        return static_cast<int64_t>(std::min(size, most));
    };
    const clap_ostream_t stream{&target, write};
    Require(Get<clap_plugin_state_t>(CLAP_EXT_STATE).save(plugin, &stream), "Saving fails.");
    return target.first;
}

bool ClapInstance::Load(const std::string& state, uint64_t bytesAtATime) {
    std::pair<std::string_view, uint64_t> source{state, bytesAtATime};
    const auto read = [](const clap_istream_t* from, void* bytes, uint64_t size) {
        auto& [text, most] = *static_cast<decltype(source)*>(from->ctx);
        const uint64_t given = text.copy(static_cast<char*>(bytes), std::min(size, most));
        text.remove_prefix(given);
        return static_cast<int64_t>(given);
    };
    const clap_istream_t stream{&source, read};
    const bool loaded = Get<clap_plugin_state_t>(CLAP_EXT_STATE).load(plugin, &stream);
    ThrowComplaints();
    return loaded;
}

/// Tesserae keeps the seed of its chance as a member of its state.
bool ClapInstance::FixChance(uint32_t seed) {
    if (Find<clap_plugin_state_t>(CLAP_EXT_STATE) == nullptr)
        return false;
    std::string state = Save();
    const size_t place = state.find("\"morph\"");
    if (state.find("\"tesserae-instrument\"") == std::string::npos || place == std::string::npos)
        return false;
    return Load(state.insert(place, "\"seed\": " + std::to_string(seed) + ", "));
}

bool ClapInstance::LoadPreset(uint32_t kind, const char* location, const char* key) {
    presetError.clear();
    const bool loaded = Get<Clap::PluginPresetLoad>(Clap::kPresetLoadExtension)
                            .fromLocation(plugin, kind, location, key);
    ThrowComplaints();
    return loaded;
}

}  // namespace Quorvan::ClapHost
