#include "tools/support/TextFile.h"

#include <cerrno>
#include <cstring>
#include <fstream>

#include "host/parameters/Sentence.h"
#include "tools/support/DanglingLink.h"
#include "tools/support/Failure.h"

namespace Quorvan::Tools {

namespace {

constexpr std::streamsize kLongest = 64 << 20;  // bytes

[[noreturn]] void Refuse(const std::filesystem::path& path, const std::string& rest) {
    throw Failure(ExitCode::Input, Host::Quoted(path.string()) + " " + rest);
}

}  // namespace

std::string ReadTextFile(const std::filesystem::path& path) {
    std::error_code ignored;
    if (std::filesystem::is_directory(path, ignored))
        Refuse(path, "is a folder. Name a file in it.");
    if (const auto link = DanglingLinkText(path))
        Refuse(path, *link + " Point it to the file, or name that.");
    errno = 0;
    std::ifstream file(path, std::ios::binary);
    if (!file)
        Refuse(path, errno == ENOENT ? "does not exist. Check the name and the folder."
                                     : std::string("can't be read: ") + std::strerror(errno) + ".");
    std::string text;
    char piece[4096];
    while (file.read(piece, sizeof piece), file.gcount() > 0) {
        text.append(piece, static_cast<size_t>(file.gcount()));
        if (static_cast<std::streamsize>(text.size()) > kLongest)
            Refuse(path, "is longer than 64 MB; that is no text of this program. Check the name.");
    }
    if (text.empty())
        Refuse(path, "is empty. Export or copy it again.");
    return text;
}

}  // namespace Quorvan::Tools
