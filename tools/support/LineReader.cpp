#include "tools/support/LineReader.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "tools/support/Failure.h"
#include "tools/support/StandardStreams.h"
#include "tools/support/StopRequest.h"

namespace Quorvan::Tools {

namespace {

constexpr std::string_view kByteOrderMark = "\xef\xbb\xbf";
constexpr size_t kPiece = 1 << 16;    // bytes read at once
constexpr size_t kLongest = 1 << 20;  // bytes of a line
constexpr int kPatience = 200;        // ms between two looks for a wish to stop

[[noreturn]] void Refuse(const std::filesystem::path& name, const std::string& rest) {
    throw Failure(ExitCode::Input, StandardStreams::InputText(name) + " " + rest);
}

}  // namespace

LineReader::LineReader(const std::filesystem::path& path)
    : name(path),
      file(StandardStreams::IsMeant(path) ? fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0)
                                          : open(path.c_str(), O_RDONLY | O_CLOEXEC)) {
    struct stat there {};
    if (file >= 0 && fstat(file, &there) == 0 && S_ISDIR(there.st_mode)) {
        close(file);
        Refuse(name, "is a folder. Name a file in it.");
    }
    if (file < 0)
        Refuse(name, errno == ENOENT ? "does not exist. Check the name and the folder."
                                     : std::string("can't be read: ") + std::strerror(errno) + ".");
}

LineReader::~LineReader() { close(file); }

std::optional<uint64_t> LineReader::Bytes() const {
    struct stat there {};
    if (fstat(file, &there) != 0 || !S_ISREG(there.st_mode))
        return std::nullopt;
    return static_cast<uint64_t>(there.st_size);
}

std::optional<std::string_view> LineReader::Next() {
    size_t end = buffer.find('\n', from);
    while (end == std::string::npos && Refill())
        end = buffer.find('\n', from);
    if (StopRequest::Signal() != 0 || (end == std::string::npos && from == buffer.size()))
        return std::nullopt;
    const bool isWhole = end != std::string::npos;
    std::string_view line(buffer);
    line = line.substr(from, isWhole ? end - from : std::string::npos);
    from += line.size() + (isWhole ? 1 : 0);
    offset += line.size() + (isWhole ? 1 : 0);
    ++number;
    if (number == 1 && line.starts_with(kByteOrderMark))
        line.remove_prefix(kByteOrderMark.size());
    if (line.ends_with('\r'))
        line.remove_suffix(1);
    return line;
}

/// Waits for more in steps, so that a wish to stop is seen where a pipe is silent.
bool LineReader::Await() const {
    pollfd waiting{file, POLLIN, 0};
    while (StopRequest::Signal() == 0)
        if (poll(&waiting, 1, kPatience) > 0)
            return true;
    return false;
}

bool LineReader::Refill() {
    if (ended || !Await())
        return false;
    buffer.erase(0, from);
    from = 0;
    if (buffer.size() > kLongest)
        Refuse(name, "has a line of more than 1 MB; that is no list of this program.");
    const size_t had = buffer.size();
    buffer.resize(had + kPiece);
    const ssize_t got = read(file, buffer.data() + had, kPiece);
    buffer.resize(had + (got > 0 ? static_cast<size_t>(got) : 0));
    if (got < 0 && errno != EINTR)
        Refuse(name, std::string("can't be read on: ") + std::strerror(errno) + ".");
    ended = got == 0;
    return !ended;
}

}  // namespace Quorvan::Tools
