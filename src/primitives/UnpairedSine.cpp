#include "primitives/UnpairedSine.h"

#include <cmath>

namespace Quorvan::dsp {

float UnpairedSine(float x) { return std::sin(x); }

}  // namespace Quorvan::dsp
