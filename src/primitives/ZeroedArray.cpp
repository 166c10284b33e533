#include "primitives/ZeroedArray.h"

#include <cstdlib>
#include <new>

#include "basictools/Raise.h"

#if defined(__unix__) && !defined(__SANITIZE_ADDRESS__)
#include <sys/mman.h>
#define TESSERAE_HAS_PAGES 1
#endif

namespace Quorvan::dsp {

namespace {

#ifdef TESSERAE_HAS_PAGES
/// From this size on, in bytes, memory comes page by page. A C library's calloc may hand out what
/// has been used before and zero it, all of it, itself.
constexpr size_t kPaged = 64 << 10;
#endif

}  // namespace

void ZeroedArray::Allocate(size_t samples) {
    Release();
#ifdef TESSERAE_HAS_PAGES
    if (const size_t bytes = samples * sizeof(float); bytes >= kPaged) {
        void* const mapped =
            mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (mapped == MAP_FAILED)
            Raise(std::bad_alloc());
        memory = static_cast<float*>(mapped);
        pages = bytes;
        count = samples;
        return;
    }
#endif
    memory = static_cast<float*>(std::calloc(samples + 1, sizeof(float)));
    if (memory == nullptr)
        Raise(std::bad_alloc());
    count = samples;
}

void ZeroedArray::Release() {
#ifdef TESSERAE_HAS_PAGES
    if (pages > 0)
        munmap(memory, pages);
    else
#endif
        std::free(memory);
    memory = nullptr;
    count = pages = 0;
}

}  // namespace Quorvan::dsp
