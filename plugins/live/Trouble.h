#pragma once

#include <string>

namespace Quorvan::Live {

inline constexpr int kUsage = 2, kCannotRead = 3, kCannotWrite = 4, kNoServer = 6;

/// What is thrown to end the program: its code, and a sentence for the user.
struct Trouble {
    int code;
    std::string sentence;
};

}  // namespace Quorvan::Live
