#pragma once

#include <algorithm>
#include <bit>
#include <cstdint>

namespace Quorvan::dsp {

/// A row that holds one value for many blocks, and is written only where it does not hold it yet.
class HeldRow {
public:
    /// Writes value to the first count entries of row, always the same row.
    void Fill(float* row, uint32_t count, float value) {
        const auto wanted = std::bit_cast<uint32_t>(value);
        if (wanted == bits && count <= held)
            return;
        std::fill_n(row, count, value);
        bits = wanted;
        held = count;
    }
    /// Somebody else writes to the row.
    void Forget() { held = 0; }

private:
    uint32_t bits = 0;  ///< of the value
    uint32_t held = 0;  ///< so many entries have it
};

}  // namespace Quorvan::dsp
