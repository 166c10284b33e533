#include "tools/batch/Batch.h"

#include <exception>
#include <iostream>
#include <new>
#include <system_error>
#include <utility>
#include <variant>

#include "tools/audio/AudioReader.h"
#include "tools/batch/JobResult.h"
#include "tools/render/Recipe.h"
#include "tools/support/AtomicOutput.h"
#include "tools/support/Fingerprint.h"
#include "tools/support/ProcessorTime.h"
#include "tools/support/StandardStreams.h"
#include "tools/support/StopRequest.h"
#include "tools/support/TemporaryFiles.h"

namespace Quorvan::Tools {

namespace {

/// Sentences on the error stream; the results hold all.
constexpr unsigned kMostFaultsShown = 20;

/// Leaves a render that shall not go on.
struct Interrupted {};

ResultsFile::Start StartOf(const BatchSettings& settings) {
    if (settings.resume)
        return ResultsFile::Start::GoOn;
    return settings.force ? ResultsFile::Start::Replace : ResultsFile::Start::New;
}

/// The results are no place for the list, which would be lost.
const std::filesystem::path& CheckedResults(const BatchSettings& settings) {
    std::error_code ignored;
    if (StandardStreams::IsMeant(*settings.results))
        throw Failure(ExitCode::Usage, "Results go into a file. Name one.");
    if (std::filesystem::equivalent(settings.list, *settings.results, ignored))
        throw Failure(ExitCode::Usage,
                      "The results would replace the list of jobs. Name another file.");
    return *settings.results;
}

uint64_t DoneMark(const std::string& job, uint64_t bytes) {
    return Fingerprint().Add(job).Add(bytes).Value();
}

uint64_t LengthOf(const std::filesystem::path& file) {
    std::error_code error;
    const uint64_t bytes = std::filesystem::file_size(file, error);
    return error ? 0 : bytes;
}

/// Whether the output tells that this very job has made it, apart from what the input held.
bool IsOwn(const BatchJob& job) {
    try {
        const auto found = Recipe::Find(AudioReader(job.settings.output).Tags().Comment());
        return found && found->Line() == Recipe::Of(job.settings, *job.settings.seed).Line();
    } catch (const Failure&) {
        return false;
    }
}

}  // namespace

Batch::Batch(BatchSettings wanted, const Host::ParameterCatalog& parameters)
    : settings(std::move(wanted)),
      catalog(parameters),
      list(settings.list, settings.shard),
      queue(2 * settings.workers),
      rendered(settings.workers),
      tally(list.Bytes(), settings.progress) {
    if (!settings.results)
        return;
    results.emplace(CheckedResults(settings), StartOf(settings));
    if (settings.resume)
        LearnWhatIsDone();
}

void Batch::LearnWhatIsDone() {
    done.emplace();
    ResultsFile::Read(*settings.results, [this](const nlohmann::json& line) {
        if (line.contains("job") && line["job"].is_string() && line.value("ok", false))
            done->Insert(
                DoneMark(line["job"].get<std::string>(), line.value("bytes", uint64_t{0})));
    });
}

void Batch::Run() {
    StopRequest::Install();
    std::vector<std::thread> workers, finishers;
    {
        const SignalPause inherited;  // only this thread is to meet signals
        StartThreads(workers, finishers);
    }
    try {
        ReadList();
    } catch (const Failure& failure) {
        Stop(failure);
    }
    queue.Close();
    for (std::thread& worker : workers)
        worker.join();
    rendered.Close();
    for (std::thread& finisher : finishers)
        finisher.join();
    tally.Clear();
    if (broken)
        throw *broken;
    if (results)
        results->Finish();
}

/// As many as the machine allows, where that is fewer than are wanted.
void Batch::StartThreads(std::vector<std::thread>& workers, std::vector<std::thread>& finishers) {
    try {
        while (workers.size() < settings.workers) {
            if (finishers.size() == workers.size())
                finishers.emplace_back([this] { FinishJobs(); });
            workers.emplace_back([this] { Work(); });
        }
    } catch (const std::system_error&) {
        if (workers.empty()) {
            rendered.Close();
            for (std::thread& finisher : finishers)
                finisher.join();
            throw;
        }
        settings.workers = static_cast<unsigned>(workers.size());
    }
}

void Batch::ReadList() {
    while (auto next = list.Next()) {
        if (const auto* const fault = std::get_if<JobList::Fault>(&*next))
            NoteFault(fault->line, nullptr, fault->failure);
        else
            Take(std::move(std::get<BatchJob>(*next)));
        if (IsBroken())
            return;
    }
}

bool Batch::IsBroken() {
    const std::lock_guard guard(lock);
    return broken.has_value();
}

void Batch::Take(BatchJob job) {
    job.settings.force = job.settings.force || settings.force;
    job.settings.measuresLoudness = results && !settings.withoutLoudness;
    job.mayReplaceOwn = settings.resume;
    const uint64_t line = job.line;
    if (!Claims(job))
        return NoteFault(line, &job,
                         Failure(ExitCode::Usage,
                                 "A job ahead of it in the list writes to the same file. Name "
                                 "another one."));
    if (!IsDone(job)) {
        queue.Push(std::move(job));
        return;
    }
    const std::lock_guard guard(lock);
    tally.AddSkipped(job.offset);
}

/// Takes the places of all that the job writes; answers whether they were free.
bool Batch::Claims(const BatchJob& job) {
    bool areFree = true;
    const auto claim = [&](const std::optional<std::filesystem::path>& file) {
        if (file)
            areFree &=
                claimed.Insert(Fingerprint().Add(AtomicOutput::PlaceOf(*file).string()).Value());
    };
    claim(job.settings.output);
    // Two of one job that are the same are the render's to refuse.
    if (job.settings.picture != job.settings.output)
        claim(job.settings.picture);
    if (job.settings.modulationCsv != job.settings.picture)
        claim(job.settings.modulationCsv);
    claim(job.settings.savePreset);
    return areFree;
}

bool Batch::IsDone(const BatchJob& job) const {
    return done && job.IsDone() &&
           done->Contains(
               DoneMark(Fingerprint::TextOf(job.fingerprint), LengthOf(job.settings.output)));
}

void Batch::Work() {
    SoundShelf inputs;
    while (std::optional<BatchJob> job = queue.Pop())
        Try(*job, [&] {
            std::unique_ptr<RenderJob> render = RunJob(*job, inputs);
            rendered.Push({std::move(*job), std::move(render)});
        });
}

void Batch::FinishJobs() {
    while (std::optional<Rendered> next = rendered.Pop())
        if (!IsBroken())
            Try(next->job, [this, &next] { NoteDone(next->job, next->render->Finish()); });
    const std::lock_guard guard(lock);
    tally.AddHelp(ProcessorSeconds());
}

/// What step throws becomes the end of the job, or of the whole.
template <class Step>
void Batch::Try(const BatchJob& job, const Step& step) {
    try {
        step();
    } catch (const Interrupted&) {
        queue.Abandon();
    } catch (const Failure& failure) {
        NoteFault(job.line, &job, failure);
    } catch (const std::bad_alloc&) {
        NoteFault(job.line, &job,
                  Failure(ExitCode::Internal, "There is not enough memory. Take fewer workers."));
    } catch (const std::exception& fault) {
        NoteFault(job.line, &job,
                  Failure(ExitCode::Internal, std::string("Something failed inside: ") +
                                                  fault.what() + ". Please report this."));
    }
}

std::unique_ptr<RenderJob> Batch::RunJob(BatchJob& job, SoundShelf& inputs) {
    if (job.mayReplaceOwn && !job.settings.force && IsOwn(job))
        job.settings.force = true;
    auto render = std::make_unique<RenderJob>(job.settings, catalog);
    render->SetShelf(inputs);
    double told = 0.0;
    render->SetWatch([this, &told](double seconds) {
        if (StopRequest::Signal() != 0)
            throw Interrupted();
        const std::lock_guard guard(lock);
        if (broken)
            throw Interrupted();
        tally.AddSound(seconds - std::exchange(told, seconds));
    });
    if (StopRequest::Signal() != 0)
        throw Interrupted();
    render->Make();
    return render;
}

void Batch::NoteDone(const BatchJob& job, const Summary& summary) {
    const uint64_t bytes = LengthOf(job.settings.output);
    const std::lock_guard guard(lock);
    tally.AddDone(job.offset, summary.engineSeconds);
    try {
        if (results && !broken)
            results->Add(DoneResult(job, summary, bytes));
    } catch (const Failure& failure) {
        broken.emplace(failure);
        queue.Abandon();
    }
}

void Batch::NoteFault(uint64_t line, const BatchJob* job, const Failure& failure) {
    const std::lock_guard guard(lock);
    tally.AddFailed();
    tally.Clear();
    if (++faultsShown <= kMostFaultsShown)
        std::cerr << "tesserae: job at line " << line << ": " << failure.what() << "\n";
    else if (faultsShown == kMostFaultsShown + 1)
        std::cerr << "tesserae: Further failures are not shown here; --results FILE keeps them.\n";
    try {
        if (results && !broken)
            results->Add(FaultResult(line, job, failure));
    } catch (const Failure& fault) {
        broken.emplace(fault);
        queue.Abandon();
    }
}

void Batch::Stop(const Failure& why) {
    queue.Abandon();
    const std::lock_guard guard(lock);
    if (!broken)
        broken.emplace(why);
}

}  // namespace Quorvan::Tools
