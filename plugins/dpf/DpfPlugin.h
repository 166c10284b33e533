#pragma once

#include <array>
#include <span>
#include <string>
#include <vector>

#include "DistrhoPlugin.hpp"
#include "host/instrument/Instrument.h"
#include "plugins/dpf/PortMemory.h"
#include "plugins/shared/Caretaker.h"
#include "plugins/shared/SteadyPlace.h"

namespace Quorvan::Plugins {

/// One instance in a host of a format that the framework speaks.
///
/// Its parameters are the host controls by id. Those that always stand for one parameter have its
/// choices, or its unit where the knob's travel is straight in it; all others are positions 0..1,
/// for what they stand for varies. State is the instrument's text under one key; programs are the
/// factory presets.
class DpfPlugin final : public DISTRHO_NAMESPACE::Plugin {
public:
    DpfPlugin();

    /// What a layer of ours hands over beside the framework, for the next buffer alone.
    struct Beside {
        std::array<const float*, 2> sideChain{};
        std::span<const Host::InstrumentEvent> events;
    };

    /// For the face, which works on the same instrument.
    Host::Instrument& Played() { return instrument; }
    void Take(const Beside& next) { beside = next; }
    /// As it was within the last second; infinite where it may ring for ever.
    double TailFrames() const { return caretaker.TailSeconds() * getSampleRate(); }
    /// What this thread has made last.
    static DpfPlugin*& Newest();
    float getParameterValue(uint32_t index) const override;

protected:
    const char* getLabel() const override { return kMainInputs == 1 ? "TesseraeMono" : "Tesserae"; }
    const char* getDescription() const override;
    const char* getMaker() const override { return DISTRHO_PLUGIN_BRAND; }
    const char* getLicense() const override { return "Proprietary"; }
    uint32_t getVersion() const override;
    int64_t getUniqueId() const override {
        return d_cconst('Q', 't', 's', kMainInputs == 1 ? 'm' : 'r');
    }

    void initAudioPort(bool input, uint32_t index, DISTRHO_NAMESPACE::AudioPort& port) override;
    void initParameter(uint32_t index, DISTRHO_NAMESPACE::Parameter& parameter) override;
    void initPortGroup(uint32_t groupId, DISTRHO_NAMESPACE::PortGroup& group) override;
    void initProgramName(uint32_t index, DISTRHO_NAMESPACE::String& name) override;
    void initState(uint32_t index, DISTRHO_NAMESPACE::State& state) override;

    void setParameterValue(uint32_t index, float value) override;
    void loadProgram(uint32_t index) override;
    DISTRHO_NAMESPACE::String getState(const char* key) const override;
    void setState(const char* key, const char* value) override;

    void activate() override;
    void deactivate() override;
    void sampleRateChanged(double newSampleRate) override;
#if DISTRHO_PLUGIN_WANT_MIDI_INPUT
    void run(const float** inputs, float** outputs, uint32_t frames,
             const DISTRHO_NAMESPACE::MidiEvent* midiEvents, uint32_t midiEventCount) override;
#else
    void run(const float** inputs, float** outputs, uint32_t frames) override {
        Play(inputs, beside.sideChain.data(), outputs, frames, beside.events);
    }
#endif

private:
    static constexpr uint32_t kMainInputs = DISTRHO_PLUGIN_NUM_INPUTS - 2;

    /// The straight way between a position and what the host sees.
    struct Range {
        float low = 0.0f, high = 1.0f;
        bool stepped = false;
    };
    Range RangeOf(uint32_t id) const;
    std::optional<Host::Transport> Place(uint32_t frames);
    void LetPortsFollow();
    void Start();
    void Play(const float* const* inputs, const float* const* sideChain, float** outputs,
              uint32_t frames, std::span<const Host::InstrumentEvent> events);

    // Saving a state changes nothing that a host could see.
    mutable Host::Instrument instrument;
    std::vector<Range> ranges;
    std::vector<std::string> groups;
    std::vector<Host::InstrumentEvent> heard;
    Beside beside;
    PortMemory ports;
    Host::ControlSink nobody;  ///< LetPortsFollow hears of all moves
    SteadyPlace steady;
    Caretaker caretaker;
};

}  // namespace Quorvan::Plugins
