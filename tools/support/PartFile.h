#pragma once

#include <filesystem>

namespace Quorvan::Tools {

/// The hidden file beside a place in which it is written until it is whole: ".out.wav.123.part", by
/// the number of the process. A live process holds a lock on its own, so that those which a killed
/// or crashed run has left behind can be told from those of other runs, on other machines too.
class PartFile {
public:
    /// How leftovers are found: by a look at the whole folder, or, where thousands of files go into
    /// one, by a name that takes no number of the process: ".out.wav.0.part".
    enum class Search { Folder, Name };

    /// Names only; nothing is made.
    PartFile(const std::filesystem::path& place, Search how);

    /// Makes the file, open for reading and writing and locked. Answers its descriptor, or -1 with
    /// errno set.
    int Open() const;
    /// Removes what runs that live no more have left for the same place.
    void RemoveLeftovers() const;

    const std::filesystem::path& Path() const { return path; }

private:
    Search search;
    std::filesystem::path folder;
    std::string stem;  ///< ".out.wav."
    std::filesystem::path path;
};

}  // namespace Quorvan::Tools
