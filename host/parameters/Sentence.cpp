#include "host/parameters/Sentence.h"

#include <algorithm>

namespace Quorvan::Host {

std::string Visible(std::string_view text) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    std::string visible;
    visible.reserve(text.size());
    for (const char letter : text) {
        const auto code = static_cast<unsigned char>(letter);
        if (letter == '\n')
            visible += "\\n";
        else if (letter == '\t')
            visible += "\\t";
        else if (code < 0x20 || code == 0x7f)
            visible.append("\\x") += {kDigits[code >> 4], kDigits[code & 15]};
        else
            visible += letter;
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
