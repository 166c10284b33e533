#include "tools/render/TempoMap.h"

#include <algorithm>

namespace Quorvan::Tools {

void TempoMap::Change(uint64_t frame, double tempo) {
    Span& last = spans.back();
    if (frame <= last.frame)
        last.tempo = tempo;
    else if (tempo != last.tempo)
        spans.push_back({frame, BeatAt(static_cast<double>(frame)), tempo});
}

double TempoMap::BeatAt(double frame) const {
    auto span = std::upper_bound(spans.begin(), spans.end(), frame, [](double at, const Span& one) {
        return at < static_cast<double>(one.frame);
    });
    if (span != spans.begin())
        --span;
    return span->beat + (frame - static_cast<double>(span->frame)) / FramesPerBeat(*span);
}

double TempoMap::FrameAt(double beat) const {
    auto span = std::upper_bound(spans.begin(), spans.end(), beat,
                                 [](double at, const Span& one) { return at < one.beat; });
    if (span != spans.begin())
        --span;
    return static_cast<double>(span->frame) + (beat - span->beat) * FramesPerBeat(*span);
}

}  // namespace Quorvan::Tools
