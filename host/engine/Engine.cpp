#include "host/engine/Engine.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <string>
#include <vector>

#include "basictools/Raise.h"
#include "host/engine/ProcessorDriver.h"
#include "host/engine/SongClock.h"
#include "host/engine/WriteQueue.h"
#include "host/parameters/ShellIndex.h"

namespace Quorvan::Host {

namespace {

constexpr double kLowestRate = 1000.0;
constexpr double kHighestRate = 768000.0;
/// Room for two writes of every parameter.
constexpr size_t kQueuedWrites = 8192;

void Check(const StreamFormat& format) {
    const auto refuse = [](const std::string& sentence) { Raise(std::invalid_argument(sentence)); };
    if (!(format.sampleRate >= kLowestRate && format.sampleRate <= kHighestRate))
        refuse("The sample rate has to be from 1000 to 768000 Hz; choose one in that range.");
    if (format.inputs < 1 || format.inputs > 2)
        refuse("The processor takes one or two main inputs; mix the input down to two channels.");
    if (format.outputs < 1 || format.outputs > 2)
        refuse("The processor has one or two main outputs; ask for one or two.");
    if (format.sideChainInputs > 2)
        refuse("The side-chain has at most two channels; mix it down to two.");
}

bool IsOn(float position) { return position >= 0.5f; }

}  // namespace

class Engine::Implementation {
public:
    explicit Implementation(std::optional<uint64_t> seed) : driver(seed) {}

    void Prepare(const StreamFormat& newFormat);
    void Process(const AudioBuffers& buffers);
    bool Queue(uint64_t frame, uint32_t index, float position);
    void Panic();
    void Clear();
    void Restore(std::span<const ParameterValue> values);
    void Idle(uint32_t blocks);
    float Position(uint32_t index) const;

    StreamFormat format;
    ProcessorDriver driver;
    SongClock song;
    WriteQueue writes{kQueuedWrites};
    std::vector<EngineListener*> listeners;
    EngineCounts counts;
    uint64_t framesIn = 0;

private:
    void Exchange(const AudioBuffers& buffers, uint32_t from, uint32_t count);
    void RunBlock();
    void EndLoading();
    void Set(uint32_t index, float position) {
        driver.GetProcessor().SetParameter(index, position);
    }

