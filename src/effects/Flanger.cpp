#include "effects/Flanger.h"

#include <tuple>
#include <utility>

#include "framework/ParameterTable.h"

namespace Quorvan::dsp {

namespace {

const ParameterTable& Table() {
    using P = ParameterSpec;
    static const ParameterTable table = {
        P::Raw("MinDelay"),
        P::Raw("DepthFlanger"),
    };
    return table;
}

}  // namespace

Flanger::Flanger(std::string moduleName)
    : ModuleContainer(std::move(moduleName), 5, 2, Table(), std::tuple("Chorus")) {
    Chorus& chorus = Child<0>();
    chorus.Configure(Chorus::DelayMs, PotardKind::kLinear, 0.0f, 30.0f);
    chorus.Configure(Chorus::Depth, PotardKind::kLinear, 0.0f, 10.0f);
    chorus.ConfigureStepped(Chorus::Voices, 8, 1.0f);
    chorus.Configure(Chorus::DryWet, PotardKind::kLinear, 0.0f, 1.0f);
    chorus.Configure(Chorus::Feedback, PotardKind::kLinear, -1.0f, 1.0f);
    chorus.SetParameterNormalized(Chorus::LPFOn, 1.0f);
    chorus.SetParameterNormalized(Chorus::HPFOn, 1.0f);
    chorus.SetParameterValue(Chorus::Voices, 1.0f);
}

void Flanger::OnSetup(float, uint32_t) {}

void Flanger::OnReset(bool) { PassSweepDown(); }

bool Flanger::UpdateParameters(ProcessBlock&) {
    if (IsChanged(MinDelay) || IsChanged(DepthFlanger))
        PassSweepDown();
    return true;
}

bool Flanger::OnProcess(ProcessBlock& block) { return Child<0>().Process(block); }

void Flanger::PassSweepDown() {
    Chorus& chorus = Child<0>();
    chorus.SetParameterValue(Chorus::Depth, Value(DepthFlanger));
    chorus.SetParameterValue(Chorus::DelayMs, Value(MinDelay) + Value(DepthFlanger));
}

}  // namespace Quorvan::dsp
