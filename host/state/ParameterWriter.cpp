#include "host/state/ParameterWriter.h"

#include <charconv>
#include <string>

#include "host/parameters/ReadNumber.h"
#include "host/parameters/ShellIndex.h"

namespace Quorvan::Host {

namespace {

using OrderedJson = nlohmann::ordered_json;

/// A pitch as a text is read by the scale that the same file chooses.
TextContext ContextOf(const std::vector<ParameterValue>& values, const ParameterCatalog& catalog) {
    TextContext context;
    for (const ParameterValue& value : values) {
        if (value.index == kScaleIndex)
            context.scale = static_cast<uint32_t>(catalog.Value(kScaleIndex, value.position));
    }
    return context;
}

OrderedJson TextOrNumber(const ParameterValue& value, const ParameterCatalog& catalog,
                         const TextContext& context) {
    std::string text = catalog.Text(value.index, value.position, context);
    if (catalog.Position(value.index, text, context).position == value.position)
        return text;
    return Shortest(value.position);
}

}  // namespace

double Shortest(float number) {
    char text[32];
    char* const end = std::to_chars(text, text + sizeof text, number).ptr;
    return ReadNumber({text, end}).value_or(static_cast<double>(number));
}

OrderedJson ParametersJson(const std::vector<ParameterValue>& values,
                           const ParameterCatalog& catalog, PositionStyle style) {
    const TextContext context = ContextOf(values, catalog);
    OrderedJson parameters = OrderedJson::object();
    for (const ParameterValue& value : values)
        parameters[catalog[value.index].name] = style == PositionStyle::Texts
                                                    ? TextOrNumber(value, catalog, context)
                                                    : OrderedJson(Shortest(value.position));
    return parameters;
}

}  // namespace Quorvan::Host
