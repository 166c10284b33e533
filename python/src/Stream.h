#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include <pybind11/numpy.h>

#include "host/engine/Engine.h"
#include "python/src/Sound.h"

namespace Quorvan::Python {

/// The processor as a stream: what tesserae.Processor is made of.
///
/// Threads  separate ones at once; calls to one wait for each other.
class Stream {
public:
    /// preset as LoadSound takes it; sideChannels may be 0. Throws ValueError for a rate or
    /// channels that nothing runs at.
    Stream(double sampleRate, std::optional<uint64_t> seed, const std::string& preset,
           uint32_t channels, std::optional<double> tempo, uint32_t sideChannels);

    /// (2, frames) of the same length as sound, the latency behind it. A side-chain is as long as
    /// sound; None is silence.
    pybind11::array_t<float> Process(const pybind11::object& sound,
                                     const pybind11::object& sideChain);
    /// Clears what sounds, and starts time, song and chance anew. Parameters stay.
    void Reset();
    /// The sound of now as a preset's JSON text.
    std::string Capture() const;
    void Load(const std::string& preset);

    uint32_t Latency() const;
    /// Seconds; infinite where it may never end.
    double Tail();
    double Rate() const { return rate; }
    double Tempo() const;
    void SetTempo(double wanted);
    uint64_t Seed() const { return seed; }
    /// Time that the engine has worked so far.
    double EngineSeconds() const { return engineSeconds; }
    uint32_t Channels() const { return channels; }
    uint32_t SideChannels() const { return sideChannels; }

    std::string Text(const std::string& name) const;
    double Value(const std::string& name) const;
    float Position(const std::string& name) const;
    void Put(const std::string& name, const Setting& value);
    void PutPosition(const std::string& name, double position);

private:
    void Start(const Host::State& state);
    Host::PresentSettings Present() const;
    Host::State Now() const;
    void Write(uint32_t index, float position);

    double rate;
    uint64_t seed;
    uint32_t channels, sideChannels;
    double tempo = 120.0;
    double engineSeconds = 0.0;
    std::optional<Host::Engine> engine;
    std::map<uint32_t, float> waiting;  ///< writes that no block has taken up yet
    mutable std::mutex lock;
};

}  // namespace Quorvan::Python
