#include "host/parameters/ParameterCatalog.h"

#include <algorithm>
#include <deque>
#include <limits>
#include <new>

#include "basictools/Raise.h"
#include "host/parameters/ChoiceText.h"
#include "host/parameters/ModulationNames.h"
#include "host/parameters/NumberText.h"
#include "host/parameters/ParameterDescriber.h"
#include "host/parameters/ParameterNames.h"
#include "host/parameters/ParameterScale.h"
#include "host/parameters/PitchScale.h"
#include "host/parameters/PresentSettings.h"
#include "host/parameters/Sentence.h"
#include "host/parameters/ShellIndex.h"
#include "processor/ProcessorInternals.h"

namespace Quorvan::Host {

namespace {

constexpr char kPositionSign = '@';

const ChoiceList& SwitchNames() {
    static const ChoiceList names{"Off", "On"};
    return names;
}

/// The record of an amount, which the matrix has no record for.
dsp::Parameter AmountRecord() {
    return dsp::Parameter::MakeContinuous("", dsp::PotardKind::kLinear, -1.0f, 1.0f, 0.5f);
}

std::string ChoiceProblem(const ParameterInfo& info, std::string_view text) {
    const std::vector<uint32_t> begun = ChoicesBegunWith(info.choices, text);
    if (begun.size() < 2)
        return Cited(info) + " has no choice " + Quoted(text) + ". " + ChoiceAdvice(info.choices);
    std::vector<std::string> names;
    names.reserve(begun.size());
    for (const uint32_t choice : begun)
        names.push_back(info.choices[choice]);
    return Quoted(text) + " for " + Cited(info) + " can mean " + Alternatives(names) +
           ". Write the one that is meant.";
}

std::string NameOf(Processor::IProcessor& processor, uint32_t index) {
    Processor::ParameterDescription description{};
    return processor.GetParameterDescription(index, &description) ? description.name : "";
}

}  // namespace

TextContext TextContext::Of(Processor::IProcessor& processor) {
    float position = 0.0f;
    processor.GetParameter(kScaleIndex, &position);
    return {PitchScale::ScaleAt(position)};
}

class ParameterCatalog::Implementation {
public:
    Implementation();

    std::string Text(uint32_t index, float position, const TextContext& context) const;
    TextResult Position(uint32_t index, std::string_view text, const TextContext& context) const;
    double Value(uint32_t index, float position, const TextContext& context) const;
    float PositionOfValue(uint32_t index, double value, const TextContext& context) const;

    std::vector<ParameterInfo> infos;
    std::optional<ParameterNames> names;

private:
    /// What texts need to know of a parameter, over and above its info.
    struct Entry {
        ParameterForm form;
        std::optional<ParameterScale> scale;  ///< none for binary parameters
    };

    void Add(Processor::IProcessor& processor, uint32_t index);
    void GiveScale(ParameterInfo& info, Entry& entry, const dsp::Parameter& record);
    std::span<const std::string> ChoicesOf(const Entry& entry);
    std::string NumberText(uint32_t index, double value) const;
    TextResult BarePosition(uint32_t index, std::string_view number) const;
    TextResult ChoicePosition(uint32_t index, std::string_view text) const;
    TextResult NumberPosition(uint32_t index, std::string_view text,
                              const TextContext& context) const;

