#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

namespace Quorvan::dsp {

/// Set of the numbers 0 .. N-1, one bit each. A walk over its members costs what the members cost,
/// not what N costs.
template <uint32_t N>
class IndexSet {
public:
    constexpr IndexSet() = default;

    static constexpr IndexSet All() {
        IndexSet set;
        for (uint32_t i = 0; i < N; ++i)
            set.Insert(i);
        return set;
    }
    static constexpr IndexSet Of(uint32_t index) {
        IndexSet set;
        set.Insert(index);
        return set;
    }
    /// The members are the bits of mask below N.
    static constexpr IndexSet FromMask(uint64_t mask) {
        static_assert(N <= kWordBits, "a mask is one word");
        IndexSet set;
        set.words[0] = mask & All().words[0];
        return set;
    }

    constexpr bool Contains(uint32_t index) const {
        return (words[index / kWordBits] >> (index % kWordBits) & 1) != 0;
    }
    constexpr void Insert(uint32_t index) { words[index / kWordBits] |= Bit(index); }
    constexpr void Remove(uint32_t index) { words[index / kWordBits] &= ~Bit(index); }
    constexpr void Put(uint32_t index, bool member) { member ? Insert(index) : Remove(index); }
    constexpr bool IsEmpty() const {
        uint64_t any = 0;
        for (const uint64_t word : words)
            any |= word;
        return any == 0;
    }

    constexpr IndexSet& operator|=(const IndexSet& other) {
        for (size_t w = 0; w < kWords; ++w)
            words[w] |= other.words[w];
        return *this;
    }
    constexpr bool operator==(const IndexSet&) const = default;

    /// Calls visit(index) for each member, in rising order.
    template <class Visit>
    constexpr void ForEach(Visit&& visit) const {
        for (size_t w = 0; w < kWords; ++w)
            for (uint64_t rest = words[w]; rest != 0; rest &= rest - 1)
                visit(static_cast<uint32_t>(w * kWordBits) +
                      static_cast<uint32_t>(std::countr_zero(rest)));
    }

private:
    static constexpr uint32_t kWordBits = 64;
    static constexpr size_t kWords = (N + kWordBits - 1) / kWordBits;

    static constexpr uint64_t Bit(uint32_t index) { return uint64_t{1} << (index % kWordBits); }

    std::array<uint64_t, kWords> words{};
};

}  // namespace Quorvan::dsp
