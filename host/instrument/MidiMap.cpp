#include "host/instrument/MidiMap.h"

#include <algorithm>
#include <cmath>

namespace Quorvan::Host {

namespace {

/// As near as this counts as the same place for picking up: two steps of 7 bits.
constexpr float kNear = 2.0f / 127.0f;
/// At its ends the curve is the cube or the cube root.
constexpr float kSteepest = 3.0f;

bool IsNote(const MidiBinding& binding) { return binding.source.kind == MidiSource::Kind::Note; }

}  // namespace

float MidiBinding::PositionOf(float value) const {
    const float bent = std::pow(std::clamp(value, 0.0f, 1.0f), std::pow(kSteepest, curve));
    return std::clamp(low + bent * (high - low), 0.0f, 1.0f);
}

bool IsSameKnob(const MidiSource& one, const MidiSource& other) {
    using Kind = MidiSource::Kind;
    constexpr uint16_t kFine = 32;
    const auto isHalf = [](const MidiSource& half, const MidiSource& whole) {
        return half.kind == Kind::Controller && whole.kind == Kind::FineController &&
               half.channel == whole.channel &&
               (half.number == whole.number || half.number == whole.number + kFine);
    };
    return one == other || isHalf(one, other) || isHalf(other, one);
}

std::string SourceText(const MidiSource& source) {
    using Kind = MidiSource::Kind;
    const std::string number = std::to_string(source.number);
    const std::string where = ", channel " + std::to_string(source.channel + 1);
    switch (source.kind) {
        case Kind::Controller:
            return "Controller " + number + where;
        case Kind::FineController:
            return "Fine Controller " + number + where;
        case Kind::Nrpn:
            return "NRPN " + number + where;
        case Kind::PitchBend:
            return "Pitch Bend" + where;
        case Kind::Pressure:
            return "Channel Pressure" + where;
        default:
            return "Note " + number + where;
    }
}

MidiRoutes::MidiRoutes(const MidiMap& midiMap, const ParameterCatalog& catalog) {
    bounds.reserve(midiMap.size());
    for (const MidiBinding& binding : midiMap) {
        const bool hasSteps = binding.index < catalog.Count() &&
                              catalog[binding.index].kind != ParameterKind::Continuous;
        bounds.push_back({binding, hasSteps && IsNote(binding), {}, false, false});
    }
}

std::optional<float> MidiRoutes::Next(Bound& bound, float value, float standing) {
    const float wanted = bound.binding.PositionOf(value);
    switch (bound.binding.take) {
        case MidiBinding::Take::Toggle: {
            const bool rises = value > 0.5f && !bound.above;
            bound.above = value > 0.5f;
            if (IsNote(bound.binding) ? value == 0.0f : !rises)
                return std::nullopt;
            const float middle = 0.5f * (bound.binding.low + bound.binding.high);
            const bool isHigh = (standing > middle) == (bound.binding.high > middle);
            return isHigh ? bound.binding.low : bound.binding.high;
        }
        case MidiBinding::Take::PickUp:
            // Somebody else has moved the parameter since: it has to be caught again.
            if (bound.caught && bound.last && std::abs(*bound.last - standing) > kNear)
                bound.caught = false;
            bound.caught = bound.caught || Catches(bound, wanted, standing);
            bound.last = wanted;
            return bound.caught ? std::optional(wanted) : std::nullopt;
        default:
            return bound.isPressed && value > 0.0f ? bound.binding.PositionOf(1.0f) : wanted;
    }
}

/// Near the parameter, or past it since the last value.
bool MidiRoutes::Catches(const Bound& bound, float wanted, float standing) {
    if (std::abs(wanted - standing) <= kNear)
        return true;
    return bound.last && (*bound.last - standing) * (wanted - standing) < 0.0f;
}

}  // namespace Quorvan::Host
