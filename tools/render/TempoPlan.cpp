#include "tools/render/TempoPlan.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace Quorvan::Tools {

namespace {
constexpr double kStepSeconds = 0.01;
}

TempoPlan::TempoPlan(TempoMap start) : map(std::move(start)), lastTempo(map.Spans().back().tempo) {}

TempoMap TempoPlan::Make(std::vector<const AutomationPoint*> points) {
    while (!points.empty()) {
        const auto next = std::min_element(
            points.begin(), points.end(),
            [this](const auto* a, const auto* b) { return FrameOf(*a) < FrameOf(*b); });
        Apply(**next, FrameOf(**next));
        points.erase(next);
    }
    return map;
}

uint64_t TempoPlan::FrameOf(const AutomationPoint& point) const {
    const auto last = static_cast<double>(lastFrame);
    double frame = point.time * map.Rate();
    if (point.isBeat && point.ramp == Ramp::Step) {
        frame = map.FrameAt(point.time);
    } else if (point.isBeat) {
        const double mean = RampMean(point.ramp, lastTempo, point.tempo);
        frame = last + (point.time - map.BeatAt(last)) * 60.0 / mean * map.Rate();
    }
    return static_cast<uint64_t>(std::clamp(std::round(frame), last, kLastFrame));
}

void TempoPlan::Apply(const AutomationPoint& point, uint64_t frame) {
    if (point.ramp != Ramp::Step && frame > lastFrame) {
        const auto length = static_cast<double>(frame - lastFrame);
        const auto step = static_cast<uint64_t>(std::max(1.0, kStepSeconds * map.Rate()));
        double from = lastTempo;
        for (uint64_t at = lastFrame; at < frame; at += step) {
            const auto end = static_cast<double>(std::min(at + step, frame) - lastFrame);
            const double to = RampValue(point.ramp, lastTempo, point.tempo, end / length);
            map.Change(at, RampMean(point.ramp, from, to));
            from = to;
        }
    }
    map.Change(frame, point.tempo);
    lastFrame = frame;
    lastTempo = point.tempo;
}

}  // namespace Quorvan::Tools
