#pragma once

#include <cstddef>
#include <new>
#include <vector>

namespace Quorvan::dsp {

/// Allocator whose memory starts on a cache line, so that vector loops meet no split loads.
template <class T>
struct AlignedAllocator {
    static constexpr std::align_val_t kAlignment{64};
    using value_type = T;

    AlignedAllocator() = default;
    template <class U>
    AlignedAllocator(const AlignedAllocator<U>&) {}

    T* allocate(size_t count) {
        return static_cast<T*>(::operator new(count * sizeof(T), kAlignment));
    }
    void deallocate(T* memory, size_t) { ::operator delete(memory, kAlignment); }

    template <class U>
    bool operator==(const AlignedAllocator<U>&) const {
        return true;
    }
};

/// Float buffer for block processing.
using AlignedVector = std::vector<float, AlignedAllocator<float>>;

}  // namespace Quorvan::dsp
