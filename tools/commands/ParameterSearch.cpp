#include "tools/commands/ParameterSearch.h"

#include <algorithm>
#include <sstream>

#include "host/parameters/NameDistance.h"
#include "host/parameters/NumberText.h"

namespace Quorvan::Tools {

namespace {

bool Holds(const std::string& text, const std::string& piece) {
    return text.find(piece) != std::string::npos;
}

}  // namespace

ParameterSearch::ParameterSearch(const std::string& text, const Host::ParameterCatalog& parameters,
                                 const Host::PresentSettings& settings)
    : catalog(parameters),
      wanted(Host::Lower(Host::Trim(text))),
      bare(Host::BareName(wanted)),
      meant(parameters.Resolve(wanted, settings)),
      // The matrix has seven cells for everything that can be modulated: only "X to Y" asks for
      // those.
      wantsCells(wanted.empty() || Holds(wanted + " ", " to ") || Holds(wanted, "modulation")) {
    std::istringstream stream(wanted);
    for (std::string word; stream >> word;)
        words.push_back(word);
}

std::optional<int> ParameterSearch::Rank(const Host::ParameterInfo& info) const {
    constexpr int kBehind = 10;  // what can't be set stands behind all that can
    if (wanted.empty() || info.index == meant)
        return 0;
    const std::optional<int> rank = RankOfNames(info);
    const bool isFree =
        info.role == Host::ParameterRole::Setting || info.role == Host::ParameterRole::Control;
    return rank && !isFree ? std::optional(*rank + kBehind) : rank;
}

std::optional<int> ParameterSearch::RankOfNames(const Host::ParameterInfo& info) const {
    const bool named = Holds(Host::Lower(info.name), wanted);
    if (!wantsCells && info.group == "Modulation")
        return named ? std::optional(6) : std::nullopt;
    // Signs alone, such as "/", are found as they stand, in full names.
    if (!bare.empty()) {
        const std::string label = Host::BareName(info.label);
        if (Host::BareName(catalog.CommonName(info.index)) == bare)
            return 1;
        if (label == bare)
            return 2;
        if (label.starts_with(bare))
            return 3;
        if (Holds(label, bare))
            return 4;
        if (Holds(Host::BareName(info.group) + label, bare))
            return 5;
    }
    if (named)
        return 6;
    return HoldsAllWords(info) ? std::optional(7) : std::nullopt;
}

bool ParameterSearch::HoldsAllWords(const Host::ParameterInfo& info) const {
    const std::string all = Host::Lower(info.group + " " + info.label + " " + info.name);
    return std::all_of(words.begin(), words.end(),
                       [&](const std::string& word) { return Holds(all, word); });
}

}  // namespace Quorvan::Tools
