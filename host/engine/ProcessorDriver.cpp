#include "host/engine/ProcessorDriver.h"

#include <new>

#include "basictools/Raise.h"
#include "granular/MoteWeaver.h"
#include "host/engine/SeededClock.h"
#include "processor/ProcessorInternals.h"

namespace Quorvan::Host {

namespace {

std::unique_ptr<Processor::IProcessor_V5> MakeProcessor(std::optional<uint64_t> seed) {
    SeededClock seeded(seed.value_or(0));
    const ClockReplacement replacement(seed ? &seeded : nullptr);
    const std::unique_ptr<Processor::IProcessorFactory> factory(GetProcessorFactory());
    Processor::IProcessor* const made = factory->CreateProcessor();
    if (made == nullptr)
        Raise(std::bad_alloc());
    std::unique_ptr<Processor::IProcessor_V5> processor(
        static_cast<Processor::IProcessor_V5*>(made));
    processor->SetLogger(nullptr);
    return processor;
}

}  // namespace

ProcessorDriver::ProcessorDriver(std::optional<uint64_t> seed) : processor(MakeProcessor(seed)) {
    Processor::GranularModuleOf(*processor).SetGrainListener(&grains);
}

ProcessorDriver::~ProcessorDriver() { processor->Terminate(); }

void ProcessorDriver::Prepare(const StreamFormat& newFormat) {
    format = newFormat;
    blockFrames = 0;
    const auto rate = static_cast<float>(format.sampleRate);
    const uint32_t frames = processor->GetBlockSize(rate);
    for (ChannelBlock* block : {&inputs, &silentInputs})
        block->Resize(format.inputs, frames);
    for (ChannelBlock* block : {&sideChain, &silentSideChain})
        block->Resize(format.sideChainInputs, frames);
    for (ChannelBlock* block : {&outputs, &unheardOutputs})
        block->Resize(format.outputs, frames);
    for (ChannelBlock* block : {&aux, &unheardAux})
        block->Resize(kAuxOutputs, frames);
    // The engine has checked the rate: what else the processor refuses for is memory.
    if (!processor->Initialize(&rate))
        Raise(std::bad_alloc());
    blockFrames = frames;
}

uint64_t ProcessorDriver::RunBlock(const Transport& transport, uint64_t firstFrame,
                                   std::span<EngineListener* const> listeners) {
    grains.BeginBlock(firstFrame, listeners);
    RunOn(inputs, sideChain, outputs, aux, transport);
    const uint64_t bad = outputs.Clean() + aux.Clean();
    Report(transport, firstFrame, listeners);
    PassChangesOn(listeners);
    processor->ClearEventQueues();
    return bad;
}

void ProcessorDriver::RunSilence(const Transport& transport) {
    grains.BeginBlock(0, {});
    RunOn(silentInputs, silentSideChain, unheardOutputs, unheardAux, transport);
    processor->ClearEventQueues();
}

void ProcessorDriver::RunOn(ChannelBlock& in, ChannelBlock& side, ChannelBlock& out,
                            ChannelBlock& auxOut, const Transport& transport) {
    Processor::ProcessData data{};
    data.inputs = in.Pointers();
    data.inputCount = in.Channels();
    data.outputs = out.Pointers();
    data.outputCount = out.Channels();
    data.auxInputs = side.Pointers();
    data.auxInputCount = side.Channels();
    data.auxOutputs = auxOut.Pointers();
    data.auxOutputCount = auxOut.Channels();
    data.frameCount = blockFrames;
    data.processingMode = format.sendsFeedback ? 0 : 1;
    data.tempo = static_cast<float>(transport.tempo);
    data.songPosition = static_cast<float>(transport.beat);
    data.transportPlaying = transport.playing ? 1 : 0;
    processor->Process(&data);
}

void ProcessorDriver::Report(const Transport& transport, uint64_t firstFrame,
                             std::span<EngineListener* const> listeners) const {
    if (listeners.empty())
        return;
    BlockReport report;
    report.firstFrame = firstFrame;
    report.frames = blockFrames;
    report.transport = transport;
    report.processor = processor.get();
    report.inputCount = inputs.Channels();
    for (uint32_t c = 0; c < inputs.Channels(); ++c)
        report.inputs[c] = inputs[c];
    report.outputCount = outputs.Channels();
    for (uint32_t c = 0; c < outputs.Channels(); ++c)
        report.outputs[c] = outputs[c];
    for (uint32_t c = 0; c < kAuxOutputs; ++c)
        report.aux[c] = aux[c];
    for (EngineListener* listener : listeners)
        listener->OnBlock(report);
}

void ProcessorDriver::PassChangesOn(std::span<EngineListener* const> listeners) {
    const Processor::ParameterChange* moved = nullptr;
    const Processor::BlobChange* blobs = nullptr;
    int32_t movedCount = 0;
    int32_t blobCount = 0;
    // Both lists are read in any case: reading is what empties them.
    if (!processor->GetParameterChanges(&moved, &movedCount))
        movedCount = 0;
    if (!processor->GetBlobChanges(&blobs, &blobCount))
        blobCount = 0;
    for (EngineListener* listener : listeners) {
        for (int32_t i = 0; i < movedCount; ++i)
            listener->OnParameterChange(moved[i].index, moved[i].value);
        for (int32_t i = 0; i < blobCount; ++i)
            listener->OnBlobChange(blobs[i].index, {static_cast<const uint8_t*>(blobs[i].data),
                                                    static_cast<size_t>(blobs[i].size)});
    }
}

}  // namespace Quorvan::Host
