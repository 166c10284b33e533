#include "granular/StartQuantizer.h"

#include <algorithm>
#include <cmath>

namespace Quorvan::dsp {

namespace {

/// The gap between the newest and the oldest marker, which the ring closes: only the one on p's
/// side of the write head w still lies in the loop as it will be heard.
int32_t AcrossTheSeam(int32_t p, int32_t w, int32_t a, int32_t b, int32_t first, int32_t last) {
    if (a <= b)
        return p <= w ? a : b;
    int32_t r = p;
    if (w >= last)
        r = p <= w && p >= last ? a : b;
    if (w < first)
        r = r > w && r <= first ? b : a;
    return r;
}

}  // namespace

double StartQuantizer::ToTransient(double start, const CaptureBuffer& capture,
                                   const MarkerRing& markers) {
    const auto p = static_cast<int32_t>(start);
    const auto w = static_cast<int32_t>(capture.writePosition);
    const auto loop = static_cast<int32_t>(capture.EffectiveLength());
    const auto [a, b] = markers.Neighbours(p);
    const int32_t first = markers.Front();
    const int32_t last = markers.Back();
    if (a == last && b == first)
        return static_cast<double>(AcrossTheSeam(p, w, a, b, first, last));
    const int32_t before = p - a < 0 ? p - a + loop : p - a;
    const int32_t after = b - p < 0 ? b - p + loop : b - p;
    return static_cast<double>(before <= after ? a : b);
}

double StartQuantizer::ToGrid(double start, const CaptureBuffer& capture, uint32_t gridSize) {
    constexpr double kTie = 0.01;  // this close to halfway the lower line is taken
    const double loop = static_cast<double>(capture.EffectiveLength());
    const double w = static_cast<double>(capture.writePosition);
    const double cells = static_cast<double>(gridSize);
    const double cell = loop / cells;
    double behind = w - start;
    if (behind < 0.0)
        behind += loop;
    const double x = start * cells / loop;
    const bool halfway = std::abs(x - std::floor(x) - 0.5) < kTie;
    if (behind >= cell)
        return (halfway ? std::floor(x) : std::round(x)) * cell;
    return halfway ? std::floor(x) * cell : std::min(std::ceil(x) * cell, w);
}

}  // namespace Quorvan::dsp
