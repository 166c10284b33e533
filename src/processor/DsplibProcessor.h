#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <string>

#include "basictools/Raise.h"
#include "framework/EventQueue.h"
#include "framework/ParameterNameSink.h"
#include "framework/ProcessBlock.h"
#include "primitives/AlignedVector.h"
#include "primitives/FiniteSamples.h"
#include "processor/DenormalGuard.h"
#include "processor/IProcessor.h"

namespace Quorvan::Processor {

/// Names of the boundary's two own parameters, behind those of the tree.
inline constexpr uint32_t kToolTipUpdateIndex = 3150;
inline constexpr uint32_t kToolTipTextIndex = 3151;
inline constexpr uint32_t kToolTipBytes = 256;
const std::string& PseudoParameterName(uint32_t index);

/// Longest block at a rate: about a millisecond, a multiple of 4; also the control rate of the
/// tree.
uint32_t BlockSizeAt(float sampleRate);
/// The rate itself, or 44100 for one that isn't above 0.
float ValidSampleRate(float sampleRate);
/// Hertz. Nobody records at less, and the shortest delays fall below a sample. The effects are made
/// for 8000 and more: between the two, extreme settings of the tape echo may overflow.
inline constexpr float kLowestSampleRate = 1000.0f;
/// Hertz. Beyond what any converter runs at; delay memories grow with the rate, 0.6 GB here.
inline constexpr float kHighestSampleRate = 768000.0f;

/// The info record of interface version 3.
struct ProcessorInfoV3 {
    uint32_t parameterCount, inputChannels, outputChannels, auxOutputChannels, blockSize, version;
    Logger* logger;
};

/// The info record of interface version 4.
struct ProcessorInfoV4 {
    uint32_t parameterCount, inputChannels, outputChannels, auxOutputChannels, blockSize, version;
    uint32_t auxInputChannels;
};

/// Puts the interface on top of one effect T: maps the flat index space onto its tree, holds the
/// queues between wrapper and tree, and turns ProcessData into a ProcessBlock. No audio logic.
/// T is any module; what it lacks of latency, tool tips, binary parameters and change lists is
/// answered with nothing.
///
/// What a wrapper may get wrong is caught here: indices out of range and positions that are no
/// number are refused, positions are held to 0..1, samples that are no number count as 0, and a
/// block that doesn't fit is answered with false and silence.
template <class T>
class alignas(64) DsplibProcessor final : public IProcessor_V5 {
public:
    ProcessorInfo* GetInfo() override { return &infoV5; }
    bool OptionalOperationA() override { return false; }
    bool Initialize(const float* config) override;
    bool SetLogger(Logger* logger) override;
    bool Terminate() override {
        effect.Terminate();
        return true;
    }
    bool GetParameter(uint32_t index, float* value) override;
    bool SetParameter(uint32_t index, float value) override;
    bool GetParameterBlob(uint32_t index, uint8_t* buffer, uint32_t* size) override;
    bool IsBlobParameter(uint32_t index) override {
        if (index >= kToolTipUpdateIndex)
            return index == kToolTipTextIndex;
        if constexpr (requires { effect.IsBlobParameter(index); })
            return effect.IsBlobParameter(index);
        else
            return false;
    }
    bool GetParameterDescription(uint32_t index, ParameterDescription* out) override;
    bool GetParameterDescriptionWithId(uint32_t index, uint32_t* id,
                                       ParameterDescription* out) override {
        if (index >= kParameterCount)
            return false;
        if (id != nullptr)
            *id = index;
        return GetParameterDescription(index, out);
    }
    ~DsplibProcessor() override { effect.Terminate(); }

