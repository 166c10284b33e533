#pragma once

#include <cstdint>

#if defined(__SSE2__) || defined(_M_X64)
#include <xmmintrin.h>
#endif

namespace Quorvan::Processor {

/// Flushes denormal numbers to zero while it lives, and gives the caller's floating-point mode back
/// at its end.
class DenormalGuard {
public:
    DenormalGuard() : saved(Read()) { Write(saved | kFlush); }
    ~DenormalGuard() { Write(saved); }
    DenormalGuard(const DenormalGuard&) = delete;
    DenormalGuard& operator=(const DenormalGuard&) = delete;

private:
#if defined(__SSE2__) || defined(_M_X64)
    using Mode = uint32_t;
    static constexpr Mode kFlush = 0x8040;  // results and operands
    static Mode Read() { return _mm_getcsr(); }
    static void Write(Mode mode) { _mm_setcsr(mode); }
#elif defined(__aarch64__)
    using Mode = uint64_t;
    static constexpr Mode kFlush = Mode{1} << 24;
    static Mode Read() {
        Mode mode;
        __asm__ volatile("mrs %0, fpcr" : "=r"(mode));
        return mode;
    }
    static void Write(Mode mode) { __asm__ volatile("msr fpcr, %0" : : "r"(mode)); }
#else
    using Mode = uint32_t;
    static constexpr Mode kFlush = 0;
    static Mode Read() { return 0; }
    static void Write(Mode) {}
#endif

    Mode saved;
};

}  // namespace Quorvan::Processor
