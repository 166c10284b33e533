#include "primitives/DelayLine.h"

#include <algorithm>

namespace Quorvan::dsp {

DelayLine& DelayLine::operator=(const DelayLine& other) {
    if (this == &other)
        return *this;
    storage = other.storage;
    data = storage.data();
    isClear = other.isClear;
    size = other.size;
    writeIndex = other.writeIndex;
    allpassState = other.allpassState;
    return *this;
}

void DelayLine::Resize(int32_t length) {
    storage.assign(static_cast<size_t>(length), 0.0f);
    data = storage.data();
    size = length;
    writeIndex = 0;
    allpassState = 0.0f;
    isClear = true;
}

void DelayLine::Clear() {
    writeIndex = 0;
    allpassState = 0.0f;
    if (data != nullptr && !isClear && size > 0)
        std::fill_n(data, size, 0.0f);
    // The owners write through data, which nobody sees: from here on the content counts as unknown.
    isClear = false;
}

float DelayLine::AtFar(int64_t index) const {
    const int64_t inRing = index % size;
    return data[inRing < 0 ? inRing + size : inRing];
}

float DelayLine::ReadAllpass(int64_t index, float x) {
    const float c = (1.0f - x) / (1.0f + x);
    allpassState = c * At(index) + At(index - 1) - allpassState * c;
    return allpassState;
}

}  // namespace Quorvan::dsp
