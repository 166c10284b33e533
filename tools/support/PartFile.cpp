#include "tools/support/PartFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <string>
#include <string_view>

namespace Quorvan::Tools {

namespace {

namespace fs = std::filesystem;

constexpr mode_t kPermissions = 0666;  // the user's mask takes off what shall not be
constexpr std::string_view kEnding = ".part";
constexpr size_t kNumberRoom = 12;  // a process number and its dot

size_t LongestName(const fs::path& folder) {
    const long longest = pathconf(folder.c_str(), _PC_NAME_MAX);
    return longest > 0 ? static_cast<size_t>(longest) : NAME_MAX;
}

/// Tells long names apart that start the same. Method: 32-bit FNV-1a.
std::string Digest(std::string_view name) {
    uint32_t sum = 2166136261u;
    for (const char letter : name)
        sum = (sum ^ static_cast<unsigned char>(letter)) * 16777619u;
    char text[16];
    std::snprintf(text, sizeof text, "%08x", sum);
    return text;
}

/// The name, with a digest in the place of its end where it is longer than room.
std::string Shortened(const std::string& name, size_t room) {
    if (name.size() <= room)
        return name;
    std::string digest(1, '~');
    digest += Digest(name);
    size_t length = room - digest.size();
    while (length > 0 && (static_cast<unsigned char>(name[length]) & 0xc0) == 0x80)
        --length;  // not inside a letter of several bytes
    return name.substr(0, length) + digest;
}

bool IsNumber(std::string_view text) {
    return !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
}

/// Removes the file if nobody holds it: then its run has ended.
void RemoveIfLeft(const fs::path& path) {
    const int file = open(path.c_str(), O_RDWR | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK);
    if (file < 0)
        return;
    struct stat there {};
    // Under the lock, so that a run that has just made it sees that it has gone.
    if (fstat(file, &there) == 0 && S_ISREG(there.st_mode) && flock(file, LOCK_EX | LOCK_NB) == 0)
        unlink(path.c_str());
    close(file);
}

}  // namespace

PartFile::PartFile(const fs::path& place, Search how) : search(how), folder(place.parent_path()) {
    const size_t longest = LongestName(folder);
    const size_t room = longest > 64 ? longest - kNumberRoom - kEnding.size() - 1 : longest;
    stem.assign(1, '.');
    stem.append(Shortened(place.filename().string(), room)).push_back('.');
    const std::string number = how == Search::Name ? "0" : std::to_string(getpid());
    path = folder / (stem + number + std::string(kEnding));
}

int PartFile::Open() const {
    for (int attempt = 0; attempt < 8; ++attempt) {
        const int file = open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, kPermissions);
        if (file < 0)
            return -1;
        // Where locks are unknown, leftovers stay, and nothing else is lost.
        flock(file, LOCK_EX);
        struct stat there {};
        if (fstat(file, &there) == 0 && there.st_nlink > 0)
            return file;
        close(file);  // another run has taken it for a leftover ahead of the lock
    }
    errno = EAGAIN;
    return -1;
}

void PartFile::RemoveLeftovers() const {
    if (search == Search::Name)
        return RemoveIfLeft(path);
    std::error_code error;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
        const std::string name = entry->path().filename().string();
        if (!name.starts_with(stem) || !name.ends_with(kEnding) ||
            name.size() <= stem.size() + kEnding.size())
            continue;
        const std::string_view number =
            std::string_view(name).substr(stem.size(), name.size() - stem.size() - kEnding.size());
        if (IsNumber(number))
            RemoveIfLeft(entry->path());
    }
}

}  // namespace Quorvan::Tools