    uint32_t GetInterfaceVersion() override { return 5; }
    uint32_t GetParameterCount() override { return kParameterCount; }
    bool OptionalOperationD() override { return false; }
    bool PushMidiMessage(const uint8_t* bytes) override;
    bool OptionalOperationE() override { return true; }
    bool OptionalOperationF() override { return true; }
    bool OptionalOperationG() override { return false; }
    bool ClearEventQueues() override {
        eventsIn.count = eventsOut.count = 0;
        return true;
    }
    bool OptionalOperationH() override { return true; }
    bool GetParameterChanges(const ParameterChange** list, int32_t* count) override {
        if constexpr (requires { effect.TakeParameterChanges(list, count); })
            return effect.TakeParameterChanges(list, count);
        else
            return Nothing(list, count);
    }
    bool GetBlobChanges(const BlobChange** list, int32_t* count) override;
    bool OptionalOperationI() override { return false; }
    uint32_t GetBlockSize(float sampleRate) override { return BlockSizeAt(sampleRate); }
    bool OptionalOperationJ() override { return false; }
    bool Process(ProcessData* data) override;
    uint32_t GetTotalLatency() override { return GetLatency() + infoV5.blockSize; }
    uint32_t GetLatency() override {
        if constexpr (requires { effect.GetLatency(); })
            return effect.GetLatency();
        else
            return 0;
    }

    /// The tree, for shells that are linked with it.
    T& Effect() { return effect; }

private:
    static constexpr uint32_t kAuxOutputs = 4;
    static constexpr uint32_t kCleaned = 2;  ///< channels of an input that anything reads
    /// The queue has 256 places and takes two fewer.
    static constexpr uint32_t kAcceptedEvents = 254;
    static constexpr float kDefaultTempo = 120.0f;

    /// Data of a binary parameter.
    struct Blob {
        uint64_t size = 0;  ///< bytes
        const void* data = nullptr;
    };
    Blob BlobOf(uint32_t index) {
        if constexpr (requires { effect.GetBlobParameter(index); }) {
            const auto blob = effect.GetBlobParameter(index);
            return {blob.size, blob.data};
        } else {
            return {};
        }
    }
    void FillToolTip(uint32_t index) {
        if constexpr (requires { effect.GetToolTip(index, kToolTipBytes, toolTipText); })
            effect.GetToolTip(index, kToolTipBytes, toolTipText);
        else
            toolTipText[0] = '\0';
    }
    template <class Change>
    static bool Nothing(const Change** list, int32_t* count) {
        *list = nullptr;
        *count = 0;
        return false;
    }
    static bool HasChannels(float** channels, uint32_t count) {
        if (count > 0 && channels == nullptr)
            return false;
        for (uint32_t c = 0; c < count; ++c)
            if (channels[c] == nullptr)
                return false;
        return true;
    }
    /// The call with counts of 0 for channels that are not there, which one of no frames may leave
    /// out.
    static ProcessData WithoutMissing(ProcessData data) {
        const auto drop = [](float** channels, uint32_t& count) {
            count = HasChannels(channels, count) ? count : 0;
        };
        drop(data.inputs, data.inputCount);
        drop(data.outputs, data.outputCount);
        drop(data.auxInputs, data.auxInputCount);
        drop(data.auxOutputs, data.auxOutputCount);
        return data;
    }
    bool Fits(const ProcessData& data) const;
    static void Silence(float** channels, uint32_t count, uint32_t frames);
    float** Cleaned(float** channels, uint32_t count, uint32_t frames, uint32_t place);
    dsp::ProcessBlock MakeBlock(const ProcessData& data);
    void ListOutEvents(ProcessData& data);

    ProcessorInfoV3 infoV3{0, 2, 2, 4, 44, 3, nullptr};
    ProcessorInfoV4 infoV4{0, 2, 2, 4, 44, 4, 2};
    ProcessorInfo infoV5{0, 2, 2, 4, 44, 5, 2, 0};
    T effect;
    EventQueue eventsIn;
    EventQueue eventsOut;
    MidiOutRecord outRecords[EventQueue::kCapacity] = {};
    BlobChange toolTip{0xffffffffu, 0, nullptr};
    char toolTipText[kToolTipBytes] = {};
    bool toolTipPending = false;
    bool initialized = false;

