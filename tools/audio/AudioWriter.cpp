#include "tools/audio/AudioWriter.h"

#include <sndfile.h>

#include <algorithm>
#include <cmath>
#include <string>

#include "tools/audio/OggSerial.h"
#include "tools/audio/SoundLibrary.h"
#include "tools/support/Failure.h"

namespace Quorvan::Tools {

namespace {

// The length fields of WAV hold 32 bits; this leaves room for headers.
constexpr uint64_t kLongestWav = 0xfff00000;
constexpr uint64_t kWidestSample = 4;  // bytes
constexpr double kDoublesOfOne = 0x1.8p52;

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
    for (uint32_t c = 0; c < channelCount; ++c)
        for (size_t i = 0; i < frames; ++i)
            floats[i * channelCount + c] = channels[c][i];
    Check(sf_writef_float(file->handle, floats.data(), static_cast<sf_count_t>(frames)), frames);
}

void AudioWriter::WriteIntegers(const float* const* channels, size_t frames) {
    integers.resize(frames * channelCount);
    whole.resize(frames);
    for (uint32_t c = 0; c < channelCount; ++c) {
        Round(channels[c], frames);
        for (size_t i = 0; i < frames; ++i)
            integers[i * channelCount + c] = whole[i];
    }
    Check(sf_writef_int(file->handle, integers.data(), static_cast<sf_count_t>(frames)), frames);
}

/// One channel into whole, in a loop that compilers can turn into vectors.
void AudioWriter::Round(const float* samples, size_t frames) {
    const double scale = std::ldexp(1.0, static_cast<int>(form.bits) - 1);
    const double shift = std::ldexp(1.0, 32 - static_cast<int>(form.bits));
    int64_t outside = 0;
    for (size_t i = 0; i < frames; ++i) {
        // Within what a whole number holds; how far outside it was does not matter.
        const double wanted =
            std::min(std::max(static_cast<double>(samples[i]) * scale, -scale - 1.0), scale + 1.0);
        // There, doubles lie one apart: the sum is rounded to the nearest, the even one of two.
        const double level = wanted + kDoublesOfOne - kDoublesOfOne;
        const double held = std::min(std::max(level, -scale), scale - 1.0);
        // A full-scale 1.0 lands half a step outside: no clipping that anybody hears.
        outside += std::abs(level) > scale ? 1 : 0;
        whole[i] = static_cast<int32_t>(held * shift);
    }
    clipped += static_cast<uint64_t>(outside);
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
