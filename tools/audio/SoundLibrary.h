#pragma once

#include <mutex>

namespace Quorvan::Tools::SoundLibrary {

/// Held where files are opened and resamplers are made. The libraries for both keep something there
/// that is one for the process: the text of the last error that opening has met, and tables of the
/// transform. What they do afterwards touches the one file only.
inline std::mutex& Lock() {
    static std::mutex lock;
    return lock;
}

}  // namespace Quorvan::Tools::SoundLibrary
