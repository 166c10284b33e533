#include "tools/commands/InfoCommand.h"

#include <cairo.h>
#include <ebur128.h>
#include <sndfile.h>
#include <soxr.h>

#include <iostream>
#include <memory>

#include <nlohmann/json.hpp>

#include "host/engine/Engine.h"
#include "presets/FactoryPresets.h"
#include "processor/IProcessor.h"
#include "tools/commands/SoundFacts.h"
#include "tools/support/NumberChecks.h"
#include "tools/support/Numbers.h"
#include "tools/support/TextTable.h"

namespace Quorvan::Tools {

namespace {

using Json = nlohmann::ordered_json;

std::string EbuVersion() {
    int major = 0, minor = 0, patch = 0;
    ebur128_get_version(&major, &minor, &patch);
    return std::to_string(major) + "." + std::to_string(minor) + "." + std::to_string(patch);
}

Json Versions() {
    const std::unique_ptr<Processor::IProcessorFactory> factory(GetProcessorFactory());
    return {{"tesserae", TESSERAE_VERSION},
            {"processor", std::string(factory->productName) + " " + factory->version},
            {"interface", factory->GetInterfaceVersion()},
            {"sndfile", sf_version_string()},
            {"soxr", soxr_version()},
            {"cairo", cairo_version_string()},
            {"ebur128", EbuVersion()},
            {"cli11", CLI11_VERSION},
            {"json", std::to_string(NLOHMANN_JSON_VERSION_MAJOR) + "." +
                         std::to_string(NLOHMANN_JSON_VERSION_MINOR) + "." +
                         std::to_string(NLOHMANN_JSON_VERSION_PATCH)}};
}

Json AtRate(double rate) {
    Host::Engine engine(0);
    engine.Prepare({.sampleRate = rate});
    const double latencyMs = 1000.0 * engine.LatencyFrames() / rate;
    return {{"rate", rate},
            {"blockFrames", engine.BlockFrames()},
            {"latencyFrames", engine.LatencyFrames()},
            {"latencyMs", latencyMs},
            {"processorLatencyFrames", engine.GetProcessor().GetLatency()}};
}

}  // namespace

InfoCommand::InfoCommand(CLI::App& program)
    : Command(
          program, "info",
          "Print versions, and latency and block size at a sample rate; or what a sound file is "
          "and how it was made") {
    Options()
        .add_option("file", file, "Tell of this sound file instead; - is standard input")
        ->type_name("FILE");
    Options()
        .add_option("--rate", rate, "Sample rate (default: 48000)")
        ->check(NumberFrom(1000.0, 768000.0))
        ->type_name("HZ");
    Options().add_flag("--json", asJson, "Print JSON");
}

ExitCode InfoCommand::Run() {
    file.empty() ? PrintVersions() : PrintFile();
    return ExitCode::Success;
}

void InfoCommand::PrintFile() const {
    const SoundFacts facts(file);
    std::cout << (asJson ? facts.Json() : facts.Text());
}

void InfoCommand::PrintVersions() const {
    const Json versions = Versions();
    const Json processing = AtRate(rate);
    if (asJson) {
        const Json all{{"versions", versions},
                       {"processing", processing},
                       {"parameters", Processor::kParameterCount},
                       {"presets", Host::FactoryPresets().size()}};
        std::cout << all.dump(2) << "\n";
        return;
    }
    std::cout << "Tesserae " << TESSERAE_VERSION << "\n\n";
    TextTable table({"Part", "Version"});
    for (const auto& [name, version] : versions.items())
        table.Add({name, version.is_string() ? version.get<std::string>() : version.dump()});
    table.Print(std::cout);
    std::cout << "\n"
              << "At " << Fixed(rate, 0) << " Hz blocks have "
              << processing["blockFrames"].get<uint32_t>() << " frames, and the latency is "
              << processing["latencyFrames"].get<uint32_t>() << " frames ("
              << Fixed(processing["latencyMs"].get<double>(), 2)
              << " ms): one block of the queue and "
              << processing["processorLatencyFrames"].get<uint32_t>()
              << " of the limiter. Renders have it taken off.\n";
}

}  // namespace Quorvan::Tools
