#include "modulation/LFO.h"

#include <utility>

#include "framework/ParameterTable.h"

namespace Quorvan::dsp {

namespace {

const ParameterTable& Table() {
    using P = ParameterSpec;
    static const ParameterTable table{
        P::Stepped("Waveform", 6),
        P::Raw("Amp").AtPosition(1.0f),
        P::Raw("Smooth"),
        P::Stepped("SmoothRateLinked", 2),
        P::Raw("Fade"),
        P::Raw("Stereo"),
        P::Linear("StereoSpread", 0.0f, 360.0f),
        P::Stepped("SnHStereoMode", 2),
        P::Raw("Unipolar"),
        P::Raw("CurrentPhaseFeedback"),
        P::Linear("CurrentValueLFeedback", -1.0f, 1.0f),
    };
    return table;
}

}  // namespace

LFO::LFO(std::string moduleName) : IGenerator(std::move(moduleName), 3, 2, Table()) {
    rateInputMode = kPerBlock;
    rateInputIndex = 0;
    SetParameterValue(Mode, static_cast<float>(kFree));
}

void LFO::OnSetup(float rateHz, uint32_t blockSize) { IGenerator::OnSetup(rateHz, blockSize); }
void LFO::OnReset(bool hard) { IGenerator::OnReset(hard); }
bool LFO::UpdateParameters(ProcessBlock& block) { return IGenerator::UpdateParameters(block); }
void LFO::Restart() { IGenerator::Restart(); }
bool LFO::Generate(ProcessBlock&) { return true; }

}  // namespace Quorvan::dsp
