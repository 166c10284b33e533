#include "plugins/dpf/DpfPlugin.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <exception>

#include "host/instrument/DefaultMidiMap.h"
#include "host/parameters/SharedCatalog.h"
#include "host/state/PresetFormat.h"
#include "presets/FactoryPresets.h"

namespace Quorvan::Plugins {

namespace {

using namespace DISTRHO_NAMESPACE;

constexpr const char* kStateKey = "instrument";
constexpr size_t kMostMidi = 4096;

uint32_t ControlCount() { return static_cast<uint32_t>(Host::HostControls().size()); }
uint32_t PresetCount() { return static_cast<uint32_t>(Host::FactoryPresets().size()); }

/// Group paths in the order of the controls; their places are the ids.
std::vector<std::string> GroupPaths() {
    std::vector<std::string> paths;
    for (const Host::HostControl& control : Host::HostControls())
        if (std::find(paths.begin(), paths.end(), control.group) == paths.end())
            paths.emplace_back(control.group);
    return paths;
}

}  // namespace

DpfPlugin::DpfPlugin()
    : Plugin(ControlCount(), PresetCount(), 1),
      instrument(Host::SharedCatalog()),
      groups(GroupPaths()),
      caretaker(instrument,
                [](const std::string& problem) { d_stderr("Tesserae: %s", problem.c_str()); }) {
    for (uint32_t id = 0; id < ControlCount(); ++id)
        ranges.push_back(RangeOf(id));
    heard.reserve(kMostMidi);
    // A new processor is silent; a new plug-in sounds.
    instrument.LoadPreset(
        *Host::ReadPreset(Host::FactoryPresets().front().json, Host::SharedCatalog()).value);
    for (uint32_t id = 0; id < ControlCount(); ++id)
        ports.Begin(id, getParameterValue(id));
    if (isDummyInstance())
        return;
    if (const std::string problem = Host::LoadDefaultMidiMap(instrument); !problem.empty())
        d_stderr("Tesserae: %s", problem.c_str());
    // Hosts ask for the latency ahead of everything else.
    Start();
}

DpfPlugin*& DpfPlugin::Newest() {
    static thread_local DpfPlugin* newest = nullptr;
    return newest;
}

const char* DpfPlugin::getDescription() const {
    return "Live granular processor: a looping tape, played back as a cloud of grains.";
}

uint32_t DpfPlugin::getVersion() const {
    return d_version(TESSERAE_VERSION_MAJOR, TESSERAE_VERSION_MINOR, TESSERAE_VERSION_PATCH);
}

void DpfPlugin::initAudioPort(bool input, uint32_t index, AudioPort& port) {
    Plugin::initAudioPort(input, index, port);
    const bool isSide = input && index >= kMainInputs;
    const bool isMono = input && !isSide && kMainInputs == 1;
    const bool isLeft = (isSide ? index - kMainInputs : index) == 0;
    port.groupId = isSide ? kPortGroupNone : isMono ? kPortGroupMono : kPortGroupStereo;
    port.hints = isSide ? kAudioPortIsSidechain : 0;
    port.name = isSide ? "Side-Chain" : input ? "Input" : "Output";
    port.symbol = isSide ? "side" : input ? "in" : "out";
    if (isMono)
        return;
    port.name += isLeft ? " Left" : " Right";
    port.symbol += isLeft ? "_l" : "_r";
}

DpfPlugin::Range DpfPlugin::RangeOf(uint32_t id) const {
    const Host::HostControl& control = *Host::FindHostControl(id);
    if (control.target != Host::ControlTarget::Parameter)
        return {};
    const Host::ParameterInfo& info = instrument.Catalog()[control.index];
    if (info.StepCount() > 0)
        return {0.0f, static_cast<float>(info.StepCount() - 1), true};
    const double middle = instrument.Catalog().Value(control.index, 0.5f);
    const double width = info.maximum - info.minimum;
    const bool straight =
        std::abs(middle - 0.5 * (info.minimum + info.maximum)) < 1.0e-4 * std::abs(width);
    return straight ? Range{static_cast<float>(info.minimum), static_cast<float>(info.maximum)}
                    : Range{};
}

void DpfPlugin::initParameter(uint32_t index, Parameter& parameter) {
    const Host::HostControl& control = *Host::FindHostControl(index);
    if (index == 0)
        return parameter.initDesignation(kParameterDesignationBypass);
    const Range& range = ranges[index];
    parameter.hints = kParameterIsAutomatable;
    parameter.name = std::string(control.name).c_str();
    parameter.symbol = std::string(control.symbol).c_str();
    parameter.ranges = {getParameterValue(index), range.low, range.high};
    parameter.groupId = static_cast<uint32_t>(
        std::find(groups.begin(), groups.end(), control.group) - groups.begin());
    if (control.target != Host::ControlTarget::Parameter)
        return;
    const Host::ParameterInfo& info = instrument.Catalog()[control.index];
    if (!range.stepped) {
        if (range.low != 0.0f || range.high != 1.0f)
            parameter.unit = Host::SignOf(info.unit);
        return;
    }
    parameter.hints |= kParameterIsInteger;
    if (info.kind == Host::ParameterKind::Switch)
        parameter.hints |= kParameterIsBoolean;
    const auto count = static_cast<uint8_t>(std::min<size_t>(info.choices.size(), 255));
    parameter.enumValues.count = count;
    parameter.enumValues.restrictedMode = true;
    parameter.enumValues.values = new ParameterEnumerationValue[count];
    for (uint8_t i = 0; i < count; ++i) {
        parameter.enumValues.values[i].value = static_cast<float>(i);
        parameter.enumValues.values[i].label = info.choices[i].c_str();
    }
}

void DpfPlugin::initPortGroup(uint32_t groupId, PortGroup& group) {
    if (groupId >= groups.size())
        return Plugin::initPortGroup(groupId, group);
    group.name = groups[groupId].c_str();
    std::string symbol = groups[groupId];
    std::replace_if(
        symbol.begin(), symbol.end(), [](char letter) { return !std::isalnum(letter); }, '_');
    group.symbol = ("group_" + symbol).c_str();
}

void DpfPlugin::initProgramName(uint32_t index, String& name) {
    const auto read = Host::ReadPreset(Host::FactoryPresets()[index].json, Host::SharedCatalog());
    name = read.value ? read.value->name.c_str() : "";
}

void DpfPlugin::initState(uint32_t, State& state) {
    state.key = kStateKey;
    state.label = "Instrument";
    state.hints = kStateIsOnlyForDSP;
}

float DpfPlugin::getParameterValue(uint32_t index) const {
    const Range& range = ranges[index];
    const float position = instrument.ControlPosition(index);
    if (range.stepped)
        return static_cast<float>(instrument.ControlValue(index, position));
    return range.low + position * (range.high - range.low);
}

/// A value that shows where the control stands already is no news: the way to it and back rounds.
void DpfPlugin::setParameterValue(uint32_t index, float value) {
    const Range& range = ranges[index];
    if (!ports.Hear(index, value) || value == getParameterValue(index))
        return;
    const float position =
        range.stepped ? instrument.PositionOfControlValue(index, static_cast<double>(value))
                      : (value - range.low) / (range.high - range.low);
    instrument.PutControl(index, position);
}

/// Hosts may call this from anywhere, the audio thread too.
void DpfPlugin::loadProgram(uint32_t index) {
    if (isDummyInstance()) {
        const auto read =
            Host::ReadPreset(Host::FactoryPresets()[index].json, Host::SharedCatalog());
        if (read.value)
            instrument.LoadPreset(*read.value);
        return;
    }
    caretaker.AskForFactoryPreset(index);
}

String DpfPlugin::getState(const char*) const {
    const auto apart = ports.Apart([this](uint32_t id) { return getParameterValue(id); });
    return String(instrument.SaveState(apart).c_str());
}

void DpfPlugin::setState(const char* key, const char* value) {
    if (std::strcmp(key, kStateKey) != 0 || *value == '\0')
        return;
    // VST3 names the program that was chosen once ahead of the state, which is the newer of both.
    caretaker.ForgetFactoryPreset();
    bool loaded = true;
    for (const Host::Issue& issue : instrument.LoadState(value)) {
        d_stderr("Tesserae: %s", issue.text.c_str());
        loaded = loaded && issue.severity != Host::Issue::Severity::Error;
    }
    if (loaded)
        ports.Expect(instrument.LoadedPorts());
}

void DpfPlugin::Start() {
    try {
        Host::StreamFormat format;
        format.sampleRate = getSampleRate();
        format.inputs = kMainInputs;
        format.sideChainInputs = 2;
        instrument.Activate(format);
    } catch (const std::exception& error) {
        d_stderr("Tesserae: %s", error.what());
    }
    setLatency(instrument.LatencyFrames());
}

void DpfPlugin::activate() { Start(); }

void DpfPlugin::deactivate() { instrument.Deactivate(); }

void DpfPlugin::sampleRateChanged(double) { Start(); }

std::optional<Host::Transport> DpfPlugin::Place(uint32_t frames) {
    const TimePosition& time = getTimePosition();
    if (!time.bbt.valid)
        return std::nullopt;
    Host::Transport place;
    const auto& bbt = time.bbt;
    place.tempo = bbt.beatsPerMinute;  // in quarter notes, as hosts tell it in any time signature
    place.playing = time.playing;
    // Ahead of bar 1 the framework is a tick early.
    const double tick = bbt.barStartTick + bbt.tick + (bbt.bar < 1 ? 1.0 : 0.0);
    const double beats = tick / bbt.ticksPerBeat + bbt.beat - 1;
    place.beat = beats * 4.0 / static_cast<double>(bbt.beatType);
    return steady.Steady(place, static_cast<int64_t>(time.frame), frames, instrument);
}

/// Controls move by presets, MIDI and morphs too.
void DpfPlugin::LetPortsFollow() {
    for (uint32_t id = 0; id < ControlCount(); ++id) {
        const float value = getParameterValue(id);
        if (!ports.AsksFor(id, value))
            continue;
#ifdef DISTRHO_PLUGIN_TARGET_LV2
        // The framework hands both on as they are: to a host that counts all ports, audio, two of
        // events and the latency first, and has "enabled" where others have "bypass".
        constexpr uint32_t kFirstControlPort =
            DISTRHO_PLUGIN_NUM_INPUTS + DISTRHO_PLUGIN_NUM_OUTPUTS + 3;
        requestParameterValueChange(kFirstControlPort + id, id == 0 ? 1.0f - value : value);
#else
        requestParameterValueChange(id, value);
#endif
    }
}

#if DISTRHO_PLUGIN_WANT_MIDI_INPUT
void DpfPlugin::run(const float** inputs, float** outputs, uint32_t frames,
                    const MidiEvent* midiEvents, uint32_t midiEventCount) {
    heard.clear();
    for (uint32_t i = 0; i < midiEventCount && heard.size() < kMostMidi; ++i) {
        const MidiEvent& midi = midiEvents[i];
        if (midi.size == 0 || midi.size > 3)
            continue;
        Host::InstrumentEvent event{.frame = midi.frame, .kind = Host::InstrumentEvent::Kind::Midi};
        std::copy_n(midi.data, midi.size, event.midi.begin());
        heard.push_back(event);
    }
    Play(inputs, inputs + kMainInputs, outputs, frames, heard);
}
#endif

void DpfPlugin::Play(const float* const* inputs, const float* const* sideChain, float** outputs,
                     uint32_t frames, std::span<const Host::InstrumentEvent> events) {
    Host::InstrumentBuffer buffer;
    buffer.audio.inputs = inputs;
    buffer.audio.sideChain = sideChain;
    buffer.audio.outputs = outputs;
    buffer.audio.frames = frames;
    buffer.events = events;
    buffer.transport = Place(frames);
    instrument.Process(buffer, nobody);
    LetPortsFollow();
}

}  // namespace Quorvan::Plugins

START_NAMESPACE_DISTRHO

Plugin* createPlugin() {
    auto* const made = new Quorvan::Plugins::DpfPlugin();
    return Quorvan::Plugins::DpfPlugin::Newest() = made;
}

END_NAMESPACE_DISTRHO
