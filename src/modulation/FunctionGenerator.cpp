#include "modulation/FunctionGenerator.h"

#include <algorithm>
#include <utility>

namespace Quorvan::dsp {

namespace {

constexpr uint32_t kScaleRow = 1;
constexpr float kSmoothShare = 0.3f;
constexpr double kShortestTime = 1e-12;

template <class Generator>
const ParameterTable& Table() {
    using P = ParameterSpec;
    static const ParameterTable own{
        P::Raw("CntrlSrc"),
        P::Linear("OutputValue", -1.0f, 1.0f),
        P::Linear("Smooth", 0.00001f, 1.0f),
        P::Raw("Destination"),
        P::Linear("Amount", -1.0f, 1.0f),
        P::Raw("GateOut"),
    };
    static const ParameterTable table = Join(Generator::Helper::Rows(), own);
    return table;
}

}  // namespace

template <uint32_t Points>
FunctionGenerator<Points>::FunctionGenerator(std::string moduleName)
    : IGenerator(std::move(moduleName), 2, 1, Table<FunctionGenerator>()) {
    rateInputMode = kPerBlock;
    rateInputIndex = 0;
    FunctionGenerator::OnReset(true);
    MarkAllChanged();
}

template <uint32_t Points>
bool FunctionGenerator<Points>::SetParameterNormalized(uint32_t id, float position) {
    const bool moves = HasObservers() && position != parameters[id].GetNormalized();
    IGenerator::SetParameterNormalized(id, position);
    if (moves)
        NotifyObservers(id, position);
    return true;
}

template <uint32_t Points>
bool FunctionGenerator<Points>::SetParameterValue(uint32_t id, float value) {
    const bool moves = HasObservers() && value != parameters[id].GetValue();
    IGenerator::SetParameterValue(id, value);
    if (moves)
        NotifyObservers(id, parameters[id].GetNormalized());
    return true;
}

template <uint32_t Points>
void FunctionGenerator<Points>::OnSetup(float rateHz, uint32_t blockSize) {
    IGenerator::OnSetup(rateHz, blockSize);
    generatorSampleRate = rateHz;
    UpdateSlew(1);
    // The next block sets its own step length, as the first one did.
    lastFrameCount = 0;
}

template <uint32_t Points>
void FunctionGenerator<Points>::UpdateSlew(uint32_t stepLength) {
    slew.stepLength = stepLength;
    slew.sampleRate = static_cast<double>(generatorSampleRate);
    slew.UpdateCoefficients();
}

template <uint32_t Points>
void FunctionGenerator<Points>::OnReset(bool) {
    wasPlaying = false;
    Restart();
    slew.Reset(this->Evaluate(0.0f));
}

template <uint32_t Points>
void FunctionGenerator<Points>::Restart() {
    IGenerator::Restart();
    output = Slewed(output, this->Evaluate(0.0f));
    this->WriteFeedback(0, 0.0f);
    SetParameterValue(OutputValue, output);
    this->RestartCurve();
}

template <uint32_t Points>
bool FunctionGenerator<Points>::UpdateParameters(ProcessBlock& block) {
    IGenerator::UpdateParameters(block);
    this->UpdateCurve();
    if (IsChanged(Smooth)) {
        slew.time = std::max(static_cast<double>(Value(Smooth) * kSmoothShare), kShortestTime);
        slew.UpdateCoefficients();
    }
    if (IsChanged(GateIn) && Position(GateIn) <= 0.5f)
        this->WriteFeedback(0, 0.0f);
    return true;
}

template <uint32_t Points>
bool FunctionGenerator<Points>::Generate(ProcessBlock& block) {
    const uint32_t steps = block.numFrames;
    if (steps != lastFrameCount) {
        lastFrameCount = steps;
        UpdateSlew(steps);
    }
    this->scale = parameters[Helper::Scale].GetBlockValue(block, kScaleRow);
    const bool ended = mode == kOneShot && finished;
    if (ended)
        FillResting(block.outputs[0], steps);
    else
        FillCurve(block.outputs[0], steps);
    SetParameterValue(GateOut, ended || CycleStarts(steps) ? 0.0f : 1.0f);
    SetParameterValue(OutputValue, output);
    return true;
}

/// A step of at most the slew's largest one.
template <uint32_t Points>
float FunctionGenerator<Points>::Slewed(float from, float towards) const {
    const auto start = static_cast<double>(from);
    const double distance = static_cast<double>(towards) - start;
    if (distance > slew.maxStep)
        return static_cast<float>(start + slew.maxStep);
    return distance <= -slew.maxStep ? static_cast<float>(start - slew.maxStep) : towards;
}

/// Of phases that climb, the first and the last one tell.
template <uint32_t Points>
bool FunctionGenerator<Points>::HoldsAll(const CurveSegment& segment, uint32_t steps) const {
    if (phasesClimb)
        return segment.Holds(phaseBuffer[0]) && segment.Holds(phaseBuffer[steps - 1]);
    uint32_t outside = 0;
    for (uint32_t i = 0; i < steps; ++i)
        outside += segment.Holds(phaseBuffer[i]) ? 0 : 1;
    return outside == 0;
}

/// The block in which the phase stays on one straight segment and the slew has nothing to hold
/// back; false for any other.
template <uint32_t Points>
bool FunctionGenerator<Points>::FillLine(float* out, uint32_t steps) {
    // No two values of a curve lie further apart.
    constexpr double kWidest = 4.0;
    const uint32_t end = this->EndOfSegment(this->OnCurve(phaseBuffer[0]));
    if (HasObservers() || slew.maxStep < kWidest || end > this->lastPoint)
        return false;
    const CurveSegment segment = this->SegmentTo(end);
    if (!segment.IsLine() || !HoldsAll(segment, steps))
        return false;
    const float bipolar = Value(Helper::Bipolar);
    for (uint32_t i = 0; i < steps; ++i)
        out[i] = this->Shaped(segment.LineAt(phaseBuffer[i]), bipolar);
    this->WriteFeedback(phaseBuffer[steps - 1]);
    output = out[steps - 1];
    return true;
}

/// The feedback parameters are left as the last step writes them. Only observers see the steps
/// between, and get them one by one.
template <uint32_t Points>
void FunctionGenerator<Points>::FillCurve(float* out, uint32_t steps) {
    if (FillLine(out, steps))
        return;
    const float bipolar = Value(Helper::Bipolar);
    const bool watched = HasObservers();
    CurveSegment segment;
    float value = output;
    float x = 0.0f;
    for (uint32_t i = 0; i < steps; ++i) {
        x = this->OnCurve(phaseBuffer[i]);
        if (watched)
            this->WriteFeedback(x);
        float height = 0.0f;
        if (segment.Holds(x)) {
            height = segment.HeightAt(x);
        } else if (const uint32_t end = this->EndOfSegment(x); end <= this->lastPoint) {
            segment = this->SegmentTo(end);
            height = segment.HeightAt(x);
        } else {
            height = this->Y(this->lastPoint);
        }
        value = Slewed(value, this->Shaped(height, bipolar));
        out[i] = value;
    }
    this->WriteFeedback(x);
    output = value;
}

template <uint32_t Points>
void FunctionGenerator<Points>::FillResting(float* out, uint32_t steps) {
    const float target = this->Shaped(this->RestingHeight(), Value(Helper::Bipolar));
    uint32_t i = 0;
    for (; i < steps && output != target; ++i)
        out[i] = output = Slewed(output, target);
    std::fill(out + i, out + steps, target);
}

template <uint32_t Points>
bool FunctionGenerator<Points>::CycleStarts(uint32_t steps) const {
    return HasTicked() &&
           std::any_of(tickBuffer, tickBuffer + steps, [](float tick) { return tick > 0.5f; });
}

template class FunctionGenerator<64>;

}  // namespace Quorvan::dsp
