#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "support/ModuleRig.h"

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

/// Frequency in hertz from the rising zero crossings.
inline double FrequencyOf(const Channel& signal, size_t begin, size_t end, double rate) {
    double first = 0.0, last = 0.0;
    int crossings = -1;
    for (size_t i = begin + 1; i < end; ++i) {
        if (signal[i - 1] > 0.0f || signal[i] <= 0.0f)
            continue;
        const double at = static_cast<double>(i) - double{signal[i] / (signal[i] - signal[i - 1])};
        if (++crossings == 0)
            first = at;
        last = at;
    }
    return crossings * rate / (last - first);
}

}  // namespace Quorvan::test
