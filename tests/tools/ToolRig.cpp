#include "tools/ToolRig.h"

#include <fcntl.h>
#include <sndfile.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace Quorvan::test {

namespace fs = std::filesystem;

Folder::Folder() {
    std::string pattern = (fs::temp_directory_path() / "tesserae-test-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr)
        throw std::runtime_error("no temporary folder");
    path = pattern;
}

Folder::~Folder() {
    std::error_code ignored;
    fs::remove_all(path, ignored);
}

std::vector<std::string> Folder::Content() const {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(path))
        names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

int StartTool(const Arguments& arguments, const std::string& outFile, const std::string& errFile,
              const std::function<void()>& inChild) {
    std::vector<char*> pointers{const_cast<char*>(TESSERAE_BINARY)};
    for (const std::string& argument : arguments)
        pointers.push_back(const_cast<char*>(argument.c_str()));
    pointers.push_back(nullptr);
    const pid_t process = fork();
    if (process != 0)
        return process;
    const auto redirect = [](const std::string& file, int target) {
        dup2(open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600), target);
    };
    redirect(outFile, STDOUT_FILENO);
    redirect(errFile, STDERR_FILENO);
    // Of use to a program that is built with the address sanitizer only.
    setenv("LSAN_OPTIONS", "print_suppressions=0:suppressions=" LEAK_SUPPRESSIONS, 0);
    if (inChild)
        inChild();
    execv(TESSERAE_BINARY, pointers.data());
    _exit(127);
}

int AwaitTool(int process) {
    int status = 0;
    waitpid(process, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

Outcome RunTool(const Arguments& arguments, const std::function<void()>& inChild) {
    const Folder folder;
    Outcome outcome;
    outcome.exitCode = AwaitTool(StartTool(arguments, folder / "out", folder / "err", inChild));
    outcome.out = ReadFile(folder / "out");
    outcome.err = ReadFile(folder / "err");
    return outcome;
}

std::string ReadFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

void WriteFile(const std::string& path, const std::string& content) {
    std::ofstream(path, std::ios::binary) << content;
}

void WriteWav(const std::string& path, const Channels& sound, int rate) {
    SF_INFO info{};
    info.samplerate = rate;
    info.channels = static_cast<int>(sound.size());
    info.format = SF_FORMAT_WAV | SF_FORMAT_FLOAT;
    SNDFILE* const file = sf_open(path.c_str(), SFM_WRITE, &info);
    std::vector<float> frames(sound.size() * sound[0].size());
    for (size_t i = 0; i < frames.size(); ++i)
        frames[i] = sound[i % sound.size()][i / sound.size()];
    sf_writef_float(file, frames.data(), static_cast<sf_count_t>(sound[0].size()));
    sf_close(file);
}

Channels ReadSound(const std::string& path) {
    SF_INFO info{};
    SNDFILE* const file = sf_open(path.c_str(), SFM_READ, &info);
    if (file == nullptr)
        throw std::runtime_error("no sound file: " + path);
    const auto width = static_cast<size_t>(info.channels);
    std::vector<float> frames(width * static_cast<size_t>(info.frames));
    sf_readf_float(file, frames.data(), info.frames);
    sf_close(file);
    Channels sound(width, std::vector<float>(static_cast<size_t>(info.frames)));
    for (size_t i = 0; i < frames.size(); ++i)
        sound[i % width][i / width] = frames[i];
    return sound;
}

}  // namespace Quorvan::test
