#pragma once

#include <cstdlib>
#include <utility>

/// Exceptions, for builds with them and without: where the compiler has them off, as for the
/// browser, raising one ends the program.
namespace Quorvan {

/// Throws exception.
template <class Exception>
[[noreturn]] void Raise(Exception&& exception) {
#ifdef __cpp_exceptions
    throw std::forward<Exception>(exception);
#else
    static_cast<void>(exception);
    std::abort();
#endif
}

/// What body answers, or fallback where it throws anything.
template <class Answer, class Body>
Answer AnswerOr(Answer fallback, Body&& body) {
#ifdef __cpp_exceptions
    try {
        return std::forward<Body>(body)();
    } catch (...) {
        return fallback;
    }
#else
    static_cast<void>(fallback);
    return std::forward<Body>(body)();
#endif
}

}  // namespace Quorvan
