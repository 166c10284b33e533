#include "tools/render/AutomationTime.h"

#include <cmath>
#include <string>

#include "host/parameters/NumberText.h"
#include "tools/render/PositionText.h"

namespace Quorvan::Tools {

std::optional<AutomationTime> AutomationTime::Read(std::string_view text, TimeUnit bare,
                                                   const Meter& meter) {
    const std::string lower = Host::Lower(Host::Trim(text));
    std::optional<double> number = PlainNumber(lower);
    if (lower.find(':') != std::string::npos || (number && bare == TimeUnit::Bars)) {
        const std::optional<double> position = meter.Position(lower);
        return position ? std::optional(AutomationTime{*position, true}) : std::nullopt;
    }
    bool isBeat = bare == TimeUnit::Beats;
    for (const std::string_view sign : {"beats", "beat"}) {
        if (!number && std::string_view(lower).ends_with(sign)) {
            number = PlainNumber(std::string_view(lower).substr(0, lower.size() - sign.size()));
            isBeat = true;
        }
    }
    if (!number) {
        number = Host::ParseNumber(lower, Host::Unit::Seconds);
        isBeat = false;
    }
    if (!number || !std::isfinite(*number))
        return std::nullopt;
    return AutomationTime{*number, isBeat};
}

}  // namespace Quorvan::Tools
