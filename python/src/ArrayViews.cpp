#include "python/src/ArrayViews.h"

#include <string>

#include "python/src/Errors.h"

namespace py = pybind11;

namespace Quorvan::Python {

namespace {

constexpr py::ssize_t kSample = sizeof(float);

bool CanStay(const py::array& array) {
    constexpr int kAligned = py::detail::npy_api::NPY_ARRAY_ALIGNED_;
    return py::isinstance<py::array_t<float>>(array) && (array.flags() & kAligned) != 0 &&
           (array.shape(array.ndim() - 1) <= 1 || array.strides(array.ndim() - 1) == kSample);
}

py::array AsFloats(const py::object& sound) {
    py::array array = py::array::ensure(sound);
    if (!array || array.ndim() < 1 || array.ndim() > 2)
        RefuseValue("Sound is an array of floats of the shape (channels, frames) or (frames,).");
    if (array.ndim() == 2 && (array.shape(0) < 1 || array.shape(0) > 2))
        RefuseValue("The array has " + std::to_string(array.shape(0)) +
                    " channels; one or two can be taken. Its shape is (channels, frames): "
                    "transpose one of (frames, channels).");
    const char kind = array.dtype().kind();
    if (kind != 'f')
        RefuseValue("The array holds no floats. Divide whole numbers by their full scale first.");
    if (CanStay(array))
        return array;
    return py::array_t<float, py::array::c_style | py::array::forcecast>(array);
}

}  // namespace

ArrayView::ArrayView(const py::object& sound) : kept(AsFloats(sound)) {
    const bool isFlat = kept.ndim() == 1;
    frames = static_cast<size_t>(kept.shape(kept.ndim() - 1));
    const auto* const start = static_cast<const char*>(kept.data());
    for (py::ssize_t c = 0; c < (isFlat ? 1 : kept.shape(0)); ++c)
        pointers.push_back(
            reinterpret_cast<const float*>(start + (isFlat ? 0 : c * kept.strides(0))));
}

NewArray::NewArray(uint32_t channels, size_t frames)
    : array({static_cast<py::ssize_t>(channels), static_cast<py::ssize_t>(frames)}) {
    for (uint32_t c = 0; c < channels; ++c)
        rows.push_back(array.mutable_data() + c * frames);
}

}  // namespace Quorvan::Python
