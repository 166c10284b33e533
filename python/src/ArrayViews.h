#pragma once

#include <cstdint>
#include <vector>

#include <pybind11/numpy.h>

namespace Quorvan::Python {

/// Sound of Python as the engine takes it: a pointer to each channel. Arrays of 32-bit floats whose
/// samples lie side by side are used where they are; others are copied.
class ArrayView {
public:
    /// Shapes (frames,) and (channels, frames) with one or two channels. Throws ValueError for
    /// others.
    explicit ArrayView(const pybind11::object& sound);

    const float* const* Channels() const { return pointers.data(); }
    uint32_t Count() const { return static_cast<uint32_t>(pointers.size()); }
    size_t Frames() const { return frames; }

private:
    pybind11::array kept;  ///< holds the memory
    std::vector<const float*> pointers;
    size_t frames = 0;
};

/// A new array (channels, frames), and the pointers to its rows.
struct NewArray {
    NewArray(uint32_t channels, size_t frames);
    pybind11::array_t<float> array;
    std::vector<float*> rows;
};

}  // namespace Quorvan::Python
