#pragma once

#include <algorithm>
#include <array>
#include <cstdint>

#include "effects/DigitalPPM.h"
#include "effects/Limiter.h"
#include "granular/MoteWeaver.h"
#include "modulation/EnvFollower.h"
#include "modulation/FunctionGenerator.h"
#include "modulation/LFO.h"
#include "modulation/MonoModulations.h"
#include "modulation/StepSequencer.h"
#include "primitives/AlignedVector.h"
#include "primitives/DelayLine.h"
#include "primitives/PeakHold.h"
#include "primitives/SmootherLPF.h"
#include "primitives/SmootherSRL.h"
#include "processor/EffectProcessor.h"
#include "processor/KnownGain.h"
#include "processor/LoopDisplay.h"
#include "processor/ProcessorIndex.h"
#include "processor/ProcessorTables.h"
#include "processor/StagePeaks.h"
#include "slots/FxVariant.h"

namespace Quorvan::Processor {

using Modulations =
    dsp::MonoModulations<kSourceCount, kDestinationCount, 1, dsp::DefaultModulationPolicy>;
using MoteWeaverProcessorBase =
    EffectProcessor<64, 8, dsp::MoteWeaver, dsp::EnvFollower, dsp::FunctionGenerator<64>,
                    dsp::FunctionGenerator<64>, dsp::FunctionGenerator<64>, FxVariant, FxVariant,
                    Modulations, dsp::LFO, dsp::LFO, dsp::Limiter, dsp::StepSequencer,
                    dsp::DigitalPPM, dsp::DigitalPPM>;

/// The effect: wires the modules of the tree together.
///
/// One block, about a millisecond: modulation sources and matrix; spatialiser; feedback return and
/// input into the granular engine; limiter; effect slots of the loop and feedback delay; volume,
/// transport mute; slots of the wet signal; mix with the delayed input; slots behind the mix;
/// master volume, meters, and what a user interface draws.
///
/// Inputs      0, 1 audio; one channel stands for both
/// Outputs     0, 1 audio, or one with their mean
/// Aux         in: 0, 1 side-chain of the envelope follower; out: 0 the follower's input, 1 its
///             envelope, 2 and 3 the position in the stereo field
/// Parameters  ProcessorTables.h lists those behind the modules' and the effect's
/// Latency     3 ms, the limiter's look-ahead
class MoteWeaverProcessor final : public MoteWeaverProcessorBase {
public:
    MoteWeaverProcessor();

    void OnEffectSetup(float rate, uint32_t frames) override;
    void OnEffectReset(bool hard) override;
    bool ProcessEffect(dsp::ProcessBlock& block, uint32_t channelMode) override;
    bool UpdateEffect(dsp::ProcessBlock& block) override;
    bool IsBlobParameter(uint32_t index) override;
    uint32_t GetLatency() override;
    BlobData GetBlobParameter(uint32_t index) override;

    dsp::MoteWeaver& Granular() { return Child<0>(); }
    /// Host index of the parameter that a destination row of the matrix moves at present.
    uint32_t TargetOfRow(uint32_t row);
    /// Position that a destination row shows: its parameter's, moved by the row; a depth with a
    /// direction beside it is folded around 0.5.
    float DestDisplayValue(uint32_t row);
    /// Rows that a modulation source reaches.
    dsp::IndexSet<95> ReachedRows() { return Matrix().ReachedDestinations(); }
    /// What a modulation source gave at the last block's first sample, -1..1.
    uint32_t SequencerStep() { return static_cast<uint32_t>(Sequencer().PlayedStep()); }
    float FunctionPhase(uint32_t index) { return Function(index).PhaseBuffer()[0]; }
    float SourceValue(uint32_t source) { return Matrix().GetSourceRow(source)[0]; }
    /// Whether peaks are kept, from the next block on.
    void WatchStages(bool watched) {
        MeasureWet();
        stagesWatched = watched;
    }
    StagePeaks TakePeaks();

private:
    static constexpr uint32_t kSlotChannels = 50;
    static constexpr uint32_t kBigChunkRows = kSourceCount + kDestinationCount;
    static constexpr uint32_t kChunkSlices = 8;
    static constexpr uint32_t kFxChunkRows = 60;
    static constexpr uint32_t kChunkBuffers = 3;

    /// The inputs of a block, by side.
    struct Inputs {
        float* left;
        float* right;
        bool stereo;
    };

    dsp::EnvFollower& Follower() { return Child<1>(); }
    dsp::FunctionGenerator<64>& Function(uint32_t index);
    Modulations& Matrix() { return Child<7>(); }
    dsp::LFO& LfoX() { return Child<8>(); }
    dsp::LFO& LfoY() { return Child<9>(); }
    dsp::Limiter& OutputLimiter() { return Child<10>(); }
    dsp::StepSequencer& Sequencer() { return Child<11>(); }
    float* Row(uint32_t row) { return Matrix().GetDestinationRow(row); }
    int32_t IndexAt(uint32_t index) { return static_cast<int32_t>(FindRecord(index)->GetValue()); }

    // Construction.
    void TuneSources();
    void TuneSpatializer();

