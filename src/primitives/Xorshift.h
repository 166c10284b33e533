#pragma once

#include <array>
#include <cstdint>

namespace Quorvan::prims {

/// Turns a 32-bit draw into a number in 0..1: 2^-32.
inline constexpr float kXorshiftScale = 2.3283064e-10f;

/// Moves a random state on by one step and answers it: G. Marsaglia, "Xorshift RNGs" (2003), with
/// the shifts 13, 17, 5. A state of 0 never leaves 0.
constexpr uint32_t XorshiftStep(uint32_t& state) {
    state ^= state << 13;
    state ^= state >> 17;
    state ^= state << 5;
    return state;
}

/// The next draw as a number in 0..1.
inline float XorshiftUniform(uint32_t& state) {
    return static_cast<float>(XorshiftStep(state)) * kXorshiftScale;
}

/// kSteps steps at once. A step is linear in the bits of the state, so that where many of them lead
/// is the sum, without carries, of where its bytes lead.
template <uint32_t kSteps>
class XorshiftLeap {
public:
    static uint32_t From(uint32_t state) {
        return kTable[0][state & 255u] ^ kTable[1][state >> 8 & 255u] ^
               kTable[2][state >> 16 & 255u] ^ kTable[3][state >> 24];
    }

private:
    using Table = std::array<std::array<uint32_t, 256>, 4>;

    static constexpr Table MakeTable() {
        Table table{};
        for (uint32_t byte = 0; byte < 4; ++byte) {
            for (uint32_t bit = 0; bit < 8; ++bit) {
                uint32_t state = uint32_t{1} << (8 * byte + bit);
                for (uint32_t step = 0; step < kSteps; ++step)
                    XorshiftStep(state);
                const uint32_t place = uint32_t{1} << bit;
                for (uint32_t below = 0; below < place; ++below)
                    table[byte][place + below] = table[byte][below] ^ state;
            }
        }
        return table;
    }

    static constexpr Table kTable = MakeTable();
};

}  // namespace Quorvan::prims
