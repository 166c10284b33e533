#include "tools/audio/Resampler.h"

#include <soxr.h>

#include <array>
#include <cmath>
#include <string>
#include <utility>

#include "tools/audio/SoundLibrary.h"
#include "tools/support/Failure.h"

namespace Quorvan::Tools {

namespace {

constexpr size_t kPiece = 4096;  // frames taken from the original at once

void Check(soxr_error_t error) {
    if (error != nullptr)
        throw Failure(ExitCode::Internal, std::string("The resampler failed: ") + error + ".");
}

}  // namespace

struct Resampler::Converter {
    Converter(double from, double to, uint32_t channels) {
        const soxr_io_spec_t form = soxr_io_spec(SOXR_FLOAT32_S, SOXR_FLOAT32_S);
        const soxr_quality_spec_t quality = soxr_quality_spec(SOXR_VHQ, 0);
        const soxr_runtime_spec_t oneThread = soxr_runtime_spec(1);
        soxr_error_t error = nullptr;
        const std::lock_guard guard(SoundLibrary::Lock());
        handle = soxr_create(from, to, channels, &error, &form, &quality, &oneThread);
        Check(error);
    }
    ~Converter() { soxr_delete(handle); }
    Converter(const Converter&) = delete;
    Converter& operator=(const Converter&) = delete;

    soxr_t handle = nullptr;
};

std::unique_ptr<AudioSource> Resampler::At(double rate, std::unique_ptr<AudioSource> source) {
    if (source->Rate() == rate)
        return source;
    return std::make_unique<Resampler>(rate, std::move(source));
}

Resampler::Resampler(double rate, std::unique_ptr<AudioSource> source)
    : outputRate(rate),
      original(std::move(source)),
      converter(std::make_unique<Converter>(original->Rate(), rate, original->Channels())),
      pending(original->Channels(), kPiece) {}

Resampler::~Resampler() = default;

std::optional<uint64_t> Resampler::Frames() const {
    const std::optional<uint64_t> frames = original->Frames();
    if (!frames)
        return std::nullopt;
    const double length = static_cast<double>(*frames) * outputRate / original->Rate();
    return static_cast<uint64_t>(std::llround(length));
}

void Resampler::Refill() {
    pendingFrom = 0;
    pendingEnd = original->Read(pending.Pointers(), kPiece);
    ended = pendingEnd < kPiece;
}

size_t Resampler::Read(float* const* channels, size_t frames) {
    size_t done = 0;
    while (done < frames) {
        if (pendingFrom == pendingEnd && !ended)
            Refill();
        const bool isOver = pendingFrom == pendingEnd && ended;
        std::array<const float*, 2> in{};
        std::array<float*, 2> out{};
        for (uint32_t c = 0; c < Channels(); ++c) {
            in[c] = pending[c].data() + pendingFrom;
            out[c] = channels[c] + done;
        }
        size_t taken = 0, given = 0;
        // A null input tells the converter that no more will come.
        Check(soxr_process(converter->handle, isOver ? nullptr : in.data(),
                           isOver ? 0 : pendingEnd - pendingFrom, &taken, out.data(), frames - done,
                           &given));
        pendingFrom += taken;
        done += given;
        if (isOver && given == 0)
            break;
    }
    return done;
}

}  // namespace Quorvan::Tools
