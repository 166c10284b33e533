#include "tools/render/Ramp.h"

#include <algorithm>
#include <cmath>

#include "host/parameters/NumberText.h"

namespace Quorvan::Tools {

namespace {
constexpr double kLowest = 0.01;  // of an exponential ramp, which never gets to 0
}

std::optional<Ramp> ReadRamp(std::string_view text) {
    const std::string word = Host::Lower(Host::Trim(text));
    if (word.empty() || word == "step")
        return Ramp::Step;
    if (word == "linear")
        return Ramp::Linear;
    if (word == "exponential")
        return Ramp::Exponential;
    return std::nullopt;
}

double RampValue(Ramp ramp, double from, double to, double share) {
    if (share >= 1.0)
        return to;
    if (share <= 0.0 || ramp == Ramp::Step)
        return from;
    if (ramp == Ramp::Linear)
        return from + (to - from) * share;
    const double first = std::max(from, kLowest);
    return first * std::pow(std::max(to, kLowest) / first, share);
}

double RampMean(Ramp ramp, double from, double to) {
    const double middle = 0.5 * (from + to);
    if (ramp != Ramp::Exponential || std::abs(to - from) < 1.0e-6 * middle)
        return middle;
    return (to - from) / std::log(to / from);
}

}  // namespace Quorvan::Tools
