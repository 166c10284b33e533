#include "tools/batch/BatchJob.h"

#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <optional>
#include <utility>

#include "tools/batch/JobParser.h"
#include "tools/support/Fingerprint.h"

namespace Quorvan::Tools {

namespace {

/// Length and time of a file's last change stand for what is in it: reading every input of a batch
/// only to see that nothing is to be done would take as long as the disk is slow.
void AddFile(Fingerprint& sum, const std::filesystem::path& path) {
    struct stat there {};
    if (stat(path.c_str(), &there) != 0)
        return;
    sum.Add(static_cast<uint64_t>(there.st_size));
    sum.Add(static_cast<uint64_t>(there.st_mtim.tv_sec));
    sum.Add(static_cast<uint64_t>(there.st_mtim.tv_nsec));
}

}  // namespace

BatchJob BatchJob::Make(const JobWords& words, RenderSettings parsed) {
    BatchJob job;
    job.settings = std::move(parsed);
    Fingerprint sum;
    sum.Add(JobParser::Canonical(words));
    // Half of it, which every reader of numbers in JSON keeps.
    if (!job.settings.seed)
        job.settings.seed = sum.Value() >> 32;
    sum.Add(TESSERAE_VERSION);
    AddFile(sum, job.settings.input);
    AddFile(sum, job.settings.preset);
    for (const auto& file : {job.settings.sideChain, job.settings.automation})
        if (file)
            AddFile(sum, *file);
    job.fingerprint = sum.Value();
    return job;
}

bool BatchJob::IsDone() const {
    const auto isThere = [](const std::optional<std::filesystem::path>& file) {
        std::error_code ignored;
        return !file || std::filesystem::is_regular_file(*file, ignored);
    };
    return isThere(settings.output) && isThere(settings.picture) &&
           isThere(settings.modulationCsv) && isThere(settings.savePreset);
}

}  // namespace Quorvan::Tools
