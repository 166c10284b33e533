#pragma once

#include <memory>

#include "tools/audio/AudioSource.h"
#include "tools/audio/Planes.h"

namespace Quorvan::Tools {

/// Another sound at another sample rate. Method: libsoxr, 28 bits, linear phase; no delay.
class Resampler final : public AudioSource {
public:
    /// The source at rate; the source itself where it has that rate already.
    static std::unique_ptr<AudioSource> At(double rate, std::unique_ptr<AudioSource> source);

    Resampler(double rate, std::unique_ptr<AudioSource> source);
    ~Resampler() override;

    double Rate() const override { return outputRate; }
    uint32_t Channels() const override { return original->Channels(); }
    std::optional<uint64_t> Frames() const override;
    size_t Read(float* const* channels, size_t frames) override;

private:
    void Refill();

    double outputRate;
    std::unique_ptr<AudioSource> original;
    struct Converter;
    std::unique_ptr<Converter> converter;
    Planes pending;          ///< read from the original, not all of it converted yet
    size_t pendingFrom = 0;  ///< frame of pending that comes next
    size_t pendingEnd = 0;
    bool ended = false;  ///< the original has no more
};

}  // namespace Quorvan::Tools
