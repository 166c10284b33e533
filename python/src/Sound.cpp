#include "python/src/Sound.h"

#include <charconv>
#include <cmath>

#include "host/parameters/Sentence.h"
#include "host/parameters/SharedCatalog.h"
#include "host/state/PresetFormat.h"
#include "python/src/Errors.h"
#include "tools/render/PositionText.h"
#include "tools/render/SoundChoice.h"
#include "tools/support/Failure.h"

namespace Quorvan::Python {

namespace {

template <class Number>
std::string Shortest(Number number) {
    char text[64];
    return {text, std::to_chars(text, text + sizeof text, number).ptr};
}

Host::Preset ReadText(const std::string& json) {
    Host::Parsed<Host::Preset> parsed = Host::ReadPreset(json, Catalog());
    // What would be mended in a file is a mistake of the caller's here.
    if (!parsed.issues.empty())
        RefuseValue(parsed.issues.front().text);
    if (!parsed.value)
        RefuseValue("The text is no preset.");
    return std::move(*parsed.value);
}

float PositionOfNumber(const Host::ParameterInfo& info, double number,
                       const Host::TextContext& texts) {
    if (info.kind != Host::ParameterKind::Continuous) {
        if (number != std::floor(number) || number < 0.0 || number >= info.StepCount())
            RefuseValue(Host::Quoted(info.title) + " has the choices 0 to " +
                        std::to_string(info.StepCount() - 1) + ", not " + Shortest(number) + ".");
        return Catalog().PositionOfValue(info.index, number, texts);
    }
    // The way of texts tells what lies outside the range.
    const Host::TextResult read = Catalog().Position(info.index, Shortest(number), texts);
    if (!read.position)
        RefuseValue(read.problem);
    return *read.position;
}

}  // namespace

const Host::ParameterCatalog& Catalog() { return Host::SharedCatalog(); }

Host::Preset LoadSound(const std::string& source) {
    if (source.starts_with("{"))
        return ReadText(source);
    std::vector<std::string> warnings;
    try {
        return Tools::LoadPreset(source, Catalog(), warnings);
    } catch (const Tools::Failure& failure) {
        if (failure.Code() == Tools::ExitCode::Usage)
            RefuseName(failure.what());
        throw;
    }
}

uint32_t FindParameter(const std::string& name, const Host::PresentSettings& present) {
    const Tools::NamedParameter named = Tools::FindWritable(Catalog(), name, present);
    if (!named.index)
        RefuseName(named.problem);
    return *named.index;
}

float PositionOf(uint32_t index, const Setting& value, const Host::PresentSettings& present) {
    if (const double* const number = std::get_if<double>(&value))
        return PositionOfNumber(Catalog()[index], *number, present.Texts());
    const Host::TextResult read =
        Tools::ReadPosition(Catalog(), index, std::get<std::string>(value), present.Texts());
    if (!read.position)
        RefuseValue(read.problem);
    return *read.position;
}

std::vector<std::string> Assignments(const Host::Preset& preset, const Settings& settings) {
    std::vector<std::string> texts;
    for (const auto& [name, value] : settings)
        if (const auto* const text = std::get_if<std::string>(&value))
            texts.push_back(name + "=" + *text);
    const Host::PresentSettings present =
        Tools::SoundChoice::Make(preset, texts, Catalog()).Settings(Catalog());
    for (const auto& [name, value] : settings)
        if (std::holds_alternative<double>(value)) {
            const uint32_t index = FindParameter(name, present);
            texts.push_back(Catalog()[index].name + "=@" +
                            Shortest(PositionOf(index, value, present)));
        }
    return texts;
}

}  // namespace Quorvan::Python
