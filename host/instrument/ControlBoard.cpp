#include "host/instrument/ControlBoard.h"

#include "granular/MoteWeaverParameters.h"
#include "host/parameters/LabelFamily.h"
#include "modulation/IGenerator.h"

namespace Quorvan::Host {

namespace {

namespace Id = dsp::MoteWeaverId;
constexpr uint32_t kBeat = 2;

}  // namespace

ControlBoard::ControlBoard(const ParameterCatalog& parameters, const PositionBoard& positionBoard)
    : catalog(parameters),
      size(*parameters.FamilyOf(Id::GrainSizeAbsolute)),
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

/// That of classic and beat mode: texture mode's has a control of its own.
uint32_t ControlBoard::DensityInForce() const {
    const bool notes = Choice(Id::GranularMode) == kBeat || Choice(Id::DensityType) != 0;
    return notes ? dsp::IGenerator::RateSynced : dsp::IGenerator::RateUnSynced;
}

uint32_t ControlBoard::TargetOf(uint32_t id) const {
    const HostControl* const control = FindHostControl(id);
    if (control == nullptr)
        return kUnassigned;
    switch (control->target) {
        case ControlTarget::GrainSize:
            return InForce(size);
        case ControlTarget::Density:
            return DensityInForce();
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

uint32_t ControlBoard::ControlOf(uint32_t index) const {
    for (const HostControl& control : HostControls())
        if (TargetOf(control.id) == index)
            return control.id;
    return kUnassigned;
}

}  // namespace Quorvan::Host
