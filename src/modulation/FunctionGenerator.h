#pragma once

#include <cstdint>
#include <cstring>
#include <string>

#include "modulation/FunctionHelper.h"
#include "modulation/IGenerator.h"
#include "modulation/Observable.h"
#include "primitives/SmootherSRL.h"

namespace Quorvan::dsp {

/// Generator whose output is a drawn curve of up to Points points, read by the phase: a shape for
/// loops, and an envelope in the one-shot mode, which comes to rest on the last point. Observers
/// are told of every parameter that changes, written ones included.
///
/// Inputs      0 rate, 1 Scale: rows read once a block
/// Outputs     0 the curve, 0..1, or -1..1 with Bipolar
/// Parameters  0 to 12 as in IGenerator
///             13 on: the curve's, as in FunctionHelper
///             then CntrlSrc, kept for the host
///             OutputValue: the last output, written
///             Smooth 0.00001..1: a step of a block of F steps goes at most
///             F / (0.3 * Smooth * rate) far
///             Destination and Amount -1..1, kept for the host
///             GateOut, written: 0 in a block in which a cycle starts, and after the one-shot's end
template <uint32_t Points>
class FunctionGenerator final
    : public IGenerator,
      public Observable<IGenerator>,
      public FunctionHelper<Points, FunctionGenerator<Points>, IGenerator::kBaseParameterCount> {
public:
    using Helper =
        FunctionHelper<Points, FunctionGenerator<Points>, IGenerator::kBaseParameterCount>;
    enum Id : uint32_t {
        CntrlSrc = Helper::kEndId,
        OutputValue,
        Smooth,
        Destination,
        Amount,
        GateOut
    };
    static constexpr uint32_t kParameterCount = GateOut + 1;

    explicit FunctionGenerator(std::string moduleName);

    bool SetParameterNormalized(uint32_t id, float position) override;
    bool SetParameterValue(uint32_t id, float value) override;
    void OnSetup(float rateHz, uint32_t blockSize) override;
    void OnReset(bool hard) override;
    bool UpdateParameters(ProcessBlock& block) override;
    void Restart() override;
    bool Generate(ProcessBlock& block) override;
    /// Whether any of the parameters first to end - 1 is new.
    bool AnyChanged(uint32_t first, uint32_t end) const {
        return std::memchr(changed.data() + first, 1, end - first) != nullptr;
    }

private:
    void UpdateSlew(uint32_t stepLength);
    float Slewed(float from, float towards) const;
    void FillCurve(float* out, uint32_t steps);
    bool HoldsAll(const CurveSegment& segment, uint32_t steps) const;
    bool FillLine(float* out, uint32_t steps);
    void FillResting(float* out, uint32_t steps);
    bool CycleStarts(uint32_t steps) const;

    // Coefficients.
    uint32_t lastFrameCount = 0;
    float generatorSampleRate = 0.0f;
    SmootherSRL slew{0.00001};  ///< gives the largest step; the state is the output

    // State.
    float output = 0.0f;
};

extern template class FunctionGenerator<64>;

}  // namespace Quorvan::dsp
