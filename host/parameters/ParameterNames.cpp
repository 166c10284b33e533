#include "host/parameters/ParameterNames.h"

#include <algorithm>

#include "host/parameters/NameDistance.h"
#include "host/parameters/NumberText.h"
#include "host/parameters/PresentSettings.h"
#include "host/parameters/Sentence.h"

namespace Quorvan::Host {

namespace {

constexpr std::string_view kHeart = "Granular";
constexpr std::string_view kMain = "Main";
constexpr std::string_view kMatrix = "Modulation";
constexpr char kFullNameSign = '_';  // in no title, and in most full names
constexpr size_t kSlotWidth = 3;     // of "FX1"

bool LooksFull(std::string_view name) { return name.find(kFullNameSign) != std::string_view::npos; }

bool IsFree(const ParameterInfo& info) {
    return info.role == ParameterRole::Setting || info.role == ParameterRole::Control;
}

}  // namespace

std::string TitleOf(const std::string& group, const std::string& label) {
    return group == kHeart || group == kMain || group == kMatrix ? label : group + " " + label;
}

ParameterNames::ParameterNames(std::span<const ParameterInfo> parameters,
                               const std::vector<Destination>& destinations)
    : infos(parameters), effects(parameters), isSelector(parameters.size(), false) {
    for (const ParameterInfo& info : infos)
        fullNames.emplace(Lower(info.name), info.index);
    AddFamilies();
    AddParameters();
    for (auto& [name, meanings] : labels)
        KeepNearest(meanings);
    for (const Destination& destination : destinations)
        AddDestination(destination);
    CollectSuggestions();
}

void ParameterNames::AddFamilies() {
    families = BuildLabelFamilies([this](std::string_view name) { return Find(name); });
    for (const LabelFamily& family : families) {
        AddTitle(family.group, family.label, &family);
        labels[BareName(family.label)].push_back(&family);
        for (const LabelFamily::Case& oneCase : family.cases)
            for (const LabelFamily::Condition& condition : oneCase.conditions)
                isSelector[condition.selector] = true;
    }
}

void ParameterNames::AddParameters() {
    for (const ParameterInfo& info : infos) {
        AddTitle(info.group, info.label, info.index);
        labels[BareName(info.label)].push_back(info.index);
        if (const auto& effect = effects.Of(info.index))
            isSelector[effect->selector] = true;
    }
}

void ParameterNames::AddTitle(const std::string& group, const std::string& label, Meaning meaning) {
    titles[BareName(group + label)].push_back(meaning);
    if (EffectOf(meaning) != nullptr)
        effectTitles[BareName(group.substr(kSlotWidth) + label)].push_back(meaning);
}

/// A row that follows the modes moves a family. The first case of a family is never that of a new
/// processor, so a row that moves its member then moves nothing else.
ParameterNames::Meaning ParameterNames::MeaningOf(const Destination& destination) const {
    const LabelFamily* const family = FamilyOf(destination.target);
    if (family == nullptr || family->cases.front().member == destination.target)
        return destination.target;
    return family;
}

void ParameterNames::AddDestination(const Destination& destination) {
    rows.push_back(MeaningOf(destination));
    const std::string bare = BareName(destination.name);
    if (titles.contains(bare) || labels.contains(bare))
        return;
    labels[bare].push_back(rows.back());
    if (EffectOf(rows.back()) != nullptr)
        effectTitles[bare.substr(kSlotWidth)].push_back(rows.back());
}

void ParameterNames::CollectSuggestions() {
    for (const LabelFamily& family : families)
        titleSuggestions.push_back(TitleOf(family.group, family.label));
    for (const bool settings : {true, false}) {
        for (const ParameterInfo& info : infos) {
            const bool isCell = info.group == kMatrix;
            if ((info.role == ParameterRole::Setting) != settings)
                continue;
            (isCell ? cellTitles : titleSuggestions).push_back(info.title);
            (isCell ? cellNames : fullSuggestions).push_back(info.name);
        }
    }
}

int ParameterNames::RankOf(const Meaning& meaning) const {
    const uint32_t* const index = std::get_if<uint32_t>(&meaning);
    if (index != nullptr && !IsFree(infos[*index]))
        return 3;
    const std::string& group =
        index != nullptr ? infos[*index].group : std::get<const LabelFamily*>(meaning)->group;
    return group == kHeart ? 0 : group == kMain ? 1 : 2;
}

void ParameterNames::KeepNearest(std::vector<Meaning>& meanings) const {
    int best = RankOf(meanings.front());
    for (const Meaning& meaning : meanings)
        best = std::min(best, RankOf(meaning));
    std::erase_if(meanings, [&](const Meaning& meaning) { return RankOf(meaning) != best; });
}

std::optional<uint32_t> ParameterNames::Find(std::string_view name) const {
    const auto found = fullNames.find(Lower(Trim(name)));
    return found == fullNames.end() ? std::nullopt : std::optional(found->second);
}

const std::vector<ParameterNames::Meaning>& ParameterNames::MeaningsOf(
    std::string_view name) const {
    static const std::vector<Meaning> none;
    const std::string bare = BareName(name);
    for (const Index* index : {&titles, &labels, &effectTitles})
        if (const auto found = index->find(bare); found != index->end())
            return found->second;
    return none;
}

std::optional<uint32_t> ParameterNames::Resolve(std::string_view name,
                                                const PresentSettings& settings) const {
    if (const std::optional<uint32_t> index = Find(name))
        return index;
    const Meaning* const meaning = OnlyOne(MeaningsOf(name), settings);
    if (meaning == nullptr)
        return std::nullopt;
    const uint32_t* const index = std::get_if<uint32_t>(meaning);
    const auto choiceOf = [&](uint32_t selector) { return settings.Choice(selector); };
    return index != nullptr ? *index : std::get<const LabelFamily*>(*meaning)->InForce(choiceOf);
}

const SlotEffects::Effect* ParameterNames::EffectOf(const Meaning& meaning) const {
    const uint32_t* const index = std::get_if<uint32_t>(&meaning);
    const auto& effect = effects.Of(
        index != nullptr ? *index : std::get<const LabelFamily*>(meaning)->cases.front().member);
    return effect ? &*effect : nullptr;
}

/// The single one, or of several parameters of effects the one whose effect is in its slot.
const ParameterNames::Meaning* ParameterNames::OnlyOne(const std::vector<Meaning>& meanings,
                                                       const PresentSettings& settings) const {
    if (meanings.size() == 1)
        return &meanings.front();
    const Meaning* held = nullptr;
    for (const Meaning& meaning : meanings) {
        const SlotEffects::Effect* const effect = EffectOf(meaning);
        if (effect == nullptr)
            return nullptr;
        if (settings.Choice(effect->selector) != effect->choice)
            continue;
        if (held != nullptr)
            return nullptr;
        held = &meaning;
    }
    return held;
}

std::optional<uint32_t> ParameterNames::FindRow(std::string_view name) const {
    const std::optional<uint32_t> index = Find(name);
    const std::vector<Meaning> meanings = index ? std::vector<Meaning>{*index} : MeaningsOf(name);
    if (meanings.size() != 1)
        return std::nullopt;
    auto found = std::find(rows.begin(), rows.end(), meanings.front());
    if (const auto* member = std::get_if<uint32_t>(&meanings.front());
        found == rows.end() && member != nullptr)
        found = std::find(rows.begin(), rows.end(), Meaning(FamilyOf(*member)));
    return found == rows.end() ? std::nullopt
                               : std::optional(static_cast<uint32_t>(found - rows.begin()));
}

const LabelFamily* ParameterNames::FamilyOf(uint32_t index) const {
    const auto found = std::find_if(families.begin(), families.end(),
                                    [&](const LabelFamily& family) { return family.Holds(index); });
    return found == families.end() ? nullptr : &*found;
}

std::string ParameterNames::TitleOfMeaning(const Meaning& meaning) const {
    if (const uint32_t* const index = std::get_if<uint32_t>(&meaning))
        return infos[*index].title;
    const LabelFamily& family = *std::get<const LabelFamily*>(meaning);
    return TitleOf(family.group, family.label);
}

/// Where effects have a "Size", most people still mean the grains': two at most.
std::vector<std::string> ParameterNames::HeartNamesThatEndWith(const std::string& word) const {
    constexpr size_t kMost = 2;
    std::vector<std::string> names;
    const auto add = [&](const std::string& group, const std::string& label) {
        if (group == kHeart && names.size() < kMost && Lower(label).ends_with(" " + word))
            names.push_back(label);
    };
    for (const LabelFamily& family : families)
        add(family.group, family.label);
    for (const ParameterInfo& info : infos)
        if (info.role == ParameterRole::Setting && FamilyOf(info.index) == nullptr)
            add(info.group, info.label);
    return names;
}

std::string ParameterNames::Problem(std::string_view name) const {
    const std::vector<Meaning>& meanings = MeaningsOf(name);
    if (meanings.size() > 1) {
        std::vector<std::string> named = HeartNamesThatEndWith(Lower(Trim(name)));
        for (const Meaning& meaning : meanings)
            named.push_back(TitleOfMeaning(meaning));
        return Quoted(Trim(name)) + " can mean " + Alternatives(named) +
               ". Write the one that is meant.";
    }
    if (Trim(name).empty())
        return "The name of a parameter is missing. Use one from the list of parameters.";
    const std::string suggestion = DidYouMean(Nearest(name, 3));
    return "There is no parameter called " + Quoted(name) + ". " +
           (suggestion.empty() ? "Use a name from the list of parameters." : suggestion);
}

/// What looks like a full name may be a title with other signs, "grain_sise".
std::vector<std::string> ParameterNames::NearestToFull(const std::string& typed,
                                                       size_t count) const {
    std::string spoken = typed;
    std::replace(spoken.begin(), spoken.end(), kFullNameSign, ' ');
    std::vector<std::string> titled = NearestNames(spoken, titleSuggestions, count);
    std::vector<std::string> full = NearestNames(typed, fullSuggestions, count);
    const bool isTitle =
        !titled.empty() && (full.empty() || EditDistance(spoken, Lower(titled.front())) <
                                                EditDistance(typed, Lower(full.front())));
    return isTitle ? titled : full;
}

std::vector<std::string> ParameterNames::Nearest(std::string_view name, size_t count) const {
    const std::string lower = Lower(Trim(name));
    if (lower.starts_with("modulations"))
        return NearestNames(name, cellNames, count);
    if (LooksFull(lower))
        return NearestToFull(lower, count);
    if (lower.find(" to ") != std::string::npos)
        return NearestNames(name, cellTitles, count);
    // What people say goes first, and stands alone: full names are for who knows most of one.
    std::vector<std::string> all = titleSuggestions;
    all.insert(all.end(), fullSuggestions.begin(), fullSuggestions.end());
    std::vector<std::string> nearest = NearestNames(name, all, 2 * count);
    if (nearest.empty())
        return nearest;
    const bool full = LooksFull(nearest.front());
    std::vector<std::string> kept;
    for (std::string& candidate : nearest)
        if (LooksFull(candidate) == full && kept.size() < count &&
            std::find(kept.begin(), kept.end(), candidate) == kept.end())
            kept.push_back(std::move(candidate));
    return kept;
}

}  // namespace Quorvan::Host
