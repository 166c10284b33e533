#include "effects/MultiDist.h"

#include <algorithm>
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
constexpr uint32_t kAlike = 4;  // samples that stand for a block of such

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
    for (AlignedVector* buffer : {&driveBuffer, &outputBuffer, &compensationBuffer})
        buffer->assign(blockSize, 0.0f);
    for (uint32_t c = 0; c < kChannels; ++c) {
        workBuffer[c].assign(blockSize, 0.0f);
        highRateBuffer[c].assign(size_t{kOversampling} * blockSize, 0.0f);
    }
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
    driveRests = driveSmoother.IsAtRest();
    driveSmoother.FillBlock(driveBuffer.data(), block.numFrames);
    outputSmoother.SetTarget(DecibelsToGain(Value(OutputGain)));
    outputSmoother.FillBlock(outputBuffer.data(), block.numFrames);
    if (IsChanged(AutoComp))
        autoComp = Position(AutoComp) > 0.5f;
    return true;
}

bool MultiDist::OnProcess(ProcessBlock& block) {
    const uint32_t count = block.numFrames;
    FillGains(count);
    // Every input is read ahead of the outputs, which may lie on top.
    for (uint32_t c = 0; c < channels; ++c)
        ApplyDrive(c, block);
    Resample(block);
    for (uint32_t c = 0; c < channels; ++c)
        Level(block.outputs[c], count);
    return true;
}

/// Drive and compensation, from decibels to gains. While the drive rests, one vector of samples
/// stands for all.
void MultiDist::FillGains(uint32_t count) {
    const bool allAlike = driveRests && count % kAlike == 0;
    const uint32_t worked = allAlike ? std::min(count, kAlike) : count;
    if (autoComp) {
        FillLevelCompensation(type, driveBuffer.data(), compensationBuffer.data(), worked);
        DecibelsToGains(compensationBuffer.data(), worked);
    }
    DecibelsToGains(driveBuffer.data(), worked);
    for (AlignedVector* gains : {&driveBuffer, &compensationBuffer})
        std::fill_n(gains->data() + worked, count - worked, gains->front());
}

void MultiDist::ApplyDrive(uint32_t channel, const ProcessBlock& block) {
    const float* const in = block.inputs[channel];
    float* const driven = workBuffer[channel].data();
    for (uint32_t i = 0; i < block.numFrames; ++i)
        driven[i] = in[i] * driveBuffer[i];
}

/// Up, through the curve and down into the outputs: both channels at once where there are two.
void MultiDist::Resample(const ProcessBlock& block) {
    const uint32_t count = block.numFrames;
    const std::array<float*, kChannels> high{highRateBuffer[0].data(), highRateBuffer[1].data()};
    const bool both = channels == kChannels;
    const prims::UpDownsampler::Two two{&resamplers[0], &resamplers[1]};
    if (both)
        prims::UpDownsampler::UpsampleTwo(two, {workBuffer[0].data(), workBuffer[1].data()}, high,
                                          count);
    else
        resamplers[0].Upsample(workBuffer[0].data(), high[0], count);
    for (uint32_t c = 0; c < channels; ++c)
        curves.Apply(type, high[c], kOversampling * count);
    if (both)
        prims::UpDownsampler::DownsampleTwo(two, {high[0], high[1]},
                                            {block.outputs[0], block.outputs[1]}, count);
    else
        resamplers[0].Downsample(high[0], block.outputs[0], count);
}

void MultiDist::Level(float* out, uint32_t count) const {
    for (uint32_t i = 0; i < count; ++i)
        out[i] *= outputBuffer[i];
    if (!autoComp)
        return;
    for (uint32_t i = 0; i < count; ++i)
        out[i] *= compensationBuffer[i];
}

}  // namespace Quorvan::dsp
