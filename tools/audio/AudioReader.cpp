#include "tools/audio/AudioReader.h"

#include <sndfile.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>

#include "primitives/FiniteSamples.h"
#include "primitives/LevelKernels.h"
#include "tools/audio/Interleaving.h"
#include "tools/audio/SoundLibrary.h"
#include "tools/support/DanglingLink.h"
#include "tools/support/Failure.h"
#include "tools/support/StandardStreams.h"

namespace Quorvan::Tools {

namespace {

constexpr size_t kPiece = 4096;       // frames read at once
constexpr int kLowestRate = 1000;     // hertz, what the processor runs at
constexpr int kHighestRate = 768000;  // hertz

[[noreturn]] void Refuse(const std::filesystem::path& name, const std::string& rest) {
    throw Failure(ExitCode::Input, StandardStreams::InputText(name) + " " + rest);
}

void CheckFilled(const std::filesystem::path& name, const struct stat& there) {
    if (S_ISREG(there.st_mode) && there.st_size == 0)
        Refuse(name, "is empty, 0 bytes long. Export or copy it again.");
}

/// What libsndfile would only call a system error, in words.
void CheckReadable(const std::filesystem::path& name) {
    struct stat there {};
    if (const auto link = DanglingLinkText(name))
        Refuse(name, *link + " Point it to the sound, or name that.");
    if (stat(name.c_str(), &there) != 0)
        Refuse(name, errno == ENOENT || errno == ENOTDIR
                         ? "does not exist. Check the name and the folder."
                         : std::string("can't be reached: ") + std::strerror(errno) + ".");
    if (S_ISDIR(there.st_mode))
        Refuse(name, "is a folder. Name a sound file in it.");
    if (access(name.c_str(), R_OK) != 0)
        Refuse(name, "may not be read by you. Change its permissions or take a copy.");
    CheckFilled(name, there);
}

}  // namespace

struct AudioReader::File {
    ~File() {
        if (handle != nullptr)
            sf_close(handle);
    }
    SNDFILE* handle = nullptr;
    SF_INFO info{};
};

AudioReader::AudioReader(const std::filesystem::path& path, std::optional<RawSound> raw)
    : name(path), file(std::make_unique<File>()) {
    const std::lock_guard guard(SoundLibrary::Lock());
    Open(raw);
    if (file->handle == nullptr)
        Refuse(name, std::string("is no sound file that can be read (") + sf_strerror(nullptr) +
                         ") Convert it to WAV, AIFF, FLAC, OGG or CAF first.");
    Check();
    interleaved.resize(kPiece * Channels());
}

AudioReader::~AudioReader() = default;

void AudioReader::Open(const std::optional<RawSound>& raw) {
    if (raw) {
        file->info.samplerate = static_cast<int>(raw->rate);
        file->info.channels = static_cast<int>(raw->channels);
        file->info.format = SF_FORMAT_RAW | SF_FORMAT_FLOAT | SF_ENDIAN_LITTLE;
    }
    if (StandardStreams::IsMeant(name)) {
        const int input = StandardStreams::OpenInput();
        struct stat there {};
        if (fstat(input, &there) == 0)
            CheckFilled(name, there);
        file->handle = sf_open_fd(input, SFM_READ, &file->info, SF_TRUE);
    } else {
        CheckReadable(name);
        file->handle = sf_open(name.c_str(), SFM_READ, &file->info);
    }
}

void AudioReader::Check() const {
    const SF_INFO& info = file->info;
    if (info.channels > 2)
        Refuse(name, "has " + std::to_string(info.channels) +
                         " channels; one or two can be taken. Mix it down to stereo first.");
    if (info.channels < 1 || info.frames == 0)
        Refuse(name, "holds no sound, only a header. Export it again.");
    if (info.samplerate < kLowestRate || info.samplerate > kHighestRate)
        Refuse(name, "has a sample rate of " + std::to_string(info.samplerate) +
                         " Hz; rates from 1000 to 768000 Hz can be taken. Convert it first.");
}

double AudioReader::Rate() const { return file->info.samplerate; }
uint32_t AudioReader::Channels() const { return static_cast<uint32_t>(file->info.channels); }

std::optional<uint64_t> AudioReader::Frames() const {
    // Formats that can't tell their length say the largest number.
    if (file->info.frames < 0 || file->info.frames == SF_COUNT_MAX)
        return std::nullopt;
    return static_cast<uint64_t>(file->info.frames);
}

SoundTags AudioReader::Tags() const { return SoundTags(file->handle); }

std::string AudioReader::FormatText() const {
    const auto nameOf = [](int format) {
        SF_FORMAT_INFO info{};
        info.format = format;
        const bool known = sf_command(nullptr, SFC_GET_FORMAT_INFO, &info, sizeof info) == 0;
        return std::string(known && info.name != nullptr ? info.name : "unknown");
    };
    return nameOf(file->info.format & SF_FORMAT_TYPEMASK) + ", " +
           nameOf(file->info.format & SF_FORMAT_SUBMASK);
}

size_t AudioReader::Read(float* const* channels, size_t frames) {
    size_t done = 0;
    while (done < frames) {
        const size_t count = ReadSome(channels, done, std::min(kPiece, frames - done));
        if (count == 0)
            break;
        done += count;
    }
    return done;
}

size_t AudioReader::ReadSome(float* const* channels, size_t at, size_t frames) {
    const sf_count_t got =
        sf_readf_float(file->handle, interleaved.data(), static_cast<sf_count_t>(frames));
    if (sf_error(file->handle) != SF_ERR_NO_ERROR)
        Refuse(name, std::string("is damaged and can't be read to its end (") +
                         sf_strerror(file->handle) + ") Export or copy it again.");
    const auto count = static_cast<size_t>(std::max<sf_count_t>(got, 0));
    Look(count * Channels());
    Separate(interleaved.data(), Channels(), count, channels, at);
    return count;
}

/// At samples that have just come in: all but finite numbers become 0.
void AudioReader::Look(size_t samples) {
    const auto length = static_cast<uint32_t>(samples);
    if (dsp::HasNonFinite(interleaved.data(), length)) {
        const auto isBad = [](float sample) { return !std::isfinite(sample); };
        const auto end = interleaved.begin() + static_cast<std::ptrdiff_t>(samples);
        badSamples += static_cast<uint64_t>(std::count_if(interleaved.begin(), end, isBad));
        std::replace_if(interleaved.begin(), end, isBad, 0.0f);
    }
    peak = std::max(peak, dsp::LevelKernels::Best().size(interleaved.data(), length));
}

}  // namespace Quorvan::Tools
