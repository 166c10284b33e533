#include <algorithm>
#include <cmath>
#include <cstring>

#include "c/CallerText.h"
#include "c/Guard.h"
#include "c/ParameterName.h"
#include "host/parameters/SharedCatalog.h"
#include "host/state/ParameterReader.h"

using namespace Quorvan;
using namespace Quorvan::C;

static_assert(TESSERAE_BINARY == static_cast<int>(Host::ParameterKind::Binary));
static_assert(TESSERAE_SWITCH == static_cast<int>(Host::ParameterKind::Switch));
static_assert(TESSERAE_CONTROL == static_cast<int>(Host::ParameterRole::Control));
static_assert(TESSERAE_DRIVEN == static_cast<int>(Host::ParameterRole::Driven));

namespace {

tesserae_parameter Described(const Host::ParameterInfo& info, size_t size) {
    tesserae_parameter parameter{};
    parameter.size = size;
    parameter.name = info.name.c_str();
    parameter.group = info.group.c_str();
    parameter.label = info.label.c_str();
    parameter.title = info.title.c_str();
    parameter.unit = Host::SignOf(info.unit);
    parameter.kind = static_cast<int>(info.kind);
    parameter.role = static_cast<int>(info.role);
    parameter.writable = Host::IsStored(info, Host::ParameterScope::Project) ? 1 : 0;
    parameter.minimum = info.minimum;
    parameter.maximum = info.maximum;
    parameter.default_position = info.defaultPosition;
    parameter.choice_count = info.StepCount();
    return parameter;
}

/// Runs body with the catalog, where index is one of its parameters.
template <class Body>
tesserae_result WithParameter(uint32_t index, Body&& body) noexcept {
    return Guarded(nullptr, [&] {
        const Host::ParameterCatalog& catalog = Host::SharedCatalog();
        return index < catalog.Count() ? body(catalog) : FailForIndex(nullptr);
    });
}

/// A position or a value: any number but no NaN.
tesserae_result FailForNumber() {
    return Fail(nullptr, TESSERAE_BAD_ARGUMENT, "This is no number; give a finite one.");
}

}  // namespace

uint32_t tesserae_parameter_count(void) {
    return GuardedOr(0u, [] { return Host::SharedCatalog().Count(); });
}

tesserae_result tesserae_describe_parameter(uint32_t index, tesserae_parameter* parameter) {
    return WithParameter(index, [=](const Host::ParameterCatalog& catalog) {
        if (parameter == nullptr)
            return FailForNull(nullptr, "parameter");
        if (parameter->size < sizeof(tesserae_parameter))
            return FailForSize(nullptr);
        *parameter = Described(catalog[index], parameter->size);
        return tesserae_result{TESSERAE_OK};
    });
}

const char* tesserae_choice(uint32_t index, uint32_t choice) {
    return GuardedOr(nullptr, [=]() -> const char* {
        const Host::ParameterCatalog& catalog = Host::SharedCatalog();
        if (index >= catalog.Count() || choice >= catalog[index].choices.size())
            return nullptr;
        return catalog[index].choices[choice].c_str();
    });
}

tesserae_result tesserae_find_parameter(const tesserae_processor* processor, const char* name,
                                        uint32_t* index) {
    return Guarded(processor, [=] {
        if (name == nullptr)
            return FailForNull(processor, "name");
        return index != nullptr ? FindNamed(processor, name, *index)
                                : FailForNull(processor, "index");
    });
}

tesserae_result tesserae_text_of_position(uint32_t index, float position, uint32_t scale,
                                          char* text, size_t size) {
    return WithParameter(index, [=](const Host::ParameterCatalog& catalog) {
        if (std::isnan(position))
            return FailForNumber();
        const float held = std::clamp(position, 0.0f, 1.0f);
        return GiveText(nullptr, catalog.Text(index, held, {scale}), text, size);
    });
}

tesserae_result tesserae_position_of_text(uint32_t index, const char* text, uint32_t scale,
                                          float* position) {
    return WithParameter(index, [=](const Host::ParameterCatalog& catalog) {
        if (text == nullptr)
            return FailForNull(nullptr, "text");
        if (position == nullptr)
            return FailForNull(nullptr, "position");
        const Host::TextResult result = catalog.Position(index, text, {scale});
        if (!result.position)
            return Fail(nullptr, TESSERAE_BAD_TEXT, result.problem);
        *position = *result.position;
        return tesserae_result{TESSERAE_OK};
    });
}

tesserae_result tesserae_value_of_position(uint32_t index, float position, uint32_t scale,
                                           double* value) {
    return WithParameter(index, [=](const Host::ParameterCatalog& catalog) {
        if (value == nullptr)
            return FailForNull(nullptr, "value");
        if (std::isnan(position))
            return FailForNumber();
        *value = catalog.Value(index, std::clamp(position, 0.0f, 1.0f), {scale});
        return tesserae_result{TESSERAE_OK};
    });
}

tesserae_result tesserae_position_of_value(uint32_t index, double value, uint32_t scale,
                                           float* position) {
    return WithParameter(index, [=](const Host::ParameterCatalog& catalog) {
        if (position == nullptr)
            return FailForNull(nullptr, "position");
        if (!std::isfinite(value))
            return FailForNumber();
        *position = catalog.PositionOfValue(index, value, {scale});
        return tesserae_result{TESSERAE_OK};
    });
}
