#pragma once

#include <filesystem>
#include <string>

namespace Quorvan::Tools {

/// A folder for temporary files, which goes with everything in it.
class TestFolder {
public:
    /// Throws Failure where the system's folder for such can't be written.
    TestFolder();
    ~TestFolder();
    TestFolder(const TestFolder&) = delete;
    TestFolder& operator=(const TestFolder&) = delete;

    std::string File(const std::string& name) const { return (path / name).string(); }

private:
    std::filesystem::path path;
};

}  // namespace Quorvan::Tools
