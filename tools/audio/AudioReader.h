#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "tools/audio/AudioSource.h"
#include "tools/audio/SoundTags.h"

namespace Quorvan::Tools {

/// What a sound without a header holds: 32-bit floats, low byte first, channels interleaved.
struct RawSound {
    uint32_t rate;  ///< hertz
    uint32_t channels;
};

/// A sound file that is read from start to end: whatever libsndfile reads, with one or two
/// channels. Samples that are no finite numbers become 0 and are counted.
class AudioReader final : public AudioSource {
public:
    /// "-" is standard input. raw says that the sound has no header. Throws Failure where the file
    /// can't be used.
    explicit AudioReader(const std::filesystem::path& path, std::optional<RawSound> raw = {});
    ~AudioReader() override;

    double Rate() const override;
    uint32_t Channels() const override;
    std::optional<uint64_t> Frames() const override;
    /// Throws Failure where the file can't be read on.
    size_t Read(float* const* channels, size_t frames) override;

    uint64_t BadSamples() const { return badSamples; }
    /// Of what has been read, linear.
    float Peak() const { return peak; }
    /// What the file says beside its sound.
    SoundTags Tags() const;
    /// For people: "WAV (Microsoft), Signed 24 bit PCM".
    std::string FormatText() const;

private:
    void Open(const std::optional<RawSound>& raw);
    void Check() const;
    size_t ReadSome(float* const* channels, size_t at, size_t frames);
    void Look(size_t samples);

    struct File;
    std::filesystem::path name;
    std::unique_ptr<File> file;
    std::vector<float> interleaved;
    uint64_t badSamples = 0;
    float peak = 0.0f;
};

}  // namespace Quorvan::Tools
