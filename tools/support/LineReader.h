#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace Quorvan::Tools {

/// A text that is read line by line, of any length and never held whole. "-" is standard input,
/// which is read as it comes.
class LineReader {
public:
    /// Throws Failure where the file can't be read.
    explicit LineReader(const std::filesystem::path& path);
    ~LineReader();
    LineReader(const LineReader&) = delete;
    LineReader& operator=(const LineReader&) = delete;

    /// The next line without its end and without a mark of byte order, good until the next call.
    /// Nothing behind the last one, or where StopRequest was made. Throws Failure for a line of
    /// more than a megabyte.
    std::optional<std::string_view> Next();

    /// Of the line that was read last, from 1.
    uint64_t Number() const { return number; }
    /// Bytes up to its end.
    uint64_t Offset() const { return offset; }
    /// Of the whole; nothing where it comes through a pipe.
    std::optional<uint64_t> Bytes() const;

private:
    bool Refill();
    bool Await() const;

    std::filesystem::path name;
    int file = -1;
    std::string buffer;
    size_t from = 0;
    bool ended = false;
    uint64_t number = 0;
    uint64_t offset = 0;
};

}  // namespace Quorvan::Tools
