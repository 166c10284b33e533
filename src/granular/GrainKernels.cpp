// Compiled once for each instruction set: the header below includes this file again for each.
#include "granular/GrainKernels.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "granular/GrainKernels.cpp"
// A set that brings nothing over its neighbour here, those whose vectors have no fixed size and so
// cannot be members, and one that knows no doubles: there the compiler makes vectors of plain
// loops.
#define HWY_DISABLED_TARGETS \
    (HWY_AVX3_DL | HWY_SVE | HWY_SVE2 | HWY_SVE_256 | HWY_SVE2_128 | HWY_RVV | HWY_WASM)
#include <hwy/foreach_target.h>  // NOLINT
#include <hwy/highway.h>

#include "granular/GrainKernels-inl.h"

#if HWY_ONCE

#include <array>

#include "primitives/InstructionSets.h"

namespace Quorvan::dsp {

namespace {

struct KernelList {
    std::array<const GrainKernels*, 5> entries{};
    size_t count = 0;

    void Add(const GrainKernels& kernels) { entries[count++] = &kernels; }
};

KernelList FindSupported() {
    KernelList list;
#if HWY_TARGETS & HWY_AVX3
    if (HasInstructionSet(HWY_AVX3))
        list.Add(N_AVX3::Table());
#endif
#if HWY_TARGETS & HWY_AVX2
    if (HasInstructionSet(HWY_AVX2))
        list.Add(N_AVX2::Table());
#endif
#if HWY_TARGETS & HWY_SSE4
    if (HasInstructionSet(HWY_SSE4))
        list.Add(N_SSE4::Table());
#endif
#if HWY_TARGETS & HWY_SSSE3
    if (HasInstructionSet(HWY_SSSE3))
        list.Add(N_SSSE3::Table());
#endif
    list.Add(HWY_STATIC_DISPATCH(Table)());
    return list;
}

}  // namespace

std::span<const GrainKernels* const> GrainKernels::Supported() {
    static const KernelList list = FindSupported();
    return {list.entries.data(), list.count};
}

}  // namespace Quorvan::dsp

#endif  // HWY_ONCE
