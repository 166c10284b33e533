#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>

namespace Quorvan::dsp {

/// Samples for long lines, all zero at first. The system zeroes the memory, page by page as each is
/// first written: what nothing writes to takes none.
class ZeroedArray {
public:
    ZeroedArray() = default;
    ~ZeroedArray() { Release(); }
    ZeroedArray(const ZeroedArray& other) { *this = other; }
    ZeroedArray& operator=(const ZeroedArray& other) {
        if (this == &other)
            return *this;
        Allocate(other.count);
        std::copy_n(other.data(), count, data());
        return *this;
    }
    ZeroedArray(ZeroedArray&& other) noexcept { Swap(other); }
    ZeroedArray& operator=(ZeroedArray&& other) noexcept {
        Swap(other);
        return *this;
    }

    /// Throws std::bad_alloc.
    void Allocate(size_t samples);
    /// Zeroes samples first..end - 1, and writes only where something stands.
    void Zero(size_t first, size_t end) {
        constexpr size_t kPiece = 1024;  // a page
        for (size_t at = first; at < end; at += kPiece) {
            const size_t length = std::min(kPiece, end - at);
            if (!IsZero(data() + at, length))
                std::fill_n(data() + at, length, 0.0f);
        }
    }
    void Swap(ZeroedArray& other) noexcept {
        std::swap(memory, other.memory);
        std::swap(count, other.count);
        std::swap(pages, other.pages);
    }

    size_t size() const { return count; }
    float* data() { return memory; }
    const float* data() const { return memory; }
    float* begin() { return data(); }
    const float* begin() const { return data(); }
    float* end() { return data() + count; }
    const float* end() const { return data() + count; }
    float& operator[](size_t i) { return memory[i]; }
    const float& operator[](size_t i) const { return memory[i]; }

private:
    /// To the bit: not even a negative zero.
    static bool IsZero(const float* samples, size_t length) {
        uint32_t bits = 0;
        for (size_t i = 0; i < length; ++i) {
            uint32_t one;
            std::memcpy(&one, samples + i, sizeof one);
            bits |= one;
        }
        return bits == 0;
    }

    void Release();

    float* memory = nullptr;
    size_t count = 0;
    size_t pages = 0;  ///< bytes, where the memory comes from the system's pages
};

}  // namespace Quorvan::dsp
