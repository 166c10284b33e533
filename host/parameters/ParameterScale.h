#pragma once

#include <cstdint>

#include "framework/Parameter.h"
#include "host/parameters/ParameterForm.h"

namespace Quorvan::Host {

/// Position of one parameter to the number that its text shows, and back, along the parameter's own
/// curve. Numbers are in the form's unit; a choice is its index, a switch 0 or 1.
class ParameterScale {
public:
    /// parameter gives curve and range; its own state does not matter.
    ParameterScale(const dsp::Parameter& parameter, const ParameterForm& form);

    double ValueOf(float position) const;
    /// Held to the range.
    float PositionOf(double value) const;
    double Minimum() const { return minimum; }
    double Maximum() const { return maximum; }
    /// Physical value of a step, for steps that have no name.
    double StepValue(uint32_t step) const;
    uint32_t StepCount() const { return steps; }

private:
    bool IsSwitch() const { return form.kind == ParameterKind::Switch; }
    bool IsChoice() const { return form.kind == ParameterKind::Choice; }

    dsp::Parameter record;
    ParameterForm form;
    uint32_t steps = 0;  ///< 0: continuous
    double minimum = 0.0, maximum = 1.0;
};

}  // namespace Quorvan::Host
