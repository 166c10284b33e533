#include "framework/ParameterNameSink.h"

#include <algorithm>
#include <charconv>

namespace Quorvan::dsp {

ParameterNameSink::ParameterNameSink(char* text, uint64_t size)
    : capacity(size), buffer(text), length(0), required(1) {
    buffer[0] = '\0';
}

void ParameterNameSink::Append(const char* text, uint64_t count) {
    const uint64_t taken = std::min(count, capacity - 1 - length);
    std::copy_n(text, taken, buffer + length);
    length += taken;
    required += count;
    buffer[length] = '\0';
}

void ParameterNameSink::AppendNumber(uint32_t number) {
    char digits[10];
    const auto end = std::to_chars(digits, digits + sizeof(digits), number).ptr;
    Append(digits, static_cast<uint64_t>(end - digits));
}

}  // namespace Quorvan::dsp
