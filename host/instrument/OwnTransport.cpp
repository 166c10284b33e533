#include "host/instrument/OwnTransport.h"

#include <algorithm>

namespace Quorvan::Host {

std::optional<double> TapTempo::Tap(double seconds) {
    if (count > 0 && !(seconds > times[count - 1] && seconds - times[count - 1] < kLongest))
        count = 0;
    if (count == kTaps) {
        std::copy(times.begin() + 1, times.end(), times.begin());
        --count;
    }
    times[count++] = seconds;
    if (count < 2)
        return std::nullopt;
    const double interval = (times[count - 1] - times[0]) / static_cast<double>(count - 1);
    return std::clamp(60.0 / interval, 1.0, 999.0);
}

}  // namespace Quorvan::Host
