#include "effects/DistortionLevel.h"

#include <array>
#include <bit>

#include "primitives/PolynomialExp.h"

namespace Quorvan::dsp {

namespace {

/// (p0 + p1 d) / (1 + q1 d + q2 d^2)
struct RationalFit {
    float p0, p1, q1, q2;
};

constexpr RationalFit kSoftFit{-4.927435f, -0.7415558f, 0.02240797f, 0.00035916021f};
/// Zero rows belong to the curves with another form.
constexpr std::array<RationalFit, 13> kRationalFits{{
    {-5.2401018f, -0.6271368f, 0.01776156f, 0.000223976f},
    kSoftFit,
    kSoftFit,
    {},
    {},
    {-3.2427361f, -0.61995f, 0.0023799371f, 0.00060628232f},
    {0.96536648f, -1.2581609f, 0.0309995f, 0.00090610079f},
    {},
    {},
    {-11.15924f, -0.38153979f, 0.02232071f, 0.000079732352f},
    {},
    {-3.450327f, -0.34462371f, -0.01242106f, 0.00047316551f},
    {-6.42352f, -0.6011539f, 0.01792721f, 0.00035718811f},
}};
constexpr int32_t kStaircase = 8;

/// 2^x with a cubic between the powers, 0 below x = -126. Relative error below 2e-4.
float CubicPow2(float x) {
    const float held = x < -126.0f ? -126.0f : x;
    const float n = FloorByTruncation(held);
    const float f = held - n;
    const float curve = ((0.07944154f * f + 0.22741129f) * f + 0.6931472f) * f + 1.0f;
    const float scale = std::bit_cast<float>((static_cast<int32_t>(n) + 127) << 23);
    return x < -126.0f ? 0.0f : curve * scale;
}

}  // namespace

void FillLevelCompensation(int32_t type, const float* drivesDb, float* gainsDb, uint32_t count) {
    const RationalFit fit = kRationalFits[static_cast<size_t>(type)];
    if (fit.p0 != 0.0f) {
        for (uint32_t i = 0; i < count; ++i) {
            const float d = drivesDb[i];
            gainsDb[i] = (fit.p0 + fit.p1 * d) / ((fit.q2 * d + fit.q1) * d + 1.0f);
        }
    } else if (type == kStaircase) {
        for (uint32_t i = 0; i < count; ++i)
            gainsDb[i] = -12.92433f / (10.03912f * CubicPow2(-0.39682713f * drivesDb[i]) + 1.0f);
    } else {
        for (uint32_t i = 0; i < count; ++i) {
            const float d = drivesDb[i];
            gainsDb[i] = ((0.0028138531f - 0.00001262626f * d) * d - 0.1658369f) * d - 10.30087f;
        }
    }
}

}  // namespace Quorvan::dsp
