#pragma once

#include "support/ProcessorRig.h"

namespace Quorvan::test {

/// Sets the amount of a cell of the matrix, -1..1. Sources and rows count from 0.
inline void Route(ProcessorRig& rig, uint32_t source, uint32_t row, float amount) {
    rig.Set("Modulations_Dst" + std::to_string(row + 1) + "_Src" + std::to_string(source + 1) +
                "_Amount",
            0.5f + 0.5f * amount);
}

/// A knob that a row moves, and what has to be set for it to be in force.
struct DestinationRow {
    uint32_t row;
    std::string knob;
    std::string settings = {};  ///< as SetAll takes them
    float from = 0.25f;
    bool strays = false;      ///< by chance, in phase, or longer than it is listened to
    std::string prefix = {};  ///< of knob and settings

    void Apply(ProcessorRig& rig, float position) const {
        rig.SetAll(settings, prefix).Set(prefix + knob, position);
    }
};

inline std::vector<DestinationRow> GranularRows() {
    const std::string moving =
        "Spatializer Enable=1;Spatializer Trajectory=0.7;Spatializer Amount=1;"
        "Spatializer Distance=0.8";
    const std::string texture = "MoteWeaver_GranularMode=0.5;MoteWeaver_TextureDensity=0.3";
    const std::string beat =
        "MoteWeaver_GranularMode=1;MoteWeaver_GranularPhaseHelper_RateSynced=0.5;"
        "MoteWeaver_StepSequencerGranular_StepOnOff1=1";
    const std::string follow = "MoteWeaver_PlaybackMode=0.5";
    const std::string grid =
        "MoteWeaver_PlaybackQuantizationMode=1;MoteWeaver_PlaybackMode=1;"
        "MoteWeaver_ManualScanPosition=0.2";
    const std::string sequence =
        "StepSeq_NbSteps=0.2;StepSeq_StepVal2=1;StepSeq_StepVal4=0.6;StepSeq_Scale=1;"
        "StepSeq_RateUnSynced=0.7;Modulations_Dst7_Src5_Amount=0.6";
    std::vector<DestinationRow> rows{
        {0, "Dry / Wet"},
        {1, "Feedback", "", 0.6f},
        {2, "Granular Volume", "", 0.5f},
        {3, "Spatializer Rate UnSynced", moving, 0.6f},
        {3, "Spatializer Rate Synced", moving + ";Spatializer Rate Type=0.3", 0.5f},
        {4, "Spatializer Amount", moving},
        {5, "Spatializer Distance", moving},
        {6, "MoteWeaver_Pitch"},
        {6, "MoteWeaver_Pitch", "MoteWeaver_Scale=0.4"},
        {7, "MoteWeaver_RandomPitch"},
        {8, "MoteWeaver_ShapeParam"},
        {9, "MoteWeaver_GrainSizeAbsolute"},
        {9, "MoteWeaver_GrainSizeSynced", "MoteWeaver_GrainSizeMode=0.3"},
        {9, "MoteWeaver_GrainSizeRatio", "MoteWeaver_DensitySizeLink=1", 0.5f},
        {9, "MoteWeaver_GrainSizeRatio", beat, 0.5f},
        {9, "MoteWeaver_TextureSizeAbsolute", texture},
        {9, "MoteWeaver_TextureSizeSynced", texture + ";MoteWeaver_TextureSizeMidiSync=1"},
        {10, "MoteWeaver_RandomSize", "MoteWeaver_RandomSizeArrow=0.5"},
        {11, "MoteWeaver_GranularPhaseHelper_RateUnSynced", "", 0.5f},
        {11, "MoteWeaver_GranularPhaseHelper_RateSynced", "MoteWeaver_DensityType=0.3", 0.5f},
        {12, "MoteWeaver_TextureDensity", texture},
        {13, "MoteWeaver_RandomDensity"},
        {14, "MoteWeaver_RandomDirection"},
        {15, "MoteWeaver_RandomPan", "Spatializer Enable=1"},
        {16, "MoteWeaver_Width", "MoteWeaver_RandomPitch=0.6", 0.5f},
        {17, "MoteWeaver_BufferPersistence", "MoteWeaver_BufferLengthSynced=0"},
        {18, "MoteWeaver_BufferFreeze", "", 0.375f},
        {19, "MoteWeaver_Speed", "", 0.5f},
        {19, "MoteWeaver_Offset", follow, 0.0625f},
        {19, "MoteWeaver_OffsetSynced", follow + ";MoteWeaver_OffsetType=0.3", 0.5f},
        {19, "MoteWeaver_ManualScanPosition", "MoteWeaver_PlaybackMode=1", 0.0f},
        {20, "MoteWeaver_GridSize", grid},
        {21, "MoteWeaver_Spray"},
        {22, "MoteWeaver_GrainTrigger", "MoteWeaver_TriggerMode=1", 0.375f},
        {23, "MoteWeaver_TransientSensitivity", "MoteWeaver_PlaybackQuantizationMode=0.5", 0.0f},
        {24, "MoteWeaver_RandomFine", "", 0.5f},
        {25, "MoteWeaver_RandomLayers", texture, 0.5f},
        {26, "Envelope Follower Gain", "Modulations_Dst7_Src1_Amount=0.8", 0.5f},
        {33, "StepSeq_RateUnSynced", sequence, 0.5f},
        {33, "StepSeq_RateSynced", sequence + ";StepSeq_RateType=0.3", 0.5f},
        {34, "StepSeq_Scale", sequence},
    };
    for (uint32_t k = 0; k < 3; ++k) {
        const std::string name = "Function" + std::to_string(k + 1) + "_";
        // Runs as a square wave and moves the pitch.
        const std::string square = name + "Mode=1;" + name + "PointX2=0.5;" + name + "PointY2=1;" +
                                   name + "RateUnSynced=0.7;Modulations_Dst7_Src" +
                                   std::to_string(k + 2) + "_Amount=0.6";
        rows.push_back({27 + k, name + "RateUnSynced", square, 0.5f});
        rows.push_back({27 + k, name + "RateSynced", square + ";" + name + "RateType=0.3", 0.5f});
        rows.push_back({30 + k, name + "Scale", square, 0.625f});
    }
    return rows;
}

/// Rows of a slot, "FX1" or "FX2".
inline std::vector<DestinationRow> SlotRows(const std::string& slot) {
    const auto of = [](uint32_t effect, const std::string& more) {
        return "ModuleType=" + std::to_string((static_cast<float>(effect) + 0.5f) / 10.0f) +
               ";Dry / Wet=0.6;" + more;
    };
    const std::string filter = of(1, "");
    const std::string comb = of(1, "MultiModeFilter_Q=0.8;");
    const std::string loud =
        of(3, "Dry / Wet=1;Compressor_OutputGain=0.5;Compressor_Threshold=0.2;");
    const std::string pressed = loud + "Compressor_Ratio=0.7";
    const std::string delay = of(4, "Delay_Feedback=0.5;Delay_DelayTimeMs=0.3;");
    const std::string octaver = of(5,
                                   "OctaverDelay_Feedback=0.2;OctaverDelay_DelayTimeMs=0.1;"
                                   "OctaverDelay_PitchShift=0.7;");
    const std::string tape =
        of(6,
           "TapeEcho_InputVolume=0.7;TapeEcho_Intensity=0.2;TapeEcho_DelayTimeFine=0.5;"
           "TapeEcho_DelayTime=0.2;");
    const std::string chorus = of(7, "Chorus_Depth=0.7");
    const std::string flanger = of(8, "Flanger_DepthFlanger=0.7;Flanger_MinDelay=0.3;");
    const std::string reverb = of(9, "");
    const std::string hall = of(9, "Reverb_Decay=0.7");
    std::vector<DestinationRow> rows{
        {35, "Dry / Wet", delay},
        {36, "MultiModeFilter_Freq", filter, 0.125f},
        {36, "MultiModeFilter_CombFreq", comb + "MultiModeFilter_Mode=0.7", 0.5f},
        {36, "MultiModeFilter_CombFreq", comb + "MultiModeFilter_Mode=1", 0.5f},
        {37, "MultiModeFilter_Q", filter + "MultiModeFilter_Freq=0.3"},
        {38, "MultiDist_Drive", of(2, "")},
        {39, "Compressor_Release", pressed},
        {40, "Compressor_Threshold", pressed},
        {41, "Compressor_Ratio", loud},
        {42, "Delay_DelayTimeMs", delay},
        {42, "Delay_DelayTimeSynced", delay + "Delay_RateType=0.3"},
        {43, "Delay_Feedback", delay},
        {44, "Delay_StereoWidth", delay},
        {44, "Delay_StereoWidthPP", delay + "Delay_StereoMode=1", 0.5f},
        {45, "Delay_DelayFineMs", delay, 0.625f},
        {46, "OctaverDelay_DelayTimeMs", octaver, 0.0f},
        {46, "OctaverDelay_DelayTimeSynced", octaver + "OctaverDelay_DelayTimeType=0.3"},
        {47, "OctaverDelay_Feedback", octaver},
        {48, "OctaverDelay_PitchShift", octaver},
        {49, "OctaverDelay_Spray", octaver, 0.25f, true},
        {50, "OctaverDelay_DelayOffset", octaver, 0.5f},
        {51, "OctaverDelay_Detune", octaver, 0.5f},
        {52, "TapeEcho_DelayTime", tape, 0.25f, true},
        {52, "TapeEcho_DelayTimeSynced", tape + "TapeEcho_DelayTimeType=0.3", 0.25f, true},
        {53, "TapeEcho_DelayTimeFine", tape, 0.625f, true},
        {54, "TapeEcho_Intensity", tape},
        {55, "TapeEcho_InputVolume", tape, 0.5f},
        {56, "TapeEcho_StereoWidth", tape, 0.25f, true},
        {56, "TapeEcho_StereoWidthPP", tape + "TapeEcho_DelayType=1", 0.5f},
        {57, "Chorus_Freq", chorus, 0.5f},
        {58, "Chorus_Feedback", chorus},
        {59, "Flanger_Chorus_Freq", flanger, 0.5f, true},
        {59, "Flanger_Chorus_RateSynced", flanger + "Flanger_Chorus_RateType=0.3", 0.5f},
        {60, "Flanger_Chorus_Feedback", flanger},
        {61, "Reverb_Decay", reverb, 0.5f},
        {62, "Reverb_E_Size", reverb, 0.25f, true},
        {63, "Reverb_Predelay", hall, 0.25f, true},
        {64, "Reverb_Damping", hall},
    };
    for (DestinationRow& row : rows) {
        row.prefix = slot + "_";
        row.row += slot == "FX2" ? 30 : 0;
    }
    return rows;
}

}  // namespace Quorvan::test
