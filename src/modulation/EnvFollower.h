#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "framework/UnitModule.h"

namespace Quorvan::dsp {

/// Level of its input as a control signal: rectifier or sliding RMS, a gain, and a one-pole with
/// separate times up and down.
///
/// Inputs      0 audio; 1 audio, taken in where StereoInput is on
/// Outputs     0 the level, one value a sample, at or above 0; comes to rest at exactly 0
/// Parameters  0 Attack, 1 Release 0.001..5 s: five time constants; 0 jumps
///             2 RMSWindowDurationMs 0..100 ms, default 10: up to one sample the rectifier
///               measures; a change starts the follower over
///             3 FixedLinearGain 0..100, on the measured level
///             4 StereoInput above 0.5: mean of both rectified inputs
/// Latency     none, beyond the averaging of the window
/// Method      The mean square is a running sum in double precision, held clear of drift by a floor
///             of 1e-10: over a window of n samples, levels below sqrt(n) * 1e-5 read as silence.
class EnvFollower : public UnitModule {
public:
    enum Id : uint32_t { Attack, Release, RMSWindowDurationMs, FixedLinearGain, StereoInput };
    static constexpr uint32_t kParameterCount = 5;

    /// Ring in double precision: what goes into a running sum must come out of it bit for bit.
    struct DelayLineDouble {
        DelayLineDouble() = default;
        DelayLineDouble(const DelayLineDouble&) = delete;
        DelayLineDouble& operator=(const DelayLineDouble&) = delete;
        virtual ~DelayLineDouble() = default;

        /// Takes the memory for length values, all zero.
        void Resize(int32_t length);
        void Clear();

        std::vector<double> storage;
        double* data = nullptr;  ///< start of storage
        int32_t size = 0;
        int32_t writeIndex = 0;  ///< where the next value goes
    };

    explicit EnvFollower(std::string moduleName);

    void OnSetup(float rate, uint32_t blockSize) override;
    void OnReset(bool hard) override;
    bool UpdateParameters(ProcessBlock& block) override;
    bool OnProcess(ProcessBlock& block) override;

private:
    float OnePoleStep(float seconds) const;
    void UpdateWindow();
    void Rectify(const ProcessBlock& block, float* out) const;
    void MeasureRms(float* levels, uint32_t count);
    void Follow(float* levels, uint32_t count);

    // Coefficients.
    float sampleRate = 1.0f;
    float gain = 1.0f;
    bool stereoInput = false;

    // State.
    float envelope = 0.0f;
    DelayLineDouble window;     ///< squared samples, each already over the window's length
    double sumOfSquares = 0.0;  ///< of the last windowLength entries of window

    // Coefficients of window and one-pole.
    double inverseWindowLength = 0.0;
    int32_t windowLength = 0;  ///< samples
    bool useRms = false;
    float releaseCoefficient = 0.0f;
    float attackCoefficient = 0.0f;
};

}  // namespace Quorvan::dsp
