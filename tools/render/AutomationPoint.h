#pragma once

#include <string>

#include "tools/render/Ramp.h"

namespace Quorvan::Tools {

/// Moments beyond this frame are beyond any file, and would overflow the count of frames.
inline constexpr double kLastFrame = 9.0e15;

/// One entry of an automation file.
struct AutomationPoint {
    double time = 0.0;
    bool isBeat = false;     ///< time counts quarter notes of the song in place of seconds
    std::string parameter;   ///< name, whose meaning may follow the modes of its moment
    std::string position;    ///< as ReadPosition takes it
    Ramp ramp = Ramp::Step;  ///< from the same parameter's point before, else from the start
    std::string where;       ///< place in the file, for messages: "line 3"
    double tempo = 0.0;      ///< beats per minute of one that sets the tempo, 0 for others
};

}  // namespace Quorvan::Tools
