#pragma once

/// Boundary of the library: the exported factory function, the IProcessor family that a wrapper
/// drives a processor through, and the plain records that pass between them. The order of virtual
/// operations and the byte offsets of the records are a binary contract (64-bit targets).
/// processor/ProcessorIndex.h beside this header names the host indices.
///
/// Calling order
///   1. GetProcessorFactory, CreateProcessor, cast to IProcessor_V5; the factory may go then.
///   2. SetLogger, also with null: it completes the record that GetInfo answers.
///   3. GetParameterDescription of every index, as needed: names are the key that saved sounds use.
///   4. Initialize with the sample rate; again at any time outside Process for another rate, which
///      also resets all that sounds. Parameters keep their positions.
///   5. For each block of at most GetBlockSize(rate) frames, a multiple of 4: SetParameter and
///      PushMidiMessage as needed, Process, GetParameterChanges, GetBlobChanges, ClearEventQueues.
///   6. Terminate, delete.
///
/// Threads. A processor locks nothing and starts no thread; the calls to one processor come in
/// turn, from whatever thread, and the wrapper sees to it that none meets another. Separate
/// processors share nothing that changes. Initialize and CreateProcessor take memory; Process,
/// SetParameter and the lists neither allocate nor wait.
///
/// Sound. A new processor is as good as silent: "Dry / Wet" stands at dry, "Granular Volume",
/// "Master Volume" and "Feedback" at -70 dB, and all others at the low end of their ranges unless a
/// module says otherwise. Raise "Master Volume" (3023) to hear the input; raise "Dry / Wet" (3020)
/// and "Granular Volume" (3022), with "MoteWeaver_GrainSizeAbsolute", "MoteWeaver_MaxGrains" and
/// the rate of "MoteWeaver_GranularPhaseHelper", to hear grains. The README holds a whole program.
///
/// Restoring a saved sound. SetParameter(3017 "PresetLoading", 1), all positions by SetParameter,
/// SetParameter(3017, 0): at the next Process, also one of no frames, all that sounds is cleared
/// and every parameter jumps to its place. Write every parameter but 3015 to 3018, the binary ones
/// and those that only show something ("..._Feedback", "Dest..._Assigned"): the saved state of a
/// processor is the positions of its parameters, nothing else. Leave out 2913 to 2930 as well: the
/// limiter is set once and for all, and its look-ahead, written back, may come out a sample shorter
/// than GetLatency says.
///
/// MIDI. Messages are queued (254 a block at most, further ones are dropped) and cleared by
/// ClearEventQueues; no module of this processor listens to them, and none is sent.

#include <cstddef>
#include <cstdint>

#if defined(_WIN32)
#define QUORVAN_EXPORT __declspec(dllexport)
#else
#define QUORVAN_EXPORT __attribute__((visibility("default")))
#endif

