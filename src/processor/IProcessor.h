#pragma once

/// Boundary of the library: the exported factory function, the IProcessor family that a wrapper
/// drives a processor through, and the plain records that pass between them. The order of virtual
/// operations and the byte offsets of the records are a binary contract (64-bit targets).
///
/// Calling order: GetProcessorFactory, CreateProcessor; SetLogger, GetInfo; the descriptions;
/// Initialize with the sample rate, again at any time outside Process for another rate; for each
/// block PushMidiMessage and SetParameter as needed, Process, GetParameterChanges, GetBlobChanges,
/// ClearEventQueues; Terminate, delete. Nothing here locks: the calls come in turn.

#include <cstddef>
#include <cstdint>

#if defined(_WIN32)
#define QUORVAN_EXPORT __declspec(dllexport)
#else
#define QUORVAN_EXPORT __attribute__((visibility("default")))
#endif

namespace Quorvan::Processor {

/// Host parameters: 3150 of the processor and two of the boundary itself, for tool tips.
inline constexpr uint32_t kParameterCount = 3152;

/// The wrapper's sink for messages.
class Logger {
public:
    virtual void Log(const char* message, int level) = 0;

protected:
    ~Logger() = default;
};

/// What a processor is. GetInfo answers the record of interface version 5.
struct ProcessorInfo {
    uint32_t parameterCount;     ///< 0 before SetLogger
    uint32_t inputChannels;      ///< main inputs
    uint32_t outputChannels;     ///< main outputs
    uint32_t auxOutputChannels;  ///< auxiliary outputs
    uint32_t blockSize;          ///< block length at 44100 Hz, in samples
    uint32_t version;            ///< interface version of this record
    uint32_t auxInputChannels;   ///< side-chain inputs
    uint8_t wrapperFlag;         ///< read only by the wrapper
};
static_assert(offsetof(ProcessorInfo, auxInputChannels) == 24);
static_assert(offsetof(ProcessorInfo, wrapperFlag) == 28);

/// One outgoing MIDI message.
struct MidiOutRecord {
    uint8_t message[3];
    uint8_t zero[5];
    uint64_t length;  ///< 3
};
static_assert(sizeof(MidiOutRecord) == 16);

/// What Process works on. The library touches only the named fields.
struct ProcessData {
    uint8_t wrapperData0[16];
    float** outputs;       ///< main outputs, written; not the same memory as the inputs
    float** inputs;        ///< main inputs
    uint32_t inputCount;   ///< main input channels
    uint32_t outputCount;  ///< main output channels
    uint32_t frameCount;   ///< samples: a multiple of 4, at most GetBlockSize
    uint8_t wrapperData1[84];
    uint32_t outEventCount;  ///< out: number of output events
    uint8_t wrapperData2[4];
    MidiOutRecord* outEvents;  ///< out: valid until the next Process
    float** auxOutputs;        ///< four auxiliary outputs, written
    uint32_t auxOutputCount;   ///< auxiliary output channels
    uint8_t wrapperData3[4];
    uint32_t processingMode;  ///< 1: a call that makes no user interface feedback
    uint8_t wrapperData4[4];
    float tempo;               ///< beats per minute
    uint8_t transportPlaying;  ///< non-zero while the host's transport runs
    uint8_t wrapperData5[3];
    float songPosition;  ///< quarter notes; negative in a pre-roll
    uint8_t wrapperData6[4];
    float** auxInputs;       ///< side-chain inputs
    uint32_t auxInputCount;  ///< side-chain channels
    uint8_t wrapperData7[4];
};
static_assert(offsetof(ProcessData, outputs) == 16);
static_assert(offsetof(ProcessData, inputs) == 24);
static_assert(offsetof(ProcessData, inputCount) == 32);
static_assert(offsetof(ProcessData, outputCount) == 36);
static_assert(offsetof(ProcessData, frameCount) == 40);
static_assert(offsetof(ProcessData, outEventCount) == 128);
static_assert(offsetof(ProcessData, outEvents) == 136);
static_assert(offsetof(ProcessData, auxOutputs) == 144);
static_assert(offsetof(ProcessData, auxOutputCount) == 152);
static_assert(offsetof(ProcessData, processingMode) == 160);
static_assert(offsetof(ProcessData, tempo) == 168);
static_assert(offsetof(ProcessData, transportPlaying) == 172);
static_assert(offsetof(ProcessData, songPosition) == 176);
static_assert(offsetof(ProcessData, auxInputs) == 184);
static_assert(offsetof(ProcessData, auxInputCount) == 192);

/// Filled by GetParameterDescription.
struct ParameterDescription {
    char name[256];  ///< full name, terminated
    uint8_t wrapperData[16];
    uint32_t blobKind;  ///< binary parameters: 0
    uint32_t filler;
    uint64_t blobSize;  ///< binary parameters: size in bytes
};
static_assert(offsetof(ParameterDescription, blobKind) == 272);
static_assert(offsetof(ParameterDescription, blobSize) == 280);

/// A parameter that the processor has moved by itself.
struct ParameterChange {
    uint32_t index;
    uint32_t zero;
    float value;  ///< position
};
static_assert(sizeof(ParameterChange) == 12);

/// New content of a binary parameter; data belongs to the processor.
struct BlobChange {
    uint32_t index;
    uint64_t size;  ///< bytes
    const void* data;
};
static_assert(sizeof(BlobChange) == 24);

/// First version of the interface. Positions are 0..1.
class IProcessor {
public:
    virtual ProcessorInfo* GetInfo() = 0;
    virtual bool OptionalOperationA() = 0;
    /// config[0] is the sample rate in hertz; 44100 stands in for one that isn't above 0.
    virtual bool Initialize(const float* config) = 0;
    virtual bool SetLogger(Logger* logger) = 0;
    virtual bool Terminate() = 0;
    virtual bool OptionalOperationB() { return true; }
    virtual bool OptionalOperationC() { return true; }
    virtual bool GetParameter(uint32_t index, float* value) = 0;
    virtual bool SetParameter(uint32_t index, float value) = 0;
    /// In: *size is the room in buffer. Out: the data's size in bytes; false where it had no room.
    virtual bool GetParameterBlob(uint32_t, uint8_t*, uint32_t*) { return false; }
    virtual bool IsBlobParameter(uint32_t) { return false; }
    virtual bool GetParameterDescription(uint32_t index, ParameterDescription* out) = 0;
    /// As GetParameterDescription, and the index again in *id where that succeeded.
    virtual bool GetParameterDescriptionWithId(uint32_t index, uint32_t* id,
                                               ParameterDescription* out) {
        const bool found = GetParameterDescription(index, out);
        if (found)
            *id = index;
        return found;
    }
    virtual ~IProcessor() = default;
};

class IProcessor_V2 : public IProcessor {
public:
    virtual uint32_t GetInterfaceVersion() = 0;
    virtual uint32_t GetParameterCount() = 0;
    virtual bool OptionalOperationD() = 0;
};

class IProcessor_V3 : public IProcessor_V2 {
public:
    /// bytes: a MIDI message of three bytes.
    virtual bool PushMidiMessage(const uint8_t* bytes) = 0;
    virtual bool OptionalOperationE() = 0;
    virtual bool OptionalOperationF() = 0;
    virtual bool OptionalOperationG() = 0;
    virtual bool ClearEventQueues() = 0;
    virtual bool OptionalOperationH() = 0;
};

class IProcessor_V4 : public IProcessor_V3 {
public:
    /// The list since the last call; true where it isn't empty.
    virtual bool GetParameterChanges(const ParameterChange** list, int32_t* count) = 0;
    virtual bool GetBlobChanges(const BlobChange** list, int32_t* count) = 0;
    virtual bool OptionalOperationI() = 0;
    /// Longest block at a rate, in samples.
    virtual uint32_t GetBlockSize(float sampleRate) = 0;
    virtual bool OptionalOperationJ() = 0;
};

class IProcessor_V5 : public IProcessor_V4 {
public:
    virtual bool Process(ProcessData* data) = 0;
    /// Latency with the block that a wrapper's queue costs, in samples.
    virtual uint32_t GetTotalLatency() = 0;
    /// Latency of the processing alone, in samples.
    virtual uint32_t GetLatency() = 0;
};

/// Maker of processors. The text fields are read directly.
class IProcessorFactory {
public:
    virtual uint32_t GetInterfaceVersion() { return 5; }
    /// A new processor, released with delete; null where there is no memory.
    virtual IProcessor* CreateProcessor() = 0;
    virtual ~IProcessorFactory() = default;

    char version[256] = {};
    char vendor[256] = {};
    char productName[256] = {};
};

}  // namespace Quorvan::Processor

/// A new factory, released with delete.
extern "C" QUORVAN_EXPORT Quorvan::Processor::IProcessorFactory* GetProcessorFactory();
