#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

#include "tools/audio/AudioFormat.h"
#include "tools/audio/SoundTags.h"
#include "tools/support/AtomicOutput.h"

namespace Quorvan::Tools {

/// Writes a sound file, the same bytes for the same sound on every run: no time stamps, no random
/// stream numbers. Whole numbers are rounded without dither, so that a signal of as many bits comes
/// through unchanged; what lies beyond full scale is held there and counted.
class AudioWriter {
public:
    /// expectedFrames may be a guess: a WAV file that grows beyond 4 GB takes its long form by it.
    AudioWriter(AtomicOutput& target, const AudioFormat& format, double rate, uint32_t channels,
                uint64_t expectedFrames, const SoundTags& tags = {});
    ~AudioWriter();
    AudioWriter(const AudioWriter&) = delete;
    AudioWriter& operator=(const AudioWriter&) = delete;

    void Write(const float* const* channels, size_t frames);
    /// Completes the file in the output; the output's Commit is still to come.
    void Finish();

    uint64_t ClippedSamples() const { return clipped; }

private:
    void Open(double rate, uint64_t expectedFrames, const SoundTags& tags);
    void WriteFloats(const float* const* channels, size_t frames);
    void WriteIntegers(const float* const* channels, size_t frames);
    void Check(int64_t written, size_t wanted) const;

    struct File;
    AtomicOutput& output;
    AudioFormat form;
    uint32_t channelCount;
    std::unique_ptr<File> file;
    std::vector<float> floats;                  ///< interleaved
    std::vector<int32_t> integers;              ///< interleaved, the bits at the top
    std::array<std::vector<int32_t>, 2> whole;  ///< the same, channel by channel
    uint64_t clipped = 0;
};

}  // namespace Quorvan::Tools
