#pragma once

#include <string>
#include <string_view>

#include "host/instrument/ControlBoard.h"
#include "host/instrument/PositionBoard.h"
#include "host/parameters/ParameterCatalog.h"

namespace Quorvan::Host {

/// Positions of host controls as hosts and people see them: numbers and texts, both ways.
///
/// Threads  numbers on any thread, texts not on the audio thread.
class ControlFace {
public:
    ControlFace(const ParameterCatalog& parameters, const PositionBoard& positionBoard,
                const ControlBoard& controlBoard)
        : catalog(parameters), positions(positionBoard), controls(controlBoard) {}

    /// Number of settings of a control that always stands for the same choice or switch; 0 for the
    /// others, which hosts see as positions 0..1. Stepped ones they see as 0, 1, 2, ...
    uint32_t Steps(uint32_t id) const;
    double Value(uint32_t id, float position) const;
    float PositionOfValue(uint32_t id, double value) const;

    /// In the unit of what the control stands for now: "120 ms", "1/8", "8 layers". "Off" for a
    /// free control that points nowhere.
    std::string Text(uint32_t id, float position) const;
    /// The position that a text asks for, or a sentence why there is none.
    TextResult PositionOf(uint32_t id, std::string_view text) const;

private:
    bool ShowsLayers(uint32_t id) const;
    TextContext Context() const;

    const ParameterCatalog& catalog;
    const PositionBoard& positions;
    const ControlBoard& controls;
};

}  // namespace Quorvan::Host
