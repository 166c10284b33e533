#include "effects/HeadLossTable.h"

#include <cstdint>

namespace Quorvan::dsp {

namespace {

struct Knot {
    uint32_t ms;
    HeadLossTable::Entry entry;
};

// Straight lines lie between these.
constexpr std::array<Knot, 14> kKnots{{
    {60, {16000.0f, 0.8f, 16100.0f, 0.49f}},
    {61, {16000.0f, 0.8f, 15790.7f, 0.48935f}},
    {71, {16000.0f, 0.8f, 12800.0f, 0.48f}},
    {83, {16000.0f, 0.8f, 10068.3f, 0.48f}},
    {84, {16000.0f, 0.8f, 9919.2f, 0.47838f}},
    {96, {16000.0f, 0.8f, 8534.6f, 0.45069f}},
    {97, {16000.0f, 0.8f, 8423.4f, 0.45f}},
    {110, {16000.0f, 0.8f, 7000.0f, 0.45f}},
    {124, {15619.0f, 0.78095f, 6238.1f, 0.45f}},
    {125, {15591.2f, 0.77956f, 6189.0f, 0.44978f}},
    {138, {15208.8f, 0.76044f, 5711.0f, 0.44022f}},
    {139, {15188.0f, 0.7594f, 5676.1f, 0.4394f}},
    {150, {15000.0f, 0.75f, 5300.0f, 0.43f}},
    {162, {14500.0f, 0.75f, 5000.0f, 0.4f}},
}};

/// The knots' own values come out unchanged at a weight of 0 and of 1.
HeadLossTable::Entry Blend(const HeadLossTable::Entry& from, const HeadLossTable::Entry& to,
                           float f) {
    const auto mix = [f](float a, float b) { return (1.0f - f) * a + f * b; };
    return {mix(from.headFrequency, to.headFrequency), mix(from.headQ, to.headQ),
            mix(from.gapFrequency, to.gapFrequency), mix(from.gapQ, to.gapQ)};
}

}  // namespace

const HeadLossTable& HeadLossTable::Get() {
    static const HeadLossTable table;
    return table;
}

HeadLossTable::HeadLossTable() {
    for (size_t k = 0; k + 1 < kKnots.size(); ++k) {
        const Knot& from = kKnots[k];
        const Knot& to = kKnots[k + 1];
        for (uint32_t ms = from.ms; ms <= to.ms; ++ms)
            entries[ms - kKnots.front().ms] =
                Blend(from.entry, to.entry,
                      static_cast<float>(ms - from.ms) / static_cast<float>(to.ms - from.ms));
    }
}

HeadLossTable::Entry HeadLossTable::At(float ms) const {
    const auto i = static_cast<size_t>(ms - kShortestMs);
    const float f = ms - kShortestMs - static_cast<float>(i);
    return Blend(entries[i], entries[i + 1], f);
}

}  // namespace Quorvan::dsp
