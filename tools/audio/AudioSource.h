#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

namespace Quorvan::Tools {

/// Sound that comes piece by piece, each channel in memory of its own.
class AudioSource {
public:
    virtual ~AudioSource() = default;

    virtual double Rate() const = 0;  ///< hertz
    virtual uint32_t Channels() const = 0;
    /// Length of the whole, where it is known ahead of the end.
    virtual std::optional<uint64_t> Frames() const = 0;
    /// The next frames into channels; fewer than asked for only at the end.
    virtual size_t Read(float* const* channels, size_t frames) = 0;
};

}  // namespace Quorvan::Tools
