#include "tools/commands/PlanCommand.h"

#include <iostream>

#include "host/parameters/NumberText.h"
#include "tools/support/Numbers.h"

namespace Quorvan::Tools {

PlanCommand::PlanCommand(CLI::App& program)
    : Command(program, "plan", "Write a list of jobs for \"tesserae batch\"") {
    CLI::App& app = Options();
    app.add_option("inputs", settings.inputs,
                   "Sound files; \"*\", \"?\" and \"[...]\" stand for any that fit; - takes their "
                   "names from standard input, one a line")
        ->required()
        ->type_name("FILE");
    app.add_option("--name", settings.name,
                   "Name of each output, with {stem} and {folder} of the input, {preset}, {seed}, "
                   "{variant} and {number}, which counts jobs")
        ->required()
        ->type_name("PATTERN");
    app.add_option("--preset", settings.presets,
                   "Factory preset or preset file, or a pattern for several, such as \"*\" or "
                   "\"mine/*.json\" (default: init). May be repeated")
        ->type_name("FILE|NAME")
        ->allow_extra_args(false);
    app.add_option("--seeds", seeds,
                   "Seeds for each input and preset, such as 1-4 or 3,7,10-12 (default: none; each "
                   "job then gets one that hangs on its words)")
        ->type_name("LIST");
    app.add_option("--set", settings.assignments, "In all jobs, as with render. May be repeated")
        ->type_name("NAME=POSITION")
        ->allow_extra_args(false);
    app.add_option("--vary", settings.variants,
                   "A job for each of these: \"Feedback=-12 dB|-6 dB\". May be repeated, for all "
                   "that can be combined; {variant} counts them")
        ->type_name("NAME=POSITION|...")
        ->allow_extra_args(false);
    app.add_option("--word", settings.words,
                   "A further word of all jobs, such as tail=2 or mono=true. May be repeated")
        ->type_name("WORD=VALUE")
        ->allow_extra_args(false);
    app.add_option("-o,--output", output,
                   "List to write, CSV where its name ends so and else JSON Lines (default: "
                   "standard output)")
        ->type_name("FILE");
    app.add_flag("--force", force, "Replace a list that exists");
    app.footer(
        "Example:\n"
        "  tesserae plan \"in/*.wav\" --preset \"*\" --seeds 1-3 "
        "--name \"out/{stem}-{preset}-{seed}.wav\" -o jobs.jsonl");
}

ExitCode PlanCommand::Run() {
    settings.seeds = ReadSeeds(seeds);
    settings.asCsv = Host::Lower(output).ends_with(".csv");
    AtomicOutput file(output, force);
    const uint64_t count = JobPlan(settings).Write(file);
    file.Commit();
    std::cerr << StandardStreams::Heading(output) << ": " << Grouped(count)
              << (count == 1 ? " job" : " jobs") << "\n";
    return ExitCode::Success;
}

}  // namespace Quorvan::Tools
