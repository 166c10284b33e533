#include "host/instrument/ControlBoard.h"

#include <algorithm>

#include "granular/MoteWeaverParameters.h"
#include "modulation/IGenerator.h"

namespace Quorvan::Host {

namespace {

namespace Id = dsp::MoteWeaverId;
constexpr uint32_t kTexture = 1;
constexpr uint32_t kBeat = 2;

}  // namespace

ControlBoard::ControlBoard(const ParameterCatalog& parameters, const PositionBoard& positionBoard)
    : catalog(parameters), positions(positionBoard) {
    for (auto& assignment : assignments)
        assignment.store(kUnassigned, std::memory_order_relaxed);
}

uint32_t ControlBoard::Choice(uint32_t index) const {
    return static_cast<uint32_t>(catalog.Value(index, positions.Position(index)));
}

uint32_t ControlBoard::SizeInForce() const {
    const uint32_t mode = Choice(Id::GranularMode);
    if (mode == kTexture)
        return Choice(Id::TextureSizeMidiSync) != 0 ? Id::TextureSizeSynced
                                                    : Id::TextureSizeAbsolute;
    if (mode == kBeat || Choice(Id::DensitySizeLink) != 0)
        return Id::GrainSizeRatio;
    return Choice(Id::GrainSizeMode) != 0 ? Id::GrainSizeSynced : Id::GrainSizeAbsolute;
}

uint32_t ControlBoard::DensityInForce() const {
    const bool notes = Choice(Id::GranularMode) == kBeat || Choice(Id::DensityType) != 0;
    return notes ? dsp::IGenerator::RateSynced : dsp::IGenerator::RateUnSynced;
}

uint32_t ControlBoard::OffsetInForce() const {
    return Choice(Id::OffsetType) != 0 ? Id::OffsetSynced : Id::Offset;
}

uint32_t ControlBoard::TargetOf(uint32_t id) const {
    const HostControl* const control = FindHostControl(id);
    if (control == nullptr)
        return kUnassigned;
    switch (control->target) {
        case ControlTarget::GrainSize:
            return SizeInForce();
        case ControlTarget::Density:
            return DensityInForce();
        case ControlTarget::PlayOffset:
            return OffsetInForce();
        case ControlTarget::Assigned:
            return Assignment(control->index);
        case ControlTarget::Morph:
            return PositionBoard::kMorphIndex;
        default:
            return control->index;
    }
}

uint32_t ControlBoard::ControlOf(uint32_t index) const {
    for (const HostControl& control : HostControls())
        if (TargetOf(control.id) == index)
            return control.id;
    return kUnassigned;
}

bool ControlBoard::DecidesTargets(uint32_t index) {
    constexpr std::array<uint32_t, 6> kDeciders{Id::GranularMode,    Id::TextureSizeMidiSync,
                                                Id::DensitySizeLink, Id::GrainSizeMode,
                                                Id::DensityType,     Id::OffsetType};
    return std::find(kDeciders.begin(), kDeciders.end(), index) != kDeciders.end();
}

}  // namespace Quorvan::Host
