#include "tools/audio/AudioWriter.h"

#include <sndfile.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>

#include "tools/audio/Interleaving.h"
#include "tools/audio/OggSerial.h"
#include "tools/audio/SoundLibrary.h"
#include "tools/support/Failure.h"

namespace Quorvan::Tools {

namespace {

// The length fields of WAV hold 32 bits; this leaves room for headers.
constexpr uint64_t kLongestWav = 0xfff00000;
constexpr uint64_t kWidestSample = 4;  // bytes
constexpr uint32_t kBitsOfFloat = std::numeric_limits<float>::digits;

AtomicOutput& Of(void* user) { return *static_cast<AtomicOutput*>(user); }

sf_count_t LengthOf(void* user) { return Of(user).Length(); }
sf_count_t SeekIn(sf_count_t offset, int whence, void* user) {
    return Of(user).Seek(offset, whence);
}
sf_count_t ReadFrom(void* data, sf_count_t bytes, void* user) { return Of(user).Read(data, bytes); }
sf_count_t WriteTo(const void* data, sf_count_t bytes, void* user) {
    return Of(user).Write(data, bytes);
}
sf_count_t TellOf(void* user) { return Of(user).Tell(); }

/// Samples as whole numbers of so many bits, which stand at the top of 32; answers how many lie
/// outside. Real has to hold all of the bits. A loop that compilers can turn into vectors.
template <class Real>
uint32_t Round(const float* samples, size_t frames, uint32_t bits, int32_t* whole) {
    const Real scale = std::ldexp(Real{1}, static_cast<int>(bits) - 1);
    const Real shift = std::ldexp(Real{1}, 32 - static_cast<int>(bits));
    // A full-scale 1.0 lands half a step outside: no clipping that anybody hears.
    const Real most = scale + Real{0.5};
    // From there on numbers of this kind lie one apart.
    const Real ones = std::ldexp(Real{1}, std::numeric_limits<Real>::digits - 1);
    uint32_t outside = 0;
    for (size_t i = 0; i < frames; ++i) {
        const Real wanted = static_cast<Real>(samples[i]) * scale;
        outside += std::abs(wanted) > most ? 1 : 0;
        const Real held = std::min(std::max(wanted, -scale), scale - Real{1});
        // The sum is rounded to the nearest, the even one of two.
        const Real away = std::copysign(ones, held);
        whole[i] = static_cast<int32_t>(((held + away) - away) * shift);
    }
    return outside;
}

}  // namespace

struct AudioWriter::File {
    ~File() { Close(); }
    int Close() {
        const int error = handle != nullptr ? sf_close(handle) : 0;
        handle = nullptr;
        return error;
    }
    SNDFILE* handle = nullptr;
    SF_VIRTUAL_IO operations{LengthOf, SeekIn, ReadFrom, WriteTo, TellOf};
};

AudioWriter::AudioWriter(AtomicOutput& target, const AudioFormat& format, double rate,
                         uint32_t channels, uint64_t expectedFrames, const SoundTags& tags)
    : output(target), form(format), channelCount(channels), file(std::make_unique<File>()) {
    Open(rate, expectedFrames, tags);
}

AudioWriter::~AudioWriter() = default;

void AudioWriter::Open(double rate, uint64_t expectedFrames, const SoundTags& tags) {
    SF_INFO info{};
    info.samplerate = static_cast<int>(std::lround(rate));
    info.channels = static_cast<int>(channelCount);
    info.format = form.code;
    const bool isWav = (form.code & SF_FORMAT_TYPEMASK) == SF_FORMAT_WAV;
    if (isWav && expectedFrames * channelCount * kWidestSample > kLongestWav)
        info.format = SF_FORMAT_RF64 | (form.code & SF_FORMAT_SUBMASK);
    const std::lock_guard guard(SoundLibrary::Lock());
    file->handle = sf_open_virtual(&file->operations, SFM_WRITE, &info, &output);
    if (file->handle == nullptr) {
        output.ThrowIfFailed();
        throw Failure(ExitCode::Output,
                      output.Text() + " could not be begun: " + sf_strerror(nullptr));
    }
    // That chunk would hold the time of day.
    sf_command(file->handle, SFC_SET_ADD_PEAK_CHUNK, nullptr, SF_FALSE);
    sf_command(file->handle, SFC_SET_CLIPPING, nullptr, SF_TRUE);
    tags.WriteTo(file->handle);
}

void AudioWriter::Write(const float* const* channels, size_t frames) {
    form.bits == 0 ? WriteFloats(channels, frames) : WriteIntegers(channels, frames);
}

void AudioWriter::WriteFloats(const float* const* channels, size_t frames) {
    floats.resize(frames * channelCount);
    Interleave(channels, channelCount, frames, floats.data());
    Check(sf_writef_float(file->handle, floats.data(), static_cast<sf_count_t>(frames)), frames);
}

void AudioWriter::WriteIntegers(const float* const* channels, size_t frames) {
    integers.resize(frames * channelCount);
    std::array<const int32_t*, 2> rows{};
    for (uint32_t c = 0; c < channelCount; ++c) {
        whole[c].resize(frames);
        rows[c] = whole[c].data();
        clipped += form.bits <= kBitsOfFloat
                       ? Round<float>(channels[c], frames, form.bits, whole[c].data())
                       : Round<double>(channels[c], frames, form.bits, whole[c].data());
    }
    Interleave(rows.data(), channelCount, frames, integers.data());
    Check(sf_writef_int(file->handle, integers.data(), static_cast<sf_count_t>(frames)), frames);
}

void AudioWriter::Check(int64_t written, size_t wanted) const {
    output.ThrowIfFailed();
    if (written != static_cast<int64_t>(wanted))
        throw Failure(ExitCode::Output,
                      output.Text() + " could not be written: " + sf_strerror(file->handle) + ".");
}

void AudioWriter::Finish() {
    const int error = file->Close();
    output.Complete();
    if (error != 0)
        throw Failure(ExitCode::Output,
                      output.Text() + " could not be completed: " + sf_error_number(error));
    if (form.isOgg)
        FixOggSerial(output);
}

}  // namespace Quorvan::Tools
