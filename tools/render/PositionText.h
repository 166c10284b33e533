#pragma once

#include <optional>
#include <string_view>

#include "host/parameters/PresentSettings.h"

namespace Quorvan::Tools {

/// The position that a user asks for: a bare number is a position from 0 to 1, anything else a
/// value as the catalog reads it, "120 ms" or "Texture". The problem, where there is one, is a
/// sentence.
Host::TextResult ReadPosition(const Host::ParameterCatalog& catalog, uint32_t index,
                              std::string_view text, const Host::TextContext& context);

/// The parameter that a name means with these settings (ParameterCatalog::Resolve), where a user
/// may write it; else a sentence says what to do.
struct NamedParameter {
    std::optional<uint32_t> index;
    std::string problem;
};
NamedParameter FindWritable(const Host::ParameterCatalog& catalog, std::string_view name,
                            const Host::PresentSettings& settings);

/// text as a number, whatever the locale; nothing where it is something else.
std::optional<double> PlainNumber(std::string_view text);

}  // namespace Quorvan::Tools
