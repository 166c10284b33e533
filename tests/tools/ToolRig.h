#pragma once

#include "support/Test.h"

#include <fcntl.h>
#include <sndfile.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include <nlohmann/json.hpp>

namespace Quorvan::test {

inline std::string ReadFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}
inline void WriteFile(const std::string& path, const std::string& content) {
    std::ofstream(path, std::ios::binary) << content;
}

/// A folder that goes with the test.
class Folder {
public:
    Folder() {
        std::string pattern =
            (std::filesystem::temp_directory_path() / "tesserae-test-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr)
            throw std::runtime_error("no temporary folder");
        path = pattern;
    }
    ~Folder() {
        std::error_code ignored;
        std::filesystem::remove_all(path, ignored);
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    std::string operator/(const std::string& name) const { return (path / name).string(); }
    /// Names of everything in it, hidden files too, in alphabetical order.
    std::vector<std::string> Content() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(path))
            names.push_back(entry.path().filename().string());
        std::sort(names.begin(), names.end());
        return names;
    }

private:
    std::filesystem::path path;
};

struct Outcome {
    int exitCode = -1;  ///< -1 where a signal ended it
    std::string out, err;
};

using Arguments = std::vector<std::string>;

inline Arguments operator+(Arguments first, const Arguments& more) {
    first.insert(first.end(), more.begin(), more.end());
    return first;
}

/// Starts the program; inChild runs in the new process ahead of it. Answers the process number.
inline int StartTool(const Arguments& arguments, const std::string& outFile,
                     const std::string& errFile, const std::function<void()>& inChild = {}) {
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
/// Waits for it to end. Answers its exit code, or -1.
inline int AwaitTool(int process) {
    int status = 0;
    waitpid(process, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}
/// Runs the program to its end.
inline Outcome RunTool(const Arguments& arguments, const std::function<void()>& inChild = {}) {
    const Folder folder;
    Outcome outcome;
    outcome.exitCode = AwaitTool(StartTool(arguments, folder / "out", folder / "err", inChild));
    outcome.out = ReadFile(folder / "out");
    outcome.err = ReadFile(folder / "err");
    return outcome;
}

using Channels = std::vector<std::vector<float>>;

/// Writes a float WAV file, straight through libsndfile.
inline void WriteWav(const std::string& path, const Channels& sound, int rate = 48000) {
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

inline Channels ReadSound(const std::string& path) {
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

/// Renders of one input, "in.wav", in a folder of their own.
class RenderRig : public ::testing::Test {
protected:
    void Input(const Channels& sound, int rate = 48000) const {
        WriteWav(folder / "in.wav", sound, rate);
    }
    /// The arguments of a render, without a tail unless the further ones say otherwise.
    Arguments Command(const Arguments& more) const {
        Arguments all{"render", folder / "in.wav", "-o", folder / "out.wav", "--force"};
        for (const auto& [name, value] : {std::pair{"--seed", "5"}, {"--tail", "0"}})
            if (std::find(more.begin(), more.end(), name) == more.end())
                all.insert(all.end(), {name, value});
        return all + more;
    }
    Outcome Run(const Arguments& more) const {
        const Outcome outcome = RunTool(Command(more));
        EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
        return outcome;
    }
    nlohmann::json Summary(const Arguments& more) const {
        return nlohmann::json::parse(Run(more + Arguments{"--json"}).out);
    }
    /// Renders to a float file, and answers its sound.
    Channels Render(const Arguments& more = {}) const {
        Run(more + Arguments{"--format", "float"});
        return ReadSound(folder / "out.wav");
    }

    Folder folder;
};

}  // namespace Quorvan::test
