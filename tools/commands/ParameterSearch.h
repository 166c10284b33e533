#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/parameters/PresentSettings.h"

namespace Quorvan::Tools {

/// Finds parameters by a piece of what people call them or of their full names.
class ParameterSearch {
public:
    /// text is empty for all of them. Both others have to outlive the search.
    ParameterSearch(const std::string& text, const Host::ParameterCatalog& catalog,
                    const Host::PresentSettings& settings);

    /// How well a parameter fits, 0 best; nothing where it does not.
    std::optional<int> Rank(const Host::ParameterInfo& info) const;

private:
    std::optional<int> RankOfNames(const Host::ParameterInfo& info) const;
    bool HoldsAllWords(const Host::ParameterInfo& info) const;

    const Host::ParameterCatalog& catalog;
    std::string wanted;              ///< in lower case
    std::string bare;                ///< without blanks and signs too
    std::vector<std::string> words;  ///< of wanted
    std::optional<uint32_t> meant;   ///< the parameter that goes by just this name
    bool wantsCells = false;
};

}  // namespace Quorvan::Tools
