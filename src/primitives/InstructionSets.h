#pragma once

#include <hwy/detect_targets.h>

#include <cstdint>

namespace Quorvan::dsp {

/// Whether this machine has all that code compiled for one of the wider sets (HWY_AVX3 and so on)
/// may ask for. The library makes this choice itself, so that nothing needs to be linked for it.
inline bool HasInstructionSet(int64_t target) {
#if HWY_ARCH_X86_64 && (defined(__GNUC__) || defined(__clang__))
    __builtin_cpu_init();
    switch (target) {
        case HWY_AVX3:
            return __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512vl") &&
                   __builtin_cpu_supports("avx512dq") && __builtin_cpu_supports("avx512bw") &&
                   __builtin_cpu_supports("avx512cd") && __builtin_cpu_supports("bmi2");
        case HWY_AVX2:
            return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma") &&
                   __builtin_cpu_supports("bmi") && __builtin_cpu_supports("bmi2");
        case HWY_SSE4:
            return __builtin_cpu_supports("sse4.2") && __builtin_cpu_supports("popcnt");
        case HWY_SSSE3:
            return __builtin_cpu_supports("ssse3");
        default:
            return false;
    }
#else
    return target < 0;  // none
#endif
}

}  // namespace Quorvan::dsp
