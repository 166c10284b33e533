#include "basictools/math/mapping/EnveloppeTimeMapping.h"

#include "basictools/math/mapping/TableCurve.h"

namespace Quorvan::MappingTools {

namespace {

// Given data: set by hand, not from a formula.
constexpr TableCurve<21> kTimes = {
    {0.0f,         0.00027507564f, 0.0010502888f, 0.0021755984f, 0.0035509765f, 0.0055015129f,
     0.008077221f, 0.01192828f,    0.017554827f,  0.025682062f,  0.037835404f,  0.049538624f,
     0.077971444f, 0.09225037f,    0.15019131f,   0.19727924f,   0.29808196f,   0.37982947f,
     0.53337169f,  0.68578857f,    1.0f},
    0.05f};

}  // namespace

float EnveloppeTimeMapping::Map(float position) const { return kTimes.Map(position); }

float EnveloppeTimeMapping::Unmap(float value) const { return kTimes.Unmap(value); }

}  // namespace Quorvan::MappingTools
