#include "host/parameters/Sentence.h"

#include <algorithm>

namespace Quorvan::Host {

namespace {

/// Bytes of the letter that text begins with; 0 where it begins with none of UTF-8 that is shown.
size_t LetterBytes(std::string_view text) {
    const auto byte = [text](size_t i) {
        return i < text.size() ? static_cast<unsigned char>(text[i]) : 0u;
    };
    const unsigned first = byte(0), second = byte(1);
    if (first < 0x80)
        return first < 0x20 || first == 0x7f ? 0 : 1;
    // Second bytes that would make a control character, a longer form than needed, half of a pair
    // or more than there is.
    const unsigned lowest = first == 0xc2 || first == 0xe0 ? 0xa0 : (first == 0xf0 ? 0x90 : 0x80);
    const unsigned highest = first == 0xed ? 0x9f : (first == 0xf4 ? 0x8f : 0xbf);
    if (first < 0xc2 || first > 0xf4 || second < lowest || second > highest)
        return 0;
    const size_t count = first < 0xe0 ? 2 : (first < 0xf0 ? 3 : 4);
    for (size_t i = 2; i < count; ++i)
        if ((byte(i) & 0xc0) != 0x80)
            return 0;
    return count;
}

}  // namespace

std::string Visible(std::string_view text) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    std::string visible;
    visible.reserve(text.size());
    while (!text.empty()) {
        const size_t count = LetterBytes(text);
        const auto code = static_cast<unsigned char>(text.front());
        if (count > 0)
            visible += text.substr(0, count);
        else if (code == '\n')
            visible += "\\n";
        else if (code == '\t')
            visible += "\\t";
        else
            visible.append("\\x") += {kDigits[code >> 4], kDigits[code & 15]};
        text.remove_prefix(std::max<size_t>(count, 1));
    }
    return visible;
}

std::string Quoted(std::string_view text) { return '"' + Visible(text) + '"'; }

std::string Cited(const ParameterInfo& info) {
    return info.title == info.name ? Quoted(info.name)
                                   : Quoted(info.title) + " (" + info.name + ")";
}

std::string Alternatives(const std::vector<std::string>& names) {
    constexpr size_t kMost = 4;
    const bool cut = names.size() > kMost + 1;  // "one more" takes no less room than its name
    const size_t shown = cut ? kMost : names.size();
    std::string text;
    for (size_t i = 0; i < shown; ++i) {
        if (i > 0)
            text += i + 1 == names.size() ? " or " : ", ";
        text += Quoted(names[i]);
    }
    return cut ? text + " or " + std::to_string(names.size() - kMost) + " more" : text;
}

}  // namespace Quorvan::Host
