#include "primitives/Biquad.h"

#include "primitives/UnpairedSine.h"

namespace Quorvan::dsp {

BiquadCoefficients BiquadCoefficients::HighPass(float w, float alpha) {
    const float cosine = std::cos(w);
    const float n = 1.0f / (1.0f + alpha);
    const float b1 = -(1.0f + cosine) * n;
    const float b0 = -0.5f * b1;
    return {b0, b1, b0, -2.0f * cosine * n, (1.0f - alpha) * n};
}

BiquadCoefficients BiquadCoefficients::HighShelf(float w, float amplitude, float slope) {
    const float cosine = std::cos(w);
    const float k = UnpairedSine(w) * slope;
    const float more = amplitude + 1.0f;
    const float less = amplitude - 1.0f;
    const float a0 = more - less * cosine + k;
    return {amplitude * (more + less * cosine + k) / a0,
            -2.0f * amplitude * (less + more * cosine) / a0,
            amplitude * (more + less * cosine - k) / a0, 2.0f * (less - more * cosine) / a0,
            (more - less * cosine - k) / a0};
}

}  // namespace Quorvan::dsp
