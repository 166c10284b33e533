#include "plugins/claphost/Trap.h"

#include <dlfcn.h>
#include <execinfo.h>
#include <pthread.h>
#include <unistd.h>

#include <atomic>
#include <cstddef>

namespace Quorvan::ClapHost {

static std::atomic<uint64_t> caught{0};
static thread_local int depth = 0;

/// Of the functions below.
[[maybe_unused]] static void Count() {
    if (depth == 0)
        return;
    const int before = depth;
    depth = 0;
    if (caught++ == 0) {
        void* frames[24];
        backtrace_symbols_fd(frames, backtrace(frames, 24), STDERR_FILENO);
    }
    depth = before;
}

Trap::Trap() {
    // The first call of backtrace loads a library: ahead of any trap.
    void* frame = nullptr;
    [[maybe_unused]] static const int warm = backtrace(&frame, 1);
    ++depth;
}
Trap::~Trap() { --depth; }
bool Trap::IsSet() { return depth > 0; }
uint64_t Trap::Caught() { return caught; }

}  // namespace Quorvan::ClapHost

#if defined(CLAPHOST_NO_TRAP)
bool Quorvan::ClapHost::Trap::Works() { return false; }
#else
bool Quorvan::ClapHost::Trap::Works() { return true; }

using Quorvan::ClapHost::Count;

extern "C" {
void* __libc_malloc(size_t);
void* __libc_calloc(size_t, size_t);
void* __libc_realloc(void*, size_t);
void* __libc_memalign(size_t, size_t);
void __libc_free(void*);

void* malloc(size_t size) noexcept { return Count(), __libc_malloc(size); }
void* calloc(size_t count, size_t size) noexcept { return Count(), __libc_calloc(count, size); }
void* realloc(void* old, size_t size) noexcept { return Count(), __libc_realloc(old, size); }
void* aligned_alloc(size_t edge, size_t size) noexcept {
    return Count(), __libc_memalign(edge, size);
}
void free(void* memory) noexcept {
    if (memory != nullptr)
        Count();
    __libc_free(memory);
}
int pthread_mutex_lock(pthread_mutex_t* mutex) noexcept {
    using Lock = int (*)(pthread_mutex_t*);
    static std::atomic<Lock> next{nullptr};
    if (next == nullptr)
        next = reinterpret_cast<Lock>(dlsym(RTLD_NEXT, "pthread_mutex_lock"));
    Count();
    return next.load()(mutex);
}
}
#endif
