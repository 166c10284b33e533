#pragma once

#include <cstddef>
#include <map>
#include <string>

struct sf_private_tag;

namespace Quorvan::Tools {

/// The texts that a sound file carries beside its sound: title, artist, comment and the like, in
/// UTF-8. FLAC, OGG and CAF hold all of them; WAV no licence; AIFF title, artist, copyright and
/// comment; raw sound none.
class SoundTags {
public:
    /// Bytes of a text. libsndfile reads no longer ones in WAV, and a few times as much breaks its
    /// AIFF files.
    static constexpr size_t kLongest = 2000;

    SoundTags() = default;
    /// Those of a file of libsndfile's that is open for reading.
    explicit SoundTags(sf_private_tag* file);

    /// Into a file that is open for writing and has no sound yet. What its container does not hold
    /// is left out, and what is longer than kLongest is cut.
    void WriteTo(sf_private_tag* file) const;

    const std::string& Comment() const;
    /// Puts a line behind those of the comment, which loses its oldest ones where it would be
    /// longer than kLongest.
    void AddToComment(const std::string& line);
    /// Names the program that writes the file.
    void SetSoftware(const std::string& name);

    /// Readable name of each, and its text; neither the comment nor the software.
    std::map<std::string, std::string> Named() const;

private:
    std::map<int, std::string> texts;  ///< by libsndfile's numbers
};

}  // namespace Quorvan::Tools
