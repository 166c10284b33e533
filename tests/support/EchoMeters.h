#pragma once

#include <algorithm>
#include <cmath>

#include "support/ModuleRig.h"
#include "support/TestSignals.h"

namespace Quorvan::test {

inline Stereo Impulse(size_t length, float height = 1.0f) {
    Stereo impulse{Channel(length), Channel(length)};
    impulse[0][0] = impulse[1][0] = height;
    return impulse;
}

/// Where the sum of the squares lies, from begin on.
inline double CentreOf(const Channel& signal, size_t begin, size_t end) {
    double energy = 0.0, moment = 0.0;
    for (size_t i = begin; i < end; ++i) {
        const double e = double{signal[i]} * double{signal[i]};
        energy += e;
        moment += e * static_cast<double>(i);
    }
    return moment / energy;
}

inline float PeakOf(const Stereo& signal, size_t begin = 0) {
    float peak = 0.0f;
    for (const Channel& channel : signal)
        for (size_t i = begin; i < channel.size(); ++i)
            peak = std::max(peak, std::abs(channel[i]));
    return peak;
}

}  // namespace Quorvan::test
