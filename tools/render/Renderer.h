#pragma once

#include <cstdint>
#include <functional>
#include <limits>
#include <span>
#include <vector>

#include "host/engine/Engine.h"
#include "tools/audio/AudioSource.h"
#include "tools/audio/Planes.h"
#include "tools/render/RenderSink.h"
#include "tools/render/TempoMap.h"
#include "tools/render/WriteFeeder.h"

namespace Quorvan::Tools {

/// Runs sound through a prepared engine from start to end, with the latency taken off the front of
/// the output.
class Renderer {
public:
    /// The engine must be prepared for the rate and the channels of input and sideChain, which may
    /// be null.
    Renderer(Host::Engine& target, AudioSource& input, AudioSource* sideChain);

    /// In order of their frames.
    void SetWrites(std::vector<TimedWrite> timed) { writes = WriteFeeder(std::move(timed)); }
    /// Changes of the song's tempo, each at its very frame. The engine has the first span already.
    void SetSong(const TempoMap& song) { tempos = song.Spans(); }
    /// Frames of output behind the input's end.
    void SetTail(uint64_t frames) { tail = frames; }
    /// Asked after each piece behind the input: whether the output may end ahead of that tail.
    void SetStop(std::function<bool()> question) { mayStop = std::move(question); }
    /// The sinks hear of each slice while the engine is there, to look at it.
    void StopAtSlices() { stopsAtSlices = true; }
    void AddSink(RenderSink& sink) { sinks.push_back(&sink); }

    /// progress hears the frames that are done.
    void Run(const std::function<void(uint64_t)>& progress);

    /// Frames of input that there were, known after Run.
    uint64_t InputFrames() const { return inputFrames; }
    /// Processor time that the engine took, with the feeding of its writes, in seconds.
    double CpuSeconds() const { return cpuSeconds; }

private:
    static constexpr uint64_t kUnknown = std::numeric_limits<uint64_t>::max();

    void ReadPiece();
    void EndInput();
    void ChangeTempo();
    void ProcessPiece();
    void ProcessSlice(uint32_t from, uint32_t frames);
    void GiveInput();
    void GiveOutput(uint64_t reached);
    bool IsOver() const;

    Host::Engine& engine;
    AudioSource& main;
    AudioSource* side;
    std::vector<RenderSink*> sinks;
    WriteFeeder writes;
    std::vector<TempoMap::Span> tempos;
    size_t nextTempo = 1;
    uint64_t tail = 0;
    std::function<bool()> mayStop;

    Planes input, sideChain, output;
    bool stopsAtSlices = false;
    uint32_t piece = 0;  ///< frames of the present piece
    uint64_t fed = 0;    ///< frames that the engine has taken
    uint64_t given = 0;  ///< frames of output that the sinks have
    uint64_t inputFrames = 0;
    uint64_t end = kUnknown;  ///< of the output at most; known when the input has ended
    double cpuSeconds = 0.0;
};

}  // namespace Quorvan::Tools
