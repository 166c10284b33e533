#include "basictools/math/mapping/PotardMappingUtils.h"

#include "basictools/Raise.h"
#include "basictools/math/mapping/CException.h"
#include "basictools/math/mapping/PotardKind.h"

namespace Quorvan::MappingTools {

PotardMappingVariant PotardMappingUtils::Create(uint32_t kind, float x, float y) {
    // Spans a ratio of about 84 to 1; the scale is fixed along with the curve, not derived from it.
    constexpr float kFixedCurve = 4.429489f;
    constexpr float kFixedScale = 0.012064393f;

    switch (kind) {
        case PotardKind::kRaw:
        case PotardKind::kLinear:
            return LinearPotardMapping();
        case PotardKind::kPolynomial:
            return PolynomialPotardMapping(x);
        case PotardKind::kInvPolynomial:
            return InvPolynomialPotardMapping(x);
        case PotardKind::kExponential:
            return ExponentialPotardMapping(x);
        case PotardKind::kBipolarExp:
            return BipolarExpPotardMapping(x);
        case PotardKind::kBipolarPolynomial:
            return BipolarPolynomialPotardMapping(x);
        case PotardKind::kBipolarVariableCenter:
            return BipolarVariableCenterInvPowPotardMapping(x, y);
        case PotardKind::kFixedExponential:
            return ExponentialPotardMapping(kFixedCurve, kFixedScale);
        case PotardKind::kEnveloppeTime:
            return EnveloppeTimeMapping();
        case PotardKind::kMixerTime:
            return MixerTimeMapping();
        case PotardKind::kVuMeter:
            return VuMeterMapping();
        case PotardKind::kHarmonic:
            return HarmonicMapping(x);
        case PotardKind::kReverse:
            return ReversePotardMapping();
        case PotardKind::kPiecewiseLinear:
            return PiecewiseLinearPotardMapping(x);
        case PotardKind::kInverse:
            return InversePotardMapping(x, y);
        case PotardKind::kSemiToneToFreq:
            return SemiToneToFreqMapping(x, y);
        default:
            Raise(CException("Potard Mapping not found.", "PotardMappingUtils", __LINE__));
    }
}

}  // namespace Quorvan::MappingTools
