#pragma once

#include <exception>
#include <string>

namespace Quorvan::MappingTools {

/// The one exception type of this library: a message and where it was thrown. Only constructors
/// throw it.
class CException : public std::exception {
public:
    CException(const std::string& message, const std::string& file, int line);

    /// The text "message(file:line)".
    const char* what() const noexcept override { return text.c_str(); }

private:
    std::string text;
};

}  // namespace Quorvan::MappingTools
