#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "tools/support/PartFile.h"
#include "tools/support/StandardStreams.h"

namespace Quorvan::Tools {

/// A file that appears whole or not at all: written under a name of its own beside its place, and
/// renamed to its place by Commit. Without Commit, or when a signal ends the process, nothing is
/// left of it, and an older file stays as it was. "-" is standard output, which likewise gets the
/// whole or nothing.
class AtomicOutput {
public:
    /// Opens the file for target. Throws Failure where it can't be written, or where something is
    /// there already and replace is false. search tells how to find what killed runs have left.
    AtomicOutput(const std::filesystem::path& target, bool replace,
                 PartFile::Search search = PartFile::Search::Folder);
    ~AtomicOutput();
    AtomicOutput(const AtomicOutput&) = delete;
    AtomicOutput& operator=(const AtomicOutput&) = delete;

    /// Plain file operations, for libraries that write through callbacks. They answer as those of C
    /// do; the first error is kept for Commit. What is written waits here until it fills a block,
    /// so an error may show only behind it.
    int64_t Write(const void* data, int64_t bytes);
    int64_t Read(void* data, int64_t bytes);
    int64_t Seek(int64_t offset, int whence);
    int64_t Tell() { return Seek(0, 1); }
    int64_t Length();

    /// Gives the system all that was written. Throws Failure where one of the operations has
    /// failed.
    void Complete();
    /// Throws Failure where one of the operations has failed.
    void ThrowIfFailed() const;
    /// Brings everything to the disk and the file to its place. Throws Failure where that can't be.
    void Commit();

    /// Where a file of this name goes. Follows links, so that the file behind a link is replaced
    /// and not the link.
    static std::filesystem::path PlaceOf(const std::filesystem::path& name);

    /// How sentences cite it.
    std::string Text() const { return StandardStreams::OutputText(name); }
    bool IsStandardOutput() const { return StandardStreams::IsMeant(name); }

private:
    void OpenTemporary(PartFile::Search search);
    void CheckPlace() const;
    void MoveToPlace();
    void KeepPermissions() const;
    bool Flush();
    bool Keep(bool succeeded);
    [[noreturn]] void Fail(int error) const;

    std::filesystem::path name;   ///< as given
    std::filesystem::path place;  ///< where it goes, links followed
    std::string temporary;        ///< where it is written
    bool replaces;
    int file = -1;
    size_t registration = 0;    ///< with TemporaryFiles, while file is open
    int firstError = 0;         ///< errno of the first failed operation
    std::vector<char> waiting;  ///< written, but not given to the system
};

}  // namespace Quorvan::Tools
