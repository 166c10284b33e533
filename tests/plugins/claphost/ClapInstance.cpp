#include "plugins/claphost/ClapInstance.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "clap/ext/latency.h"
#include "clap/ext/thread-check.h"
#include "plugins/claphost/Trap.h"

namespace Quorvan::ClapHost {

namespace {

thread_local int audioDepth = 0;

/// The calling thread is an audio thread while it lives, and does what none may do at its peril.
struct AudioThread {
    AudioThread() { ++audioDepth; }
    ~AudioThread() { --audioDepth; }
    Trap trap;
};

/// A port's channels in 32 or 64 bits.
struct PortMemory {
    std::vector<std::vector<float>> narrow;
    std::vector<std::vector<double>> wide;
    std::vector<float*> narrowPointers;
    std::vector<double*> widePointers;

    PortMemory(uint32_t channels, const Sound& content, size_t frames) : narrow(content) {
        narrow.resize(channels, std::vector<float>(frames));
        for (auto& channel : narrow) {
            wide.emplace_back(channel.begin(), channel.end());
            narrowPointers.push_back(channel.data());
        }
        for (auto& channel : wide)
            widePointers.push_back(channel.data());
    }
    clap_audio_buffer_t Buffer(bool isWide) {
        clap_audio_buffer_t buffer{};
        buffer.data32 = isWide ? nullptr : narrowPointers.data();
        buffer.data64 = isWide ? widePointers.data() : nullptr;
        buffer.channel_count = static_cast<uint32_t>(narrow.size());
        return buffer;
    }
    Sound Content(bool isWide) const {
        Sound content = narrow;
        for (size_t c = 0; isWide && c < wide.size(); ++c)
            std::transform(wide[c].begin(), wide[c].end(), content[c].begin(),
                           [](double sample) { return static_cast<float>(sample); });
        return content;
    }
};

bool SameBits(const Sound& one, const Sound& other) {
    for (size_t c = 0; c < one.size(); ++c)
        if (std::memcmp(one[c].data(), other[c].data(), one[c].size() * sizeof(float)) != 0)
            return false;
    return true;
}

void CheckOutput(const Sound& sound) {
    for (const auto& channel : sound)
        for (const float sample : channel) {
            Require(std::isfinite(sample), "The output has samples that are no finite numbers.");
            Require(sample == 0.0f || std::isnormal(sample), "The output has denormal samples.");
        }
}

}  // namespace

Sound Noise(size_t frames, uint32_t seed, float level) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> spread(-level, level);
    Sound sound(2, std::vector<float>(frames));
    for (auto& channel : sound)
        std::generate(channel.begin(), channel.end(), [&] { return spread(random); });
    return sound;
}
Sound Silence(size_t frames) { return Sound(2, std::vector<float>(frames)); }
float Peak(const Sound& sound, size_t from) {
    float peak = 0.0f;
    for (const auto& channel : sound)
        for (size_t i = from; i < channel.size(); ++i)
            peak = std::max(peak, std::abs(channel[i]));
    return peak;
}

// ---- The host's side

bool ClapInstance::IsMain() const { return audioDepth == 0 && std::this_thread::get_id() == owner; }
void ClapInstance::OnMain(const char* call) {
    if (!IsMain())
        complaint = call;
}
void ClapInstance::ThrowComplaint() {
    if (const char* const call = complaint.exchange(nullptr))
        throw Failure(std::string("The plug-in called the host's ") + call +
                      " from another thread than the main one.");
}

