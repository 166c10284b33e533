#include "tools/audio/SoundShelf.h"

#include <sys/stat.h>

#include <algorithm>
#include <utility>

#include "tools/audio/Planes.h"

namespace Quorvan::Tools {

namespace {

constexpr uint64_t kMostSamples = 4 << 20;  // of all channels

}  // namespace

struct SoundShelf::Kept {
    bool IsShort() const {
        const auto frames = reader->Frames();
        return frames && *frames <= kMostSamples / reader->Channels();
    }

    std::shared_ptr<AudioReader> reader;
    Planes sound;          ///< room for all of it, or for none
    bool isWhole = false;  ///< sound holds all of it
};

/// Reads the file, or what is kept of it.
class SoundShelf::Source final : public AudioSource {
public:
    explicit Source(std::shared_ptr<Kept> wanted) : kept(std::move(wanted)) {}
    double Rate() const override { return kept->reader->Rate(); }
    uint32_t Channels() const override { return kept->reader->Channels(); }
    std::optional<uint64_t> Frames() const override { return kept->reader->Frames(); }
    size_t Read(float* const* channels, size_t frames) override {
        const size_t count = kept->isWhole ? Take(channels, frames) : ReadOn(channels, frames);
        at += count;
        return count;
    }

private:
    size_t Take(float* const* channels, size_t frames) const {
        const size_t count = std::min(frames, kept->sound.Frames() - at);
        for (uint32_t c = 0; c < Channels(); ++c)
            std::copy_n(kept->sound[c].data() + at, count, channels[c]);
        return count;
    }

    size_t ReadOn(float* const* channels, size_t frames) {
        const size_t count = kept->reader->Read(channels, frames);
        const size_t room = kept->sound.Frames();
        if (at + count > room)
            return count;
        for (uint32_t c = 0; c < Channels(); ++c)
            std::copy_n(channels[c], count, kept->sound[c].data() + at);
        kept->isWhole = count < frames && at + count == room;
        return count;
    }

    std::shared_ptr<Kept> kept;
    size_t at = 0;
};

std::optional<SoundShelf::Mark> SoundShelf::MarkOf(const std::filesystem::path& path,
                                                   const std::optional<RawSound>& raw) {
    struct stat there {};
    if (stat(path.c_str(), &there) != 0 || !S_ISREG(there.st_mode))
        return std::nullopt;
    return Mark{static_cast<int64_t>(there.st_dev),
                static_cast<int64_t>(there.st_ino),
                there.st_size,
                there.st_mtim.tv_sec * 1'000'000'000 + there.st_mtim.tv_nsec,
                there.st_ctim.tv_sec * 1'000'000'000 + there.st_ctim.tv_nsec,
                raw ? 1 : 0,
                raw ? raw->rate : 0,
                raw ? raw->channels : 0};
}

SoundShelf::Opened SoundShelf::Open(const std::filesystem::path& path,
                                    std::optional<RawSound> raw) {
    const std::optional<Mark> found = MarkOf(path, raw);
    const bool isAgain = found && kept != nullptr && found == mark;
    if (!isAgain || !kept->isWhole) {
        kept.reset();  // ahead of the next, so that there is never more than one
        kept = std::make_shared<Kept>();
        kept->reader = std::make_shared<AudioReader>(path, raw);
        if (isAgain && kept->IsShort())
            kept->sound.Resize(kept->reader->Channels(), *kept->reader->Frames());
        mark = found;
    }
    return {std::make_unique<Source>(kept), kept->reader};
}

}  // namespace Quorvan::Tools