    bool loading = false;      ///< a restore waits for its block
    uint32_t filled = 0;       ///< frames of the next block that are in
    Transport blockTransport;  ///< at the first frame of the block that is being filled
};

void Engine::Implementation::Prepare(const StreamFormat& newFormat) {
    Check(newFormat);
    format = newFormat;
    song.Prepare(format.sampleRate, framesIn);
    driver.Prepare(format);
    writes.Clear();
    counts = {};
    framesIn = 0;
    filled = 0;
    blockTransport = song.At(0);
    if (loading)
        EndLoading();
}

void Engine::Implementation::Process(const AudioBuffers& buffers) {
    const uint32_t block = driver.BlockFrames();
    if (block == 0)
        return;
    for (uint32_t done = 0; done < buffers.frames;) {
        if (filled == 0)
            blockTransport = song.At(framesIn);
        const uint32_t count = std::min(buffers.frames - done, block - filled);
        Exchange(buffers, done, count);
        done += count;
        filled += count;
        framesIn += count;
        if (filled == block)
            RunBlock();
    }
}

/// All inputs are taken in before an output is written: the two may share memory.
void Engine::Implementation::Exchange(const AudioBuffers& buffers, uint32_t from, uint32_t count) {
    counts.badInputs += driver.inputs.Take(buffers.inputs, from, filled, count);
    counts.badInputs += driver.sideChain.Take(buffers.sideChain, from, filled, count);
    driver.outputs.Give(buffers.outputs, from, filled, count);
    driver.aux.Give(buffers.aux, from, filled, count);
}

void Engine::Implementation::RunBlock() {
    writes.TakeBefore(framesIn,
                      [this](const WriteQueue::Entry& write) { Set(write.index, write.position); });
    counts.badOutputs +=
        driver.RunBlock(blockTransport, framesIn - driver.BlockFrames(), listeners);
    ++counts.blocks;
    filled = 0;
}

bool Engine::Implementation::Queue(uint64_t frame, uint32_t index, float position) {
    const bool makesSense = index < kProcessorParameters && std::isfinite(position);
    if (makesSense && writes.Add({frame, index, std::clamp(position, 0.0f, 1.0f)}))
        return true;
    ++counts.refusedWrites;
    return false;
}

/// The processor clears at the lever's way up, so one that is up has to come down first.
void Engine::Implementation::Panic() {
    uint64_t frame = framesIn;
    if (IsOn(Position(kPanicIndex))) {
        Queue(frame, kPanicIndex, 0.0f);
        frame += driver.BlockFrames();
    }
    Queue(frame, kPanicIndex, 1.0f);
    Queue(frame + driver.BlockFrames(), kPanicIndex, 0.0f);
}

void Engine::Implementation::Clear() {
    for (ChannelBlock* block : {&driver.inputs, &driver.sideChain, &driver.outputs, &driver.aux})
        block->Clear();
    Set(kPresetLoadingIndex, 1.0f);
    loading = true;
    if (driver.BlockFrames() != 0)
        EndLoading();
}

void Engine::Implementation::Restore(std::span<const ParameterValue> values) {
    writes.Clear();
    Set(kPresetLoadingIndex, 1.0f);
    for (const ParameterValue& value : values) {
        if (value.index < kProcessorParameters && value.index != kPresetLoadingIndex)
            Set(value.index, value.position);
    }
    loading = true;
    if (driver.BlockFrames() != 0)
        EndLoading();
}

/// The processor looks at its levers once a block: only a block between the two writes of
/// "PresetLoading" lets it see both edges.
void Engine::Implementation::EndLoading() {
    // Ahead of the first frame, the song may have been put elsewhere since Prepare.
    if (framesIn == 0)
        blockTransport = song.At(0);
    driver.RunSilence(blockTransport);
    Set(kPresetLoadingIndex, 0.0f);
    loading = false;
}

void Engine::Implementation::Idle(uint32_t blocks) {
    if (driver.BlockFrames() == 0)
        return;
    Transport standing = song.At(framesIn);
    standing.playing = false;
    for (uint32_t i = 0; i < blocks; ++i)
        driver.RunSilence(standing);
}

float Engine::Implementation::Position(uint32_t index) const {
    float position = 0.0f;
    if (index < kProcessorParameters)
        driver.GetProcessor().GetParameter(index, &position);
    return position;
}

Engine::Engine(std::optional<uint64_t> seed)
    : implementation(std::make_unique<Implementation>(seed)) {}
Engine::~Engine() = default;

void Engine::Prepare(const StreamFormat& format) { implementation->Prepare(format); }
const StreamFormat& Engine::Format() const { return implementation->format; }
uint32_t Engine::BlockFrames() const { return implementation->driver.BlockFrames(); }
uint32_t Engine::LatencyFrames() const {
    return implementation->driver.BlockFrames() + implementation->driver.LatencyFrames();
}

void Engine::SetTransport(const Transport& transport) {
    implementation->song.Set(implementation->framesIn, transport);
}
void Engine::SetTempo(double tempo) {
    Transport transport = GetTransport();
    transport.tempo = tempo;
    SetTransport(transport);
}
Transport Engine::GetTransport() const { return implementation->song.At(implementation->framesIn); }

void Engine::Process(const AudioBuffers& buffers) { implementation->Process(buffers); }
uint64_t Engine::FramesIn() const { return implementation->framesIn; }
const EngineCounts& Engine::Counts() const { return implementation->counts; }

bool Engine::Write(uint32_t index, float position) {
    return implementation->Queue(implementation->framesIn, index, position);
}
bool Engine::WriteAt(uint64_t frame, uint32_t index, float position) {
    return implementation->Queue(frame, index, position);
}
size_t Engine::WaitingWrites() const { return implementation->writes.Size(); }
float Engine::Position(uint32_t index) const { return implementation->Position(index); }
void Engine::Panic() { implementation->Panic(); }
void Engine::Clear() { implementation->Clear(); }
void Engine::SendFeedback(bool sends) {
    implementation->format.sendsFeedback = sends;
    implementation->driver.SendFeedback(sends);
}

void Engine::Restore(std::span<const ParameterValue> values) { implementation->Restore(values); }
void Engine::Idle(uint32_t blocks) { implementation->Idle(blocks); }

void Engine::AddListener(EngineListener& listener) {
    implementation->listeners.push_back(&listener);
}
void Engine::RemoveListener(EngineListener& listener) {
    std::erase(implementation->listeners, &listener);
}

Processor::IProcessor_V5& Engine::GetProcessor() const {
    return implementation->driver.GetProcessor();
}

}  // namespace Quorvan::Host
