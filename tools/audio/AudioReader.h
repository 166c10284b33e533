#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "tools/audio/AudioSource.h"

namespace Quorvan::Tools {

/// A sound file that is read from start to end: whatever libsndfile reads, with one or two
/// channels. Samples that are no finite numbers become 0 and are counted.
class AudioReader final : public AudioSource {
public:
    /// Throws Failure where the file can't be used.
    explicit AudioReader(const std::filesystem::path& path);
    ~AudioReader() override;

    double Rate() const override;
    uint32_t Channels() const override;
    std::optional<uint64_t> Frames() const override;
    /// Throws Failure where the file can't be read on.
    size_t Read(float* const* channels, size_t frames) override;

    uint64_t BadSamples() const { return badSamples; }

private:
    void Check() const;
    size_t ReadSome(float* const* channels, size_t at, size_t frames);

    struct File;
    std::filesystem::path name;
    std::unique_ptr<File> file;
    std::vector<float> interleaved;
    uint64_t badSamples = 0;
};

}  // namespace Quorvan::Tools
