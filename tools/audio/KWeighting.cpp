#include "tools/audio/KWeighting.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace Quorvan::Tools {

namespace {

// What the recommendation's coefficients at 48000 Hz come from.
constexpr double kShelfHertz = 1681.974450955533, kShelfDb = 3.999843853973347;
constexpr double kShelfQ = 0.7071752369554196, kShelfSlope = 0.4996667741545416;
constexpr double kHighPassHertz = 38.13547087602444, kHighPassQ = 0.5003270373238773;

constexpr double kHighest = 0.45;  // of the rate, what a filter can have
constexpr double kNothing = 1.0e-30;

double Warped(double hertz, double rate) {
    return std::tan(std::numbers::pi * std::min(hertz / rate, kHighest));
}

}  // namespace

KWeighting::KWeighting(double rate) : shelf(Shelf(rate)), highPass(HighPass(rate)) {}

KWeighting::Stage KWeighting::Shelf(double rate) {
    const double k = Warped(kShelfHertz, rate), high = std::pow(10.0, kShelfDb / 20.0);
    const double band = std::pow(high, kShelfSlope), norm = 1.0 + k / kShelfQ + k * k;
    return {(high + band * k / kShelfQ + k * k) / norm, 2.0 * (k * k - high) / norm,
            (high - band * k / kShelfQ + k * k) / norm, 2.0 * (k * k - 1.0) / norm,
            (1.0 - k / kShelfQ + k * k) / norm};
}

KWeighting::Stage KWeighting::HighPass(double rate) {
    const double k = Warped(kHighPassHertz, rate), norm = 1.0 + k / kHighPassQ + k * k;
    // The recommendation leaves the numerator as it is.
    return {1.0, -2.0, 1.0, 2.0 * (k * k - 1.0) / norm, (1.0 - k / kHighPassQ + k * k) / norm};
}

inline void KWeighting::Stage::Run(Pair& x) {
    for (size_t c = 0; c < 2; ++c) {
        const double y = b0 * x[c] + first[c];
        first[c] = second[c] + b1 * x[c] - a1 * y;
        second[c] = b2 * x[c] - a2 * y;
        x[c] = y;
    }
}

void KWeighting::Stage::Settle() {
    for (Pair* pair : {&first, &second})
        for (double& value : *pair)
            if (std::abs(value) < kNothing)
                value = 0.0;
}

double KWeighting::Energy(const float* left, const float* right, size_t frames) {
    Stage head = shelf, low = highPass;  // in registers
    Pair sum{};
    for (size_t i = 0; i < frames; ++i) {
        Pair x{left[i], right != nullptr ? right[i] : 0.0f};
        head.Run(x);
        low.Run(x);
        for (size_t c = 0; c < 2; ++c)
            sum[c] += x[c] * x[c];
    }
    head.Settle();
    low.Settle();
    shelf = head;
    highPass = low;
    return sum[0] + sum[1];
}

}  // namespace Quorvan::Tools
