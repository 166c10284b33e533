#include "host/instrument/WholeFile.h"

#include <fcntl.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <sstream>
#include <system_error>

#include "host/parameters/Sentence.h"

namespace Quorvan::Host {

namespace {

std::string Because(int error) { return std::strerror(error); }

std::string CannotWrite(const std::filesystem::path& file, int error) {
    return Quoted(file.string()) + " can't be written (" + Because(error) +
           "). Nothing has been changed.";
}

/// Whether all of content is on the device.
bool Put(int descriptor, std::string_view content) {
    while (!content.empty()) {
        const ssize_t written = ::write(descriptor, content.data(), content.size());
        if (written < 0 && errno != EINTR)
            return false;
        if (written > 0)
            content.remove_prefix(static_cast<size_t>(written));
    }
    return ::fsync(descriptor) == 0;
}

}  // namespace

std::optional<std::string> ReadWholeFile(const std::filesystem::path& file, size_t mostBytes,
                                         std::string& problem) {
    std::error_code error;
    const bool isFile = std::filesystem::is_regular_file(file, error);
    if (isFile && std::filesystem::file_size(file, error) > mostBytes) {
        problem = Quoted(file.string()) + " is far too large to be what it should be.";
        return std::nullopt;
    }
    std::ifstream stream;
    if (isFile)
        stream.open(file, std::ios::binary);
    std::ostringstream content;
    if (stream.is_open())
        content << stream.rdbuf();
    if (!stream.is_open() || stream.bad()) {
        problem = Quoted(file.string()) + " can't be read. See whether it is there and yours.";
        return std::nullopt;
    }
    return std::move(content).str();
}

std::string WriteWholeFile(const std::filesystem::path& wanted, std::string_view content) {
    std::error_code error;
    // What a link points to is written, and the link stays.
    std::filesystem::path file = std::filesystem::weakly_canonical(wanted, error);
    if (error)
        file = wanted;
    if (std::filesystem::exists(file, error) && !std::filesystem::is_regular_file(file, error))
        return Quoted(file.string()) + " is no file that could be written anew.";
    if (file.has_parent_path())
        std::filesystem::create_directories(file.parent_path(), error);
    if (error)
        return CannotWrite(file, error.value());
    std::string part = (file.parent_path() / ".part-XXXXXX").string();
    const int descriptor = ::mkostemp(part.data(), O_CLOEXEC);
    if (descriptor < 0)
        return CannotWrite(file, errno);
    bool whole = Put(descriptor, content) && ::fchmod(descriptor, 0644) == 0;
    int reason = errno;
    whole = ::close(descriptor) == 0 && whole;
    if (whole && ::rename(part.c_str(), file.c_str()) == 0)
        return {};
    reason = whole ? errno : reason;
    ::unlink(part.c_str());
    return CannotWrite(file, reason);
}

}  // namespace Quorvan::Host
