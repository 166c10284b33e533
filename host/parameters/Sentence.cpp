#include "host/parameters/Sentence.h"

#include <algorithm>

namespace Quorvan::Host {

std::string Quoted(std::string_view text) {
    std::string quoted;
    quoted.reserve(text.size() + 2);
    quoted += '"';
    quoted += text;
    quoted += '"';
    return quoted;
}

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
