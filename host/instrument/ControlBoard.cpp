#include "host/instrument/ControlBoard.h"

#include "granular/MoteWeaverParameters.h"
#include "host/parameters/LabelFamily.h"

namespace Quorvan::Host {

namespace Id = dsp::MoteWeaverId;

ControlBoard::ControlBoard(const ParameterCatalog& parameters, const PositionBoard& positionBoard)
    : catalog(parameters),
      size(*parameters.FamilyOf(Id::GrainSizeAbsolute)),
      density(*parameters.FamilyOf(Id::TextureDensity)),
      offset(*parameters.FamilyOf(Id::Offset)),
      positions(positionBoard) {
    for (auto& assignment : assignments)
        assignment.store(kUnassigned, std::memory_order_relaxed);
}

uint32_t ControlBoard::Choice(uint32_t index) const {
    return static_cast<uint32_t>(catalog.Value(index, positions.Position(index)));
}

uint32_t ControlBoard::InForce(const LabelFamily& family) const {
    return family.InForce([this](uint32_t selector) { return Choice(selector); });
}

uint32_t ControlBoard::TargetOf(uint32_t id) const {
    const HostControl* const control = FindHostControl(id);
    if (control == nullptr)
        return kUnassigned;
    switch (control->target) {
        case ControlTarget::GrainSize:
            return InForce(size);
        case ControlTarget::Density:
            return InForce(density);
        case ControlTarget::PlayOffset:
            return InForce(offset);
        case ControlTarget::Assigned:
            return Assignment(control->index);
        case ControlTarget::Morph:
            return PositionBoard::kMorphIndex;
        default:
            return control->index;
    }
}

}  // namespace Quorvan::Host
