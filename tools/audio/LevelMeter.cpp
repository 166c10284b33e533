#include "tools/audio/LevelMeter.h"

#include <ebur128.h>

#include <algorithm>
#include <cmath>
#include <new>

#include "primitives/LevelKernels.h"
#include "tools/audio/Interleaving.h"

namespace Quorvan::Tools {

struct LevelMeter::State {
    State(double rate, uint32_t channels)
        : handle(ebur128_init(channels, static_cast<unsigned long>(std::lround(rate)),
                              EBUR128_MODE_I)) {
        if (handle == nullptr)
            throw std::bad_alloc();
    }
    ~State() { ebur128_destroy(&handle); }
    State(const State&) = delete;
    State& operator=(const State&) = delete;

    ebur128_state* handle;
};

LevelMeter::LevelMeter(double rate, uint32_t channels, bool measuresLoudness)
    : state(measuresLoudness ? std::make_unique<State>(rate, channels) : nullptr),
      channelCount(channels) {}
LevelMeter::~LevelMeter() = default;

void LevelMeter::Add(const float* const* channels, size_t frames) {
    for (uint32_t c = 0; c < channelCount; ++c)
        peak = std::max(peak,
                        dsp::LevelKernels::Best().size(channels[c], static_cast<uint32_t>(frames)));
    if (state == nullptr)
        return;
    interleaved.resize(frames * channelCount);
    Interleave(channels, channelCount, frames, interleaved.data());
    if (ebur128_add_frames_float(state->handle, interleaved.data(), frames) != EBUR128_SUCCESS)
        throw std::bad_alloc();
}

std::optional<double> LevelMeter::Loudness() const {
    double loudness = 0.0;
    if (state == nullptr || ebur128_loudness_global(state->handle, &loudness) != EBUR128_SUCCESS ||
        !std::isfinite(loudness))
        return std::nullopt;
    return loudness;
}

}  // namespace Quorvan::Tools
