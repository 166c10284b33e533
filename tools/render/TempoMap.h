#pragma once

#include <cstdint>
#include <vector>

namespace Quorvan::Tools {

/// Where the song is at every frame of a render, over all changes of its tempo.
class TempoMap {
public:
    /// From a frame on the song runs at a tempo.
    struct Span {
        uint64_t frame = 0;
        double beat = 0.0;   ///< of the song at that frame, in quarter notes
        double tempo = 0.0;  ///< beats per minute
    };

    /// The song is at startBeat at frame 0. rate is in hertz.
    TempoMap(double rate, double tempo, double startBeat)
        : sampleRate(rate), spans{{0, startBeat, tempo}} {}

    /// Another tempo from a frame on, which is not ahead of the last change.
    void Change(uint64_t frame, double tempo);

    double BeatAt(double frame) const;
    /// Below 0 for beats ahead of the start.
    double FrameAt(double beat) const;
    double Rate() const { return sampleRate; }
    /// In order; the first one is at frame 0.
    const std::vector<Span>& Spans() const { return spans; }

private:
    double FramesPerBeat(const Span& span) const { return 60.0 * sampleRate / span.tempo; }

    double sampleRate;
    std::vector<Span> spans;
};

}  // namespace Quorvan::Tools
