#include "effects/TapWindow.h"

#include "primitives/RefinedSine.h"

namespace Quorvan::dsp {

namespace {

constexpr float kLeastFade = 1e-8f;  // stands in for an overlap of 0

/// fade(t, e) is the gain at a distance t of an end, 0..e.
template <class Fade>
void Fill(Fade fade, const float* positions, const float* overlap, float* gains, uint32_t count) {
    for (uint32_t i = 0; i < count; ++i) {
        const float o = overlap[i], position = positions[i], rest = 1.0f - position;
        const float e = o == 0.0f ? kLeastFade : o;
        // An end that is nearer than e is the nearer one, e being half the way at most.
        const float t = position < rest ? position : rest;
        // Both cases are worked out, so that the loop has no branch.
        const float full = t >= e ? 1.0f : 0.0f;
        gains[i] = full + (1.0f - full) * fade(t < e ? t : e, e);
    }
}

}  // namespace

void FillTapGains(TapWindow window, const float* positions, const float* overlap, float* gains,
                  uint32_t count) {
    switch (window) {
        case TapWindow::kRaisedCosine:
            Fill([](float t,
                    float e) { return 0.5f + 0.5f * RefinedSinOfTurn(t * 0.5f / e + 0.75f); },
                 positions, overlap, gains, count);
            break;
        case TapWindow::kQuarterSine:
            Fill([](float t, float e) { return RefinedSinOfTurn(t * 0.25f / e); }, positions,
                 overlap, gains, count);
            break;
        default:
            Fill([](float t, float e) { return t / e; }, positions, overlap, gains, count);
            break;
    }
}

}  // namespace Quorvan::dsp