    // The control step.
    void UpdateRateTypes();
    void UpdateTransportMute(const dsp::ProcessBlock& block);
    void UpdateSlotPositions();
    void UpdateSpatializer(const dsp::ProcessBlock& block);
    void UpdateSpatializerAmounts(const dsp::ProcessBlock& block);
    void UpdateSpatializerRates(float freeRate, float syncedIndex);
    void SetFigureRates(float ratio, bool isSynced, float freeRate, float syncedIndex);
    void SetWalkRate(int32_t type, float freeRate, float syncedIndex);
    void UpdateGains(const dsp::ProcessBlock& block);
    float LiveValue(uint32_t id, uint32_t row, const dsp::ProcessBlock& block) {
        // A block of no frames has no last sample; the row's first is what came before it.
        return ParameterAt(id).GetModulatedValue(Row(row)[std::max(block.numFrames, 1u) - 1]);
    }

    // The audio path, in its order.
    bool RunChild(dsp::Module& child, const dsp::ProcessBlock& block, float** inputs,
                  uint32_t inputCount, float** outputs, uint32_t outputCount);
    void RunModulation(dsp::ProcessBlock& block, const Inputs& in);
    void RunFollower(dsp::ProcessBlock& block, const Inputs& in);
    void RunFunctions(const dsp::ProcessBlock& block);
    void RunSequencer(const dsp::ProcessBlock& block);
    void RunSpatializer(const dsp::ProcessBlock& block);
    void RunGranular(const dsp::ProcessBlock& block, const Inputs& in);
    void JoinFeedback(const Inputs& in, uint32_t frames);
    void WatchFeedback(uint32_t frames);
    void FoldFeedback();
    void HighPass(uint32_t frames);
    void ConnectSlots();
    template <uint32_t kSlot>
    float** RunSlot(dsp::ProcessBlock& block, float** inputs, float** outputs);
    void RunLoopSlots(dsp::ProcessBlock& block);
    void RunFeedbackDelay(uint32_t frames);
    float** RunSlotsAt(int32_t place, dsp::ProcessBlock& block, float** signal);
    void ApplyGain(dsp::Smoother& gain, float** channels, uint32_t count, uint32_t frames);
    float** MixDry(const dsp::ProcessBlock& block, const Inputs& in, float** signal);
    void HoldWet(uint32_t frames);
    void MeasureWet();
    void WriteOutput(const dsp::ProcessBlock& block, uint32_t channelMode, float** signal);

    // What a user interface draws.
    void SendFeedback(const dsp::ProcessBlock& block);
    void TakeSlice(uint32_t slice);
    void FillInitialChunk();
    void SendPositions();
    void SendFxChunk();
    void SendAssignments();

    float sampleRate = 0.0f;
    uint32_t blockSize = 0;
    std::array<float*, dsp::MoteWeaverRow::Count> granularInputs{};
    std::array<std::array<float*, kSlotChannels>, 2> slotInputs{};  ///< audio is set at each run

    // Smoothers, one tick a sample.
    dsp::SmootherLPF feedbackGain{0.01};
    dsp::SmootherLPF dryWetMix{0.01};  // position of the crossfade
    dsp::SmootherLPF granularVolume{0.01};
    dsp::SmootherLPF masterVolume{0.01};
    dsp::SmootherLPF envelopeGain{0.01};  // ahead of the envelope follower
    dsp::SmootherSRL transportGain{0.2};
    KnownGain knownEnvelopeGain, knownFeedbackGain, knownGranularGain;

    // High-pass of the loop at 20 Hz.
    float dcB0 = 0.0f, dcB1 = 0.0f, dcA1 = 0.0f;
    float dcInput[2] = {}, dcOutput[2] = {};

    dsp::DelayLine feedbackLines[2];
    uint32_t feedbackDelay = 0;  ///< samples
    dsp::DelayLine dryLines[2];

    // Buffers of a block, single channels in one allocation.
    dsp::AlignedVector storage;
    float* feedbackSend[2] = {};    ///< goes into the feedback delay
    float* feedbackReturn[2] = {};  ///< comes out of it; then with the input, into the grains
    float* stage[2] = {};           ///< follower input, granular output, delayed dry signal
    float* limited[2] = {};         ///< the wet signal, behind the blocks that are held
    float* slotOutA[2] = {};
    float* slotOutB[2] = {};
    float* ramp = nullptr;                      ///< gain curve of the stage at work
    dsp::AlignedVector lfoXOutput, lfoYOutput;  ///< rows with their heads

    LoopDisplay display;
    bool stagesWatched = false;
    dsp::PeakHold wetPeaks;
    uint32_t heldWet = 0;                  ///< frames of the wet signal that are not in those yet
    std::array<float, 2> feedbackPeaks{};  ///< ahead of the clip
    dsp::PeakHold restingPeaks;            ///< what is not in those yet, without its gain
    float restingGain = 0.0f;
    float restingMix = -1.0f;  ///< the mix at rest that the two gains below are for
    float restingWet = 0.0f, restingDry = 0.0f;

    // Control state.
    bool lastTransportPlaying = false;
    int32_t fx1Position = 0, fx2Position = 0;  ///< 2 loop, 1 wet signal, 0 behind the mix
    float tempo = 0.0f;
    float lastRateFree = -1.0f, lastRateSynced = -1.0f;  ///< of the spatialiser
    std::array<float, kSpatializerNotes.size()> scaledRates{};

    // User interface feedback.
    uint8_t bigChunks[kChunkBuffers][kBigChunkRows * kChunkSlices] = {};
    float fxChunks[kChunkBuffers][kFxChunkRows] = {};
    uint32_t bufferIndex = 0;      ///< the buffer of each kind that is being filled
    uint32_t feedbackCounter = 0;  ///< blocks inside a chunk
};

}  // namespace Quorvan::Processor