    std::vector<Entry> entries;
    std::deque<ChoiceList> numberedChoices;  ///< of steps that have no names
};

ParameterCatalog::Implementation::Implementation() {
    const std::unique_ptr<Processor::IProcessorFactory> factory(GetProcessorFactory());
    const std::unique_ptr<Processor::IProcessor> processor(factory->CreateProcessor());
    if (processor == nullptr)
        Raise(std::bad_alloc());
    infos.reserve(Processor::kParameterCount);
    entries.reserve(Processor::kParameterCount);
    for (uint32_t index = 0; index < Processor::kParameterCount; ++index)
        Add(*processor, index);
    std::vector<ParameterNames::Destination> destinations;
    for (uint32_t row = 0; row < kModulationDestinations; ++row)
        destinations.push_back({DestinationName(row), TargetOfDestination(*processor, row)});
    names.emplace(infos, destinations);
}

void ParameterCatalog::Implementation::Add(Processor::IProcessor& processor, uint32_t index) {
    ParameterInfo info;
    info.index = index;
    info.name = NameOf(processor, index);
    const Description description = DescribeParameter(index, info.name);
    info.group = description.group;
    info.label = description.label;
    info.title = TitleOf(info.group, info.label);
    info.kind = description.form.kind;
    info.role = description.role;
    info.unit = description.form.unit;
    Entry entry{description.form, std::nullopt};
    if (info.kind != ParameterKind::Binary) {
        processor.GetParameter(index, &info.defaultPosition);
        const dsp::Parameter* const record = Processor::ParameterRecordOf(processor, index);
        GiveScale(info, entry, record != nullptr ? *record : AmountRecord());
    }
    infos.push_back(std::move(info));
    entries.push_back(std::move(entry));
}

void ParameterCatalog::Implementation::GiveScale(ParameterInfo& info, Entry& entry,
                                                 const dsp::Parameter& record) {
    entry.scale.emplace(record, entry.form);
    info.minimum = entry.scale->Minimum();
    info.maximum = entry.scale->Maximum();
    info.choices = ChoicesOf(entry);
}

std::span<const std::string> ParameterCatalog::Implementation::ChoicesOf(const Entry& entry) {
    if (entry.form.kind == ParameterKind::Switch)
        return SwitchNames();
    if (entry.form.kind != ParameterKind::Choice)
        return {};
    if (entry.form.choices != nullptr)
        return entry.form.choices();
    ChoiceList& numbers = numberedChoices.emplace_back();
    for (uint32_t step = 0; step < entry.scale->StepCount(); ++step)
        numbers.push_back(std::to_string(static_cast<int>(entry.scale->StepValue(step))));
    return numbers;
}

double ParameterCatalog::Implementation::Value(uint32_t index, float position,
                                               const TextContext& context) const {
    if (index == kPitchIndex && context.scale != 0)
        return PitchScale(context.scale).SemitonesAt(position);
    const auto& scale = entries[index].scale;
    return scale ? scale->ValueOf(position) : 0.0;
}

float ParameterCatalog::Implementation::PositionOfValue(uint32_t index, double value,
                                                        const TextContext& context) const {
    if (index == kPitchIndex && context.scale != 0)
        return PitchScale(context.scale).PositionOf(value);
    const auto& scale = entries[index].scale;
    return scale ? scale->PositionOf(value) : 0.0f;
}

std::string ParameterCatalog::Implementation::NumberText(uint32_t index, double value) const {
    const ParameterForm& form = entries[index].form;
    if (form.silentBottom && value <= infos[index].minimum)
        value = -std::numeric_limits<double>::infinity();
    return FormatNumber(value, form.unit);
}

std::string ParameterCatalog::Implementation::Text(uint32_t index, float position,
                                                   const TextContext& context) const {
    const ParameterInfo& info = infos[index];
    if (info.kind == ParameterKind::Binary)
        return {};
    const double value = Value(index, position, context);
    return info.choices.empty() ? NumberText(index, value)
                                : info.choices[static_cast<size_t>(value)];
}

TextResult ParameterCatalog::Implementation::Position(uint32_t index, std::string_view text,
                                                      const TextContext& context) const {
    const ParameterInfo& info = infos[index];
    const std::string_view trimmed = Trim(text);
    if (info.kind == ParameterKind::Binary)
        return {{}, Cited(info) + " is no number but a piece of memory; leave it out."};
    if (trimmed.starts_with(kPositionSign))
        return BarePosition(index, trimmed.substr(1));
    return info.choices.empty() ? NumberPosition(index, trimmed, context)
                                : ChoicePosition(index, trimmed);
}

TextResult ParameterCatalog::Implementation::BarePosition(uint32_t index,
                                                          std::string_view number) const {
    const std::optional<double> position = ParseNumber(number, Unit::None);
    if (!position || *position < 0.0 || *position > 1.0)
        return {{},
                Quoted(number) + " behind the @ is no position for " + Cited(infos[index]) +
                    ". Write a number from 0 to 1 there."};
    return {static_cast<float>(*position), {}};
}

TextResult ParameterCatalog::Implementation::ChoicePosition(uint32_t index,
                                                            std::string_view text) const {
    const ParameterInfo& info = infos[index];
    std::optional<uint32_t> choice = FindChoice(info.choices, text);
    if (info.kind == ParameterKind::Switch)
        choice = FindSwitch(text);
    if (!choice)
        return {{}, ChoiceProblem(info, text)};
    return {entries[index].scale->PositionOf(*choice), {}};
}

TextResult ParameterCatalog::Implementation::NumberPosition(uint32_t index, std::string_view text,
                                                            const TextContext& context) const {
    const ParameterInfo& info = infos[index];
    const ParameterForm& form = entries[index].form;
    const std::optional<double> number = ParseNumber(text, form.unit);
    if (!number)
        return {{},
                Quoted(text) + " is no value for " + Cited(info) + ". Write a number such as " +
                    Quoted(Text(index, 0.5f, context)) + "."};
    // The ends as texts show them may lie a rounding outside the range.
    const std::string lowest = FormatNumber(info.minimum, form.unit);
    const std::string highest = FormatNumber(info.maximum, form.unit);
    if (form.silentBottom && *number == -std::numeric_limits<double>::infinity())
        return {0.0f, {}};
    if (*number < std::min(info.minimum, *ParseNumber(lowest, form.unit)) ||
        *number > std::max(info.maximum, *ParseNumber(highest, form.unit)))
        return {{},
                Quoted(text) + " is out of range for " + Cited(info) + ". Use a value from " +
                    lowest + " to " + highest + "."};
    // Above silence, by less than a text shows: the bottom itself is silent.
    constexpr double kAudible = 0.02;
    const double held = form.silentBottom ? std::max(*number, info.minimum + kAudible) : *number;
    return {PositionOfValue(index, held, context), {}};
}

ParameterCatalog::ParameterCatalog() : implementation(std::make_unique<Implementation>()) {}
ParameterCatalog::~ParameterCatalog() = default;

uint32_t ParameterCatalog::Count() const {
    return static_cast<uint32_t>(implementation->infos.size());
}
const ParameterInfo& ParameterCatalog::operator[](uint32_t index) const {
    return implementation->infos[index];
}
const std::vector<ParameterInfo>& ParameterCatalog::All() const { return implementation->infos; }

std::optional<uint32_t> ParameterCatalog::Find(std::string_view name) const {
    return implementation->names->Find(name);
}
std::optional<uint32_t> ParameterCatalog::Resolve(std::string_view name,
                                                  const PresentSettings& settings) const {
    return implementation->names->Resolve(name, settings);
}
bool ParameterCatalog::Decides(uint32_t index) const {
    return index == kScaleIndex || implementation->names->IsSelector(index);
}
std::string ParameterCatalog::CommonName(uint32_t index) const {
    const LabelFamily* const family = implementation->names->FamilyOf(index);
    return family != nullptr ? TitleOf(family->group, family->label) : std::string();
}
bool ParameterCatalog::IsInForce(uint32_t index, const PresentSettings& settings) const {
    const LabelFamily* const family = implementation->names->FamilyOf(index);
    const auto choiceOf = [&](uint32_t selector) { return settings.Choice(selector); };
    return family == nullptr || family->InForce(choiceOf) == index;
}
const LabelFamily* ParameterCatalog::FamilyOf(uint32_t index) const {
    return implementation->names->FamilyOf(index);
}
std::optional<uint32_t> ParameterCatalog::FindDestination(std::string_view name) const {
    const std::optional<uint32_t> row = Host::FindDestination(name);
    return row ? row : implementation->names->FindRow(name);
}
std::vector<std::string> ParameterCatalog::Nearest(std::string_view name, size_t count) const {
    return implementation->names->Nearest(name, count);
}
std::string ParameterCatalog::UnknownName(std::string_view name) const {
    return implementation->names->Problem(name);
}

std::string ParameterCatalog::Text(uint32_t index, float position,
                                   const TextContext& context) const {
    return implementation->Text(index, position, context);
}
TextResult ParameterCatalog::Position(uint32_t index, std::string_view text,
                                      const TextContext& context) const {
    return implementation->Position(index, text, context);
}
double ParameterCatalog::Value(uint32_t index, float position, const TextContext& context) const {
    return implementation->Value(index, position, context);
}
float ParameterCatalog::PositionOfValue(uint32_t index, double value,
                                        const TextContext& context) const {
    return implementation->PositionOfValue(index, value, context);
}

}  // namespace Quorvan::Host
