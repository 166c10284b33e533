#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "effects/DistortionCurves.h"
#include "framework/UnitModule.h"
#include "primitives/AlignedVector.h"
#include "primitives/SmootherInterpLPF.h"
#include "primitives/UpDownsampler.h"

namespace Quorvan::dsp {

/// Waveshaper with 13 static curves at twice the sample rate, a drive ahead of the curve and a
/// level compensation behind it that follows the drive.
///
/// Inputs      0, 1 audio; 2 modulation row of Drive, read once a block
/// Outputs     0, 1 audio, in place allowed; with Stereo off only 0 is written
/// Parameters  0 Stereo one channel, two (default)
///             1 DistType 0..12, default 1: the curve, see DistortionCurves; jumps
///             2 Drive 0..60 dB, 3 OutputGain -24..3 dB: glide in 2 ms
///             4 AutoComp off, on (default)
/// Latency     not reported; the half-band filters delay by a few samples, more towards the top
class MultiDist final : public UnitModule {
public:
    enum Id : uint32_t { Stereo, DistType, Drive, OutputGain, AutoComp };
    static constexpr uint32_t kParameterCount = 5;

    explicit MultiDist(std::string moduleName);

    void OnSetup(float rate, uint32_t blockSize) override;
    void OnReset(bool hard) override;
    bool UpdateParameters(ProcessBlock& block) override;
    bool OnProcess(ProcessBlock& block) override;

private:
    static constexpr uint32_t kChannels = 2;

    void FillGains(uint32_t count);
    void ApplyDrive(uint32_t channel, const ProcessBlock& block);
    void Resample(const ProcessBlock& block);
    void Level(float* out, uint32_t count) const;

    const DistortionCurves& curves;

    // Coefficients.
    uint32_t channels = 1;
    int32_t type = 1;
    bool autoComp = true;
    bool driveRests = false;  ///< over the block

    // State.
    std::array<prims::UpDownsampler, kChannels> resamplers;
    SmootherInterpLPF driveSmoother{0.002};   // dB, one tick a sample
    SmootherInterpLPF outputSmoother{0.002};  // linear, one tick a sample

    // Buffers of one block.
    AlignedVector driveBuffer;                            ///< dB, then linear
    AlignedVector outputBuffer;                           ///< linear output gain
    AlignedVector compensationBuffer;                     ///< dB, then linear
    std::array<AlignedVector, kChannels> workBuffer;      ///< behind the drive
    std::array<AlignedVector, kChannels> highRateBuffer;  ///< at twice the rate
};

}  // namespace Quorvan::dsp
