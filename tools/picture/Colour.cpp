#include "tools/picture/Colour.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace Quorvan::Tools {

namespace {

struct Stop {
    double at;
    Colour colour;
};

// Chosen so that CIE lightness is about 100 * at, less 4 at the dark end and 2 at the light one.
constexpr std::array kHeat{
    Stop{0.00, {0.025, 0.020, 0.060}}, Stop{0.18, {0.150, 0.075, 0.330}},
    Stop{0.36, {0.420, 0.100, 0.480}}, Stop{0.54, {0.760, 0.200, 0.440}},
    Stop{0.70, {0.950, 0.430, 0.300}}, Stop{0.85, {0.990, 0.730, 0.380}},
    Stop{1.00, {0.995, 0.985, 0.820}},
};
constexpr std::array kPitch{
    Stop{-1.0, {0.250, 0.760, 0.860}},  Stop{-0.5, {0.060, 0.420, 0.820}},
    Stop{-0.12, {0.260, 0.330, 0.560}}, Stop{0.0, {0.330, 0.340, 0.370}},
    Stop{0.12, {0.620, 0.350, 0.170}},  Stop{0.5, {0.930, 0.450, 0.060}},
    Stop{1.0, {0.820, 0.060, 0.260}},
};

template <class Stops>
Colour Between(const Stops& stops, double at) {
    at = std::clamp(at, stops.front().at, stops.back().at);
    const auto above = std::find_if(stops.begin() + 1, stops.end() - 1,
                                    [at](const Stop& stop) { return stop.at >= at; });
    const Stop& low = *(above - 1);
    const Stop& high = *above;
    const double share = (at - low.at) / (high.at - low.at);
    const auto mix = [share](double a, double b) { return a + share * (b - a); };
    return {mix(low.colour.red, high.colour.red), mix(low.colour.green, high.colour.green),
            mix(low.colour.blue, high.colour.blue)};
}

}  // namespace

Colour HeatColour(double share) { return Between(kHeat, share); }

Colour PitchColour(double semitones, double range) { return Between(kPitch, semitones / range); }

}  // namespace Quorvan::Tools
