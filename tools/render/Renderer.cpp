#include "tools/render/Renderer.h"

#include <algorithm>
#include <array>

#include "tools/support/ProcessorTime.h"

namespace Quorvan::Tools {

namespace {

/// Frames at a time, where no tempo cuts them; the clock of the processor's time is slow to read.
constexpr uint32_t kPiece = 4096;
/// Frames whose writes the engine gets at once: its queue is as long as it is.
constexpr uint32_t kSlice = 1024;

}  // namespace

Renderer::Renderer(Host::Engine& target, AudioSource& mainSource, AudioSource* sideChainSource)
    : engine(target),
      main(mainSource),
      side(sideChainSource),
      input(mainSource.Channels(), kPiece),
      sideChain(sideChainSource != nullptr ? sideChainSource->Channels() : 0, kPiece),
      output(target.Format().outputs, kPiece) {}

void Renderer::Run(const std::function<void(uint64_t)>& progress) {
    while (!IsOver()) {
        ChangeTempo();
        ReadPiece();
        ProcessPiece();
        GiveInput();
        // Slice by slice: what a lossy encoder makes of a sound hangs on how it is cut.
        for (uint32_t from = 0; from < piece; from += kSlice)
            GiveOutput(fed + std::min(from + kSlice, piece));
        fed += piece;
        progress(given);
    }
    for (RenderSink* sink : sinks)
        sink->OnEnd();
}

bool Renderer::IsOver() const { return given >= end || (end != kUnknown && mayStop && mayStop()); }

void Renderer::ReadPiece() {
    size_t got = 0;
    if (end == kUnknown) {
        got = main.Read(input.Pointers(), piece);
        inputFrames += got;
        if (got < piece) {
            EndInput();
            piece = std::min(piece, (static_cast<uint32_t>(got) / kSlice + 1) * kSlice);
        }
    }
    input.ClearFrom(got);
    if (side != nullptr)
        sideChain.ClearFrom(side->Read(sideChain.Pointers(), piece));
}

void Renderer::EndInput() {
    end = inputFrames + tail;
    for (RenderSink* sink : sinks)
        sink->OnInputEnd(inputFrames);
}

/// The tempo of the present frame; the piece ends where it changes next.
void Renderer::ChangeTempo() {
    for (; nextTempo < tempos.size() && tempos[nextTempo].frame <= fed; ++nextTempo)
        engine.SetTempo(tempos[nextTempo].tempo);
    // In the tail the question whether it may end comes more often.
    piece = end == kUnknown && !stopsAtSlices ? kPiece : kSlice;
    if (nextTempo < tempos.size())
        piece = static_cast<uint32_t>(std::min<uint64_t>(piece, tempos[nextTempo].frame - fed));
}

void Renderer::ProcessPiece() {
    const double before = ProcessorSeconds();
    for (uint32_t from = 0; from < piece; from += kSlice)
        ProcessSlice(from, std::min(kSlice, piece - from));
    cpuSeconds += ProcessorSeconds() - before;
}

void Renderer::ProcessSlice(uint32_t from, uint32_t frames) {
    const auto inputs = input.PointersAt(from);
    const auto sides = sideChain.PointersAt(from);
    const auto outputs = output.PointersAt(from);
    Host::AudioBuffers buffers;
    buffers.inputs = inputs.data();
    buffers.outputs = outputs.data();
    buffers.sideChain = side != nullptr ? sides.data() : nullptr;
    buffers.frames = frames;
    writes.Feed(engine, fed + from, fed + from + frames);
    engine.Process(buffers);
}

void Renderer::GiveInput() {
    const SoundPiece sound{fed, piece, input.Pointers(), input.Channels()};
    for (RenderSink* sink : sinks)
        sink->OnInput(sound);
}

/// What there is of it when reached frames have been fed; the piece begins at fed.
void Renderer::GiveOutput(uint64_t reached) {
    const uint64_t latency = engine.LatencyFrames();
    const uint64_t ready = std::min(reached > latency ? reached - latency : 0, end);
    if (ready <= given)
        return;
    // The piece holds the output frames from fed - latency on.
    const auto from = static_cast<size_t>(given + latency - fed);
    std::array<const float*, 2> channels{};
    for (uint32_t c = 0; c < output.Channels(); ++c)
        channels[c] = output[c].data() + from;
    const SoundPiece sound{given, static_cast<size_t>(ready - given), channels.data(),
                           output.Channels()};
    for (RenderSink* sink : sinks)
        sink->OnOutput(sound);
    given = ready;
}

}  // namespace Quorvan::Tools
