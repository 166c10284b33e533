#include "processor/ProcessorTables.h"

#include "processor/ProcessorIndex.h"

namespace Quorvan::Processor {

namespace {

dsp::ParameterTable BuildProcessorTable() {
    using P = dsp::ParameterSpec;
    namespace Kind = dsp::PotardKind;
    const auto gain = [](const char* name) {
        return P::Curved(name, Kind::kExponential, -70.0f, 0.0f, -1.5f);  // dB
    };
    const auto rateType = [](const char* name) { return P::Stepped(name, 4); };
    return {
        P::Raw("Dry / Wet"),
        gain("Feedback"),
        gain("Granular Volume"),
        gain("Master Volume"),
        P::Raw("Macro 1"),
        P::Raw("Macro 2"),
        P::Stepped("FX1_Position", 3),
        P::Raw("FX1_Dry / Wet"),
        P::Stepped("FX2_Position", 3),
        P::Raw("FX2_Dry / Wet"),
        P::Stepped("Envelope Follower Source", 2),
        P::Linear("Envelope Follower Gain", -24.0f, 24.0f),  // dB
        rateType("Function1_RateType"),
        rateType("Function2_RateType"),
        rateType("Function3_RateType"),
        rateType("StepSeq_RateType"),
        P::Raw("StepSeq_Bipolar"),
        P::Raw("StepSeq_Scale"),
        P::Stepped("Spatializer Enable", 2),
        P::Stepped("Spatializer Trajectory", static_cast<uint32_t>(kTrajectories.size())),
        P::Curved("Spatializer Rate UnSynced", Kind::kPolynomial, 0.1f, 20.0f, 7.0f),  // Hz
        P::Stepped("Spatializer Rate Synced", static_cast<uint32_t>(kSpatializerNotes.size())),
        rateType("Spatializer Rate Type"),
        P::Raw("Spatializer Amount"),
        P::Curved("Spatializer Distance", Kind::kExponential, 0.0f, 1.0f, 3.0f),
        P::Stepped("Spatializer Invert", 2),
        P::Raw("Transport Mute"),
        P::Raw("Feedback_BigChunk"),
        P::Raw("FX_Feedback_Chunk"),
        P::Raw("Direction_Feedback"),
        P::Raw("Shape_Feedback"),
        P::Raw("Pitch_Feedback"),
        P::Raw("RandomPitch_Feedback"),
        P::Raw("Size_Feedback"),
        P::Raw("RandomSize_Feedback"),
    };
}

dsp::ParameterTable BuildAssignedTable() {
    dsp::ParameterTable rows;
    for (uint32_t n = 1; n <= kDestinationCount; ++n)
        rows.push_back(dsp::ParameterSpec::Raw("Dest" + std::to_string(n) + "_Assigned"));
    return rows;
}

}  // namespace

const dsp::ParameterTable& ProcessorTable() {
    static const dsp::ParameterTable table = BuildProcessorTable();
    return table;
}

const dsp::ParameterTable& AssignedTable() {
    static const dsp::ParameterTable table = BuildAssignedTable();
    return table;
}

}  // namespace Quorvan::Processor
