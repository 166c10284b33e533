#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tools/batch/JobWords.h"

namespace Quorvan::Tools {

/// Reads jobs off the lines of a list, which is JSON Lines where its first line with anything on it
/// begins with "{", and else CSV with the words in its first line.
class JobTable {
public:
    /// Whether the line holds a job: not where it is blank, a remark, or the head of a CSV.
    bool IsJob(std::string_view line);
    /// A line that holds a job. Throws Failure for what can't be read; the lines behind it can.
    JobWords Read(std::string_view line) const;

private:
    enum class Form { Unknown, Json, Csv };

    static JobWords ReadJson(std::string_view line);
    JobWords ReadCsv(std::vector<std::string> fields) const;

    Form form = Form::Unknown;
    std::vector<std::string> heads;  ///< of the columns
};

}  // namespace Quorvan::Tools
