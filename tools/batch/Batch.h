#pragma once

#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include <nlohmann/json.hpp>

#include "host/parameters/ParameterCatalog.h"
#include "tools/batch/BatchTally.h"
#include "tools/batch/JobList.h"
#include "tools/batch/JobQueue.h"
#include "tools/batch/ResultsFile.h"
#include "tools/render/RenderJob.h"
#include "tools/support/ExitCode.h"
#include "tools/support/FingerprintFile.h"

namespace Quorvan::Tools {

/// What a batch is asked for.
struct BatchSettings {
    std::filesystem::path list;  ///< "-" is standard input
    unsigned workers = 1;
    Shard shard;
    std::optional<std::filesystem::path> results;
    bool resume = false;           ///< skip what the results say is done; they are needed then
    bool withoutLoudness = false;  ///< leave it out of the results
    bool force = false;            ///< replace files that exist, those of every job too
    bool progress = true;
};

/// Renders the jobs of a list, several at once, each by a thread with an engine of its own. What
/// comes of a job hangs on the job alone. Memory is that of the jobs in hand and a few that wait.
///
/// Threads  the caller's reads the list; beside each that renders, one waits for the disk, so that
///          cores are not idle meanwhile. The results, the tally and the error stream are shared
///          under one lock.
class Batch {
public:
    /// Throws Failure where the list or the results can't be used.
    Batch(BatchSettings wanted, const Host::ParameterCatalog& parameters);

    /// Runs to the end of the list, or to a wish to stop. Throws Failure where the list can't be
    /// read on or the results can't be written; what is in hand is then dropped.
    void Run();

    bool AnyFailed() const { return tally.Failed() > 0; }
    std::string Words() const { return tally.Words(settings.workers); }

private:
    /// A job that is rendered and has to come to the disk.
    struct Rendered {
        BatchJob job;
        std::unique_ptr<RenderJob> render;
    };

    void LearnWhatIsDone();
    void StartThreads(std::vector<std::thread>& workers, std::vector<std::thread>& finishers);
    void ReadList();
    void Take(BatchJob job);
    bool Claims(const BatchJob& job);
    bool IsDone(const BatchJob& job) const;
    void Work();
    void FinishJobs();
    template <class Step>
    void Try(const BatchJob& job, const Step& step);
    std::unique_ptr<RenderJob> RunJob(BatchJob& job, SoundShelf& inputs);
    void NoteDone(const BatchJob& job, const Summary& summary);
    void NoteFault(uint64_t line, const BatchJob* job, const Failure& failure);
    void Stop(const Failure& why);
    bool IsBroken();

    BatchSettings settings;
    const Host::ParameterCatalog& catalog;
    JobList list;
    JobQueue<BatchJob> queue;
    JobQueue<Rendered> rendered;
    FingerprintFile claimed;              ///< places of all outputs of this run
    std::optional<FingerprintFile> done;  ///< jobs with the lengths of their outputs

    std::mutex lock;  ///< guards all that follows
    std::optional<ResultsFile> results;
    BatchTally tally;
    std::optional<Failure> broken;  ///< what ends the whole
    unsigned faultsShown = 0;
};

}  // namespace Quorvan::Tools
