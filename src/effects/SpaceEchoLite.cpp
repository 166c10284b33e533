#include "effects/SpaceEchoLite.h"

#include <algorithm>
#include <utility>

#include "effects/NoteValues.h"
#include "framework/ParameterTable.h"

namespace Quorvan::dsp {

namespace {

const ParameterTable& Table() {
    using P = ParameterSpec;
    constexpr uint32_t exponential = PotardKind::kExponential;
    constexpr uint32_t bipolarExp = PotardKind::kBipolarExp;
    constexpr uint32_t bipolarPolynomial = PotardKind::kBipolarPolynomial;
    constexpr uint32_t polynomial = PotardKind::kPolynomial;
    static const ParameterTable table = {
        P::Linear("InputVolume", -12.0f, 12.0f),
        P::Curved("DelayTime", polynomial, 10.0f, 1000.0f, 3.0f),
        P::Curved("DelayTimeFine", bipolarPolynomial, -50.0f, 50.0f, 3.0f),
        P::Linear("Intensity", 0.0f, 1.2f),
        P::Curved("DryWet", bipolarExp, 0.0f, 1.0f, -2.0f),
        P::Stepped("DelayTimeType", 4),
        P::Stepped("DelayTimeSynced", kNoteValues.size()),
        P::Stepped("DelayType", 2),
        P::Raw("StereoWidth"),
        P::Raw("StereoWidthPP"),
        P::Curved("LPFreq", exponential, 250.0f, 20000.0f, 6.0f).AtPosition(1.0f),
        P::Curved("HPFreq", exponential, 20.0f, 10000.0f, 6.0f).AtPosition(0.0f),
        P::Raw("PeakMeter"),
        P::Linear("ConfInGainCompensated", -36.0f, 36.0f).AtValue(0.0f),
    };
    return table;
}

}  // namespace

SpaceEchoLite::SpaceEchoLite(std::string moduleName)
    : UnitModule(std::move(moduleName), 10, 2, Table()) {}

void SpaceEchoLite::OnSetup(float, uint32_t) {}

void SpaceEchoLite::OnReset(bool) {}

bool SpaceEchoLite::UpdateParameters(ProcessBlock&) { return true; }

bool SpaceEchoLite::OnProcess(ProcessBlock& block) {
    for (uint32_t c = 0; c < 2; ++c)
        if (block.inputs[c] != nullptr)
            std::copy_n(block.inputs[c], block.numFrames, block.outputs[c]);
    return true;
}

}  // namespace Quorvan::dsp
