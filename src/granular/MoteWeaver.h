#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "framework/ModuleContainer.h"
#include "granular/BitCrusher.h"
#include "granular/CaptureBuffer.h"
#include "granular/GrainPool.h"
#include "granular/GrainRenderer.h"
#include "granular/GrainScheduler.h"
#include "granular/GranularPhaseHelper.h"
#include "granular/GranularSettings.h"
#include "granular/MarkerRing.h"
#include "granular/MoteWeaverParameters.h"
#include "granular/OutputStage.h"
#include "granular/StepSequencerGranular.h"
#include "granular/StereoPosition.h"
#include "granular/TransientDetector.h"
#include "primitives/AlignedVector.h"
#include "primitives/SmootherLPF.h"

namespace Quorvan::dsp {

/// The granular engine: turns a stereo signal into a cloud of grains. Records the input into a
/// loop, decides sample by sample whether grains start, plays all running grains over the block,
/// and passes their sum through an optional lo-fi stage.
///
/// Inputs      as MoteWeaverRow lists them: audio, then modulation rows in fractions of a knob's
/// travel Outputs     0, 1 audio, not in place Parameters  0 to 91 of the clocks, the sequencer and
/// the crusher; from 92 as MoteWeaverTable lists
///             them. LfoStereoX_Out, LfoStereoY_Out and GateOut are written by the module.
/// Latency     none
class MoteWeaver final
    : public ModuleContainer<GranularPhaseHelper, GranularPhaseHelper, GranularPhaseHelper,
                             StepSequencerGranular, BitCrusher> {
public:
    static constexpr uint32_t kParameterCount = MoteWeaverId::End;
    /// 256 grains and a pair of room.
    static constexpr uint16_t kMaxGrains = 258;

    explicit MoteWeaver(std::string moduleName);

    void OnSetup(float rate, uint32_t frames) override;
    void OnReset(bool hard) override;
    bool UpdateParameters(ProcessBlock& block) override;
    bool OnProcess(ProcessBlock& block) override;

    const GrainPool& Grains() const { return grains; }
    const MarkerRing& Markers() const { return markers; }
    const CaptureBuffer& Capture() const { return capture; }
    uint32_t GridSize() const { return settings.gridSize; }
    /// Triggers that started a pair in the last block, and displayed grains that ended in it.
    uint32_t StartedCount() const { return scheduler.StartedCount(); }
    uint32_t EndedCount() const { return endedCount; }
    /// Told of every grain that starts; null for nobody. For tools that draw, between blocks.
    void SetGrainListener(GrainListener* listener) { scheduler.SetListener(listener); }

private:
    GranularPhaseHelper& MainClock() { return Child<0>(); }
    GranularPhaseHelper& TextureClock() { return Child<1>(); }
    GranularPhaseHelper& SongClock() { return Child<2>(); }
    StepSequencerGranular& Sequencer() { return Child<3>(); }
    BitCrusher& Crusher() { return Child<4>(); }
    const GranularPhaseHelper& TriggerClock() {
        return settings.granularMode == GranularSettings::kTexture ? TextureClock() : MainClock();
    }

    void ConfigureChildren();
    bool IsOn(uint32_t id) { return Value(id) > 0.5f; }
    float BlockValue(const ProcessBlock& block, uint32_t id, uint32_t row) {
        return ParameterAt(id).GetBlockValue(block, row);
    }
    void Fill(const ProcessBlock& block, uint32_t id, uint32_t row, Curve curve);
    bool Rests(Curve curve, uint32_t frames) const;
    float WholeNote() const;

    // The control step, in its order.
    void UpdateMode();
    void UpdateGrainLimit();
    void UpdateScale();
    void UpdateLoop();
    void UpdateOffsetType();
    void UpdatePlayHead(const ProcessBlock& block);
    void UpdatePlaybackModes(const ProcessBlock& block);
    void UpdateChoices();
    void FillGrainCurves(const ProcessBlock& block);
    void UpdateDensityType();
    void UpdateTexture(const ProcessBlock& block);
    void UpdateSpatializer();

    // The work of a block, in its order.
    bool FollowTransport(const ProcessBlock& block);
    void RunClocks(const ProcessBlock& block);
    void FillRateInput(const ProcessBlock& block);
    void FillTextureRate(uint32_t frames);
    void MovePosition(const ProcessBlock& block);
    void RunSamples(const ProcessBlock& block, bool transportStarted);
    void RunHeads(const ProcessBlock& block, const CaptureBuffer::Transport& transport,
                  uint32_t first, uint32_t end);
    bool RunHeadsStraight(const ProcessBlock& block, const CaptureBuffer::Transport& transport,
                          uint32_t first, uint32_t end);
    void MarkStretch(uint32_t first, uint32_t end, uint32_t from);
    void RecordSample(uint32_t n, float left, float right);
    void FindTransients();
    void RenderGrains(const ProcessBlock& block);
    void UpdateGate(uint32_t frames);

    float sampleRate = 44100.0f;
    uint32_t blockSize = 0;

    // As the last control step has read them.
    GranularSettings settings;
    OutputStage outputStage;
    float tempo = 1.0f;
    float previousTempo = 1.0f;
    float sensitivity = 0.0f;

    // State.
    GrainPool grains;
    std::vector<uint16_t> ended;  ///< slots that finished in this block
    CaptureBuffer capture;
    MarkerRing markers;
    TransientDetector detector;
    StereoPosition position;
    GatePulse gate;
    bool wasPlaying = false;
    uint32_t endedCount = 0;
    SmootherLPF persistenceSmoother{0.01};  // one tick a sample

    // Block buffers.
    BlockCurves curves;
    std::array<float, static_cast<size_t>(Curve::Count)> restingAt;  ///< what a curve is full of
    AlignedVector storage;         ///< backs the curves, the persistence and the sequence
    float* persistence = nullptr;  ///< smoothed "BufferPersistence"
    float* sequence = nullptr;     ///< output of the sequencer
    AlignedVector rateStorage, textureRateStorage;  ///< rows with their heads
    float* rateInput = nullptr;
    float* textureRateInput = nullptr;
    float textureHertz = 0.0f;     ///< the rate that was last looked up on the clock's knob
    float texturePosition = 0.0f;  ///< where it stands

    GrainRenderer renderer;
    GrainScheduler scheduler;
};

}  // namespace Quorvan::dsp
