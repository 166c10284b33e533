#include "c/Guard.h"

#include <stdexcept>
#include <string>

namespace Quorvan::C {

namespace {

ErrorText& Keeper(const tesserae_processor* processor) noexcept {
    thread_local ErrorText ofThread;
    return processor != nullptr ? processor->error : ofThread;
}

}  // namespace

const ErrorText& ErrorOf(const tesserae_processor* processor) noexcept { return Keeper(processor); }

tesserae_result Fail(const tesserae_processor* processor, tesserae_result code,
                     std::string_view sentence) noexcept {
    Keeper(processor).Keep(sentence);
    return code;
}

tesserae_result FailForNull(const tesserae_processor* processor, const char* argument) noexcept {
    std::array<char, 128> sentence{};
    std::snprintf(sentence.data(), sentence.size(), "The argument \"%s\" may not be null.",
                  argument);
    return Fail(processor, TESSERAE_BAD_ARGUMENT, sentence.data());
}

tesserae_result FailForThrown(const tesserae_processor* processor) noexcept {
    try {
        throw;
    } catch (const std::bad_alloc&) {
        return Fail(processor, TESSERAE_NO_MEMORY,
                    "There is not enough memory; close something and try again.");
    } catch (const std::invalid_argument& error) {
        return Fail(processor, TESSERAE_BAD_ARGUMENT, error.what());
    } catch (const std::exception& error) {
        Keeper(processor).Keep(error.what());
        return TESSERAE_FAILED;
    } catch (...) {
        return Fail(processor, TESSERAE_FAILED, "Something failed inside the library.");
    }
}

}  // namespace Quorvan::C

const char* tesserae_error(const tesserae_processor* processor) {
    return Quorvan::C::ErrorOf(processor).Get();
}