namespace Quorvan::Processor {

/// Host parameters: 3150 of the processor and two of the boundary itself, for tool tips: a write of
/// an index to 3150 asks for that parameter's tool tip, which arrives as the blob 3151.
inline constexpr uint32_t kParameterCount = 3152;

/// The wrapper's sink for messages. Level 2, the only one in use, tells of a parameter's name that
/// is too long for its field. Never called from Process. Must outlive the processor.
class Logger {
public:
    virtual void Log(const char* message, int level) = 0;

protected:
    ~Logger() = default;
};

/// What a processor is. GetInfo answers the record of interface version 5; it lives as long as the
/// processor and does not change with the sample rate.
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

/// What Process works on. The library touches only the named fields; start from ProcessData{}.
///
/// Channels. Two inputs are stereo, one is mono into stereo; no input gives silence. One
/// output is mono, two are stereo. With more of either, all outputs are silent. Buffers hold
/// frameCount floats each, full scale is 1; outputs and inputs are different memory. A null input
/// or a block that is too long or not a multiple of 4 answers false, with silence; a null output,
/// a main or an auxiliary one, answers false and leaves all of them as they are. In a block of no
/// frames null channels count as none.
///
/// Auxiliary outputs show what moves, for drawing or for routing on: 0 the left channel that the
/// envelope follower listens to, 1 the follower's envelope, 2 and 3 the spatialiser's position on
/// its X and Y axes, 0..1, constant within a block. Fewer than four may be given.
///
/// Transport. songPosition drives all that runs in sync while transportPlaying is set; a jump in it
/// is followed. A tempo that is no number above 0 counts as 120.
struct ProcessData {
    uint8_t wrapperData0[16];
    float** outputs;       ///< main outputs, written; not the same memory as the inputs
    float** inputs;        ///< main inputs
    uint32_t inputCount;   ///< main input channels
    uint32_t outputCount;  ///< main output channels
    uint32_t frameCount;   ///< samples: 0, or a multiple of 4 up to GetBlockSize
    uint8_t wrapperData1[84];
    uint32_t outEventCount;  ///< out: number of output events, always 0 with this processor
    uint8_t wrapperData2[4];
    MidiOutRecord* outEvents;  ///< out: valid until the next Process
    float** auxOutputs;        ///< four auxiliary outputs, written
    uint32_t auxOutputCount;   ///< auxiliary output channels
    uint8_t wrapperData3[4];
    uint32_t processingMode;  ///< 1: an export, no values for a window; the sound is the same
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
// Where wrappers lay it out by themselves, pointers have 64 bits.
#if UINTPTR_MAX > 0xffffffffu
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
#endif

/// Filled by GetParameterDescription: the name always, the rest for binary parameters only, so
/// start from ParameterDescription{}.
struct ParameterDescription {
    char name[256];  ///< full name, terminated
    uint8_t wrapperData[16];
    uint32_t blobKind;  ///< binary parameters: 0
    uint32_t filler;
    uint64_t blobSize;  ///< binary parameters: size in bytes
};
static_assert(offsetof(ParameterDescription, blobKind) == 272);
static_assert(offsetof(ParameterDescription, blobSize) == 280);

/// A parameter that the processor has moved by itself, for a user interface to follow: the values
/// 3049 to 3054 that modulation gives to the main knobs, and 3055 to 3149, which destinations a
/// source reaches. These come only after a first end of "PresetLoading", while "GUI Visible" (3018)
/// is up and processingMode is not 1. The place of FX2 (3028) comes at any time: FX1 pushes it.
struct ParameterChange {
    uint32_t index;
    uint32_t zero;
    float value;  ///< position
};
static_assert(sizeof(ParameterChange) == 12);

/// New content of a binary parameter: 3047 every 32 blocks, 102 rows of 8 bytes in time order
/// (7 modulation sources, -1..1 as 0..255, then 95 destinations, 0..1 as 0..255), 3048 as often, 60
/// floats with the positions of the destinations in the slots, or 3151, a tool tip asked for.
/// data belongs to the processor and stays as it is for the next 32 blocks.
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
    /// OptionalOperationA to J do nothing: B, C, E, F and H answer true, the others false.
    virtual bool OptionalOperationA() = 0;
    /// config[0] is the sample rate in hertz; 44100 stands in for one that isn't above 0, is no
    /// number, or is not given, with a null config. Takes all memory that running needs and resets
    /// all that sounds. False above 768000, below 1000, and where there is not enough memory: the
    /// processor is silent then until an Initialize that succeeds. Below 8000 extreme settings of
    /// the tape echo may overflow. Nothing in this interface throws.
    virtual bool Initialize(const float* config) = 0;
    /// Null for none. Completes the info records.
    virtual bool SetLogger(Logger* logger) = 0;
    /// Before delete. Gives nothing back: delete does.
    virtual bool Terminate() = 0;
    virtual bool OptionalOperationB() { return true; }
    virtual bool OptionalOperationC() { return true; }
    /// The position, 0..1. *value should not hold -1 before: where it still does, the index has no
    /// position and the answer is false, but for 3150, which answers true and leaves *value.
    virtual bool GetParameter(uint32_t index, float* value) = 0;
    /// Stores a position, which the next Process takes up; held to 0..1. False for an index out of
    /// range and for a value that is no number. A write is also passed to parameters linked with
    /// it. 3150 takes an index as it is; its tool tip is empty throughout with this processor.
    virtual bool SetParameter(uint32_t index, float value) = 0;
    /// In: *size is the room in buffer. Out: the data's size in bytes, 0 of a parameter that is not
    /// binary; false where it had no room, or there is none. 3151 answers true and writes nothing:
    /// its text comes by GetBlobChanges.
    virtual bool GetParameterBlob(uint32_t, uint8_t*, uint32_t*) { return false; }
    /// Whether the parameter is binary: 136 "VisualizedBuffer", 3047, 3048 and 3151.
    virtual bool IsBlobParameter(uint32_t) { return false; }
    /// The full name, and the size where the parameter is binary. False for an index out of range.
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
    virtual uint32_t GetInterfaceVersion() = 0;  ///< 5
    virtual uint32_t GetParameterCount() = 0;    ///< kParameterCount, also before SetLogger
    virtual bool OptionalOperationD() = 0;
};

class IProcessor_V3 : public IProcessor_V2 {
public:
    /// bytes: a MIDI message of three bytes. True also where there is no room and it is dropped.
    virtual bool PushMidiMessage(const uint8_t* bytes) = 0;
    virtual bool OptionalOperationE() = 0;
    virtual bool OptionalOperationF() = 0;
    virtual bool OptionalOperationG() = 0;
    /// After each block: forgets the MIDI messages of both directions.
    virtual bool ClearEventQueues() = 0;
    virtual bool OptionalOperationH() = 0;
};

class IProcessor_V4 : public IProcessor_V3 {
public:
    /// The list since the last call, at most 64; true where it isn't empty, else null and 0. Valid
    /// until the next Process. What finds no room is dropped.
    virtual bool GetParameterChanges(const ParameterChange** list, int32_t* count) = 0;
    /// Likewise, at most 8. A tool tip that was asked for comes alone, ahead of the others.
    virtual bool GetBlobChanges(const BlobChange** list, int32_t* count) = 0;
    virtual bool OptionalOperationI() = 0;
    /// Longest block at a rate, in samples: about a millisecond, 44 at 44100, 48 at 48000; also
    /// ahead of Initialize. It is the control rate as well: writes and modulation are taken up once
    /// a block, so shorter blocks cost more and follow more finely.
    virtual uint32_t GetBlockSize(float sampleRate) = 0;
    virtual bool OptionalOperationJ() = 0;
};

class IProcessor_V5 : public IProcessor_V4 {
public:
    /// One block. Silence and true before Initialize; false, with silence, where the block does not
    /// fit. A block of no frames takes up writes, "Panic" (3016) and the end of "PresetLoading"
    /// among them, and sounds nothing; it needs no channels. Input samples that are infinite or no
    /// number count as 0; input buffers are only read.
    virtual bool Process(ProcessData* data) = 0;
    /// GetLatency and the 44 of the info record at every rate: for wrappers that queue blocks of
    /// the record's length. Others add to GetLatency what their own queue holds back.
    virtual uint32_t GetTotalLatency() = 0;
    /// Latency of the processing alone, in samples: the limiter's look-ahead, 3 ms after
    /// Initialize and 0 ahead of it. The dry path is delayed by as much.
    virtual uint32_t GetLatency() = 0;
};

/// Maker of processors. The text fields are read directly.
class IProcessorFactory {
public:
    virtual uint32_t GetInterfaceVersion() { return 5; }
    /// A new processor, released with delete; null where it cannot be made, as without memory.
    virtual IProcessor* CreateProcessor() = 0;
    virtual ~IProcessorFactory() = default;

    char version[256] = {};
    char vendor[256] = {};
    char productName[256] = {};
};

}  // namespace Quorvan::Processor

/// A new factory, released with delete; null where there is no memory.
extern "C" QUORVAN_EXPORT Quorvan::Processor::IProcessorFactory* GetProcessorFactory();
