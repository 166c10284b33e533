#pragma once

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstddef>
#include <numbers>
#include <vector>

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

/// Impulses on both channels, far enough apart for their echoes.
inline Stereo Clicks(size_t count, size_t distance) {
    Channel clicks(count * distance);
    for (size_t at = 0; at < clicks.size(); at += distance)
        clicks[at] = 1.0f;
    return {clicks, clicks};
}

/// How far behind each of such clicks its echo comes, in samples.
inline std::vector<double> EchoDelays(const Channel& output, size_t distance) {
    std::vector<double> delays;
    for (size_t at = 0; at < output.size(); at += distance)
        delays.push_back(CentreOf(output, at, at + distance - 1) - static_cast<double>(at));
    return delays;
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

/// Amplitude and phase of a tone in a stretch of whole periods.
inline std::complex<double> ToneIn(const Channel& signal, size_t begin, size_t end, double hertz,
                                   double rate) {
    std::complex<double> sum;
    for (size_t i = begin; i < end; ++i)
        sum += static_cast<double>(signal[i]) *
               std::polar(1.0, -2.0 * std::numbers::pi * hertz / rate * static_cast<double>(i));
    return 2.0 * sum / static_cast<double>(end - begin);
}

/// Gain and phase of the right channel at a multiple of 10 Hz, once the start has died away.
template <class Rig>
std::complex<double> ResponseAt(Rig& rig, double hertz, float sampleRate) {
    const double rate{sampleRate};
    const auto window = static_cast<size_t>(rate) / 10;
    const Channel tone = Sine(hertz, rate, window * 4, 0.1f);
    const Channel output = rig.Run({tone, tone})[1];
    return ToneIn(output, window * 3, window * 4, hertz, rate) /
           ToneIn(tone, window * 3, window * 4, hertz, rate);
}

}  // namespace Quorvan::test
