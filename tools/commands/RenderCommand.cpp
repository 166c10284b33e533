#include "tools/commands/RenderCommand.h"

#include <iostream>
#include <string>

#include <nlohmann/json.hpp>

#include "host/parameters/ParameterCatalog.h"
#include "tools/render/RenderJob.h"
#include "tools/render/Variations.h"
#include "tools/support/NumberChecks.h"

namespace Quorvan::Tools {

RenderCommand::RenderCommand(CLI::App& program)
    : Command(program, "render", "Run a sound file through the processor"), options(Options()) {
    CLI::App& app = Options();
    app.add_option("--variations", variations,
                   "Render so often, with seeds from --seed upward, into files with numbers: "
                   "out-1.wav, out-2.wav, ...")
        ->check(NumberFrom(1, 999))
        ->type_name("COUNT");
    app.add_flag("--json", asJson, "Print the summary as JSON");
    app.add_flag("-q,--quiet", quiet,
                 "No progress bar and no summary; with --json nothing but that");
    app.footer(
        "Example:\n"
        "  tesserae render in.wav -o out.wav --preset dense-cloud --set \"Feedback=-6 dB\" "
        "--seed 7 --picture out.png");
}

void RenderCommand::Warn(const Summary& summary) const {
    if (quiet && asJson)
        return;
    for (const std::string& warning : summary.warnings)
        std::cerr << "tesserae: " << warning << "\n";
}

void RenderCommand::RunOne() {
    const Host::ParameterCatalog catalog;
    RenderJob job(settings, catalog);
    const Summary summary = job.Run();
    // Where the sound goes to standard output, what is told of it can't.
    const bool isTaken = RenderOutputs::UseStandardOutput(settings);
    std::ostream& words = isTaken ? std::cerr : std::cout;
    if (!asJson || !isTaken)  // JSON holds them, and should stay JSON
        Warn(summary);
    if (asJson)
        words << summary.Json() << "\n";
    else if (!quiet)
        words << summary.Line() << "\n";
}

void RenderCommand::RunVariations() {
    const Host::ParameterCatalog catalog;
    const std::vector<RenderSettings> all = Variations(settings, variations);
    for (const RenderSettings& one : all)
        const RenderOutputs trial(one);
    nlohmann::ordered_json list = nlohmann::ordered_json::array();
    for (const RenderSettings& one : all) {
        const Summary summary = RenderJob(one, catalog).Run();
        Warn(summary);
        if (asJson)
            list.push_back(nlohmann::ordered_json::parse(summary.Json()));
        else if (!quiet)
            std::cout << summary.Line() << std::endl;  // as soon as its file is there
    }
    if (asJson)
        std::cout << nlohmann::ordered_json{{"variations", list}}.dump(2) << "\n";
}

ExitCode RenderCommand::Run() {
    settings = options.Settings();
    settings.progress = !quiet;
    settings.measuresLoudness = asJson || !quiet;
    variations > 0 ? RunVariations() : RunOne();
    return ExitCode::Success;
}

}  // namespace Quorvan::Tools
