#include "tools/commands/BatchCommand.h"

#include <algorithm>
#include <iostream>
#include <string>
#include <thread>

#include "host/parameters/Sentence.h"
#include "tools/support/NumberChecks.h"
#include "tools/support/StopRequest.h"

namespace Quorvan::Tools {

namespace {

// Each can have four files open, which TemporaryFiles has room for.
constexpr unsigned kMostWorkers = 256;

unsigned Processors() { return std::clamp(std::thread::hardware_concurrency(), 1u, kMostWorkers); }

}  // namespace

BatchCommand::BatchCommand(CLI::App& program)
    : Command(program, "batch", "Render the jobs of a list, several at once") {
    settings.workers = Processors();
    CLI::App& app = Options();
    app.add_option("jobs", settings.list,
                   "List of jobs as JSON Lines or CSV, in the words of \"tesserae render\" without "
                   "dashes; - is standard input")
        ->required()
        ->type_name("FILE");
    app.add_option("--workers", settings.workers,
                   "Jobs at once (default: one for each core that may be used)")
        ->check(NumberFrom(1, kMostWorkers))
        ->type_name("N");
    AddShard();
    CLI::Option* const results =
        app.add_option("--results", settings.results,
                       "Also write what came of each job, as JSON Lines, in the order in which "
                       "jobs end")
            ->type_name("FILE");
    app.add_flag("--no-loudness", settings.withoutLoudness,
                 "Leave the loudness out of the results; light sounds are done a tenth sooner")
        ->needs(results);
    app.add_flag("--resume", settings.resume,
                 "Skip the jobs that the results say are done, if their words and files are the "
                 "same still and their output is there")
        ->needs(results);
    app.add_flag("--force", settings.force, "Replace files that exist, those of all jobs too");
    app.add_flag("-q,--quiet", quiet, "No progress line and no summary");
    app.footer(
        "Example:\n"
        "  tesserae plan \"in/*.wav\" --preset dense-cloud --seeds 1-4 "
        "--name \"out/{stem}-{seed}.wav\" -o jobs.jsonl\n"
        "  tesserae batch jobs.jsonl --results results.jsonl");
}

void BatchCommand::AddShard() {
    Options()
        .add_option_function<std::string>(
            "--shard",
            [this](const std::string& text) {
                const std::optional<Shard> shard = Shard::Read(text);
                if (!shard)
                    throw CLI::ValidationError("--shard",
                                               Host::Quoted(text) +
                                                   " is no part of a list. Write one such as "
                                                   "2/8, from 1/8 to 8/8.");
                settings.shard = *shard;
            },
            "Only the I-th of N parts of the list, for N machines")
        ->type_name("I/N");
}

ExitCode BatchCommand::Run() {
    settings.progress = !quiet;
    const Host::ParameterCatalog catalog;
    Batch batch(settings, catalog);
    batch.Run();
    if (!quiet)
        std::cout << batch.Words() << "\n";
    if (const int signal = StopRequest::Signal()) {
        std::cerr << "tesserae: Interrupted. No file was left unfinished; --resume goes on.\n";
        return static_cast<ExitCode>(static_cast<int>(ExitCode::Signal) + signal);
    }
    return batch.AnyFailed() ? ExitCode::SomeFailed : ExitCode::Success;
}

}  // namespace Quorvan::Tools
