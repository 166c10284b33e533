#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <variant>

#include "tools/batch/BatchJob.h"
#include "tools/batch/JobParser.h"
#include "tools/batch/JobTable.h"
#include "tools/support/Failure.h"
#include "tools/support/LineReader.h"

namespace Quorvan::Tools {

/// One of so many parts of a list: its jobs are dealt out in turn.
struct Shard {
    uint64_t number = 1;  ///< from 1
    uint64_t of = 1;

    /// Of "2/8"; nothing where text is none.
    static std::optional<Shard> Read(const std::string& text);
};

/// The jobs of a list, one after the other, however long it is.
class JobList {
public:
    /// A line that is no job.
    struct Fault {
        uint64_t line;
        Failure failure;
    };

    /// Throws Failure where the list can't be read.
    JobList(const std::filesystem::path& path, Shard wanted) : lines(path), shard(wanted) {}

    /// Nothing behind the last job. Throws Failure where the list can't be read on.
    std::optional<std::variant<BatchJob, Fault>> Next();
    /// Bytes of the list; nothing where it comes through a pipe.
    std::optional<uint64_t> Bytes() const { return lines.Bytes(); }

private:
    LineReader lines;
    Shard shard;
    JobTable table;
    JobParser parser;
    uint64_t count = 0;  ///< jobs so far, those of other shards too
};

}  // namespace Quorvan::Tools
