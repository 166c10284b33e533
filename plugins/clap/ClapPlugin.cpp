#include "plugins/clap/ClapPlugin.h"

#include <algorithm>
#include <cstdio>
#include <exception>
#include <limits>
#include <new>
#include <utility>
#include <vector>

#include "clap/ext/latency.h"
#include "clap/ext/thread-check.h"
#include "host/instrument/DefaultMidiMap.h"
#include "host/parameters/SharedCatalog.h"
#include "host/state/PresetFormat.h"
#include "plugins/clap/Extensions.h"
#include "plugins/clap/OutputEvents.h"
#include "presets/FactoryPresets.h"

namespace Quorvan::Clap {

namespace {

constexpr uint32_t kPollMilliseconds = 50;
/// A state has some ten kilobytes; more than this is none.
constexpr size_t kMostStateBytes = 64 << 20;

}  // namespace

const clap_plugin_t* ClapPlugin::Create(const clap_host_t& host) {
    try {
        return &(new ClapPlugin(host))->plugin;
    } catch (const std::exception&) {
        return nullptr;
    }
}

ClapPlugin::ClapPlugin(const clap_host_t& pluginHost)
    : instrument(Host::SharedCatalog()),
      gui(*this, pluginHost),
      host(pluginHost),
      plugin(PluginFunctions(this)),
      reader(instrument) {
    // A new processor is silent; a new plug-in sounds.
    instrument.LoadPreset(
        *Host::ReadPreset(Host::FactoryPresets().front().json, Host::SharedCatalog()).value);
    for (const Host::HostControl& control : Host::HostControls())
        defaults[control.id] = instrument.ControlPosition(control.id);
}

ClapPlugin::~ClapPlugin() {
    gui.Destroy();
    const auto* const timers = HostExtension<clap_host_timer_support_t>(CLAP_EXT_TIMER_SUPPORT);
    if (timers != nullptr && timer != CLAP_INVALID_ID)
        timers->unregister_timer(&host, timer);
}

bool ClapPlugin::Init() {
    hostTail = HostExtension<HostTail>(kTailExtension);
    FollowTargets();
    if (const std::string problem = Host::LoadDefaultMidiMap(instrument); !problem.empty())
        Log(kLogWarning, problem);
    if (const auto* const timers = HostExtension<clap_host_timer_support_t>(CLAP_EXT_TIMER_SUPPORT))
        timers->register_timer(&host, kPollMilliseconds, &timer);
    knownChanges = instrument.Changes();
    return true;
}

bool ClapPlugin::Activate(double newRate, uint32_t longestBuffer) {
    try {
        ports.Prepare(longestBuffer);
        instrument.Activate(ports.Format(newRate));
    } catch (const std::exception& error) {
        Log(kLogError, error.what());
        return false;
    }
    rate = newRate;
    MeasureTail();
    const auto* const latency = HostExtension<clap_host_latency_t>(CLAP_EXT_LATENCY);
    if (latency != nullptr && latencyTold != instrument.LatencyFrames())
        latency->changed(&host);
    latencyTold = instrument.LatencyFrames();
    return true;
}

void ClapPlugin::Deactivate() { instrument.Deactivate(); }

clap_process_status ClapPlugin::Process(const clap_process_t& process) {
    if (!ports.Fits(process))
        return CLAP_PROCESS_ERROR;
    if (hostTail != nullptr && tailHasMoved.exchange(false, std::memory_order_relaxed))
        hostTail->changed(&host);
    ports.Begin(process);
    const uint32_t frames = process.frames_count;
    OutputEvents output(instrument, process.out_events);
    Host::InstrumentBuffer buffer;
    buffer.transport = reader.TransportOf(process.transport);
    uint32_t done = 0;
    reader.Read(process.in_events, [&](std::vector<Host::InstrumentEvent>& events, bool isLast) {
        const uint32_t end = isLast ? frames : std::clamp(events.back().frame, done, frames);
        for (Host::InstrumentEvent& event : events)
            event.frame = std::max(event.frame, done) - done;
        buffer.audio = ports.Part(done, end - done);
        buffer.events = events;
        output.ShiftBy(done);
        instrument.Process(buffer, output);
        // The song runs on by itself from the first piece.
        if (end > done && buffer.transport)
            buffer.transport = instrument.Place();
        done = end;
    });
    ports.End(process);
    return CLAP_PROCESS_CONTINUE;
}

void ClapPlugin::Flush(const clap_input_events_t* in, const clap_output_events_t* out) {
    OutputEvents output(instrument, out);
    Host::InstrumentBuffer buffer;
    buffer.transport = instrument.Place();
    reader.Read(in, [&](std::vector<Host::InstrumentEvent>& events, bool) {
        for (Host::InstrumentEvent& event : events)
            event.frame = 0;
        buffer.events = events;
        instrument.Process(buffer, output);
    });
}

bool ClapPlugin::GetParameterInfo(uint32_t index, clap_param_info_t& info) const {
    const Host::HostControl* const control = Host::FindHostControl(index);
    if (control == nullptr)
        return false;
    const uint32_t steps = instrument.ControlSteps(control->id);
    info = {};
    info.id = control->id;
    // A morph writes settings; an offset to it would leave its trace in them.
    const bool modulatable = control->target != Host::ControlTarget::Morph;
    info.flags = CLAP_PARAM_IS_AUTOMATABLE |
                 (modulatable ? static_cast<uint32_t>(CLAP_PARAM_IS_MODULATABLE) : 0u) |
                 (steps > 0 ? static_cast<uint32_t>(CLAP_PARAM_IS_STEPPED) : 0u);
    if (control->id == 0)
        info.flags = CLAP_PARAM_IS_AUTOMATABLE | CLAP_PARAM_IS_STEPPED | CLAP_PARAM_IS_BYPASS;
    std::snprintf(info.name, sizeof info.name, "%s", std::string(control->name).c_str());
    std::snprintf(info.module, sizeof info.module, "%s", std::string(control->group).c_str());
    info.max_value = steps > 0 ? steps - 1 : 1.0;
    info.default_value = instrument.ControlValue(control->id, defaults[control->id]);
    return true;
}

bool ClapPlugin::SaveState(const clap_ostream_t& stream) {
    const std::string text = instrument.SaveState();
    for (size_t done = 0; done < text.size();) {
        const int64_t written = stream.write(&stream, text.data() + done, text.size() - done);
        if (written <= 0)
            return false;
        done += static_cast<size_t>(written);
    }
    return true;
}

bool ClapPlugin::LoadState(const clap_istream_t& stream) {
    std::string text;
    char piece[4096];
    for (;;) {
        const int64_t got = stream.read(&stream, piece, sizeof piece);
        if (got < 0 || text.size() > kMostStateBytes)
            return false;
        if (got == 0)
            break;
        text.append(piece, static_cast<size_t>(got));
    }
    bool loaded = true;
    for (const Host::Issue& issue : instrument.LoadState(text)) {
        const bool isError = issue.severity == Host::Issue::Severity::Error;
        Log(isError ? kLogError : kLogWarning, issue.text);
        loaded = loaded && !isError;
    }
    if (loaded)
        TellOfNewSound();
    return loaded;
}

Host::PresetLibrary& ClapPlugin::Library() {
    if (library == nullptr)
        library = std::make_unique<Host::PresetLibrary>(
            Host::SharedCatalog(), Host::FactoryPresets(), Host::PresetLibrary::UsualFolder());
    return *library;
}

bool ClapPlugin::Take(const Host::Parsed<Host::Preset>& parsed, std::string& problem) {
    if (!parsed.value) {
        problem = parsed.issues.empty() ? "The preset can't be read." : parsed.issues.front().text;
        return false;
    }
    instrument.LoadPreset(*parsed.value);
    TellOfNewSound();
    return true;
}

bool ClapPlugin::LoadPreset(uint32_t kind, const char* location, const char* key) {
    std::string problem;
    bool loaded = false;
    if (kind == kLocationFile && location != nullptr) {
        loaded = Take(Host::PresetLibrary::Read(location, Host::SharedCatalog()), problem);
    } else if (kind == kLocationPlugin && key != nullptr) {
        const Host::FactoryPreset* const preset = Host::FindFactoryPreset(key);
        if (preset == nullptr)
            problem = Host::UnknownFactoryPreset(key);
        else
            loaded = Take(Host::ReadPreset(preset->json, Host::SharedCatalog()), problem);
    } else {
        problem = "A preset is a file, or one of the plug-in's own by its name.";
    }
    const auto* const hostPresets = HostExtension<HostPresetLoad>(kPresetLoadExtension);
    if (!loaded && hostPresets != nullptr)
        hostPresets->onError(&host, kind, location, key, 0, problem.c_str());
    if (loaded && hostPresets != nullptr)
        hostPresets->loaded(&host, kind, location, key);
    return loaded;
}

void ClapPlugin::OnTimer(clap_id id) {
    if (!gui.TakeTimer(id))
        Poll();
}

/// "Grain Size" and its like stand for another parameter once a mode has changed, whoever has moved
/// that: the host is to read their values and texts anew.
void ClapPlugin::FollowTargets() {
    std::array<uint32_t, Host::kHostControlRoom> now{};
    for (const Host::HostControl& control : Host::HostControls())
        now[control.id] = instrument.ControlTarget(control.id);
    if (now != std::exchange(targets, now))
        RescanValues();
}

void ClapPlugin::Poll() {
    constexpr uint32_t kPollsForATail = 10;
    if (++polls % kPollsForATail == 0)
        MeasureTail();
    FollowTargets();
    const std::optional<uint32_t> program = instrument.Poll();
    std::string problem;
    if (program && !Take(Library().LoadProgram(*program), problem))
        Log(kLogWarning, problem);
    TellOfChanges();
}

/// What no host control shows moves nothing that the host could see.
void ClapPlugin::TellOfChanges() {
    const uint32_t changes = instrument.Changes();
    if (std::exchange(knownChanges, changes) == changes)
        return;
    if (const auto* const state = HostExtension<clap_host_state_t>(CLAP_EXT_STATE))
        state->mark_dirty(&host);
}

void ClapPlugin::RescanValues() {
    if (const auto* const params = HostExtension<clap_host_params_t>(CLAP_EXT_PARAMS))
        params->rescan(&host, CLAP_PARAM_RESCAN_VALUES | CLAP_PARAM_RESCAN_TEXT);
}

void ClapPlugin::TellOfNewSound() {
    MeasureTail();
    RescanValues();
}

bool ClapPlugin::IsMainThread() const {
    const auto* const threads = HostExtension<clap_host_thread_check_t>(CLAP_EXT_THREAD_CHECK);
    return threads != nullptr ? threads->is_main_thread(&host)
                              : std::this_thread::get_id() == maker;
}

uint32_t ClapPlugin::TailFrames() {
    if (IsMainThread())
        MeasureTail();
    return tailFrames.load(std::memory_order_relaxed);
}

void ClapPlugin::MeasureTail() {
    constexpr auto kEndless = static_cast<uint32_t>(std::numeric_limits<int32_t>::max());
    const Host::Tail tail = instrument.GetTail();
    const double frames = tail.seconds * rate;
    const uint32_t now =
        tail.endless || frames >= kEndless ? kEndless : static_cast<uint32_t>(frames);
    if (tailFrames.exchange(now, std::memory_order_relaxed) != now)
        tailHasMoved.store(true, std::memory_order_relaxed);
}

void ClapPlugin::Log(int32_t severity, const std::string& sentence) const {
    if (const auto* const log = HostExtension<HostLog>(kLogExtension))
        log->log(&host, severity, sentence.c_str());
}

}  // namespace Quorvan::Clap
