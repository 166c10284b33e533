#include "host/instrument/HostControl.h"

#include <array>

#include "granular/MoteWeaverParameters.h"
#include "host/parameters/ShellIndex.h"

namespace Quorvan::Host {

namespace {

using enum ControlTarget;
using namespace Processor;
namespace Id = dsp::MoteWeaverId;

constexpr std::array kControls{
    HostControl{0, "Bypass", "Main", "bypass", Parameter, kBypassIndex},
    HostControl{1, "Dry / Wet", "Main", "dry_wet", Parameter, kDryWet},
    HostControl{2, "Feedback", "Main", "feedback", Parameter, kFeedback},
    HostControl{3, "Granular Volume", "Main", "granular_volume", Parameter, kGranularVolume},
    HostControl{4, "Master Volume", "Main", "master_volume", Parameter, kMasterVolume},
    HostControl{5, "Macro 1", "Play", "macro_1", Parameter, kMacro1},
    HostControl{6, "Macro 2", "Play", "macro_2", Parameter, kMacro2},
    HostControl{7, "Morph", "Play", "morph", Morph},
    HostControl{8, "Mode", "Grains", "mode", Parameter, Id::GranularMode},
    HostControl{9, "Density", "Grains", "density", Density},
    HostControl{10, "Grain Size", "Grains", "grain_size", GrainSize},
    HostControl{11, "Pitch", "Grains/Pitch", "pitch", Parameter, Id::Pitch},
    HostControl{12, "Scale", "Grains/Pitch", "scale", Parameter, Id::Scale},
    HostControl{13, "Random Pitch", "Grains/Pitch", "random_pitch", Parameter, Id::RandomPitch},
    HostControl{14, "Random Fine Pitch", "Grains/Pitch", "random_fine_pitch", Parameter,
                Id::RandomFine},
    HostControl{15, "Random Density", "Grains/Chance", "random_density", Parameter,
                Id::RandomDensity},
    HostControl{16, "Random Size", "Grains/Chance", "random_size", Parameter, Id::RandomSize},
    HostControl{17, "Random Pan", "Grains/Chance", "random_pan", Parameter, Id::RandomPan},
    HostControl{18, "Forward Grains", "Grains/Chance", "forward_grains", Parameter,
                Id::RandomDirection},
    HostControl{19, "Spray", "Grains/Chance", "spray", Parameter, Id::Spray},
    HostControl{20, "Width", "Grains", "width", Parameter, Id::Width},
    HostControl{21, "Grain Shape", "Grains/Shape", "grain_shape", Parameter, Id::Shape},
    HostControl{22, "Grain Shape Amount", "Grains/Shape", "grain_shape_amount", Parameter,
                Id::ShapeParam},
    HostControl{23, "Texture Density", "Grains", "texture_density", Parameter, Id::TextureDensity},
    HostControl{24, "Freeze", "Tape", "freeze", Parameter, Id::BufferFreeze},
    HostControl{25, "Clear", "Tape", "clear", Parameter, Id::BufferClear},
    HostControl{26, "Persistence", "Tape", "persistence", Parameter, Id::BufferPersistence},
    HostControl{27, "Buffer Length", "Tape", "buffer_length", Parameter, Id::BufferLengthSynced},
    HostControl{28, "Play Head Mode", "Tape/Play Head", "play_head_mode", Parameter,
                Id::PlaybackMode},
    HostControl{29, "Play Head Position", "Tape/Play Head", "play_head_position", Parameter,
                Id::ManualScanPosition},
    HostControl{30, "Play Head Speed", "Tape/Play Head", "play_head_speed", Parameter, Id::Speed},
    HostControl{31, "Play Head Offset", "Tape/Play Head", "play_head_offset", PlayOffset},
    HostControl{32, "Start Quantization", "Tape/Grid", "start_quantization", Parameter,
                Id::PlaybackQuantizationMode},
    HostControl{33, "Grid Size", "Tape/Grid", "grid_size", Parameter, Id::GridSize},
    HostControl{34, "Lo-Fi", "Grains", "lo_fi", Parameter, Id::BitCrushPreset},
    HostControl{35, "FX1 Dry / Wet", "Effects", "fx1_dry_wet", Parameter, kFX1DryWet},
    HostControl{36, "FX2 Dry / Wet", "Effects", "fx2_dry_wet", Parameter, kFX2DryWet},
    HostControl{37, "Spatializer", "Space", "spatializer", Parameter, kSpatializerEnable},
    HostControl{38, "Spatializer Amount", "Space", "spatializer_amount", Parameter,
                kSpatializerAmount},
    HostControl{39, "Spatializer Distance", "Space", "spatializer_distance", Parameter,
                kSpatializerDistance},
    HostControl{40, "Assign 1", "Assign", "assign_1", Assigned, 0},
    HostControl{41, "Assign 2", "Assign", "assign_2", Assigned, 1},
    HostControl{42, "Assign 3", "Assign", "assign_3", Assigned, 2},
    HostControl{43, "Assign 4", "Assign", "assign_4", Assigned, 3},
    HostControl{44, "Assign 5", "Assign", "assign_5", Assigned, 4},
    HostControl{45, "Assign 6", "Assign", "assign_6", Assigned, 5},
    HostControl{46, "Assign 7", "Assign", "assign_7", Assigned, 6},
    HostControl{47, "Assign 8", "Assign", "assign_8", Assigned, 7},
    HostControl{48, "Assign 9", "Assign", "assign_9", Assigned, 8},
    HostControl{49, "Assign 10", "Assign", "assign_10", Assigned, 9},
    HostControl{50, "Assign 11", "Assign", "assign_11", Assigned, 10},
    HostControl{51, "Assign 12", "Assign", "assign_12", Assigned, 11},
    HostControl{52, "Assign 13", "Assign", "assign_13", Assigned, 12},
    HostControl{53, "Assign 14", "Assign", "assign_14", Assigned, 13},
    HostControl{54, "Assign 15", "Assign", "assign_15", Assigned, 14},
    HostControl{55, "Assign 16", "Assign", "assign_16", Assigned, 15},
};

constexpr bool IdsArePlaces() {
    for (uint32_t i = 0; i < kControls.size(); ++i)
        if (kControls[i].id != i)
            return false;
    return true;
}
static_assert(IdsArePlaces() && kControls.size() <= kHostControlRoom);

}  // namespace

std::span<const HostControl> HostControls() { return kControls; }

const HostControl* FindHostControl(uint32_t id) {
    return id < kControls.size() ? &kControls[id] : nullptr;
}

}  // namespace Quorvan::Host
