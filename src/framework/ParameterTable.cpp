#include "framework/ParameterTable.h"

namespace Quorvan::dsp {

void ParameterSpec::ApplyTo(Parameter& parameter) const {
    if (kind == PotardKind::kStepped)
        parameter.ConfigureStepped(steps, min, stepSize);
    else
        parameter.Configure(kind, min, max, curve);
    if (start == Start::kPosition)
        parameter.WriteNormalized(startAt, true);
    else if (start == Start::kValue)
        parameter.WriteValue(startAt, true);
}

Parameter ParameterSpec::Make() const {
    Parameter made;
    made.name = name;
    ApplyTo(made);
    return made;
}

ParameterSpec ParameterSpec::StartingAt(Start how, float where) const {
    ParameterSpec moved = *this;
    moved.start = how;
    moved.startAt = where;
    return moved;
}

ParameterTable Join(ParameterTable base, const ParameterTable& more) {
    base.insert(base.end(), more.begin(), more.end());
    return base;
}

ParameterTable Numbered(const std::string& stem, uint32_t count, const ParameterSpec& row) {
    ParameterTable rows(count, row);
    for (uint32_t i = 0; i < count; ++i)
        rows[i].name = stem + std::to_string(i + 1);
    return rows;
}

}  // namespace Quorvan::dsp
