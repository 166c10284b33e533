#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "framework/UnitModule.h"
#include "primitives/AlignedVector.h"
#include "primitives/HeldRow.h"

namespace Quorvan::dsp {

/// Base of everything that runs a phase: a free rate in hertz or a tempo-synced one, one-shot, loop
/// and free-running modes, gate restart, swing, following of the song position, and an optional
/// single step a block. Each block it fills buffers of rate, phase, tick and cycle count, one entry
/// a step, and Generate turns them into outputs.
///
/// Inputs      the derived class's; rateInputIndex names the one that moves the rate's position
/// Parameters  the first 13 of every generator; owners give those without a range their own
///             0 Mode one-shot, retriggered loop, free running
///             1 MidiSync, 2 RateUnSynced in hertz, 3 RateSynced index into the rate table,
///             4 RateSyncedType straight, triplet, dotted
///             5 PhaseInit 0..360 degrees
///             6 KbTracking, 7 KbTrackingAmount in percent, 8 KbTrackingFreq in hertz
///             9 GateIn: rising above 0.5 restarts, except in the free mode
///             10 ControlRate: one step a block
///             11 SppHardFollow: the synced phase comes straight from the song position
///             12 Swing in percent, 50 is none
/// Clock       in quarter notes, double precision
class IGenerator : public UnitModule {
public:
    enum BaseId : uint32_t {
        Mode,
        MidiSync,
        RateUnSynced,
        RateSynced,
        RateSyncedType,
        PhaseInit,
        KbTracking,
        KbTrackingAmount,
        KbTrackingFreq,
        GateIn,
        ControlRate,
        SppHardFollow,
        Swing
    };
    enum RunMode : uint32_t { kOneShot = 0, kLoop = 1, kFree = 2 };
    enum RateInput : uint32_t { kNoRateInput = 0, kPerSample = 1, kPerBlock = 2 };
    static constexpr uint32_t kBaseParameterCount = 13;
    /// Rate of a note length in whole notes: this over the length, times the tempo, in hertz.
    static constexpr float kHertzPerWholeNoteBpm = 0.004166667f;

    /// ownRows follow the 13 of the base.
    IGenerator(std::string moduleName, uint32_t inputs, uint32_t outputs,
               const ParameterTable& ownRows);

    void OnSetup(float rateHz, uint32_t blockSize) override;
    void OnReset(bool hard) override;
    bool OnProcess(ProcessBlock& block) override;
    bool UpdateParameters(ProcessBlock& block) override;
    /// Back to the start of the cycle.
    virtual void Restart();
    /// Writes all outputs from the buffers; the block's frame count is the number of steps.
    virtual bool Generate(ProcessBlock& block) = 0;
    virtual void UpdateRate();

    /// Whether anybody reads PhaseBuffer, as is taken for granted. Where nobody does, a block may
    /// leave it as it is.
    void NeedPhases(bool areNeeded) { phasesNeeded = areNeeded; }

    /// Replaces the table of note lengths, in whole notes; "RateSynced" gets as many steps.
    void SetSyncedRates(const std::vector<float>& table);
    void SetSyncedRates(const float* table, size_t count);

    /// Of the last block, one entry a frame. Rates are in hertz, or in whole notes when synced.
    const float* RateBuffer() const { return rateBuffer; }
    const float* PhaseBuffer() const { return phaseBuffer; }
    /// 1 at a step on which a cycle began, else 0.
    const float* TickBuffer() const { return tickBuffer; }
    const float* CycleBuffer() const { return cycleBuffer; }
    /// Whether a cycle began in the last block.
    bool HasTicked() const { return ticked; }
    /// Whether the last block lay inside one cycle, with no phase below the one ahead of it.
    bool StaysInCycle() const { return phasesClimb; }
    bool IsSynced() const { return synced; }
    float Tempo() const { return tempo; }
    /// Rate of a step in hertz, free or synced.
    float RateHertz(uint32_t step) const { return RateInHertz(rateBuffer[step]); }
    /// Holds the one step that "ControlRate" makes of a block over all its frames: what reads them
    /// would else meet those of blocks before.
    void HoldSingleStep(float* row, uint32_t frames) const {
        if (controlRate)
            std::fill_n(row, frames, row[0]);
    }

protected:
    /// Present rate in hertz, free or synced.
    float RateInHertz(float bufferedRate) const {
        return synced ? kHertzPerWholeNoteBpm / bufferedRate * tempo : bufferedRate;
    }