const void* CLAP_ABI ClapInstance::Extension(const clap_host_t*, const char* id) {
    static constexpr clap_host_params_t kParams{
        [](const clap_host_t* h, clap_param_rescan_flags) { Of(h).OnMain("params.rescan"); },
        [](const clap_host_t* h, clap_id, clap_param_clear_flags) { Of(h).OnMain("params.clear"); },
        [](const clap_host_t*) {}};
    static constexpr clap_host_state_t kState{
        [](const clap_host_t* h) { Of(h).OnMain("state.mark_dirty"); }};
    static constexpr HostChangedPart kLatency{
        [](const clap_host_t* h) { Of(h).OnMain("latency.changed"); }};
    static constexpr HostChangedPart kTail{[](const clap_host_t*) {}};
    static constexpr HostLogPart kLog{[](const clap_host_t*, int32_t, const char*) {}};
    static constexpr HostThreadPart kThreads{[](const clap_host_t* h) { return Of(h).IsMain(); },
                                             [](const clap_host_t*) { return audioDepth > 0; }};
    static constexpr clap_host_timer_support_t kTimers{
        [](const clap_host_t* h, uint32_t, clap_id* timer) {
            Of(h).OnMain("timer.register");
            *timer = static_cast<clap_id>(Of(h).timers++);
            return true;
        },
        [](const clap_host_t* h, clap_id) {
            Of(h).OnMain("timer.unregister");
            return --Of(h).timers >= 0;
        }};
    static constexpr HostPresetPart kPresets{
        [](const clap_host_t* h, uint32_t, const char*, const char*, int32_t, const char* text) {
            Of(h).OnMain("preset-load.on_error");
            Of(h).presetError = text != nullptr ? text : "";
        },
        [](const clap_host_t* h, uint32_t, const char*, const char*) {
            Of(h).OnMain("preset-load.loaded");
            ++Of(h).presetsLoaded;
        }};
    const std::pair<const char*, const void*> parts[]{{CLAP_EXT_PARAMS, &kParams},
                                                      {CLAP_EXT_STATE, &kState},
                                                      {CLAP_EXT_LATENCY, &kLatency},
                                                      {"clap.tail", &kTail},
                                                      {"clap.log", &kLog},
                                                      {CLAP_EXT_THREAD_CHECK, &kThreads},
                                                      {CLAP_EXT_TIMER_SUPPORT, &kTimers},
                                                      {"clap.preset-load/2", &kPresets}};
    for (const auto& [name, part] : parts)
        if (std::strcmp(name, id) == 0)
            return part;
    return nullptr;
}

// ---- Life

ClapInstance::ClapInstance(const ClapLibrary& library)
    : host{CLAP_VERSION,
           this,
           "claphost",
           "",
           "",
           "1.0",
           Extension,
           [](const clap_host_t*) {},
           [](const clap_host_t*) {},
           [](const clap_host_t*) {}} {
    const clap_plugin_factory_t& factory = library.Factory();
    plugin = factory.create_plugin(&factory, &host, library.Descriptor().id);
    Require(plugin != nullptr, "The factory makes no plug-in.");
    Require(plugin->init(plugin), "The plug-in's init answers false.");
    if (const auto* const params = Find<clap_plugin_params_t>(CLAP_EXT_PARAMS)) {
        parameters.resize(params->count(plugin));
        for (uint32_t i = 0; i < parameters.size(); ++i)
            Require(params->get_info(plugin, i, &parameters[i]),
                    "A parameter below the count has no info.");
    }
}

ClapInstance::~ClapInstance() {
    if (active)
        Deactivate();
    plugin->destroy(plugin);
}

void ClapInstance::ReadPorts(bool isInput, std::vector<uint32_t>& channels) const {
    channels.clear();
    const auto& ports = Get<clap_plugin_audio_ports_t>(CLAP_EXT_AUDIO_PORTS);
    for (uint32_t i = 0; i < ports.count(plugin, isInput); ++i) {
        clap_audio_port_info_t info{};
        Require(ports.get(plugin, i, isInput, &info), "A port below the count has no info.");
        channels.push_back(info.channel_count);
    }
}

void ClapInstance::Activate(double rate) {
    ReadPorts(true, inputChannels);
    ReadPorts(false, outputChannels);
    Require(plugin->activate(plugin, rate, 1, kLongest), "The plug-in refuses to be activated.");
    bool started = false;
    {
        const AudioThread audio;
        started = plugin->start_processing(plugin);
    }
    Require(started, "The plug-in refuses to start processing.");
    active = true;
}