    uint32_t blockSize = 0;
    dsp::AlignedVector auxScratch;  ///< takes what goes to auxiliary outputs that aren't there
    std::array<float*, kAuxOutputs> auxOutputs{};
    std::array<dsp::AlignedVector, 2 * kCleaned> cleanScratch;  ///< main inputs, then side-chain
    std::array<float*, 2 * kCleaned> cleanChannels{};
};

template <class T>
bool DsplibProcessor<T>::Initialize(const float* config) {
    initialized = false;
    const float asked = config != nullptr ? config[0] : 0.0f;
    if (asked > kHighestSampleRate || (asked > 0.0f && asked < kLowestSampleRate))
        return false;
    const float rate = ValidSampleRate(asked);
    // Where memory lacks it is silent until an Initialize that succeeds.
    initialized = AnswerOr(false, [&] {
        blockSize = BlockSizeAt(rate);
        auxScratch.assign(blockSize, 0.0f);
        for (dsp::AlignedVector& channel : cleanScratch)
            channel.assign(blockSize, 0.0f);
        effect.Setup(rate, blockSize);
        return true;
    });
    return initialized;
}

template <class T>
bool DsplibProcessor<T>::SetLogger(Logger* logger) {
    infoV3.logger = logger;
    infoV3.parameterCount = infoV4.parameterCount = infoV5.parameterCount = kParameterCount;
    return true;
}

template <class T>
bool DsplibProcessor<T>::GetParameter(uint32_t index, float* value) {
    if (value == nullptr)
        return false;
    if (index < kToolTipUpdateIndex)
        *value = effect.GetParameterNormalized(index);
    return index == kToolTipUpdateIndex || *value != -1.0f;
}

template <class T>
bool DsplibProcessor<T>::SetParameter(uint32_t index, float value) {
    if (index < kToolTipUpdateIndex)
        return std::isfinite(value) &&
               effect.SetParameterNormalized(index, std::clamp(value, 0.0f, 1.0f));
    if (index != kToolTipUpdateIndex)
        return false;
    if (value < static_cast<float>(kParameterCount)) {
        toolTipPending = true;
        // An index below 0 is one out of range; anything far below would leave the integers.
        const auto asked = static_cast<int32_t>(std::max(value, -1.0f));
        FillToolTip(static_cast<uint32_t>(asked));
    }
    return true;
}

template <class T>
bool DsplibProcessor<T>::GetParameterBlob(uint32_t index, uint8_t* buffer, uint32_t* size) {
    if (index >= kToolTipUpdateIndex)
        return index == kToolTipTextIndex;
    if (size == nullptr)
        return false;
    const Blob blob = BlobOf(index);
    const bool fits = blob.size != 0 && *size >= blob.size && buffer != nullptr;
    *size = static_cast<uint32_t>(blob.size);
    if (fits)
        std::memcpy(buffer, blob.data, static_cast<size_t>(blob.size));
    return fits;
}

template <class T>
bool DsplibProcessor<T>::GetParameterDescription(uint32_t index, ParameterDescription* out) {
    constexpr uint64_t kRoom = sizeof(out->name);
    if (out == nullptr)
        return false;
    if (index == kToolTipUpdateIndex || index == kToolTipTextIndex) {
        if (index == kToolTipTextIndex) {
            out->blobKind = 0;
            out->blobSize = kToolTipBytes;
        }
        dsp::ParameterNameSink(out->name, kRoom).Append(PseudoParameterName(index));
        return true;
    }
    dsp::ParameterNameSink sink(out->name, kRoom);
    effect.GetParameterName(index, sink);
    if (sink.length == 0)
        return false;
    if (sink.required <= kRoom) {
        if (const Blob blob = BlobOf(index); blob.size != 0) {
            out->blobKind = 0;
            out->blobSize = blob.size;
        }
        return true;
    }
    const std::string message = "Param name too long: (" + std::to_string(sink.required) +
                                " chars instead of " + std::to_string(kRoom) + ") : " + out->name;
    if (infoV3.logger != nullptr)
        infoV3.logger->Log(message.c_str(), 2);
    return false;
}

template <class T>
bool DsplibProcessor<T>::PushMidiMessage(const uint8_t* bytes) {
    if (bytes != nullptr && eventsIn.count < kAcceptedEvents) {
        MidiEvent& event = eventsIn.events[eventsIn.count++];
        event = {MidiEvent::kMidiMessage, 0, {bytes[0], bytes[1], bytes[2]}, 0};
    }
    return true;
}

template <class T>
bool DsplibProcessor<T>::GetBlobChanges(const BlobChange** list, int32_t* count) {
    if (!toolTipPending) {
        if constexpr (requires { effect.TakeBlobChanges(list, count); })
            return effect.TakeBlobChanges(list, count);
        else
            return Nothing(list, count);
    }
    toolTip = {kToolTipTextIndex, kToolTipBytes, toolTipText};
    toolTipPending = false;
    *list = &toolTip;
    *count = 1;
    return true;
}

template <class T>
bool DsplibProcessor<T>::Process(ProcessData* data) {
    if (data == nullptr)
        return false;
    const ProcessData call = data->frameCount == 0 ? WithoutMissing(*data) : *data;
    if (!HasChannels(call.outputs, call.outputCount) ||
        !HasChannels(call.auxOutputs, call.auxOutputCount))
        return false;
    data->outEventCount = 0;
    data->outEvents = outRecords;
    Silence(call.outputs, call.outputCount, call.frameCount);
    Silence(call.auxOutputs, call.auxOutputCount, call.frameCount);
    if (!initialized)
        return true;
    if (!Fits(call))
        return false;

    const DenormalGuard guard;
    dsp::ProcessBlock block = MakeBlock(call);
    effect.Process(block);
    ListOutEvents(*data);
    return true;
}

template <class T>
bool DsplibProcessor<T>::Fits(const ProcessData& data) const {
    return data.frameCount <= blockSize && data.frameCount % 4 == 0 &&
           HasChannels(data.inputs, data.inputCount) &&
           HasChannels(data.auxInputs, data.auxInputCount);
}

template <class T>
void DsplibProcessor<T>::Silence(float** channels, uint32_t count, uint32_t frames) {
    for (uint32_t c = 0; c < count; ++c)
        std::memset(channels[c], 0, sizeof(float) * frames);
}

/// The channels themselves where all is finite, else copies without what isn't: one such sample
/// would go round on the tape for ever. At most kCleaned of them, since nothing reads more.
template <class T>
float** DsplibProcessor<T>::Cleaned(float** channels, uint32_t count, uint32_t frames,
                                    uint32_t place) {
    const uint32_t read = std::min(count, kCleaned);
    if (std::none_of(channels, channels + read,
                     [frames](const float* c) { return dsp::HasNonFinite(c, frames); }))
        return channels;
    for (uint32_t c = 0; c < read; ++c) {
        cleanChannels[place + c] = cleanScratch[place + c].data();
        dsp::CopyFinite(channels[c], frames, cleanChannels[place + c]);
    }
    return &cleanChannels[place];
}

template <class T>
dsp::ProcessBlock DsplibProcessor<T>::MakeBlock(const ProcessData& data) {
    // The effect writes all four auxiliary outputs, whatever the wrapper has brought.
    for (uint32_t c = 0; c < kAuxOutputs; ++c)
        auxOutputs[c] = c < data.auxOutputCount ? data.auxOutputs[c] : auxScratch.data();
    dsp::ProcessBlock block;
    block.inputs = Cleaned(data.inputs, data.inputCount, data.frameCount, 0);
    block.auxInputs = Cleaned(data.auxInputs, data.auxInputCount, data.frameCount, kCleaned);
    block.outputs = data.outputs;
    block.auxOutputs = auxOutputs.data();
    block.eventsIn = &eventsIn;
    block.eventsOut = &eventsOut;
    block.numInputs = data.inputCount;
    block.numAuxInputs = std::min(data.auxInputCount, kCleaned);
    block.numOutputs = data.outputCount;
    block.numAuxOutputs = data.auxOutputCount;
    block.numFrames = data.frameCount;
    block.tempo = std::isfinite(data.tempo) && data.tempo > 0.0f ? data.tempo : kDefaultTempo;
    block.songPosition = std::isfinite(data.songPosition) ? data.songPosition : 0.0f;
    block.transportPlaying = data.transportPlaying;
    block.offline = data.processingMode == 1 ? 1 : 0;
    return block;
}

template <class T>
void DsplibProcessor<T>::ListOutEvents(ProcessData& data) {
    for (uint32_t i = 0; i < eventsOut.count && data.outEventCount < EventQueue::kCapacity; ++i) {
        const MidiEvent& event = eventsOut.events[i];
        if (event.type != MidiEvent::kMidiMessage)
            continue;
        MidiOutRecord& record = outRecords[data.outEventCount++];
        record = {{event.message[0], event.message[1], event.message[2]}, {}, 3};
    }
}

}  // namespace Quorvan::Processor
