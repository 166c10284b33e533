#pragma once

#include <exception>
#include <new>
#include <string_view>
#include <utility>

#include "c/Processor.h"
#include "c/tesserae.h"

/// What every function of the C face runs inside: nothing is thrown through it, and what fails
/// leaves a sentence.
namespace Quorvan::C {

/// Keeps a sentence, with processor or, where that is null, for the calling thread; answers code.
tesserae_result Fail(const tesserae_processor* processor, tesserae_result code,
                     std::string_view sentence) noexcept;
/// The sentence for a null argument of that name.
tesserae_result FailForNull(const tesserae_processor* processor, const char* argument) noexcept;
/// What has just been thrown, as a code and a sentence. From inside a handler only.
tesserae_result FailForThrown(const tesserae_processor* processor) noexcept;
const ErrorText& ErrorOf(const tesserae_processor* processor) noexcept;

/// Runs body, which answers a result.
template <class Body>
tesserae_result Guarded(const tesserae_processor* processor, Body&& body) noexcept {
    try {
        return std::forward<Body>(body)();
    } catch (...) {
        return FailForThrown(processor);
    }
}

/// The same for a function that needs a processor.
template <class Body>
tesserae_result WithProcessor(const tesserae_processor* processor, Body&& body) noexcept {
    return processor == nullptr ? FailForNull(nullptr, "processor")
                                : Guarded(processor, std::forward<Body>(body));
}

/// The same for one that needs it prepared.
template <class Body>
tesserae_result WithPrepared(const tesserae_processor* processor, Body&& body) noexcept {
    if (processor != nullptr && !processor->prepared)
        return Fail(processor, TESSERAE_NOT_PREPARED,
                    "The processor does not know its sample rate yet; call tesserae_prepare "
                    "first.");
    return WithProcessor(processor, std::forward<Body>(body));
}

/// Runs a body that answers something else, with no processor: fallback where it throws.
template <class Body, class Fallback>
auto GuardedOr(Fallback fallback, Body&& body) noexcept -> decltype(body()) {
    try {
        return std::forward<Body>(body)();
    } catch (...) {
        FailForThrown(nullptr);
        return fallback;
    }
}

}  // namespace Quorvan::C