void ClapInstance::Deactivate() {
    {
        const AudioThread audio;
        plugin->stop_processing(plugin);
    }
    plugin->deactivate(plugin);
    active = false;
}

void ClapInstance::Reset() {
    const AudioThread audio;
    plugin->reset(plugin);
}

// ---- Sound

Sound ClapInstance::ProcessOnce(const Sound& input, const EventList& events, const RunPlan& plan,
                                const clap_event_transport_t* song) {
    const size_t frames = input[0].size();
    std::vector<PortMemory> inputs, outputs;
    for (size_t i = 0; i < inputChannels.size(); ++i)
        inputs.emplace_back(inputChannels[i], i == 0 ? input : Sound(), frames);
    for (const uint32_t channels : outputChannels)
        outputs.emplace_back(channels, Sound(channels, std::vector<float>(frames, 9.0f)), frames);
    std::vector<clap_audio_buffer_t> in, out;
    for (PortMemory& port : inputs)
        in.push_back(port.Buffer(plan.wide));
    for (PortMemory& port : outputs)
        out.push_back(port.Buffer(plan.wide));
    const bool shared = plan.inPlace && inputChannels[0] == outputChannels[0];
    if (shared) {
        out[0].data32 = in[0].data32;
        out[0].data64 = in[0].data64;
    }
    const std::vector<PortMemory> before = inputs;
    EventSink sink(static_cast<uint32_t>(frames));
    const clap_output_events_t given = sink.Output();
    const clap_input_events_t taken = events.Input();
    clap_process_t process{steadyTime,
                           static_cast<uint32_t>(frames),
                           song,
                           in.data(),
                           out.data(),
                           static_cast<uint32_t>(in.size()),
                           static_cast<uint32_t>(out.size()),
                           &taken,
                           &given};
    int32_t status = CLAP_PROCESS_ERROR;
    {
        const AudioThread audio;
        status = plugin->process(plugin, &process);
    }
    steadyTime += static_cast<int64_t>(frames);
    Require(status >= CLAP_PROCESS_CONTINUE && status <= CLAP_PROCESS_SLEEP,
            "process answers an error.");
    Require(sink.Problem() == nullptr, sink.Problem() != nullptr ? sink.Problem() : "");
    for (size_t i = shared ? 1 : 0; i < inputs.size(); ++i)
        Require(SameBits(inputs[i].narrow, before[i].narrow) &&
                    (!plan.wide || SameBits(inputs[i].Content(true), before[i].Content(true))),
                "An input has been written to.");
    const Sound sound = (shared ? inputs : outputs)[0].Content(plan.wide);
    if (plan.bounded)
        CheckOutput(sound);
    return sound;
}

Sound ClapInstance::Run(const Sound& input, const EventList& events, const RunPlan& plan) {
    Sound whole(outputChannels.at(0));
    const auto length = static_cast<uint32_t>(input[0].size());
    for (uint32_t done = 0; done < length;) {
        const uint32_t frames = std::min({plan.nextFrames(), length - done, kLongest});
        Sound part;
        for (uint32_t c = 0; c < inputChannels.at(0); ++c)
            part.emplace_back(input[c].begin() + done, input[c].begin() + done + frames);
        const Sound out = ProcessOnce(part, events.Between(done, done + frames), plan,
                                      plan.song ? plan.song(done) : nullptr);
        for (size_t c = 0; c < whole.size(); ++c)
            whole[c].insert(whole[c].end(), out[c].begin(), out[c].end());
        done += frames;
    }
    ThrowComplaint();
    return whole;
}

// ---- Parameters

