#include "c/ErrorText.h"

#include <algorithm>

namespace Quorvan::C {

void ErrorText::Keep(std::string_view sentence) noexcept {
    size_t length = std::min(sentence.size(), text.size() - 1);
    const auto continues = [&] { return (static_cast<unsigned char>(sentence[length]) >> 6) == 2; };
    while (length > 0 && length < sentence.size() && continues())
        --length;
    std::copy_n(sentence.data(), length, text.data());
    text[length] = '\0';
}

}  // namespace Quorvan::C
