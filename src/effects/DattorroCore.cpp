#include "effects/DattorroCore.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "framework/ParameterTable.h"
#include "primitives/BlockDelay.h"

namespace Quorvan::dsp {

namespace {

constexpr float kTwoPi = 6.2831855f;
constexpr float kLowestRate = 10000.0f;  // at or below it the reference rate stands in
constexpr int32_t kSpareSamples = 10;    // of the predelay
constexpr float kMilli = 0.001f;
constexpr float kRightPhase = 1.0f;  // radians, ahead of the left oscillator
constexpr float kSizeRowDepth = 0.1f;
constexpr double kShortestGlide = 1e-12;  // seconds

const ParameterTable& Table() {
    using P = ParameterSpec;
    constexpr uint32_t exponential = PotardKind::kExponential;
    static const ParameterTable table = {
        P::Curved("Predelay", exponential, 0.0f, 0.2f, 3.0f).AtPosition(0.0001f),
        P::Raw("E_Id1").AtValue(0.75f),
        P::Raw("E_Id2").AtValue(0.625f),
        P::Linear("Decay", 0.0f, 0.925f).AtPosition(0.5f),
        P::Raw("E_Dd1").AtValue(0.7f),
        P::Raw("E_Dd2").AtValue(0.5f),
        P::Linear("Damping", 0.0f, 1.0f).AtPosition(0.0005f),
        P::Raw("E_Excursion").AtValue(0.8f),
        P::Raw("E_MKFosc").AtValue(1.0f),
        P::Raw("E_MDFosc").AtValue(0.02f),
        P::Linear("E_Size", 0.1f, 1.9f).AtValue(1.0f),
        P::Raw("SmoothTimeDelay").AtValue(0.5f),
        P::Stepped("Freeze", 2),
        P::Stepped("InterpType", 4),
    };
    return table;
}

enum Row : uint32_t { kDecayRow = 1, kSizeRow, kPredelayRow, kDampingRow, kSizeOffsetRow };

/// count phases of an oscillator. Blocks in which its turn does not end are the most by far, and
/// are done with sums alone.
void Turn(float& phase, float step, float* out, uint32_t count) {
    float sum = phase;
    for (uint32_t n = 0; n < count; ++n)
        out[n] = sum += step;
    if (!(sum < kTwoPi)) {
        sum = phase;
        for (uint32_t n = 0; n < count; ++n) {
            sum += step;
            // A step is less than a turn.
            if (!(sum < kTwoPi))
                sum -= kTwoPi;
            out[n] = sum;
        }
    }
    phase = sum;
}

/// FillBlock, but of any length also at rest.
void Fill(SmootherLPF& smoother, float* out, uint32_t count) {
    if (smoother.IsAtRest())
        std::fill_n(out, count, static_cast<float>(smoother.current));
    else
        smoother.FillBlock(out, count);
}

}  // namespace

DattorroCore::DattorroCore(std::string moduleName)
    : UnitModule(std::move(moduleName), 6, 2, Table()) {}

void DattorroCore::OnSetup(float rate, uint32_t blockSize) {
    blockFrames = blockSize;
    sampleRate = rate > kLowestRate ? rate : TankLengths::kReferenceRate;
    UpdateExcursion();
    sizeMin = parameters[Size].minValue;
    sizeMax = parameters[Size].maxValue;
    tank.Setup(sampleRate, sizeMax, parameters[Excursion].maxValue * kMilli);
    const float longest = std::max(rate, 0.0f) * parameters[Predelay].maxValue;
    predelayLine.Resize(static_cast<int32_t>(longest) + kSpareSamples,
                        DelayLine::Clearing::BitByBit);

    for (SmootherLPF* smoother : {&predelaySmoother, &decaySmoother, &sizeSmoother}) {
        smoother->stepLength = 1;
        smoother->sampleRate = static_cast<double>(sampleRate);
        smoother->UpdateCoefficients();
    }
    for (AlignedVector* buffer :
         {&decay, &predelay, &input, &predelayed, &sizes, &modulation[0], &modulation[1]})
        buffer->assign(blockSize, 0.0f);
}

void DattorroCore::OnReset(bool) {
    tank.Clear();
    predelayLine.Clear();
    predelaySmoother.Reset(sampleRate * Value(Predelay));
    decaySmoother.Reset(Value(Decay));
    sizeSmoother.Reset(SizeWithin(Value(Size)));
    phases = {0.0f, kRightPhase};
    tank.UpdateLengths(sizeSmoother.Tick());
    for (AlignedVector& side : modulation)
        std::fill(side.begin(), side.end(), 0.0f);
}

bool DattorroCore::UpdateParameters(ProcessBlock&) {
    if (IsChanged(Freeze))
        frozen = Position(Freeze) > 0.5f;
    if (IsChanged(Predelay))
        predelaySmoother.SetTarget(sampleRate * Value(Predelay));
    // The first half of the block's glide, which nobody hears.
    Fill(predelaySmoother, predelay.data(), blockFrames);
    if (IsChanged(Excursion))
        UpdateExcursion();
    if (IsChanged(OscillatorRate) || IsChanged(OscillatorSpread))
        UpdateOscillators();
    UpdateDiffusion();
    if (IsChanged(SmoothTimeDelay))
        UpdateGlideTimes();
    return true;
}

bool DattorroCore::OnProcess(ProcessBlock& block) {
    const uint32_t count = block.numFrames;
    tank.Wipe();
    predelayLine.Wipe();
    if (frozen)
        HoldModulation();
    else
        Modulate(count);
    TakeInput(block);
    AimGlides(block);
    RunPredelay(count);
    RunTank(block);
    return true;
}

void DattorroCore::UpdateDiffusion() {
    if (IsChanged(InputDiffusion1))
        tank.SetInputDiffusion1(Value(InputDiffusion1));
    if (IsChanged(InputDiffusion2))
        tank.SetInputDiffusion2(Value(InputDiffusion2));
    if (IsChanged(DecayDiffusion1))
        tank.SetDecayDiffusion1(Value(DecayDiffusion1));
    if (IsChanged(DecayDiffusion2))
        tank.SetDecayDiffusion2(Value(DecayDiffusion2));
}

/// Held to what the rings have room for.
void DattorroCore::UpdateExcursion() {
    const Parameter& range = parameters[Excursion];
    const float ms = std::clamp(Value(Excursion), range.minValue, range.maxValue);
    excursionSamples = sampleRate * ms * kMilli;
}

void DattorroCore::UpdateOscillators() {
    const float step = Value(OscillatorRate) * kTwoPi / sampleRate;
    steps = {step, (1.0f - Value(OscillatorSpread)) * step};
}

void DattorroCore::UpdateGlideTimes() {
    const double seconds = std::max(static_cast<double>(Value(SmoothTimeDelay)), kShortestGlide);
    for (SmootherLPF* smoother : {&predelaySmoother, &sizeSmoother}) {
        smoother->time = seconds;
        smoother->UpdateCoefficients();
    }
}

/// Held to the bounds that the rings are made for; what is no number becomes the smallest.
float DattorroCore::SizeWithin(float wanted) const {
    return std::min(std::max(sizeMin, wanted), sizeMax);
}

/// Keeps the corner of the low-passes over the rates; at the reference rate it is damping itself.
float DattorroCore::DampingCoefficient(float damping) const {
    return 1.0f - (1.0f - damping) / (damping * tank.Ratio() + 1.0f - damping);
}

void DattorroCore::Modulate(uint32_t count) {
    for (uint32_t c = 0; c < modulation.size(); ++c)
        Turn(phases[c], steps[c], modulation[c].data(), count);
    for (AlignedVector& side : modulation) {
        for (uint32_t n = 0; n < count; ++n)
            side[n] = std::sin(side[n]) * excursionSamples;
        if (count > 0)  // a freeze holds the last one, in whatever blocks it comes
            std::fill(side.begin() + static_cast<std::ptrdiff_t>(count), side.end(),
                      side[count - 1]);
    }
}

/// The oscillators stand, and what they give is held at a whole sample, so that the all-passes lose
/// nothing to interpolation. All of the buffer: a longer block may come while they stand.
void DattorroCore::HoldModulation() {
    for (AlignedVector& side : modulation)
        std::fill(side.begin(), side.end(), std::round(side.back()));
}

void DattorroCore::TakeInput(const ProcessBlock& block) {
    if (frozen)
        std::fill_n(input.begin(), block.numFrames, 0.0f);
    else
        std::copy_n(block.inputs[0], block.numFrames, input.begin());
    const float damping = parameters[Damping].GetBlockValue(block, kDampingRow);
    damp = frozen ? 0.0f : DampingCoefficient(damping);
}

/// The glides run over the full block size however short the block is.
void DattorroCore::AimGlides(const ProcessBlock& block) {
    decaySmoother.SetTarget(frozen ? 1.0f : parameters[Decay].GetBlockValue(block, kDecayRow));
    Fill(decaySmoother, decay.data(), blockFrames);
    predelaySmoother.SetTarget(parameters[Predelay].GetBlockValue(block, kPredelayRow) *
                               sampleRate);
    Fill(predelaySmoother, predelay.data(), blockFrames);
    float size = parameters[Size].GetBlockValue(block, kSizeRow);
    if (IsRowActive(block, kSizeOffsetRow))
        size += kSizeRowDepth * block.inputs[kSizeOffsetRow][0];
    sizeSmoother.SetTarget(SizeWithin(size));
}

/// At rest by whole samples. Rates at or below 10 kHz may ask for more than the line holds: then it
/// is read round and round.
void DattorroCore::RunPredelay(uint32_t count) {
    const auto size = static_cast<uint32_t>(predelayLine.size);
    const bool rests = predelaySmoother.IsAtRest() && predelay[0] == predelay[blockFrames - 1];
    const float delay = predelay[0];
    if (rests && count <= size && delay < static_cast<float>(size)) {
        const bool none = delay < 1.0f;
        RunBlockDelay(predelayLine, none ? 1 : static_cast<uint32_t>(delay), input.data(),
                      predelayed.data(), count);
        if (none)
            std::copy_n(input.begin(), count, predelayed.begin());
        return;
    }
    for (uint32_t n = 0; n < count; ++n) {
        const auto whole = static_cast<int32_t>(predelay[n]);
        const float fraction = rests ? 0.0f : predelay[n] - static_cast<float>(whole);
        predelayed[n] =
            whole < 1 ? input[n] : predelayLine.Read(whole, fraction, DelayLine::kLinear);
        predelayLine.Write(input[n]);
    }
}

/// Frames in which the size is still on its way come first: a glide that arrives rests until the
/// next target, with the next block.
void DattorroCore::RunTank(const ProcessBlock& block) {
    const uint32_t count = block.numFrames;
    DattorroTank::Course course;
    course.input = predelayed.data();
    course.decay = decay.data();
    course.damp = damp;
    for (uint32_t side = 0; side < kSides; ++side) {
        course.modulation[side] = modulation[side].data();
        course.out[side] = block.outputs[side];
    }
    uint32_t moving = 0;
    for (; moving < count && !sizeSmoother.IsAtRest(); ++moving)
        sizes[moving] = sizeSmoother.Tick();
    if (moving > 0) {
        tank.RunGliding(course, sizes.data(), moving);
        tank.UpdateLengths(sizes[moving - 1]);
    }
    if (moving < count)
        tank.Run(course.From(moving), count - moving);
}

}  // namespace Quorvan::dsp
