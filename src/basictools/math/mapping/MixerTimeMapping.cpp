#include "basictools/math/mapping/MixerTimeMapping.h"

#include "basictools/math/mapping/TableCurve.h"

namespace Quorvan::MappingTools {

namespace {

// Given data: set by hand, not from a formula.
constexpr TableCurve<10> kTimes = {{0.0f, 0.0014065391f, 0.0041949414f, 0.0085872915f, 0.019222703f,
                                    0.038420729f, 0.091795191f, 0.28584823f, 0.55262184f, 1.0f},
                                   0.11111111f};

}  // namespace

float MixerTimeMapping::Map(float position) const { return kTimes.Map(position); }

float MixerTimeMapping::Unmap(float value) const { return kTimes.Unmap(value); }

}  // namespace Quorvan::MappingTools
