#pragma once

#include <concepts>
#include <cstdint>
#include <type_traits>
#include <variant>

#include "basictools/math/mapping/BipolarExpPotardMapping.h"
#include "basictools/math/mapping/BipolarPolynomialPotardMapping.h"
#include "basictools/math/mapping/BipolarVariableCenterInvPowPotardMapping.h"
#include "basictools/math/mapping/EnveloppeTimeMapping.h"
#include "basictools/math/mapping/ExponentialPotardMapping.h"
#include "basictools/math/mapping/HarmonicMapping.h"
#include "basictools/math/mapping/InvPolynomialPotardMapping.h"
#include "basictools/math/mapping/InversePotardMapping.h"
#include "basictools/math/mapping/LinearPotardMapping.h"
#include "basictools/math/mapping/MixerTimeMapping.h"
#include "basictools/math/mapping/PiecewiseLinearPotardMapping.h"
#include "basictools/math/mapping/PolynomialPotardMapping.h"
#include "basictools/math/mapping/ReversePotardMapping.h"
#include "basictools/math/mapping/SemiToneToFreqMapping.h"
#include "basictools/math/mapping/VuMeterMapping.h"

namespace Quorvan::MappingTools {

/// Any one curve, held by value, so that a parameter needs no allocation for it; or a pointer to a
/// curve that somebody else keeps alive. Starts as the linear curve, and falls back to it when
/// moved from.
class PotardMappingVariant {
public:
    PotardMappingVariant() = default;
    PotardMappingVariant(const PotardMappingVariant&) = default;
    // A variant throws only where it holds nothing; the assertion below rules that out.
    // NOLINTNEXTLINE(bugprone-exception-escape)
    PotardMappingVariant(PotardMappingVariant&& other) noexcept;
    PotardMappingVariant& operator=(const PotardMappingVariant&) = default;
    // NOLINTNEXTLINE(bugprone-exception-escape)
    PotardMappingVariant& operator=(PotardMappingVariant&& other) noexcept;
    ~PotardMappingVariant() = default;

    /// Holds a copy of the curve.
    template <typename Curve>
    requires std::derived_from<Curve, IPotardMapping> PotardMappingVariant(const Curve& curve)
        : storage(curve) {}
    /// Refers to a curve that outlives this object and all its copies.
    PotardMappingVariant(const IPotardMapping* heldElsewhere) : storage(heldElsewhere) {}

    /// The active curve: inside this object, or the one held elsewhere. An answer that points
    /// inside goes stale with the next assignment to this object.
    const IPotardMapping* Get() const;
    /// Which alternative is held, 1 to 16 in the order of Storage.
    uint32_t Tag() const { return static_cast<uint32_t>(storage.index()) + 1; }

private:
    using Storage =
        std::variant<LinearPotardMapping, ReversePotardMapping, PolynomialPotardMapping,
                     InvPolynomialPotardMapping, ExponentialPotardMapping, BipolarExpPotardMapping,
                     BipolarPolynomialPotardMapping, BipolarVariableCenterInvPowPotardMapping,
                     EnveloppeTimeMapping, MixerTimeMapping, VuMeterMapping, HarmonicMapping,
                     PiecewiseLinearPotardMapping, InversePotardMapping, SemiToneToFreqMapping,
                     const IPotardMapping*>;
    static_assert(std::is_nothrow_move_constructible_v<Storage>,
                  "a curve may not fail to move: neither side would be left with one");

    Storage storage;
};

}  // namespace Quorvan::MappingTools
