#pragma once

namespace Quorvan::dsp {

/// sin(x). A compiler may work out the sine and the cosine of one angle together, by a function
/// that rounds otherwise than the two by themselves; from a file of its own the sine comes out the
/// same in every build.
float UnpairedSine(float x);

}  // namespace Quorvan::dsp
