#include "tools/support/AtomicOutput.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "host/parameters/Sentence.h"
#include "tools/support/DanglingLink.h"
#include "tools/support/Failure.h"
#include "tools/support/TemporaryFiles.h"

namespace Quorvan::Tools {

namespace {

namespace fs = std::filesystem;

constexpr size_t kBlock = 1 << 18;            // bytes that one call of the system takes
constexpr size_t kRoom = kBlock + (1 << 14);  // what completes a block may be longer than that

std::string Reason(int error) {
    switch (error) {
        case ENOSPC:
        case EDQUOT:
            return "the disk is full. Free some space or write to another disk.";
        case EFBIG:
            return "it would be larger than the system allows. Write to another disk, render "
                   "less, or choose a smaller format.";
        case EACCES:
        case EPERM:
            return "you have no permission to write in that folder. Choose another one.";
        case EROFS:
            return "that disk can only be read. Choose another one.";
        case ENOENT:
        case ENOTDIR:
            return "that folder does not exist. Make it first, or choose another one.";
        case ENAMETOOLONG:
            return "the name is too long. Choose a shorter one.";
        case EEXIST:
            return "another run of this program is writing it. Wait for that, or choose another "
                   "name.";
        default:
            return std::string(std::strerror(error)) + ".";
    }
}

}  // namespace

fs::path AtomicOutput::PlaceOf(const fs::path& name) {
    std::error_code error;
    const fs::path resolved = fs::weakly_canonical(fs::absolute(name, error), error);
    return error ? name : resolved;
}

AtomicOutput::AtomicOutput(const fs::path& target, bool replace, PartFile::Search search)
    : name(target), place(PlaceOf(target)), replaces(replace) {
    if (IsStandardOutput()) {
        StandardStreams::CheckOutput();
        file = StandardStreams::OpenNameless();
        return;
    }
    CheckPlace();
    OpenTemporary(search);
}

AtomicOutput::~AtomicOutput() {
    if (file < 0)
        return;
    const SignalPause pause;
    close(file);
    if (IsStandardOutput())
        return;
    unlink(temporary.c_str());
    TemporaryFiles::Forget(registration);
}

void AtomicOutput::CheckPlace() const {
    const auto refuse = [this](const std::string& rest) {
        throw Failure(ExitCode::Output, Host::Quoted(name.string()) + " " + rest);
    };
    struct stat there {};
    if (name.filename().empty())
        refuse("names a folder. Name a file in it.");
    if (stat(place.c_str(), &there) != 0) {
        if (errno != ENOENT)
            Fail(errno);
        if (const auto link = DanglingLinkText(place))
            refuse(*link + " Make that, remove the link, or choose another name.");
        return;
    }
    if (S_ISDIR(there.st_mode))
        refuse("is a folder. Name a file in it.");
    if (!S_ISREG(there.st_mode))
        refuse("is a device or a pipe. Name an ordinary file.");
    if (!replaces)
        refuse("exists already. Choose another name, or replace it with --force.");
}

void AtomicOutput::OpenTemporary(PartFile::Search search) {
    const PartFile part(place, search);
    temporary = part.Path().string();
    const SignalPause pause;
    part.RemoveLeftovers();
    file = part.Open();
    if (file < 0)
        Fail(errno);
    try {
        registration = TemporaryFiles::Add(temporary);
    } catch (...) {
        close(file);
        unlink(temporary.c_str());
        throw;
    }
}

int64_t AtomicOutput::Write(const void* data, int64_t bytes) {
    const auto* const from = static_cast<const char*>(data);
    if (waiting.capacity() == 0)
        waiting.reserve(kRoom);
    waiting.insert(waiting.end(), from, from + bytes);
    return waiting.size() < kBlock || Flush() ? bytes : 0;
}

/// Gives the system what waits. Answers false where it did not take all, which is lost then.
bool AtomicOutput::Flush() {
    size_t done = 0;
    bool succeeded = true;
    while (succeeded && done < waiting.size()) {
        const ssize_t count = write(file, waiting.data() + done, waiting.size() - done);
        if (count < 0 && errno == EINTR)
            continue;
        succeeded = Keep(count > 0);
        done += succeeded ? static_cast<size_t>(count) : 0;
    }
    waiting.clear();
    return succeeded;
}

int64_t AtomicOutput::Read(void* data, int64_t bytes) {
    Flush();
    const ssize_t count = read(file, data, static_cast<size_t>(bytes));
    Keep(count >= 0);
    return count < 0 ? 0 : count;
}

int64_t AtomicOutput::Seek(int64_t offset, int whence) {
    Flush();
    const off_t at = lseek(file, offset, whence);
    Keep(at >= 0);
    return at;
}

int64_t AtomicOutput::Length() {
    Flush();
    struct stat there {};
    return Keep(fstat(file, &there) == 0) ? there.st_size : -1;
}

bool AtomicOutput::Keep(bool succeeded) {
    if (!succeeded && firstError == 0)
        firstError = errno != 0 ? errno : EIO;
    return succeeded;
}

void AtomicOutput::Fail(int error) const {
    throw Failure(ExitCode::Output, Text() + " could not be written: " + Reason(error));
}

void AtomicOutput::ThrowIfFailed() const {
    if (firstError != 0)
        Fail(firstError);
}

void AtomicOutput::Complete() {
    Flush();
    ThrowIfFailed();
}

void AtomicOutput::Commit() {
    Complete();
    if (IsStandardOutput())
        return StandardStreams::CopyToOutput(file);
    KeepPermissions();
    // Some disks tell that they are full only here. Those that know no such call have nothing to
    // tell.
    if (fsync(file) != 0 && errno != EINVAL && errno != ENOTSUP)
        Fail(errno);
    const SignalPause pause;
    MoveToPlace();
    TemporaryFiles::Forget(registration);
    close(file);
    file = -1;
}

void AtomicOutput::KeepPermissions() const {
    struct stat older {};
    if (stat(place.c_str(), &older) == 0)
        fchmod(file, older.st_mode & 07777);
}

void AtomicOutput::MoveToPlace() {
    if (!replaces) {
        // Also refuses a file that has come into being while this one was written.
        if (renameat2(AT_FDCWD, temporary.c_str(), AT_FDCWD, place.c_str(), RENAME_NOREPLACE) == 0)
            return;
        if (errno == EEXIST)
            CheckPlace();
        if (errno != EINVAL && errno != ENOSYS)
            Fail(errno);
        CheckPlace();
    }
    if (rename(temporary.c_str(), place.c_str()) != 0)
        Fail(errno);
}

}  // namespace Quorvan::Tools
