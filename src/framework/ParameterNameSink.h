#pragma once

#include <cstdint>
#include <string_view>

namespace Quorvan::dsp {

/// Text sink for parameter names over a caller's buffer. It never fails: what does not fit is cut,
/// and counted all the same.
struct ParameterNameSink {
    uint64_t capacity;  ///< size of buffer in bytes, terminator included
    char* buffer;       ///< always terminated
    uint64_t length;    ///< characters held
    uint64_t required;  ///< characters that the whole text needs, terminator included

    /// An empty sink over buffer, which holds at least one byte.
    ParameterNameSink(char* buffer, uint64_t capacity);

    void Append(const char* text, uint64_t count);
    void Append(std::string_view text) { Append(text.data(), text.size()); }
    void AppendSeparator() { Append("_", 1); }
    /// Decimal digits, no sign, no padding.
    void AppendNumber(uint32_t number);
};

}  // namespace Quorvan::dsp
