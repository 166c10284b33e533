#pragma once

#include "tools/audio/AudioWriter.h"
#include "tools/audio/LevelMeter.h"
#include "tools/render/RenderSink.h"
#include "tools/render/Summary.h"

namespace Quorvan::Tools {

/// Writes the output of a render into a file and measures it on the way.
class FileSink final : public RenderSink {
public:
    FileSink(AudioWriter& target, double sampleRate, uint32_t channels, bool measuresLoudness)
        : writer(target), meter(sampleRate, channels, measuresLoudness), rate(sampleRate) {}

    void OnOutput(const SoundPiece& piece) override {
        writer.Write(piece.channels, piece.frames);
        meter.Add(piece.channels, piece.frames);
        frames += piece.frames;
    }

    void Report(Summary& summary) const {
        summary.seconds = static_cast<double>(frames) / rate;
        summary.peak = meter.Peak();
        summary.loudness = meter.Loudness();
    }

private:
    AudioWriter& writer;
    LevelMeter meter;
    double rate;
    uint64_t frames = 0;
};

}  // namespace Quorvan::Tools
