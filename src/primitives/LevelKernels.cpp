// Compiled once for each instruction set: the header below includes this file again for each.
#include "primitives/LevelKernels.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "primitives/LevelKernels.cpp"
// Rows are so short that only vectors of eight or sixteen are worth a form of their own.
#define HWY_DISABLED_TARGETS                                                                \
    (HWY_AVX3_DL | HWY_SSE4 | HWY_SSSE3 | HWY_SVE | HWY_SVE2 | HWY_SVE_256 | HWY_SVE2_128 | \
     HWY_RVV | HWY_WASM)
#include <hwy/foreach_target.h>  // NOLINT
#include <hwy/highway.h>

#if HWY_TARGET == HWY_AVX2 || HWY_TARGET == HWY_AVX3
HWY_BEFORE_NAMESPACE();
namespace Quorvan::dsp::HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;
constexpr hn::CappedTag<float, LevelKernels::kHeld> kAll;
using Floats = hn::Vec<decltype(kAll)>;
constexpr uint32_t kLanes = hn::MaxLanes(kAll);
constexpr uint32_t kStep = LevelKernels::kHeld;
constexpr uint32_t kVectors = kStep / kLanes;

HWY_INLINE HWY_ATTR Floats At(const float* samples) { return hn::LoadU(kAll, samples); }
HWY_INLINE HWY_ATTR Floats SizeAt(const float* samples) { return hn::Abs(At(samples)); }

/// Calls step with each place where kVectors begin. The last ones lie partly on what has been there
/// before, which changes nothing. count from kStep.
template <class Step>
HWY_INLINE HWY_ATTR void ForEachStep(uint32_t count, const Step& step) {
    const uint32_t whole = count & ~(kStep - 1);
    for (size_t i = 0; i != whole; i += kStep)
        step(i);
    if (whole != count)
        step(count - kStep);
}

// Max and Min give their second where the first is no number.
HWY_ATTR void TakePeaks(const float* left, const float* right, uint32_t count, float* held) {
    if (count < kStep)
        return LevelKernels::Plain().peaks(left, right, count, held);
    Floats l[kVectors], r[kVectors];
    for (uint32_t v = 0; v < kVectors; ++v) {
        l[v] = At(held + v * kLanes);
        r[v] = At(held + kStep + v * kLanes);
    }
    ForEachStep(count, [&](size_t i) HWY_ATTR {
        for (uint32_t v = 0; v < kVectors; ++v) {
            l[v] = hn::Max(SizeAt(left + i + v * kLanes), l[v]);
            r[v] = hn::Max(SizeAt(right + i + v * kLanes), r[v]);
        }
    });
    for (uint32_t v = 0; v < kVectors; ++v) {
        hn::Store(l[v], kAll, held + v * kLanes);
        hn::Store(r[v], kAll, held + kStep + v * kLanes);
    }
}

HWY_ATTR float FindSize(const float* samples, uint32_t count) {
    if (count < kStep)
        return LevelKernels::Plain().size(samples, count);
    Floats size = hn::Zero(kAll);
    ForEachStep(count, [&](size_t i) HWY_ATTR {
        for (uint32_t v = 0; v < kVectors; ++v)
            size = hn::Max(SizeAt(samples + i + v * kLanes), size);
    });
    return hn::GetLane(hn::MaxOfLanes(kAll, size));
}

HWY_ATTR void FindExtremes(const float* samples, uint32_t count, float& lowest, float& highest) {
    if (count < kStep)
        return LevelKernels::Plain().extremes(samples, count, lowest, highest);
    Floats low = hn::Set(kAll, samples[0]);
    Floats high = low;
    ForEachStep(count, [&](size_t i) HWY_ATTR {
        for (uint32_t v = 0; v < kVectors; ++v) {
            const Floats x = At(samples + i + v * kLanes);
            low = hn::Min(x, low);
            high = hn::Max(x, high);
        }
    });
    lowest = hn::GetLane(hn::MinOfLanes(kAll, low));
    highest = hn::GetLane(hn::MaxOfLanes(kAll, high));
}

const LevelKernels& Table() {
    static constexpr LevelKernels kTable{&TakePeaks, &FindSize, &FindExtremes};
    return kTable;
}

}  // namespace
}  // namespace Quorvan::dsp::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();
#endif  // HWY_AVX2 or HWY_AVX3

