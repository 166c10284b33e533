#include "tools/batch/JobList.h"

#include <charconv>
#include <utility>

namespace Quorvan::Tools {

std::optional<Shard> Shard::Read(const std::string& text) {
    Shard shard;
    const char* const end = text.data() + text.size();
    const auto first = std::from_chars(text.data(), end, shard.number);
    if (first.ec != std::errc() || first.ptr == end || *first.ptr != '/')
        return std::nullopt;
    const auto second = std::from_chars(first.ptr + 1, end, shard.of);
    const bool fits = second.ec == std::errc() && second.ptr == end && shard.number >= 1 &&
                      shard.number <= shard.of;
    return fits ? std::optional(shard) : std::nullopt;
}

std::optional<std::variant<BatchJob, JobList::Fault>> JobList::Next() {
    while (const std::optional<std::string_view> line = lines.Next()) {
        try {
            if (!table.IsJob(*line) || count++ % shard.of + 1 != shard.number)
                continue;
            const JobWords words = table.Read(*line);
            BatchJob job = BatchJob::Make(words, parser.Read(words));
            job.line = lines.Number();
            job.offset = lines.Offset();
            return job;
        } catch (const Failure& failure) {
            return Fault{lines.Number(), failure};
        }
    }
    return std::nullopt;
}

}  // namespace Quorvan::Tools
