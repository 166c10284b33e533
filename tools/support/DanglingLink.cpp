#include "tools/support/DanglingLink.h"

#include <system_error>

#include "host/parameters/Sentence.h"

namespace Quorvan::Tools {

namespace fs = std::filesystem;

std::optional<std::string> DanglingLinkText(const fs::path& path) {
    std::error_code ignored;
    if (fs::exists(path, ignored) || !fs::is_symlink(fs::symlink_status(path, ignored)))
        return std::nullopt;
    return "is a link to " + Host::Quoted(fs::read_symlink(path, ignored).string()) +
           ", which does not exist.";
}

}  // namespace Quorvan::Tools
