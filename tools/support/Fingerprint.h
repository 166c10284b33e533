#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace Quorvan::Tools {

/// A number of 64 bits that stands for texts and numbers: the same for the same ones in the same
/// order, and by chance for others once in 2^64. No protection against forgery.
///
/// Method  64-bit FNV-1a over the bytes, then the last step of splitmix64, so that all bits depend
///         on all bytes.
class Fingerprint {
public:
    Fingerprint& Add(std::string_view text);
    Fingerprint& Add(uint64_t number);

    uint64_t Value() const;
    /// Sixteen hexadecimal digits.
    std::string Text() const { return TextOf(Value()); }
    static std::string TextOf(uint64_t value);

private:
    uint64_t sum = 14695981039346656037u;
};

}  // namespace Quorvan::Tools
