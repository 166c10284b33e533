#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>

#include <nlohmann/json.hpp>

namespace Quorvan::Tools {

/// The results of a batch as JSON Lines, each line there as a whole as soon as its job has ended,
/// so that whatever ends the run leaves a valid file.
///
/// Threads  one at a time.
class ResultsFile {
public:
    enum class Start {
        New,      ///< there must be none yet
        Replace,  ///< an older one goes
        GoOn      ///< behind what is there
    };

    /// Throws Failure where the file can't be written, or another run is writing it.
    ResultsFile(const std::filesystem::path& path, Start start);
    ~ResultsFile();
    ResultsFile(const ResultsFile&) = delete;
    ResultsFile& operator=(const ResultsFile&) = delete;

    /// Throws Failure where the line can't be written.
    void Add(const nlohmann::ordered_json& line);
    /// Brings everything to the disk.
    void Finish();

    /// Hands out all lines that are there and are objects. Those that a crash has cut are left out.
    static void Read(const std::filesystem::path& path,
                     const std::function<void(const nlohmann::json&)>& take);

private:
    void Write(const std::string& text);
    void EndLastLine();
    [[noreturn]] void Refuse(const std::string& rest) const;

    std::filesystem::path name;
    int file;
};

}  // namespace Quorvan::Tools
