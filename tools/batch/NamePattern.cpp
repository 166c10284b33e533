#include "tools/batch/NamePattern.h"

#include "host/parameters/Sentence.h"
#include "tools/support/Failure.h"

namespace Quorvan::Tools {

std::string NamePattern::Of(const Job& job) const {
    std::string name;
    for (size_t at = 0; at < pattern.size();) {
        const size_t open = pattern.find('{', at);
        const size_t close = pattern.find('}', open);
        name += pattern.substr(at, open - at);
        if (open == std::string::npos)
            break;
        if (close == std::string::npos)
            throw Failure(ExitCode::Usage,
                          "--name " + Host::Quoted(pattern) + " has a brace that does not close.");
        name += Value(pattern.substr(open + 1, close - open - 1), job);
        at = close + 1;
    }
    return name;
}

std::string NamePattern::Value(const std::string& word, const Job& job) {
    if (word == "stem")
        return job.input.stem().string();
    if (word == "folder")
        return job.input.has_parent_path() ? job.input.parent_path().string() : ".";
    if (word == "preset")
        return job.preset;
    if (word == "variant")
        return std::to_string(job.variant);
    if (word == "number")
        return std::to_string(job.number);
    if (word != "seed")
        throw Failure(ExitCode::Usage, "--name: {" + word +
                                           "} stands for nothing. There are {stem}, {folder}, "
                                           "{preset}, {seed}, {variant} and {number}.");
    if (job.seed.empty())
        throw Failure(ExitCode::Usage, "--name holds {seed}, but --seeds names none.");
    return job.seed;
}

}  // namespace Quorvan::Tools
