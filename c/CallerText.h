#pragma once

#include <string_view>

#include "c/tesserae.h"

/// What goes through memory that the caller brings.
namespace Quorvan::C {

/// Copies content with its zero into a caller's size bytes, cut where it is longer.
tesserae_result GiveText(const tesserae_processor* processor, std::string_view content, char* text,
                         size_t size);

/// For a parameter's number beyond the last. [audio]
tesserae_result FailForIndex(const tesserae_processor* processor) noexcept;
/// For a record whose size is not set. [audio]
tesserae_result FailForSize(const tesserae_processor* processor) noexcept;

}  // namespace Quorvan::C