#if HWY_ONCE

#include <algorithm>
#include <cmath>
#include <cstring>

#include "primitives/InstructionSets.h"

namespace Quorvan::dsp {

namespace {

constexpr uint32_t kLanes = 4;
using Lanes = float __attribute__((vector_size(4 * kLanes)));

Lanes LanesAt(const float* samples) {
    Lanes lanes;
    std::memcpy(&lanes, samples, sizeof lanes);
    return lanes;
}

Lanes SizeAt(const float* samples) {
    using Bits = int32_t __attribute__((vector_size(4 * kLanes)));
    constexpr int32_t kAllButSign = 0x7fffffff;
    Bits bits;
    std::memcpy(&bits, samples, sizeof bits);
    bits &= Bits{kAllButSign, kAllButSign, kAllButSign, kAllButSign};
    Lanes sizes;
    std::memcpy(&sizes, &bits, sizeof sizes);
    return sizes;
}

Lanes Lower(Lanes x, Lanes y) { return x < y ? x : y; }
Lanes Higher(Lanes x, Lanes y) { return x > y ? x : y; }

/// Calls pair with each place where two vectors begin, or single with each sample of a shorter row.
template <class Pair, class Single>
void ForEachPair(const float* samples, uint32_t count, const Pair& pair, const Single& single) {
    constexpr uint32_t kStep = 2 * kLanes;
    if (count < kStep) {
        std::for_each_n(samples, count, single);
        return;
    }
    const uint32_t whole = count - count % kStep;
    for (const float* at = samples; at != samples + whole; at += kStep)
        pair(at);
    if (whole != count)
        pair(samples + count - kStep);
}

void TakePeak(const float* samples, uint32_t count, float* held) {
    Lanes first = LanesAt(held), second = LanesAt(held + kLanes);
    const auto pair = [&](const float* at) {
        first = Higher(SizeAt(at), first);
        second = Higher(SizeAt(at + kLanes), second);
    };
    const auto single = [&](float x) { first[0] = std::max(float{first[0]}, std::abs(x)); };
    ForEachPair(samples, count, pair, single);
    std::memcpy(held, &first, sizeof first);
    std::memcpy(held + kLanes, &second, sizeof second);
}

void TakePeaks(const float* left, const float* right, uint32_t count, float* held) {
    TakePeak(left, count, held);
    TakePeak(right, count, held + LevelKernels::kHeld);
}

float FindSize(const float* samples, uint32_t count) {
    float held[2 * kLanes]{};
    TakePeak(samples, count, held);
    return *std::max_element(std::begin(held), std::end(held));
}

void FindExtremes(const float* samples, uint32_t count, float& lowest, float& highest) {
    lowest = highest = samples[0];
    const auto single = [&](float x) {
        lowest = x < lowest ? x : lowest;
        highest = x > highest ? x : highest;
    };
    Lanes low{lowest, lowest, lowest, lowest}, high = low;
    const auto pair = [&](const float* at) {
        const Lanes x = LanesAt(at), y = LanesAt(at + kLanes);
        low = Lower(y, Lower(x, low));
        high = Higher(y, Higher(x, high));
    };
    ForEachPair(samples, count, pair, single);
    for (uint32_t k = 0; k < kLanes; ++k) {
        single(low[k]);
        single(high[k]);
    }
}

const LevelKernels& FindBest() {
#if HWY_TARGETS & HWY_AVX3
    if (HasInstructionSet(HWY_AVX3))
        return N_AVX3::Table();
#endif
#if HWY_TARGETS & HWY_AVX2
    if (HasInstructionSet(HWY_AVX2))
        return N_AVX2::Table();
#endif
    return LevelKernels::Plain();
}

}  // namespace

const LevelKernels& LevelKernels::Plain() {
    static constexpr LevelKernels kTable{&TakePeaks, &FindSize, &FindExtremes};
    return kTable;
}

const LevelKernels& LevelKernels::Best() {
    static const LevelKernels& best = FindBest();
    return best;
}

}  // namespace Quorvan::dsp

#endif  // HWY_ONCE
