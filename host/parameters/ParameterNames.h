#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <variant>
#include <vector>

#include "host/parameters/LabelFamily.h"
#include "host/parameters/ParameterInfo.h"
#include "host/parameters/SlotEffects.h"

namespace Quorvan::Host {

class PresentSettings;

/// How a list outside its group calls what has this label: "FX1 Delay Feedback". Labels of the
/// instrument itself stand alone: "Spray".
std::string TitleOf(const std::string& group, const std::string& label);

/// What people may call the parameters. ParameterCatalog.h tells the order in which names count.
class ParameterNames {
public:
    /// destinations names the rows of modulation and the parameters that they move in a new
    /// processor. infos has to outlive this.
    struct Destination {
        std::string name;
        uint32_t target = 0;
    };
    ParameterNames(std::span<const ParameterInfo> infos,
                   const std::vector<Destination>& destinations);
    ParameterNames(const ParameterNames&) = delete;
    ParameterNames& operator=(const ParameterNames&) = delete;

    /// By full name only.
    std::optional<uint32_t> Find(std::string_view name) const;
    /// By any name. Nothing where nobody or more than one has it.
    std::optional<uint32_t> Resolve(std::string_view name, const PresentSettings& settings) const;
    /// Why Resolve finds nothing.
    std::string Problem(std::string_view name) const;
    /// The row of modulation that moves what has this name.
    std::optional<uint32_t> FindRow(std::string_view name) const;
    /// The names most like a mistyped one.
    std::vector<std::string> Nearest(std::string_view name, size_t count) const;
    /// The family of a parameter, null where it has none.
    const LabelFamily* FamilyOf(uint32_t index) const;
    /// Whether it decides which member of a family is in force, or which effect a slot holds.
    bool IsSelector(uint32_t index) const { return isSelector[index]; }

private:
    /// A parameter, or the member of a family that is in force.
    using Meaning = std::variant<uint32_t, const LabelFamily*>;
    /// Meanings under names without case, blanks and signs, "_" among them.
    using Index = std::unordered_map<std::string, std::vector<Meaning>>;

    void AddFamilies();
    void AddParameters();
    void AddTitle(const std::string& group, const std::string& label, Meaning meaning);
    void AddDestination(const Destination& destination);
    Meaning MeaningOf(const Destination& destination) const;
    void CollectSuggestions();
    std::vector<std::string> NearestToFull(const std::string& typed, size_t count) const;
    /// How near to the heart of the instrument a meaning is, 0 nearest.
    int RankOf(const Meaning& meaning) const;
    void KeepNearest(std::vector<Meaning>& meanings) const;
    const SlotEffects::Effect* EffectOf(const Meaning& meaning) const;
    const Meaning* OnlyOne(const std::vector<Meaning>& meanings,
                           const PresentSettings& settings) const;
    const std::vector<Meaning>& MeaningsOf(std::string_view name) const;
    std::vector<std::string> HeartNamesThatEndWith(const std::string& word) const;
    std::string TitleOfMeaning(const Meaning& meaning) const;

    std::span<const ParameterInfo> infos;
    std::unordered_map<std::string, uint32_t> fullNames;  ///< in lower case
    SlotEffects effects;
    std::vector<LabelFamily> families;
    Index titles;        ///< group and label
    Index labels;        ///< labels alone, and names of destinations
    Index effectTitles;  ///< titles without "FX1" and "FX2": one meaning for each slot
    std::vector<Meaning> rows;
    std::vector<bool> isSelector;
    // Candidates for typos, settings first; cells of the matrix only where one is meant.
    std::vector<std::string> titleSuggestions, fullSuggestions;
    std::vector<std::string> cellTitles, cellNames;
};

}  // namespace Quorvan::Host
