#include "tools/commands/DemoSoundCommand.h"

#include <iostream>

#include "tools/audio/AudioWriter.h"
#include "tools/audio/DemoSound.h"
#include "tools/support/NumberChecks.h"
#include "tools/support/Numbers.h"

namespace Quorvan::Tools {

DemoSoundCommand::DemoSoundCommand(CLI::App& program)
    : Command(program, "demo-sound", "Write a piece of music to try presets on"),
      seconds(kDemoSeconds) {
    CLI::App& app = Options();
    app.add_option("output", output, "Sound file to write; - is standard output")
        ->required()
        ->type_name("OUT");
    app.add_option("--seconds", seconds, "Length (default: 8, four bars at 120 BPM)")
        ->check(NumberFrom(0.1, 600.0))
        ->type_name("SECONDS");
    app.add_option("--rate", rate, "Sample rate (default: 48000)")
        ->check(NumberFrom(8000, 384000))
        ->type_name("HZ");
    app.add_option("--format", format, "As with \"tesserae render\"")->type_name("FORMAT");
    app.add_flag("--force", force, "Replace a file that exists");
}

ExitCode DemoSoundCommand::Run() {
    const AudioFormat form = AudioFormat::Choose(output, format, rate, 2);
    AtomicOutput file(output, force);
    const Planes sound = MakeDemoSound(rate, seconds);
    AudioWriter writer(file, form, rate, sound.Channels(), sound.Frames());
    writer.Write(sound.Pointers(), sound.Frames());
    writer.Finish();
    file.Commit();
    std::ostream& words = file.IsStandardOutput() ? std::cerr : std::cout;
    words << StandardStreams::Heading(output) << ": " << Fixed(seconds, 2) << " s, "
          << Fixed(kDemoTempo, 0) << " BPM, " << form.text << "\n";
    return ExitCode::Success;
}

}  // namespace Quorvan::Tools
