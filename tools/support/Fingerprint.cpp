#include "tools/support/Fingerprint.h"

namespace Quorvan::Tools {

Fingerprint& Fingerprint::Add(std::string_view text) {
    Add(text.size());  // "ab", "c" is not "a", "bc"
    for (const char letter : text)
        sum = (sum ^ static_cast<unsigned char>(letter)) * 1099511628211u;
    return *this;
}

Fingerprint& Fingerprint::Add(uint64_t number) {
    for (int byte = 0; byte < 8; ++byte)
        sum = (sum ^ ((number >> (8 * byte)) & 0xff)) * 1099511628211u;
    return *this;
}

uint64_t Fingerprint::Value() const {
    uint64_t mixed = sum;
    mixed = (mixed ^ (mixed >> 30)) * 0xbf58476d1ce4e5b9u;
    mixed = (mixed ^ (mixed >> 27)) * 0x94d049bb133111ebu;
    return mixed ^ (mixed >> 31);
}

std::string Fingerprint::TextOf(uint64_t value) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    std::string text;
    for (int shift = 60; shift >= 0; shift -= 4)
        text += kDigits[(value >> shift) & 0xf];
    return text;
}

}  // namespace Quorvan::Tools
