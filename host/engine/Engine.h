#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>

#include "host/engine/EngineListener.h"
#include "host/engine/StreamFormat.h"
#include "host/engine/Transport.h"

namespace Quorvan::Processor {
class IProcessor_V5;
}

namespace Quorvan::Host {

/// A parameter and the position 0..1 to put it at.
struct ParameterValue {
    uint32_t index = 0;
    float position = 0.0f;

    bool operator==(const ParameterValue&) const = default;
};

/// What an engine has counted since Prepare.
struct EngineCounts {
    uint64_t blocks = 0;         ///< blocks processed
    uint64_t badInputs = 0;      ///< samples that were no finite number, taken as 0
    uint64_t badOutputs = 0;     ///< the same of the processor's, given out as 0
    uint64_t refusedWrites = 0;  ///< parameter writes that found the queue full, or made no sense
};

/// One processor with everything that a shell needs around it: a queue that cuts buffers of any
/// length into the processor's blocks, the song clock, timed parameter writes, checks of what goes
/// in and out, and listeners.
///
/// Life      make it, Prepare, then Process again and again. Prepare again for another format: the
///           parameters keep their positions, everything that sounds is cleared.
/// Time      counted in input frames since Prepare (FramesIn). The processor works in blocks of
///           BlockFrames; block k takes the frames from k * BlockFrames on. Results depend on what
///           happens at which frame only, never on how the calls of Process cut the stream.
/// Latency   LatencyFrames: one block for the queue and the processor's own. Output frame n belongs
///           to input frame n - LatencyFrames.
/// Threads   none of its own and no locks: calls come in turn. Process, Write, WriteAt,
///           SetTransport, SetTempo, Panic, Clear, SendFeedback and Restore neither
///           allocate nor wait.
class Engine {
public:
    /// With a seed, all chance in the processor repeats from run to run; each random source gets a
    /// start of its own from it. Without one, the clock of the system decides.
    explicit Engine(std::optional<uint64_t> seed = std::nullopt);
    ~Engine();
    Engine(const Engine&) = delete;
    Engine& operator=(const Engine&) = delete;

    /// Sets everything up for a format, and time to 0. Throws std::invalid_argument, with a
    /// sentence that says what is wrong, for a format that nothing can run at; then all is as
    /// before. Throws std::bad_alloc where memory lacks; then Process does nothing until a Prepare
    /// that succeeds.
    void Prepare(const StreamFormat& format);
    const StreamFormat& Format() const;
    /// Length of the processor's blocks at the prepared rate.
    uint32_t BlockFrames() const;
    /// Queue and processor together.
    uint32_t LatencyFrames() const;

    /// Where the song stands at the next frame. A host with a position of its own calls this ahead
    /// of every Process; otherwise once is enough, and the engine runs the position on by the
    /// tempo. A block gets the position, the tempo and the playing flag of its first frame. A
    /// position that differs from the engine's own by less than a thousandth of a frame counts as
    /// the same, so that a host's rounding does not show.
    void SetTransport(const Transport& transport);
    /// Another tempo from the next frame on; the position stays.
    void SetTempo(double tempo);
    /// Where the song stands at the next frame.
    Transport GetTransport() const;

    /// Takes and gives buffers.frames frames. Nothing happens before Prepare.
    void Process(const AudioBuffers& buffers);
    /// Frames taken in since Prepare: the time of the next frame.
    uint64_t FramesIn() const;
    const EngineCounts& Counts() const;

    /// Puts a parameter at a position from the block on that holds the next frame.
    ///
    /// Writes land on the first frame of a block: a write for a frame lands with the block that
    /// holds the frame, up to a block early, or with the next block to run where that one has run
    /// already. Writes for one block land in order of their frames, and of the calls for equal
    /// ones. Positions are held to 0..1. Answers false, and counts it, where the index is not a
    /// writable one, the position is no number, or the queue is full.
    bool Write(uint32_t index, float position);
    /// The same for a frame of the future.
    bool WriteAt(uint64_t frame, uint32_t index, float position);
    /// Writes that wait for their block.
    size_t WaitingWrites() const;
    /// Position that the processor has now, queued writes not counted. 0 for an unknown index.
    float Position(uint32_t index) const;
    /// Clears all that sounds, from the next block on.
    void Panic();
    /// Clears all that sounds at once, what waits in the queue of frames too. Parameters, waiting
    /// writes and time stay. Between two calls of Process.
    void Clear();
    /// Whether the processor makes feedback for a display (StreamFormat::sendsFeedback), from the
    /// next block on.
    void SendFeedback(bool sends);

    /// Puts many parameters at once to positions, as the restoring of a state or a preset does:
    /// "PresetLoading" is held at 1 around them, queued writes are dropped, and the processor
    /// clears what sounds at the start of the next block. Between two calls of Process; runs one
    /// block of silence that no output shows. Ahead of Prepare that block waits for it.
    void Restore(std::span<const ParameterValue> values);
    /// Runs blocks of silence with the transport standing, which no output and no clock shows.
    /// Ahead of the first Process it makes a playing transport start, as the user of a host starts
    /// it, in place of having always played.
    void Idle(uint32_t blocks);

    /// Listeners hear in the order of adding, and must outlive their stay. Not from inside a call.
    void AddListener(EngineListener& listener);
    void RemoveListener(EngineListener& listener);

    /// The processor behind it all, for reading between two calls of Process.
    Processor::IProcessor_V5& GetProcessor() const;

private:
    class Implementation;
    std::unique_ptr<Implementation> implementation;
};

}  // namespace Quorvan::Host
