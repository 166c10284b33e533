#pragma once

#include <cstddef>
#include <nlohmann/json.hpp>
#include <string_view>

namespace Quorvan::Host {

/// What is wrong with a text that is no JSON, found by reading it once more and keeping nothing.
struct JsonFault {
    size_t byte = 0;          ///< where, counted from 1
    bool isTooLarge = false;  ///< it is a number beyond what a double holds

    static JsonFault In(std::string_view text);
};

}  // namespace Quorvan::Host
