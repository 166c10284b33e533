#include "python/src/Stream.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <limits>

#include "host/engine/TailEstimator.h"
#include "host/state/PresetFormat.h"
#include "host/state/StateTransfer.h"
#include "primitives/Clock.h"
#include "python/src/ArrayViews.h"
#include "python/src/Errors.h"

namespace py = pybind11;

namespace Quorvan::Python {

namespace {

constexpr uint32_t kOutputs = 2;
constexpr size_t kPiece = 1 << 20;  // frames of one call to the engine

}  // namespace

Stream::Stream(double sampleRate, std::optional<uint64_t> wantedSeed, const std::string& preset,
               uint32_t inputs, std::optional<double> wantedTempo, uint32_t sideInputs)
    : rate(sampleRate),
      seed(wantedSeed.value_or(prims::SeedFromClock())),
      channels(inputs),
      sideChannels(sideInputs) {
    const Host::Preset sound = LoadSound(preset);
    tempo = wantedTempo.value_or(sound.tempo.value_or(tempo));
    if (!(tempo >= 1.0 && tempo <= 999.0))
        RefuseValue("The tempo goes from 1 to 999 beats per minute.");
    Host::Engine fresh(seed);
    fresh.Prepare({.sampleRate = rate,
                   .inputs = channels,
                   .outputs = kOutputs,
                   .sideChainInputs = sideChannels});
    Host::ApplyPreset(sound, fresh, Catalog());
    Start(Host::CaptureState(fresh, Catalog()));
}

/// As a render starts, so that the same sound comes of it.
void Stream::Start(const Host::State& state) {
    engine.emplace(seed);
    engine->SetTransport({tempo, 0.0, true});
    engine->Prepare({.sampleRate = rate,
                     .inputs = channels,
                     .outputs = kOutputs,
                     .sideChainInputs = sideChannels,
                     .sendsFeedback = false});
    Host::ApplyState(state, *engine, Catalog());
    engine->Idle(1);
    waiting.clear();
}

py::array_t<float> Stream::Process(const py::object& sound, const py::object& sideChain) {
    const ArrayView input(sound);
    const std::optional<ArrayView> side =
        sideChain.is_none() ? std::nullopt : std::optional<ArrayView>(sideChain);
    if (side && (side->Count() != sideChannels || side->Frames() != input.Frames()))
        RefuseValue("The side-chain has " + std::to_string(side->Count()) + " channels of " +
                    std::to_string(side->Frames()) + " frames instead of " +
                    std::to_string(sideChannels) + " of " + std::to_string(input.Frames()) +
                    ". Processor(sidechain=...) says how many channels there are.");
    if (input.Count() != channels)
        RefuseValue("The processor was made for " + std::to_string(channels) +
                    " channels and gets " + std::to_string(input.Count()) +
                    ". Make it with channels=" + std::to_string(input.Count()) + ".");
    NewArray output(kOutputs, input.Frames());
    {
        const py::gil_scoped_release others;
        const std::lock_guard guard(lock);
        const auto start = std::chrono::steady_clock::now();
        for (size_t at = 0; at < input.Frames(); at += kPiece) {
            std::array<const float*, 2> in{}, key{};
            std::array<float*, kOutputs> out{};
            for (uint32_t c = 0; c < input.Count(); ++c)
                in[c] = input.Channels()[c] + at;
            for (uint32_t c = 0; side && c < sideChannels; ++c)
                key[c] = side->Channels()[c] + at;
            for (uint32_t c = 0; c < kOutputs; ++c)
                out[c] = output.rows[c] + at;
            const auto frames = static_cast<uint32_t>(std::min(kPiece, input.Frames() - at));
            engine->Process({.inputs = in.data(),
                             .outputs = out.data(),
                             .sideChain = side ? key.data() : nullptr,
                             .frames = frames});
        }
        engineSeconds +=
            std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        if (engine->WaitingWrites() == 0)
            waiting.clear();
    }
    return output.array;
}

void Stream::Reset() {
    const std::lock_guard guard(lock);
    Start(Now());
}

Host::State Stream::Now() const {
    Host::State state = Host::CaptureState(*engine, Catalog());
    for (Host::ParameterValue& value : state.parameters)
        if (const auto found = waiting.find(value.index); found != waiting.end())
            value.position = found->second;
    return state;
}

std::string Stream::Capture() const {
    const std::lock_guard guard(lock);
    Host::Engine other(seed);  // where nothing waits
    other.Prepare({.sampleRate = rate, .inputs = channels, .outputs = kOutputs});
    Host::ApplyState(Now(), other, Catalog());
    Host::Preset preset = Host::CapturePreset(other, Catalog());
    preset.tempo = tempo;
    return Host::WritePreset(preset, Catalog());
}

void Stream::Load(const std::string& preset) {
    const Host::Preset sound = LoadSound(preset);
    const std::lock_guard guard(lock);
    Host::ApplyPreset(sound, *engine, Catalog());
    waiting.clear();
}

uint32_t Stream::Latency() const { return engine->LatencyFrames(); }

double Stream::Tail() {
    const std::lock_guard guard(lock);
    const Host::Tail tail = Host::EstimateTail(*engine, Catalog());
    return tail.endless ? std::numeric_limits<double>::infinity() : tail.seconds;
}

double Stream::Tempo() const { return tempo; }

void Stream::SetTempo(double wanted) {
    if (!(wanted >= 1.0 && wanted <= 999.0))
        RefuseValue("The tempo goes from 1 to 999 beats per minute.");
    const std::lock_guard guard(lock);
    tempo = wanted;
    engine->SetTempo(tempo);
}

Host::PresentSettings Stream::Present() const {
    return {Catalog(), [this](uint32_t index) {
                const auto found = waiting.find(index);
                return found != waiting.end() ? found->second : engine->Position(index);
            }};
}

std::string Stream::Text(const std::string& name) const {
    const std::lock_guard guard(lock);
    const Host::PresentSettings present = Present();
    const uint32_t index = FindParameter(name, present);
    return Catalog().Text(index, present.Position(index), present.Texts());
}

double Stream::Value(const std::string& name) const {
    const std::lock_guard guard(lock);
    const Host::PresentSettings present = Present();
    const uint32_t index = FindParameter(name, present);
    return Catalog().Value(index, present.Position(index), present.Texts());
}

float Stream::Position(const std::string& name) const {
    const std::lock_guard guard(lock);
    const Host::PresentSettings present = Present();
    return present.Position(FindParameter(name, present));
}

void Stream::Put(const std::string& name, const Setting& value) {
    const std::lock_guard guard(lock);
    const Host::PresentSettings present = Present();
    const uint32_t index = FindParameter(name, present);
    Write(index, PositionOf(index, value, present));
}

void Stream::PutPosition(const std::string& name, double position) {
    if (!(position >= 0.0 && position <= 1.0))
        RefuseValue("A position goes from 0 to 1.");
    const std::lock_guard guard(lock);
    Write(FindParameter(name, Present()), static_cast<float>(position));
}

void Stream::Write(uint32_t index, float position) {
    if (!engine->Write(index, position))
        RefuseValue("Too many changes wait for sound. Call process first.");
    waiting[index] = position;
}

}  // namespace Quorvan::Python
