#include "effects/EarlyReflections.h"

#include <algorithm>

#include "primitives/RingStretch.h"

namespace Quorvan::dsp {

namespace {

constexpr int32_t kRoom = 5;  // of the rings, times the last reflection
constexpr float kOwnShare = 0.5f, kOtherShare = 0.3f;

/// Samples at 29761 Hz.
constexpr std::array<std::array<float, EarlyReflections::kTaps>, EarlyReflections::kSides> kPlaces =
    {{{0, 592, 652, 1054, 1158, 1232, 2059, 2649}, {0, 295, 327, 542, 562, 634, 1283, 2053}}};
constexpr std::array<float, EarlyReflections::kTaps> kGains = {1.0f, 0.6f, 0.5f, 0.4f,
                                                               0.3f, 0.3f, 0.1f, 0.1f};

}  // namespace

void EarlyReflections::Setup(float newRatio) {
    ratio = newRatio;
    for (uint32_t c = 0; c < kSides; ++c)
        sides[c].line.Resize((static_cast<int32_t>(kPlaces[c].back() * ratio) + 2) * kRoom,
                             DelayLine::Clearing::BitByBit);
}

void EarlyReflections::Clear() {
    for (Side& side : sides)
        side.line.Clear();
}

void EarlyReflections::SetSize(float size) {
    const float scale = size * ratio;
    for (uint32_t c = 0; c < kSides; ++c)
        for (uint32_t i = 0; i < kTaps; ++i)
            sides[c].taps[i] =
                std::clamp(static_cast<int32_t>(kPlaces[c][i] * scale), 1, sides[c].line.size - 1);
}

void EarlyReflections::SetInverted(bool inverted) {
    gains = kGains;
    if (inverted)
        std::reverse(gains.begin(), gains.end());
}

/// Nothing goes back into the lines, so that a stretch is written first and read then; it leaves
/// what the last reflection needs.
void EarlyReflections::Run(const float* left, const float* right,
                           const std::array<float*, kSides>& out, uint32_t count) {
    const std::array<const float*, kSides> in{left, right};
    for (uint32_t c = 0; c < kSides; ++c) {
        DelayLine& line = sides[c].line;
        line.Wipe();
        const auto longest = std::max_element(sides[c].taps.begin(), sides[c].taps.end());
        const uint32_t stretch = static_cast<uint32_t>(line.size - *longest);
        const float* const own = in[c];
        const float* const other = in[1 - c];
        for (uint32_t from = 0; from < count; from += stretch) {
            const uint32_t now = std::min(stretch, count - from);
            float* const mixed = out[c] + from;
            for (uint32_t n = 0; n < now; ++n)
                mixed[n] = kOwnShare * own[from + n] + kOtherShare * other[from + n];
            WriteToRing(line, mixed, static_cast<int32_t>(now));
            ReadTaps(sides[c], mixed, static_cast<int32_t>(now));
        }
    }
}

void EarlyReflections::ReadTaps(const Side& side, float* out, int32_t count) const {
    std::fill_n(out, count, 0.0f);
    const DelayLine& line = side.line;
    for (uint32_t i = 0; i < kTaps; ++i) {
        const int32_t first = PlaceInRing(line, line.writeIndex - count);
        const int32_t place = PlaceInRing(line, first - side.taps[i]);
        const float gain = gains[i];
        ForEachStretch(line, place, count, [out, gain](const float* from, int32_t at, int32_t n) {
            for (int32_t k = 0; k < n; ++k)
                out[at + k] += from[k] * gain;
        });
    }
}

}  // namespace Quorvan::dsp
