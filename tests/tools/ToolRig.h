#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace Quorvan::test {

/// A folder that goes with the test.
class Folder {
public:
    Folder();
    ~Folder();
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    std::string operator/(const std::string& name) const { return (path / name).string(); }
    /// Names of everything in it, hidden files too, in alphabetical order.
    std::vector<std::string> Content() const;

private:
    std::filesystem::path path;
};

/// What a run of the program came to.
struct Outcome {
    int exitCode = -1;  ///< -1 where a signal ended it
    std::string out, err;
};

using Arguments = std::vector<std::string>;

/// Starts the program; inChild runs in the new process ahead of it. Answers the process number.
int StartTool(const Arguments& arguments, const std::string& outFile, const std::string& errFile,
              const std::function<void()>& inChild = {});
/// Waits for it to end. Answers its exit code, or -1.
int AwaitTool(int process);
/// Runs the program to its end.
Outcome RunTool(const Arguments& arguments, const std::function<void()>& inChild = {});

std::string ReadFile(const std::string& path);
void WriteFile(const std::string& path, const std::string& content);

/// Sound in memory, one vector for each channel.
using Channels = std::vector<std::vector<float>>;
/// Writes a float WAV file, straight through libsndfile.
void WriteWav(const std::string& path, const Channels& sound, int rate = 48000);
Channels ReadSound(const std::string& path);

}  // namespace Quorvan::test
