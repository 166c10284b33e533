#pragma once

#include <cstdint>
#include <string>

#include "modulation/FunctionHelper.h"
#include "modulation/IGenerator.h"
#include "modulation/Observable.h"
#include "primitives/SmootherSRL.h"

namespace Quorvan::dsp {

/// Generator whose output is a drawn curve of up to Points points, read by the phase: a shape for
/// loops, and an envelope in the one-shot mode. Observers are told of every parameter that changes.
///
/// Inputs      0 rate, 1 Scale: rows read once a block
/// Outputs     0 the curve, 0..1, or -1..1 with Bipolar
/// Parameters  0 to 12 as in IGenerator
///             13 to 18 and the families of points as in FunctionHelper
///             then CntrlSrc, Destination and Amount, kept for the host alone;
///             OutputValue: the last output, written
///             Smooth 0.00001..1: the output moves by its whole range in 0.3 times as many seconds
///             GateOut, written: 0 in a block in which a cycle starts, and after the one-shot's end
template <uint32_t Points>
class FunctionGenerator final : public IGenerator,
                                public Observable<IGenerator>,
                                public FunctionHelper<Points, FunctionGenerator<Points>,
                                                      IGenerator::kBaseParameterCount> {
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
};

extern template class FunctionGenerator<64>;

}  // namespace Quorvan::dsp
