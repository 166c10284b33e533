#include "effects/MultiDist.h"

#include <utility>

#include "effects/DistortionLevel.h"
#include "framework/ParameterTable.h"
#include "primitives/Decibels.h"
#include "primitives/PolynomialExp.h"

namespace Quorvan::dsp {

namespace {

constexpr float kNepersPerDecibel = 0.115129255f;  // ln(10) / 20
constexpr uint32_t kOversampling = 2;
constexpr uint32_t kEllipticHalfBand = 1;

const ParameterTable& Table() {
    using P = ParameterSpec;
    static const ParameterTable table = {
        P::Stepped("Stereo", 2).AtPosition(1.0f),
        P::Stepped("DistType", DistortionCurves::kCount).AtValue(1.0f),
        P::Linear("Drive", 0.0f, 60.0f),
        P::Linear("OutputGain", -24.0f, 3.0f).AtValue(0.0f),
        P::Stepped("AutoComp", 2).AtPosition(1.0f),
    };
    return table;
}

constexpr uint32_t kDriveRow = 2;

void DecibelsToGains(float* values, uint32_t count) {
    for (uint32_t i = 0; i < count; ++i)
        values[i] = PolynomialExp(values[i] * kNepersPerDecibel);
}

}  // namespace

MultiDist::MultiDist(std::string moduleName)
    : UnitModule(std::move(moduleName), 3, 2, Table()),
      curves(DistortionCurves::Instance()),
      resamplers{{{kOversampling, kEllipticHalfBand}, {kOversampling, kEllipticHalfBand}}} {}

void MultiDist::OnSetup(float rate, uint32_t blockSize) {
    for (AlignedVector* buffer : {&driveBuffer, &workBuffer, &outputBuffer, &compensationBuffer})
        buffer->assign(blockSize, 0.0f);
    highRateBuffer.assign(size_t{kOversampling} * blockSize, 0.0f);
    for (SmootherInterpLPF* smoother : {&driveSmoother, &outputSmoother}) {
        smoother->stepLength = 1;
        smoother->sampleRate = static_cast<double>(rate);
        smoother->UpdateCoefficients();
        smoother->rampSteps = blockSize;
    }
}

void MultiDist::OnReset(bool) {
    for (prims::UpDownsampler& resampler : resamplers)
        resampler.Reset();
    outputSmoother.Reset(DecibelsToGain(Value(OutputGain)));
}

bool MultiDist::UpdateParameters(ProcessBlock& block) {
    const float drive = parameters[Drive].GetBlockValue(block, kDriveRow);
    if (needsFullUpdate)
        driveSmoother.Reset(drive);
    if (IsChanged(Stereo))
        channels = Position(Stereo) >= 0.5f ? 2 : 1;
    if (IsChanged(DistType))
        type = Index(DistType);
    driveSmoother.SetTarget(drive);
    driveSmoother.FillBlock(driveBuffer.data(), block.numFrames);
    outputSmoother.SetTarget(DecibelsToGain(Value(OutputGain)));
    outputSmoother.FillBlock(outputBuffer.data(), block.numFrames);
    if (IsChanged(AutoComp))
        autoComp = Position(AutoComp) > 0.5f;
    return true;
}

bool MultiDist::OnProcess(ProcessBlock& block) {
    const uint32_t count = block.numFrames;
    if (autoComp) {
        FillLevelCompensation(type, driveBuffer.data(), compensationBuffer.data(), count);
        DecibelsToGains(compensationBuffer.data(), count);
    }
    DecibelsToGains(driveBuffer.data(), count);
    for (uint32_t c = 0; c < channels; ++c)
        ShapeChannel(c, block);
    return true;
}

void MultiDist::ShapeChannel(uint32_t channel, const ProcessBlock& block) {
    const uint32_t count = block.numFrames;
    const float* const in = block.inputs[channel];
    float* const out = block.outputs[channel];
    for (uint32_t i = 0; i < count; ++i)
        workBuffer[i] = in[i] * driveBuffer[i];
    resamplers[channel].Upsample(workBuffer.data(), highRateBuffer.data(), count);
    curves.Apply(type, highRateBuffer.data(), kOversampling * count);
    resamplers[channel].Downsample(highRateBuffer.data(), out, count);
    for (uint32_t i = 0; i < count; ++i)
        out[i] *= outputBuffer[i];
    if (!autoComp)
        return;
    for (uint32_t i = 0; i < count; ++i)
        out[i] *= compensationBuffer[i];
}

}  // namespace Quorvan::dsp
