#include "c/CallerText.h"

#include <algorithm>
#include <string>

#include "c/Guard.h"

namespace Quorvan::C {

tesserae_result GiveText(const tesserae_processor* processor, std::string_view content, char* text,
                         size_t size) {
    if (text == nullptr)
        return FailForNull(processor, "text");
    const size_t length = size == 0 ? 0 : std::min(content.size(), size - 1);
    std::copy_n(content.data(), length, text);
    if (size != 0)
        text[length] = '\0';
    return size > content.size()
               ? tesserae_result{TESSERAE_OK}
               : Fail(processor, TESSERAE_NO_ROOM,
                      "The text needs " + std::to_string(content.size() + 1) +
                          " bytes with the zero at its end; bring a larger buffer.");
}

tesserae_result FailForIndex(const tesserae_processor* processor) noexcept {
    return Fail(processor, TESSERAE_BAD_ARGUMENT,
                "There is no parameter of that number; they go from 0 up to below "
                "tesserae_parameter_count().");
}

tesserae_result FailForSize(const tesserae_processor* processor) noexcept {
    return Fail(processor, TESSERAE_BAD_ARGUMENT,
                "The record's \"size\" is too small; set it to the sizeof of the record ahead of "
                "the call.");
}

}  // namespace Quorvan::C
