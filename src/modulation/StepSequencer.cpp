#include "modulation/StepSequencer.h"

#include <utility>

#include "framework/ParameterTable.h"

namespace Quorvan::dsp {

namespace {

const ParameterTable& Table() {
    using P = ParameterSpec;
    static const ParameterTable table = [] {
        const ParameterTable head{
            P::Stepped("NbSteps", StepSequencer::kMaxSteps, 1.0f),
            P::Stepped("CurrentStep", StepSequencer::kMaxSteps),
            P::Raw("Smooth"),
            P::Stepped("LoopMode", 4),
            P::Raw("RandomAmount"),
        };
        const auto values = Numbered("StepVal", StepSequencer::kMaxSteps, P::Stepped("", 2));
        const auto deviations =
            Numbered("StepDev", StepSequencer::kMaxSteps, P::Linear("", -1.0f, 1.0f));
        return Join(Join(head, values), deviations);
    }();
    return table;
}

}  // namespace

StepSequencer::StepSequencer(std::string moduleName)
    : IGenerator(std::move(moduleName), 2, 1, Table()) {
    rateInputMode = kPerBlock;
    rateInputIndex = 0;
    SetParameterValue(Mode, static_cast<float>(kFree));
}

void StepSequencer::OnSetup(float rateHz, uint32_t blockSize) {
    IGenerator::OnSetup(rateHz, blockSize);
}
void StepSequencer::OnReset(bool hard) { IGenerator::OnReset(hard); }
bool StepSequencer::UpdateParameters(ProcessBlock& block) {
    return IGenerator::UpdateParameters(block);
}
void StepSequencer::Restart() { IGenerator::Restart(); }
bool StepSequencer::Generate(ProcessBlock&) { return true; }

}  // namespace Quorvan::dsp
