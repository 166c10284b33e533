#pragma once

#include <sys/types.h>

#include <array>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>

#include "tools/audio/AudioReader.h"
#include "tools/audio/AudioSource.h"

namespace Quorvan::Tools {

/// Opens sound files for jobs that come one after another, and keeps the sound of one that they
/// read again and again: the second job in a row leaves it in memory, from the third on it comes
/// from there, as long as the file is the same by its place, length and times.
///
/// Memory   one file, 16 MB of samples at most; longer ones are read each time
/// Threads  one at a time
class SoundShelf {
public:
    struct Opened {
        std::unique_ptr<AudioSource> source;
        /// Tells of the file; what it has seen in the samples counts when source is at its end.
        std::shared_ptr<const AudioReader> reader;
    };
    /// As the AudioReader's constructor.
    Opened Open(const std::filesystem::path& path, std::optional<RawSound> raw);

private:
    struct Kept;
    class Source;
    /// What tells a file and its content from others: all numbers that change with them.
    using Mark = std::array<int64_t, 8>;

    static std::optional<Mark> MarkOf(const std::filesystem::path& path,
                                      const std::optional<RawSound>& raw);

    std::optional<Mark> mark;  ///< of what was opened last
    std::shared_ptr<Kept> kept;
};

}  // namespace Quorvan::Tools
