// Compiled once for each instruction set: the header below includes this file again for each.
#include "primitives/LevelKernels.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "primitives/LevelKernels.cpp"
// Rows are so short that only vectors of eight are worth a form of their own, and of sixteen for
// the longer ones.
#define HWY_DISABLED_TARGETS                                                                \
    (HWY_AVX3_DL | HWY_SSE4 | HWY_SSSE3 | HWY_SVE | HWY_SVE2 | HWY_SVE_256 | HWY_SVE2_128 | \
     HWY_RVV | HWY_WASM)
#include <hwy/foreach_target.h>  // NOLINT
#include <hwy/highway.h>

#if HWY_TARGET == HWY_AVX3
HWY_BEFORE_NAMESPACE();
namespace Quorvan::dsp::HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;
constexpr hn::Full512<float> kSixteen;

/// As with vectors of eight below; count from kHeld.
HWY_ATTR void TakePeaks(const float* left, const float* right, uint32_t count, float* held) {
    constexpr uint32_t kStep = LevelKernels::kHeld;
    if (count < kStep)
        return LevelKernels::Plain().peaks(left, right, count, held);
    auto l = hn::Load(kSixteen, held);
    auto r = hn::Load(kSixteen, held + kStep);
    const auto take = [&](size_t i) HWY_ATTR {
        l = hn::Max(hn::Abs(hn::LoadU(kSixteen, left + i)), l);
        r = hn::Max(hn::Abs(hn::LoadU(kSixteen, right + i)), r);
    };
    const uint32_t whole = count - count % kStep;
    for (size_t i = 0; i != whole; i += kStep)
        take(i);
    if (whole != count)
        take(count - kStep);
    hn::Store(l, kSixteen, held);
    hn::Store(r, kSixteen, held + kStep);
}

HWY_ATTR void FindExtremes(const float* samples, uint32_t count, float& lowest, float& highest) {
    constexpr uint32_t kStep = 2 * LevelKernels::kHeld;
    if (count < kStep)
        return LevelKernels::Plain().extremes(samples, count, lowest, highest);
    auto low = hn::Set(kSixteen, samples[0]);
    auto high = low;
    const auto take = [&](size_t i) HWY_ATTR {
        const auto x = hn::LoadU(kSixteen, samples + i);
        const auto y = hn::LoadU(kSixteen, samples + i + kStep / 2);
        low = hn::Min(y, hn::Min(x, low));
        high = hn::Max(y, hn::Max(x, high));
    };
    const uint32_t whole = count - count % kStep;
    for (size_t i = 0; i != whole; i += kStep)
        take(i);
    if (whole != count)
        take(count - kStep);
    lowest = hn::GetLane(hn::MinOfLanes(kSixteen, low));
    highest = hn::GetLane(hn::MaxOfLanes(kSixteen, high));
}

}  // namespace
}  // namespace Quorvan::dsp::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();
#endif  // HWY_AVX3

#if HWY_TARGET == HWY_AVX2
HWY_BEFORE_NAMESPACE();
namespace Quorvan::dsp::HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;
using Eight = hn::Vec<hn::Full256<float>>;
constexpr hn::Full256<float> kEight;
constexpr uint32_t kLanes = 8;
constexpr uint32_t kStep = 2 * kLanes;

HWY_INLINE HWY_ATTR Eight At(const float* samples) { return hn::LoadU(kEight, samples); }
HWY_INLINE HWY_ATTR Eight SizeAt(const float* samples) { return hn::Abs(At(samples)); }

/// Calls step with each place where two vectors begin. The last ones lie partly on what has been
/// there before, which changes nothing. count from kStep.
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
    static_assert(LevelKernels::kHeld == kStep);
    if (count < kStep)
        return LevelKernels::Plain().peaks(left, right, count, held);
    Eight l0 = At(held), l1 = At(held + kLanes);
    Eight r0 = At(held + kStep), r1 = At(held + kStep + kLanes);
    ForEachStep(count, [&](size_t i) HWY_ATTR {
        l0 = hn::Max(SizeAt(left + i), l0);
        l1 = hn::Max(SizeAt(left + i + kLanes), l1);
        r0 = hn::Max(SizeAt(right + i), r0);
        r1 = hn::Max(SizeAt(right + i + kLanes), r1);
    });
    hn::Store(l0, kEight, held);
    hn::Store(l1, kEight, held + kLanes);
    hn::Store(r0, kEight, held + kStep);
    hn::Store(r1, kEight, held + kStep + kLanes);
}

HWY_ATTR float FindSize(const float* samples, uint32_t count) {
    if (count < kStep)
        return LevelKernels::Plain().size(samples, count);
    Eight first = hn::Zero(kEight), second = first;
    ForEachStep(count, [&](size_t i) HWY_ATTR {
        first = hn::Max(SizeAt(samples + i), first);
        second = hn::Max(SizeAt(samples + i + kLanes), second);
    });
    return hn::GetLane(hn::MaxOfLanes(kEight, hn::Max(first, second)));
}

HWY_ATTR void FindExtremes(const float* samples, uint32_t count, float& lowest, float& highest) {
    if (count < kStep)
        return LevelKernels::Plain().extremes(samples, count, lowest, highest);
    Eight low = hn::Set(kEight, samples[0]);
    Eight high = low;
    ForEachStep(count, [&](size_t i) HWY_ATTR {
        const Eight x = At(samples + i), y = At(samples + i + kLanes);
        low = hn::Min(y, hn::Min(x, low));
        high = hn::Max(y, hn::Max(x, high));
    });
    lowest = hn::GetLane(hn::MinOfLanes(kEight, low));
    highest = hn::GetLane(hn::MaxOfLanes(kEight, high));
}

const LevelKernels& Table() {
    static constexpr LevelKernels kTable{&TakePeaks, &FindSize, &FindExtremes};
    return kTable;
}

}  // namespace
}  // namespace Quorvan::dsp::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();
#endif  // HWY_AVX2

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
#if (HWY_TARGETS & HWY_AVX3) && (HWY_TARGETS & HWY_AVX2)
    static constexpr LevelKernels kWide{&N_AVX3::TakePeaks, &N_AVX2::FindSize,
                                        &N_AVX3::FindExtremes};
    if (HasInstructionSet(HWY_AVX3))
        return kWide;
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
