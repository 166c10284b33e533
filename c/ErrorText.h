#pragma once

#include <array>
#include <string_view>

namespace Quorvan::C {

/// Keeps the sentence of the last failure, in room of its own: nothing is allocated.
class ErrorText {
public:
    /// What is too long is cut where a letter begins.
    void Keep(std::string_view sentence) noexcept;
    const char* Get() const noexcept { return text.data(); }

private:
    std::array<char, 1024> text{};
};

}  // namespace Quorvan::C
