#include "effects/OctaverDelay.h"

#include <algorithm>
#include <tuple>
#include <utility>

#include "effects/NoteValues.h"
#include "framework/ParameterTable.h"

namespace Quorvan::dsp {

namespace {

const ParameterTable& Table() {
    using P = ParameterSpec;
    constexpr uint32_t exponential = PotardKind::kExponential;
    static const ParameterTable table = {
        P::Stepped("Mode", 3),
        P::Raw("Stereo").AtValue(1.0f),
        P::Raw("DryWet"),
        P::Linear("DelayTimeMs", 1.0f, 2000.0f),
        P::Stepped("DelayTimeSynced", kNoteValues.size()),
        P::Raw("Feedback"),
        P::Linear("PitchShift", -24.0f, 24.0f),
        P::Stepped("Window", 3),
        P::Curved("Spray", exponential, 0.0f, 500.0f, 3.0f),
        P::Curved("HPFreq", exponential, 20.0f, 10000.0f, 6.0f),
        P::Curved("LPFreq", exponential, 250.0f, 20000.0f, 6.0f),
        P::Raw("MidiSync"),
        P::Stepped("RateSyncedType", 3),
        P::Linear("DelayOffset", -20.0f, 20.0f),
        P::Linear("Detune", -100.0f, 100.0f),
    };
    return table;
}

}  // namespace

OctaverDelay::OctaverDelay(std::string moduleName)
    : ModuleContainer(std::move(moduleName), 11, 2, Table(), std::tuple("PitchShiftDelay1"),
                      std::tuple("PitchShiftDelay2")) {
    for (const auto& [own, inChild] :
         {std::pair<uint32_t, uint32_t>{Stereo, PitchShiftDelay::Stereo},
          {MidiSync, PitchShiftDelay::MidiSync},
          {RateSyncedType, PitchShiftDelay::RateSyncedType}}) {
        Link(own, kOffsets[0] + inChild);
        Link(own, kOffsets[1] + inChild);
    }
    Child<1>().SetParameterValue(PitchShiftDelay::Feedback, 0.0f);
    Child<1>().Configure(PitchShiftDelay::PitchShift, PotardKind::kLinear, -36.0f, 36.0f);
    Child<0>().SetParameterValue(PitchShiftDelay::Window, 1.0f);
    Child<1>().SetParameterValue(PitchShiftDelay::Window, 1.0f);
}

void OctaverDelay::OnSetup(float, uint32_t) {}

void OctaverDelay::OnReset(bool) {}

bool OctaverDelay::UpdateParameters(ProcessBlock&) { return true; }

bool OctaverDelay::OnProcess(ProcessBlock& block) {
    for (uint32_t c = 0; c < 2; ++c)
        if (block.inputs[c] != nullptr)
            std::copy_n(block.inputs[c], block.numFrames, block.outputs[c]);
    return true;
}

}  // namespace Quorvan::dsp