    // Clocks and phases.
    double previousClock = 0.0;  ///< of the last step
    double syncedPhase = 0.0;
    double freePhase = 0.0;
    uint32_t maxBlockSize = 1;
    std::vector<float> syncedRates;  ///< whole notes
    AlignedVector bufferStorage;     ///< backs the four buffers
    float* rateBuffer = nullptr;
    float* phaseBuffer = nullptr;
    float* tickBuffer = nullptr;
    float* cycleBuffer = nullptr;
    double beatsPerSamplePerBpm = 0.0;
    double beatsPerSample = 0.0;  ///< quarter notes
    double clockOrigin = 0.0;     ///< counts as cycle 0
    float lastSongPosition = 0.0f;

    // As read from the parameters.
    uint32_t mode = kOneShot;
    float syncedTypeFactor = 1.0f;
    float sampleRate = 1.0f;
    float rate = 1.0f;          ///< hertz, or whole notes when synced
    float previousRate = 1.0f;  ///< of the last free step
    float phaseInit = 0.0f;     ///< fraction of a cycle
    float tempo = 1.0f;
    float cycleCount = 0.0f;  ///< whole cycles since the restart, which sets -1

    // Wiring, set by the derived class.
    uint32_t rateInputMode = kNoRateInput;
    uint32_t rateInputIndex = 0;
    uint32_t keyTrackInputEnabled = 0;
    uint32_t keyTrackInputIndex = 0;

    float swing = 0.5f;  ///< share of a pair of cycles that its first one takes
    bool swingOn = false;
    bool restartPending = false;
    bool synced = false;
    bool finished = false;  ///< a one-shot has ended
    bool wasPlaying = false;
    bool controlRate = false;
    bool hardFollow = false;
    bool phasesNeeded = true;
    bool phasesClimb = false;  ///< no phase is below the one ahead of it, all are of one cycle

private:
    /// What one block fixes for its steps.
    struct Run {
        uint32_t steps;
        float samplesPerStep;
        bool playing, wasPlaying;
        double clock;  ///< of the first step
        float keyFactor;
    };

    void UpdatePhaseInit();
    void FillRates(const ProcessBlock& block);
    float RateAt(Parameter& knob, const ProcessBlock& block);
    float TableEntry(float index) const;
    void FollowSongPosition(const ProcessBlock& block, bool justStarted);
    void FollowTransport(const Run& run);
    float KeyFactor(const ProcessBlock& block);
    double PhaseStart() const;
    double PhaseEnd() const;
    double FreeStep(float hertz, const Run& run) const;
    double SyncedStep(float wholeNotes, const Run& run) const;
    void ApplyRestart(const Run& run);
    void Rest(uint32_t first, uint32_t steps);
    void RunOneShotSynced(const Run& run);
    void RunSynced(const Run& run);
    void RunFree(const Run& run);
    bool RunFreeStraight(const Run& run);
    bool RunSyncedStraight(const Run& run);
    template <class PhaseAt>
    double FillByClock(const Run& run, const PhaseAt& phaseAt);
    void FillPhases(double first, double advance, uint32_t steps);
    void ClearTicks();
    void Tick(uint32_t step) {
        tickBuffer[step] = 1.0f;
        ticked = true;
    }
    static uint32_t IsOdd(float cycles);
    double CyclesAt(double clock, double perBeat) const;
    double Warp(double cycles) const;

    /// Where RateAt was last asked, and its answer; no row is where a new one is to be worked out.
    float knownRow = std::numeric_limits<float>::quiet_NaN();
    float knownPosition = 0.0f, knownRate = 0.0f;
    HeldRow heldRates, heldCycles;  ///< what rateBuffer and cycleBuffer hold
    bool ratesRest = false;         ///< all rates of this block are equal
    bool ticked = false;            ///< a step of this block has a tick
};

}  // namespace Quorvan::dsp
