#include "tools/doctor/TestFolder.h"

#include <cstdlib>

#include "host/parameters/Sentence.h"
#include "tools/support/Failure.h"

namespace Quorvan::Tools {

TestFolder::TestFolder() {
    std::error_code error;
    std::string pattern =
        (std::filesystem::temp_directory_path(error) / "tesserae-doctor-XXXXXX").string();
    if (error || mkdtemp(pattern.data()) == nullptr)
        throw Failure(ExitCode::Output, "No temporary folder could be made at " +
                                            Host::Quoted(pattern) +
                                            ". Let TMPDIR name a folder that can be written.");
    path = pattern;
}

TestFolder::~TestFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path, ignored);
}

}  // namespace Quorvan::Tools
