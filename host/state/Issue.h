#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace Quorvan::Host {

/// One thing that is wrong with a text: a sentence that names it and says what to do or what was
/// done.
struct Issue {
    enum class Severity : uint8_t {
        Warning,  ///< that piece was mended or left out
        Error     ///< nothing could be read
    };

    Severity severity = Severity::Warning;
    std::string text;
};

/// What came of reading a text. value is empty where an issue is an error.
template <class T>
struct Parsed {
    std::optional<T> value;
    std::vector<Issue> issues;
};

}  // namespace Quorvan::Host
