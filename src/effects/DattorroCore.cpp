#include "effects/DattorroCore.h"

#include <algorithm>
#include <utility>

#include "framework/ParameterTable.h"

namespace Quorvan::dsp {

namespace {

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

}  // namespace

DattorroCore::DattorroCore(std::string moduleName)
    : UnitModule(std::move(moduleName), 6, 2, Table()) {}

void DattorroCore::OnSetup(float, uint32_t) {}

void DattorroCore::OnReset(bool) {}

bool DattorroCore::UpdateParameters(ProcessBlock&) { return true; }

bool DattorroCore::OnProcess(ProcessBlock& block) {
    for (uint32_t c = 0; c < 2; ++c)
        std::copy_n(block.inputs[0], block.numFrames, block.outputs[c]);
    return true;
}

}  // namespace Quorvan::dsp
