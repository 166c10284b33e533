#include "modulation/IGenerator.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <utility>

#include "framework/ParameterTable.h"
#include "modulation/PhaseMath.h"
#include "primitives/BlockTests.h"
#include "primitives/RepeatedSum.h"

namespace Quorvan::dsp {

namespace {

constexpr float kInverse360 = 0.0027777778f;
constexpr float kTripletFactor = 0.6666667f;
constexpr float kDottedFactor = 1.5f;
constexpr double kInverse60 = 0.016666666666666666;
constexpr float kInverseMiddleC = 0.003822256f;  // 1 / 261.6256 Hz
/// A finished one-shot rests this far short of its start phase.
constexpr double kShortOfEnd = 0.000001;

const std::vector<float> kDefaultRates{8.0f,  4.0f,   2.0f,    1.0f,    0.5f,
                                       0.25f, 0.125f, 0.0625f, 0.03125f};

ParameterTable BaseRows() {
    using P = ParameterSpec;
    return {
        P::Stepped("Mode", 3),
        P::Raw("MidiSync"),
        P::Raw("RateUnSynced"),
        P::Stepped("RateSynced", static_cast<uint32_t>(kDefaultRates.size())),
        P::Stepped("RateSyncedType", 3),
        P::Linear("PhaseInit", 0.0f, 360.0f),
        P::Raw("KbTracking").AtPosition(0.0f),
        P::Raw("KbTrackingAmount"),
        P::Linear("KbTrackingFreq", 1.0f, 40000.0f),
        P::Raw("GateIn"),
        P::Raw("ControlRate").AtPosition(0.0f),
        P::Raw("SppHardFollow"),
        P::Raw("Swing").AtPosition(0.0f),
    };
}

}  // namespace

IGenerator::IGenerator(std::string moduleName, uint32_t inputs, uint32_t outputs,
                       const ParameterTable& ownRows)
    : UnitModule(std::move(moduleName), inputs, outputs, Join(BaseRows(), ownRows)),
      syncedRates(kDefaultRates) {}

void IGenerator::SetSyncedRates(const std::vector<float>& table) {
    SetSyncedRates(table.data(), table.size());
}

void IGenerator::SetSyncedRates(const float* table, size_t count) {
    if (count == 0)
        return;
    // A table of the same length takes the place of the old one without an allocation.
    syncedRates.assign(table, table + count);
    parameters[RateSynced].ConfigureStepped(static_cast<uint32_t>(count), 0.0f);
    MarkChanged(RateSynced);
}

void IGenerator::OnSetup(float rateHz, uint32_t blockSize) {
    sampleRate = rateHz;
    maxBlockSize = blockSize;
    beatsPerSamplePerBpm = kInverse60 / static_cast<double>(rateHz);
    beatsPerSample = static_cast<double>(tempo) * beatsPerSamplePerBpm;
    bufferStorage.assign(size_t{4} * blockSize, 0.0f);
    rateBuffer = bufferStorage.data();
    phaseBuffer = rateBuffer + blockSize;
    tickBuffer = phaseBuffer + blockSize;
    cycleBuffer = tickBuffer + blockSize;
    heldRates.Forget();
    heldCycles.Forget();
    ticked = false;
}

void IGenerator::OnReset(bool) {
    wasPlaying = false;
    Restart();
}

void IGenerator::Restart() {
    if (phaseBuffer != nullptr) {
        std::fill_n(phaseBuffer, maxBlockSize, 0.0f);
        std::fill_n(cycleBuffer, maxBlockSize, 0.0f);
        heldCycles.Forget();
    }
    cycleCount = -1.0f;
    previousClock = 0.0;
    clockOrigin = 0.0;
    restartPending = true;
}

void IGenerator::UpdateRate() {
    rate = synced ? TableEntry(Value(RateSynced)) : Value(RateUnSynced);
}

bool IGenerator::UpdateParameters(ProcessBlock& block) {
    if (block.tempo != tempo) {
        tempo = block.tempo;
        beatsPerSample = static_cast<double>(tempo) * beatsPerSamplePerBpm;
    }
    if (IsChanged(Mode))
        mode = static_cast<uint32_t>(Value(Mode));
    if (IsChanged(MidiSync)) {
        synced = Value(MidiSync) >= 0.5f;
        Restart();
    }
    if (IsChanged(MidiSync) || IsChanged(RateUnSynced) || IsChanged(RateSynced) ||
        IsChanged(RateSyncedType)) {
        if (IsChanged(RateSyncedType)) {
            const int32_t type = Index(RateSyncedType);
            syncedTypeFactor = type == 1 ? kTripletFactor : type == 2 ? kDottedFactor : 1.0f;
        }
        UpdateRate();
        knownRow = std::numeric_limits<float>::quiet_NaN();
    }
    if (IsChanged(PhaseInit))
        UpdatePhaseInit();
    if (IsChanged(GateIn) && Value(GateIn) > 0.5f && mode != kFree) {
        finished = false;
        Restart();
    }
    if (IsChanged(ControlRate))
        controlRate = Value(ControlRate) >= 0.5f;
    if (IsChanged(SppHardFollow))
        hardFollow = Value(SppHardFollow) >= 0.5f;
    if (IsChanged(Swing)) {
        swingOn = Position(Swing) > 0.0f;
        swing = Value(Swing) * 0.01f;
    }
    return true;
}

/// Both phases jump by the change, without a restart.
void IGenerator::UpdatePhaseInit() {
    const float wanted = Value(PhaseInit) * kInverse360;
    const auto moved = [&](double phase) {
        const float sum = 1.0f + static_cast<float>(phase) + wanted - phaseInit;
        return static_cast<double>(sum - std::floor(sum));
    };
    freePhase = moved(freePhase);
    syncedPhase = moved(syncedPhase);
    phaseInit = wanted;
}

bool IGenerator::OnProcess(ProcessBlock& block) {
    const uint32_t frames = block.numFrames;
    if (frames == 0)
        return true;
    Run run{};
    run.steps = controlRate ? 1 : frames;
    run.samplesPerStep = controlRate ? static_cast<float>(frames) : 1.0f;
    run.playing = block.transportPlaying != 0;
    run.wasPlaying = wasPlaying;
    phasesClimb = false;
    ClearTicks();
    if (run.playing && !run.wasPlaying && mode == kFree)
        Restart();
    wasPlaying = run.playing;
    FillRates(block);
    FollowSongPosition(block, run.playing && !run.wasPlaying);
    FollowTransport(run);
    run.clock = run.playing
                    ? static_cast<double>(lastSongPosition)
                    : static_cast<double>(run.samplesPerStep) * beatsPerSample + previousClock;
    run.keyFactor = KeyFactor(block);
    if (restartPending)
        ApplyRestart(run);

    if (mode == kOneShot && finished)
        Rest(0, run.steps);
    else if (!synced)
        RunFree(run);
    else if (mode == kOneShot)
        RunOneShotSynced(run);
    else
        RunSynced(run);
    HoldSingleStep(phaseBuffer, frames);
    HoldSingleStep(cycleBuffer, frames);
    ProcessBlock inner = block;
    inner.numFrames = run.steps;
    return Generate(inner);
}

/// Any index counts as the nearest one of the table.
float IGenerator::TableEntry(float index) const {
    const auto last = static_cast<float>(syncedRates.size() - 1);
    const float held = index > 0.0f ? std::min(index, last) : 0.0f;
    return syncedRates[static_cast<size_t>(held)] * syncedTypeFactor;
}

void IGenerator::FillRates(const ProcessBlock& block) {
    const uint32_t frames = block.numFrames;
    ratesRest = true;
    if (rateInputMode == kNoRateInput || !IsRowActive(block, rateInputIndex))
        return heldRates.Fill(rateBuffer, frames, rate);
    Parameter& knob = parameters[synced ? RateSynced : RateUnSynced];
    const float* const row = block.inputs[rateInputIndex];
    if (rateInputMode == kPerBlock || IsConstant(row, frames))
        return heldRates.Fill(rateBuffer, frames, RateAt(knob, block));
    heldRates.Forget();
    knob.FillBlockValues(block, rateInputIndex, rateBuffer);
    if (synced)
        for (uint32_t i = 0; i < frames; ++i)
            rateBuffer[i] = TableEntry(rateBuffer[i]);
    ratesRest = IsConstant(rateBuffer, controlRate ? 1 : frames);
}

/// The rate where the row stands at its first entry. While row and knob rest, it is what it was.
float IGenerator::RateAt(Parameter& knob, const ProcessBlock& block) {
    const float row = block.inputs[rateInputIndex][0];
    const float position = knob.GetNormalized();
    if (row == knownRow && position == knownPosition)
        return knownRate;
    float value = 0.0f;
    if (rateInputMode == kPerBlock) {
        value = knob.GetModulatedValue(row);
    } else {
        ProcessBlock first = block;
        first.numFrames = 1;
        knob.FillBlockValues(first, rateInputIndex, &value);
    }
    knownRow = row;
    knownPosition = position;
    knownRate = synced ? TableEntry(value) : value;
    return knownRate;
}

void IGenerator::ClearTicks() {
    if (ticked)
        std::fill_n(tickBuffer, maxBlockSize, 0.0f);
    ticked = false;
}

/// Takes a backward jump of the song position out of the clocks, so that the phase goes on.
void IGenerator::FollowSongPosition(const ProcessBlock& block, bool justStarted) {
    const float position = block.songPosition;
    if (position == lastSongPosition)
        return;
    if (!justStarted && position < lastSongPosition) {
        const double back = beatsPerSample * static_cast<double>(block.numFrames) +
                            static_cast<double>(lastSongPosition) - static_cast<double>(position);
        if (mode != kFree || block.transportPlaying != 0)
            previousClock -= back;
        if (mode != kFree)
            clockOrigin -= back;
    }
    lastSongPosition = std::max(position, 0.0f);
}

/// Carries the clock over to the song position where the transport starts or stops.
void IGenerator::FollowTransport(const Run& run) {
    if (run.playing == run.wasPlaying || mode == kFree)
        return;
    const double step = static_cast<double>(run.samplesPerStep) * beatsPerSample;
    const auto position = static_cast<double>(lastSongPosition);
    if (run.playing)
        clockOrigin += position - (step + previousClock);
    previousClock = position - step;
}

float IGenerator::KeyFactor(const ProcessBlock& block) {
    float amount = 0.0f;
    if (keyTrackInputEnabled != 0 && keyTrackInputIndex < block.numInputs)
        amount = parameters[KbTrackingAmount].GetBlockValue(block, keyTrackInputIndex);
    if (Position(KbTracking) <= 0.5f)
        return 1.0f;
    float octaves = std::log2(Value(KbTrackingFreq) * kInverseMiddleC) * amount * 0.01f;
    if (synced)
        octaves = std::round(octaves);
    return std::exp2(octaves);
}

/// Where a one-shot that has ended rests.
double IGenerator::PhaseEnd() const {
    return Frac(static_cast<double>(phaseInit) - kShortOfEnd + 1.0);
}

/// The start phase, so little beyond that it is the same float, and enough that the roundings of
/// the first step can't leave it short of the start.
double IGenerator::PhaseStart() const {
    constexpr double kBeyond = 1.0 + 0x1p-50;
    return static_cast<double>(phaseInit) * kBeyond;
}

/// Phase increment of a free step.
double IGenerator::FreeStep(float hertz, const Run& run) const {
    return static_cast<double>(hertz) / static_cast<double>(sampleRate) *
           static_cast<double>(run.samplesPerStep) * static_cast<double>(run.keyFactor);
}

/// Phase increment of a step at a synced rate, without swing.
double IGenerator::SyncedStep(float wholeNotes, const Run& run) const {
    return static_cast<double>(run.keyFactor) * static_cast<double>(run.samplesPerStep) * 0.25 /
           static_cast<double>(wholeNotes) * beatsPerSample;
}

/// Puts the phase one increment short of its start, so that the first step lands on it with a tick.
void IGenerator::ApplyRestart(const Run& run) {
    const float r0 = rateBuffer[0];
    const double stretch = swingOn ? static_cast<double>(0.5f / swing) : 1.0;
    const bool rests = finished && mode == kOneShot;
    previousRate = r0;
    restartPending = false;
    if (!synced) {
        if (mode == kFree && run.wasPlaying && run.playing)
            return;
        freePhase = rests ? PhaseEnd() : PhaseStart() - FreeStep(r0, run) * stretch;
        return;
    }
    const auto key = static_cast<double>(run.keyFactor);
    const double oneStep = SyncedStep(r0, run) * stretch;
    previousClock = run.clock - static_cast<double>(run.samplesPerStep) * beatsPerSample * key;
    if (mode == kFree && run.playing) {
        const double songCycles = 0.25 / static_cast<double>(r0) * key * run.clock;
        clockOrigin = 0.0;
        syncedPhase = Frac(songCycles + static_cast<double>(phaseInit)) - oneStep;
        return;
    }
    clockOrigin = hardFollow && run.playing ? 0.0 : run.clock;
    syncedPhase = rests ? PhaseEnd() : PhaseStart() - oneStep;
}

/// A one-shot that has ended, from step first on.
void IGenerator::Rest(uint32_t first, uint32_t steps) {
    const auto phase = static_cast<float>(synced ? syncedPhase : freePhase);
    std::fill(phaseBuffer + first, phaseBuffer + steps, phase);
    heldCycles.Forget();
    std::fill(cycleBuffer + first, cycleBuffer + steps, 0.0f);
}

void IGenerator::RunOneShotSynced(const Run& run) {
    const auto start = static_cast<double>(phaseInit);
    double clock = run.clock;
    double step = 0.0;
    heldCycles.Forget();
    for (uint32_t i = 0; i < run.steps; ++i) {
        if (i == 0 || rateBuffer[i] != rateBuffer[i - 1])
            step = SyncedStep(rateBuffer[i], run);
        const double from = syncedPhase - start + 1.0;
        previousClock = clock;
        clock += beatsPerSample;
        if (Crosses(from, from + step)) {
            cycleCount += 1.0f;
            if (cycleCount > 0.0f) {
                finished = true;
                syncedPhase = PhaseEnd();
                Rest(i, run.steps);
                return;
            }
            Tick(i);
        }
        cycleBuffer[i] = 0.0f;
        syncedPhase = FracBehindZero(syncedPhase + step);
        phaseBuffer[i] = static_cast<float>(syncedPhase);
    }
}

/// The block of a synced run that follows the song and lies inside one cycle; false for any other.
bool IGenerator::RunSyncedStraight(const Run& run) {
    if (!hardFollow || mode != kFree || swingOn || !ratesRest)
        return false;
    const double perBeat =
        0.25 / static_cast<double>(rateBuffer[0]) * static_cast<double>(run.keyFactor);
    const auto start = static_cast<double>(phaseInit);
    const double last = run.clock + static_cast<double>(run.steps) * beatsPerSample;
    const double cycle = Floor(CyclesAt(previousClock, perBeat));
    const double turn = Floor(start + CyclesAt(run.clock, perBeat));
    // One step more than the block has, so that no rounding of the sum below can leave the cycle.
    if (Floor(CyclesAt(run.clock, perBeat)) != cycle || Floor(CyclesAt(last, perBeat)) != cycle ||
        Floor(start + CyclesAt(last, perBeat)) != turn)
        return false;
    const auto phaseAt = [start, perBeat, turn, origin = clockOrigin](double clock) {
        return start + (clock - origin) * perBeat - turn;
    };
    previousClock = FillByClock(run, phaseAt);
    syncedPhase = phaseAt(previousClock);
    heldCycles.Fill(cycleBuffer, run.steps, static_cast<float>(cycle));
    phasesClimb = perBeat >= 0.0 && beatsPerSample >= 0.0;
    return true;
}

/// Phases of a run's steps by their clocks, where anybody needs them; answers with the last clock.
template <class PhaseAt>
double IGenerator::FillByClock(const Run& run, const PhaseAt& phaseAt) {
    constexpr uint32_t kStretch = 64;
    double clocks[kStretch];
    double next = run.clock;
    for (uint32_t done = 0; phasesNeeded && done < run.steps; done += kStretch) {
        const uint32_t count = std::min(kStretch, run.steps - done);
        const RepeatedSum sum(next, beatsPerSample, count);
        sum.Fill(clocks, count);
        float* const phases = phaseBuffer + done;
        for (uint32_t i = 0; i < count; ++i)
            phases[i] = static_cast<float>(phaseAt(clocks[i]));
        next = sum.End();
    }
    return RepeatedSum(run.clock, beatsPerSample, run.steps - 1).End();
}

/// Cycles are counted on the clock. Between their starts the phase runs on by itself, unless it
/// follows the song position all the way.
void IGenerator::RunSynced(const Run& run) {
    if (RunSyncedStraight(run))
        return;
    const auto start = static_cast<double>(phaseInit);
    const bool follows = hardFollow && mode == kFree;
    double clock = run.clock;
    double phase = syncedPhase;
    double perBeat = 0.0, step = 0.0, before = 0.0;
    heldCycles.Forget();
    for (uint32_t i = 0; i < run.steps; ++i) {
        if (i == 0 || rateBuffer[i] != rateBuffer[i - 1]) {
            perBeat =
                0.25 / static_cast<double>(rateBuffer[i]) * static_cast<double>(run.keyFactor);
            step = perBeat * static_cast<double>(run.samplesPerStep) * beatsPerSample;
            before = CyclesAt(previousClock, perBeat);
        }
        const double now = CyclesAt(clock, perBeat);
        const double cycle = Floor(now);
        const bool starts = Floor(before) != cycle;
        phase = starts || follows ? Frac(start + now) : FracBehindZero(phase + step);
        cycleBuffer[i] = static_cast<float>(cycle);
        phaseBuffer[i] = static_cast<float>(phase);
        if (starts) {
            Tick(i);
            finished = finished || cycleBuffer[i] > 0.0f;
        }
        previousClock = clock;
        clock += beatsPerSample;
        before = now;
    }
    syncedPhase = phase;
}

/// The block of a free run in which nothing happens but that the phase goes on; false where
/// something else does. Behind the first step phases are whole multiples of the last place of a
/// number between 1 and 2, and so is each step: all sums are exact, in whatever order.
bool IGenerator::RunFreeStraight(const Run& run) {
    if (swingOn || !ratesRest)
        return false;
    const auto start = static_cast<double>(phaseInit);
    const double step = FreeStep(previousRate, run);
    // A new rate counts from the second step on.
    const float newRate = rateBuffer[0];
    const double newStep = newRate == previousRate ? step : FreeStep(newRate, run);
    const double from = freePhase + 1.0;
    const double first = from + step - 1.0;
    const double advance = 1.0 + newStep - 1.0;
    const double last = first + static_cast<double>(run.steps - 1) * advance;
    // A half of the last place goes up from some phases and down from others; behind one step all
    // are even.
    const bool isAlike = first + 1.0 + newStep - 1.0 == first + advance;
    const bool climbs = step >= 0.0 && newStep >= 0.0 && first >= 0.0 && last < 1.0;
    if (!isAlike || !climbs || Crosses(from - start, last + 1.0 - start))
        return false;
    if (phasesNeeded)
        FillPhases(first, advance, run.steps);
    heldCycles.Fill(cycleBuffer, run.steps, cycleCount);
    phasesClimb = advance >= 0.0;
    freePhase = last;
    previousRate = newRate;
    previousClock = run.clock + static_cast<double>(run.steps - 1) * beatsPerSample;
    return true;
}

/// Phases first, first + advance and so on, whose sums are exact.
void IGenerator::FillPhases(double first, double advance, uint32_t steps) {
    using Doubles = double __attribute__((vector_size(16)));
    using Floats = float __attribute__((vector_size(8)));
    constexpr uint32_t kAbreast = 4;
    const double ahead = static_cast<double>(kAbreast) * advance;
    Doubles even{first, first + advance};
    Doubles odd = even + 2.0 * advance;
    const auto put = [](Doubles phases, float* out) {
        const Floats rounded = __builtin_convertvector(phases, Floats);
        std::memcpy(out, &rounded, sizeof rounded);
    };
    uint32_t i = 0;
    for (; i + kAbreast <= steps; i += kAbreast, even += ahead, odd += ahead) {
        put(even, phaseBuffer + i);
        put(odd, phaseBuffer + i + 2);
    }
    for (uint32_t k = 0; i + k < steps; ++k)
        phaseBuffer[i + k] = static_cast<float>(even[0] + static_cast<double>(k) * advance);
}

void IGenerator::RunFree(const Run& run) {
    if (RunFreeStraight(run))
        return;
    const auto start = static_cast<double>(phaseInit);
    const double shares[2] = {2.0 * static_cast<double>(swing),
                              2.0 * static_cast<double>(1.0f - swing)};
    double phase = freePhase;
    double clock = run.clock;
    double plainStep = FreeStep(previousRate, run);
    float usedRate = previousRate;
    float count = cycleCount;
    double step = swingOn ? plainStep / shares[IsOdd(count)] : plainStep;
    heldCycles.Forget();
    for (uint32_t i = 0; i < run.steps; ++i) {
        const double from = phase + 1.0;
        const double to = from + step;
        const bool starts = Crosses(from - start, to - start);
        phase = FracBehindOne(to);
        previousClock = clock;
        clock += beatsPerSample;
        if (starts) {
            Tick(i);
            count += 1.0f;
            finished = finished || count > 0.0f;
        }
        if (mode == kOneShot && finished) {
            tickBuffer[i] = 0.0f;
            phase = Frac(start + 0.999999);
        }
        cycleBuffer[i] = count;
        phaseBuffer[i] = static_cast<float>(phase);
        if (starts || rateBuffer[i] != usedRate) {
            usedRate = rateBuffer[i];
            plainStep = FreeStep(usedRate, run);
            step = swingOn ? plainStep / shares[IsOdd(count)] : plainStep;
        }
        if (mode == kOneShot && finished) {
            freePhase = phase;
            Rest(i + 1, run.steps);
            break;
        }
    }
    freePhase = phase;
    cycleCount = count;
    previousRate = usedRate;
}

/// 1 in the second of a pair of cycles, and from a restart to the first cycle.
uint32_t IGenerator::IsOdd(float cycles) {
    const float half = cycles * 0.5f;
    return half != std::floor(half) ? 1 : 0;
}

/// Position in cycles at a clock value.
double IGenerator::CyclesAt(double clock, double perBeat) const {
    const double cycles = (clock - clockOrigin) * perBeat;
    return swingOn ? Warp(cycles) : cycles;
}

/// A pair of cycles keeps its length, and its first cycle takes the share swing of it.
double IGenerator::Warp(double cycles) const {
    const double inPair = 2.0 * Frac(cycles * 0.5);
    const double base = cycles - inPair;
    const double split = 2.0 * static_cast<double>(swing);
    return inPair >= split ? base + (inPair - split) / (2.0 - split) + 1.0 : base + inPair / split;
}

}  // namespace Quorvan::dsp
