#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <new>

// Replaces new and delete of the whole program: for one source file of it.

namespace Quorvan::test {

/// Counts the allocations and releases of its thread while it lives.
class AllocationTrap {
public:
    AllocationTrap() : before(current) { current = this; }
    ~AllocationTrap() { current = before; }
    AllocationTrap(const AllocationTrap&) = delete;
    AllocationTrap& operator=(const AllocationTrap&) = delete;

    static void* Allocate(size_t size, size_t alignment = alignof(std::max_align_t)) {
        Count();
        void* const memory =
            std::aligned_alloc(alignment, (size + alignment - 1) / alignment * alignment);
        if (memory == nullptr)
            throw std::bad_alloc();
        return memory;
    }
    static void Release(void* memory) {
        if (memory != nullptr)
            Count();
        std::free(memory);
    }

    uint64_t caught = 0;

private:
    static void Count() {
        if (current != nullptr)
            ++current->caught;
    }

    static inline thread_local AllocationTrap* current = nullptr;
    AllocationTrap* before;
};

}  // namespace Quorvan::test

// Arrays come down to these by the standard. Under a sanitizer the forms that don't throw would
// not.
void* operator new(size_t size) { return Quorvan::test::AllocationTrap::Allocate(size); }
void* operator new(size_t size, std::align_val_t alignment) {
    return Quorvan::test::AllocationTrap::Allocate(size, static_cast<size_t>(alignment));
}
void* operator new(size_t size, const std::nothrow_t&) noexcept {
    return Quorvan::test::AllocationTrap::Allocate(size);
}
void* operator new(size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
    return Quorvan::test::AllocationTrap::Allocate(size, static_cast<size_t>(alignment));
}
void operator delete(void* memory) noexcept { Quorvan::test::AllocationTrap::Release(memory); }
void operator delete(void* memory, size_t) noexcept {
    Quorvan::test::AllocationTrap::Release(memory);
}
void operator delete(void* memory, std::align_val_t) noexcept {
    Quorvan::test::AllocationTrap::Release(memory);
}
void operator delete(void* memory, size_t, std::align_val_t) noexcept {
    Quorvan::test::AllocationTrap::Release(memory);
}
