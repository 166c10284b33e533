#include "effects/ChorusLanes.h"

#include <cstring>

namespace Quorvan::dsp {

namespace {

constexpr uint32_t kWidth = 4;  // lanes of a vector
using Lanes = float __attribute__((vector_size(16)));

Lanes Load(const float* from) {
    Lanes lanes;
    std::memcpy(&lanes, from, sizeof lanes);
    return lanes;
}

/// Rows for columns.
void Transpose(Lanes (&rows)[kWidth]) {
    const Lanes a = __builtin_shufflevector(rows[0], rows[1], 0, 4, 1, 5);
    const Lanes b = __builtin_shufflevector(rows[2], rows[3], 0, 4, 1, 5);
    const Lanes c = __builtin_shufflevector(rows[0], rows[1], 2, 6, 3, 7);
    const Lanes d = __builtin_shufflevector(rows[2], rows[3], 2, 6, 3, 7);
    rows[0] = __builtin_shufflevector(a, b, 0, 1, 4, 5);
    rows[1] = __builtin_shufflevector(a, b, 2, 3, 6, 7);
    rows[2] = __builtin_shufflevector(c, d, 0, 1, 4, 5);
    rows[3] = __builtin_shufflevector(c, d, 2, 3, 6, 7);
}

/// OnePole::Tick in lanes.
Lanes Tick(const OnePole& filter, Lanes x, Lanes& state) {
    const Lanes y = x * filter.b0 + state;
    state = x * filter.b1 - y * filter.a1;
    return y;
}

/// Four lanes at work.
struct LaneGroup {
    explicit LaneGroup(const ChorusLanes::Lane* from) : lanes(from) {
        for (uint32_t k = 0; k < kWidth; ++k) {
            allpass[k] = from[k].memory.allpass;
            low[k] = from[k].memory.lowPass;
            high[k] = from[k].memory.highPass;
        }
    }
    ChorusLanes::Memory Memory(uint32_t k) const { return {allpass[k], low[k], high[k]}; }

    /// Four samples of each lane from a place on, of which the first count are taken.
    void LoadAt(uint32_t at, uint32_t count) {
        for (uint32_t k = 0; k < kWidth; ++k) {
            if (count == kWidth) {
                signal[k] = Load(lanes[k].signal + at);
                glide[k] = Load(lanes[k].glide + at);
            } else {
                std::memcpy(&signal[k], lanes[k].signal + at, count * sizeof(float));
                std::memcpy(&glide[k], lanes[k].glide + at, count * sizeof(float));
            }
        }
        Transpose(signal);
        Transpose(glide);
    }
    void StoreAt(uint32_t at, uint32_t count) {
        Transpose(signal);
        for (uint32_t k = 0; k < kWidth; ++k)
            std::memcpy(lanes[k].signal + at, &signal[k],
                        (count == kWidth ? kWidth : count) * sizeof(float));
    }
    void Step(uint32_t i, const OnePole* lowPass, const OnePole* highPass) {
        Lanes y = signal[i] - glide[i] * allpass;
        allpass = y;
        if (lowPass != nullptr)
            y = Tick(*lowPass, y, low);
        if (highPass != nullptr)
            y = Tick(*highPass, y, high);
        signal[i] = y;
    }

    const ChorusLanes::Lane* lanes;
    Lanes allpass{}, low{}, high{};
    Lanes signal[kWidth]{}, glide[kWidth]{};
};

}  // namespace

void ChorusLanes::Setup(uint32_t blockSize) {
    silence.assign(blockSize, 0.0f);
    Clear();
}

void ChorusLanes::Clear() {
    for (Lane& lane : lanes)
        lane = {silence.data(), silence.data(), {}};
}

void ChorusLanes::Run(uint32_t used, uint32_t count, const OnePole* lowPass,
                      const OnePole* highPass) {
    if (used > kWidth)
        RunVectors<2>(count, lowPass, highPass);
    else
        RunVectors<1>(count, lowPass, highPass);
}

template <uint32_t kVectors>
void ChorusLanes::RunVectors(uint32_t count, const OnePole* lowPass, const OnePole* highPass) {
    std::array<LaneGroup, 2> groups{LaneGroup(lanes.data()), LaneGroup(lanes.data() + kWidth)};
    const OnePole low = lowPass != nullptr ? *lowPass : OnePole{};
    const OnePole high = highPass != nullptr ? *highPass : OnePole{};
    const OnePole* const lowOn = lowPass != nullptr ? &low : nullptr;
    const OnePole* const highOn = highPass != nullptr ? &high : nullptr;
    const auto run = [&](uint32_t at, uint32_t n) {
        for (uint32_t v = 0; v < kVectors; ++v)
            groups[v].LoadAt(at, n);
        for (uint32_t i = 0; i < n; ++i)
            for (uint32_t v = 0; v < kVectors; ++v)
                groups[v].Step(i, lowOn, highOn);
        for (uint32_t v = 0; v < kVectors; ++v)
            groups[v].StoreAt(at, n);
    };
    uint32_t at = 0;
    for (; at + kWidth <= count; at += kWidth)
        run(at, kWidth);
    if (at < count)
        run(at, count - at);
    for (uint32_t k = 0; k < kVectors * kWidth; ++k)
        lanes[k].memory = groups[k / kWidth].Memory(k % kWidth);
}

}  // namespace Quorvan::dsp