void ClapInstance::Flush(const EventList& events) {
    EventSink sink(1);
    const clap_output_events_t given = sink.Output();
    const clap_input_events_t taken = events.Input();
    const auto& params = Get<clap_plugin_params_t>(CLAP_EXT_PARAMS);
    if (active) {
        const AudioThread audio;
        params.flush(plugin, &taken, &given);
    } else {
        params.flush(plugin, &taken, &given);
    }
    Require(sink.Problem() == nullptr, sink.Problem() != nullptr ? sink.Problem() : "");
    ThrowComplaint();
}

double ClapInstance::Value(clap_id id) const {
    double value = NAN;
    Require(Get<clap_plugin_params_t>(CLAP_EXT_PARAMS).get_value(plugin, id, &value) &&
                std::isfinite(value),
            "A parameter has no value.");
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
    Require(Get<clap_plugin_params_t>(CLAP_EXT_PARAMS)
                .value_to_text(plugin, id, value, text, sizeof text),
            "A value has no text.");
    return text;
}

EventList ClapInstance::SetAll(const std::function<double()>& share) const {
    EventList events;
    for (const clap_param_info_t& info : parameters) {
        double value = info.min_value + share() * (info.max_value - info.min_value);
        if ((info.flags & CLAP_PARAM_IS_STEPPED) != 0)
            value = std::round(value);
        events.Add(ValueAt(0, info.id, value));
    }
    return events;
}

// ---- State

std::string ClapInstance::Save(uint64_t bytesAtATime) const {
    struct Target {
        std::string text;
        uint64_t most;
    } target{{}, bytesAtATime};
    const clap_ostream_t stream{&target,
                                [](const clap_ostream_t* to, const void* bytes, uint64_t size) {
                                    auto& [text, most] = *static_cast<Target*>(to->ctx);
                                    const uint64_t taken = std::min(size, most);
                                    text.append(static_cast<const char*>(bytes), taken);
                                    return static_cast<int64_t>(taken);
                                }};
    Require(Get<clap_plugin_state_t>(CLAP_EXT_STATE).save(plugin, &stream),
            "Saving the state answers false.");
    return target.text;
}

bool ClapInstance::Load(const std::string& state, uint64_t bytesAtATime) {
    struct Source {
        const std::string& text;
        uint64_t most, done;
    } source{state, bytesAtATime, 0};
    const clap_istream_t stream{
        &source, [](const clap_istream_t* from, void* bytes, uint64_t size) {
            auto& [text, most, done] = *static_cast<Source*>(from->ctx);
            const uint64_t given = std::min({size, most, text.size() - done});
            std::memcpy(bytes, text.data() + done, given);
            done += given;
            return static_cast<int64_t>(given);
        }};
    const bool loaded = Get<clap_plugin_state_t>(CLAP_EXT_STATE).load(plugin, &stream);
    ThrowComplaint();
    return loaded;
}

/// Tesserae keeps the seed of its chance as a member of its state.
bool ClapInstance::FixChance(uint32_t seed) {
    std::string state = Save();
    const size_t place = state.find("\"morph\"");
    if (state.find("\"tesserae-instrument\"") == std::string::npos || place == std::string::npos)
        return false;
    return Load(state.insert(place, "\"seed\": " + std::to_string(seed) + ", "));
}

bool ClapInstance::LoadPreset(uint32_t kind, const char* location, const char* key) {
    presetError.clear();
    const bool loaded =
        Get<PresetPart>("clap.preset-load/2").fromLocation(plugin, kind, location, key);
    ThrowComplaint();
    return loaded;
}

uint32_t ClapInstance::Tail() const {
    const TailPart& tail = Get<TailPart>("clap.tail");
    const uint32_t frames = tail.get(plugin);
    uint32_t heard = 0;
    {
        const AudioThread audio;
        heard = tail.get(plugin);
    }
    Require(heard == frames, "Two threads are told two tails.");
    return frames;
}

uint32_t ClapInstance::Latency() const {
    const auto* const latency = Find<clap_plugin_latency_t>(CLAP_EXT_LATENCY);
    return latency != nullptr ? latency->get(plugin) : 0;
}

}  // namespace Quorvan::ClapHost
