#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace Quorvan::Tools {

/// Some channels of sound in memory, each in one piece.
class Planes {
public:
    Planes() = default;
    Planes(uint32_t channels, size_t frames) { Resize(channels, frames); }

    void Resize(uint32_t channels, size_t frames) {
        planes.assign(channels, std::vector<float>(frames, 0.0f));
        pointers.resize(channels);
        for (uint32_t c = 0; c < channels; ++c)
            pointers[c] = planes[c].data();
    }

    uint32_t Channels() const { return static_cast<uint32_t>(planes.size()); }
    size_t Frames() const { return planes.empty() ? 0 : planes.front().size(); }
    float* const* Pointers() const { return pointers.data(); }
    /// Of the first two channels, from a frame on.
    std::array<float*, 2> PointersAt(size_t frame) const {
        std::array<float*, 2> found{};
        for (size_t c = 0; c < std::min(found.size(), pointers.size()); ++c)
            found[c] = pointers[c] + frame;
        return found;
    }
    std::vector<float>& operator[](uint32_t channel) { return planes[channel]; }
    const std::vector<float>& operator[](uint32_t channel) const { return planes[channel]; }

    /// Silence from frame on to the end.
    void ClearFrom(size_t frame) {
        for (std::vector<float>& plane : planes)
            std::fill(plane.begin() + static_cast<std::ptrdiff_t>(frame), plane.end(), 0.0f);
    }

private:
    std::vector<std::vector<float>> planes;
    std::vector<float*> pointers;
};

}  // namespace Quorvan::Tools
