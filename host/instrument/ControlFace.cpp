#include "host/instrument/ControlFace.h"

#include <algorithm>
#include <cmath>

#include "granular/MoteWeaverParameters.h"
#include "host/parameters/NumberText.h"
#include "host/parameters/Sentence.h"
#include "host/parameters/ShellIndex.h"

namespace Quorvan::Host {

namespace {

constexpr std::string_view kLayer = " layer";

TextResult PositionOfShare(std::string_view text) {
    const auto percent = ParseNumber(text, Unit::Percent);
    if (!percent)
        return {{}, Quoted(text) + " is no share. Write a number such as \"50 %\"."};
    return {std::clamp(static_cast<float>(*percent / 100.0), 0.0f, 1.0f), {}};
}

}  // namespace

uint32_t ControlFace::Steps(uint32_t id) const {
    const HostControl* const control = FindHostControl(id);
    return control != nullptr && control->target == ControlTarget::Parameter
               ? catalog[control->index].StepCount()
               : 0;
}

double ControlFace::Value(uint32_t id, float position) const {
    return Steps(id) > 0 ? catalog.Value(controls.TargetOf(id), position)
                         : static_cast<double>(position);
}

float ControlFace::PositionOfValue(uint32_t id, double value) const {
    const uint32_t steps = Steps(id);
    if (steps == 0 || !std::isfinite(value))
        return std::clamp(static_cast<float>(value), 0.0f, 1.0f);
    const double step = std::clamp(std::floor(value), 0.0, static_cast<double>(steps - 1));
    return catalog.PositionOfValue(controls.TargetOf(id), step);
}

/// Their bare number would look like a rate that has lost its unit.
bool ControlFace::ShowsLayers(uint32_t id) const {
    const HostControl* const control = FindHostControl(id);
    return control != nullptr && control->target == ControlTarget::Density &&
           controls.TargetOf(id) == dsp::MoteWeaverId::TextureDensity;
}

TextContext ControlFace::Context() const {
    return {static_cast<uint32_t>(catalog.Value(kScaleIndex, positions.Position(kScaleIndex)))};
}

std::string ControlFace::Text(uint32_t id, float position) const {
    const uint32_t index = controls.TargetOf(id);
    if (index == kUnassigned)
        return "Off";
    if (index >= kProcessorParameters)
        return FormatNumber(100.0 * static_cast<double>(position), Unit::Percent);
    std::string text = catalog.Text(index, position, Context());
    if (ShowsLayers(id))
        text.append(kLayer).append(text.starts_with("1 ") ? "" : "s");
    return text;
}

TextResult ControlFace::PositionOf(uint32_t id, std::string_view text) const {
    const uint32_t index = controls.TargetOf(id);
    if (index == kUnassigned)
        return {0.0f, {}};
    if (index >= kProcessorParameters)
        return PositionOfShare(text);
    const std::string lower = Lower(text);
    const size_t unit = ShowsLayers(id) ? lower.find(kLayer) : std::string::npos;
    return catalog.Position(index, text.substr(0, unit), Context());
}

}  // namespace Quorvan::Host
