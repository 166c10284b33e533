// Compiled once for each instruction set: the header below includes this file again for each.
#include "granular/GrainKernels.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "granular/GrainKernels.cpp"
// A set that brings nothing over its neighbour here.
#define HWY_DISABLED_TARGETS HWY_AVX3_DL
#include <hwy/foreach_target.h>  // NOLINT
#include <hwy/highway.h>

#include "granular/GrainKernels-inl.h"

#if HWY_ONCE

namespace Quorvan::dsp {

const GrainKernels& GrainKernels::Baseline() { return HWY_STATIC_DISPATCH(Table)(); }

// The library carries its own choice of the set, so that nothing needs to be linked for it.
const GrainKernels& GrainKernels::Best() {
#if HWY_ARCH_X86_64 && (defined(__GNUC__) || defined(__clang__))
    static const GrainKernels& best = []() -> const GrainKernels& {
        __builtin_cpu_init();
#if HWY_TARGETS & HWY_AVX3
        if (__builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512vl") &&
            __builtin_cpu_supports("avx512dq") && __builtin_cpu_supports("avx512bw") &&
            __builtin_cpu_supports("avx512cd") && __builtin_cpu_supports("bmi2"))
            return N_AVX3::Table();
#endif
#if HWY_TARGETS & HWY_AVX2
        if (__builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma") &&
            __builtin_cpu_supports("bmi") && __builtin_cpu_supports("bmi2"))
            return N_AVX2::Table();
#endif
#if HWY_TARGETS & HWY_SSE4
        if (__builtin_cpu_supports("sse4.2") && __builtin_cpu_supports("popcnt"))
            return N_SSE4::Table();
#endif
#if HWY_TARGETS & HWY_SSSE3
        if (__builtin_cpu_supports("ssse3"))
            return N_SSSE3::Table();
#endif
        return Baseline();
    }();
    return best;
#else
    return Baseline();
#endif
}

}  // namespace Quorvan::dsp

#endif  // HWY_ONCE
