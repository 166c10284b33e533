#include "tools/render/RenderOptions.h"

#include <map>

#include "host/parameters/NumberText.h"
#include "host/parameters/Sentence.h"
#include "tools/support/NumberChecks.h"

namespace Quorvan::Tools {

RenderOptions::RenderOptions(CLI::App& command) : app(command) {
    AddFiles();
    AddSound();
    AddTime();
    AddForm();
}

RenderSettings RenderOptions::Settings() const {
    RenderSettings wanted = settings;
    wanted.playing = !stopped;
    return wanted;
}

void RenderOptions::Forget() {
    settings = {};
    playing = stopped = false;
}

void RenderOptions::AddFiles() {
    app.add_option("input", settings.input,
                   "Sound file to read, mono or stereo; - is standard input")
        ->required()
        ->type_name("IN");
    app.add_option(
           "-o,--output", settings.output,
           "Sound file to write; - is standard output, as WAV unless --format says otherwise")
        ->required()
        ->type_name("OUT");
    CLI::Option* const rawRate =
        app.add_option("--raw-rate", settings.rawRate,
                       "IN has no header: 32-bit floats at this rate, low byte first, channels "
                       "interleaved")
            ->check(NumberFrom(1000, 768000))
            ->type_name("HZ");
    app.add_option("--raw-channels", settings.rawChannels,
                   "Channels of an input without header (default: 2)")
        ->check(NumberFrom(1, 2))
        ->needs(rawRate)
        ->type_name("N");
    app.add_option("--sidechain", settings.sideChain,
                   "Sound file that the envelope follower can listen to")
        ->type_name("FILE");
    CLI::Option* const picture =
        app.add_option("--picture", settings.picture, "Also draw the render")
            ->type_name("FILE.png");
    app.add_option(
           "--picture-from", settings.pictureFrom,
           "Draw only what comes from here on: seconds, \"4 beats\", or bar and beat as 5:3")
        ->needs(picture)
        ->type_name("TIME");
    app.add_option("--picture-to", settings.pictureTo, "And only what comes ahead of here")
        ->needs(picture)
        ->type_name("TIME");
    app.add_option_function<std::string>(
           "--picture-levels", [this](const std::string& form) { TakeLevels(form); },
           "Outlines of input and output (default: auto, which is db where one of them is quiet)")
        ->type_name("auto|linear|db");
    app.add_flag("--picture-modulation", settings.pictureModulation,
                 "With modulation in the picture also where nothing is routed");
    CLI::Option* const csv =
        app.add_option("--modulation-csv", settings.modulationCsv,
                       "Also write the seven modulation sources over time, as a display gets them")
            ->type_name("FILE");
    app.add_option("--modulation-destinations", settings.modulationDestinations,
                   "Columns more for that file: positions of these destinations. \"tesserae "
                   "destinations\" lists the names")
        ->type_name("NAME,...")
        ->delimiter(',')
        ->allow_extra_args(false)
        ->needs(csv);
    app.add_flag("--force", settings.force, "Replace files that exist");
}

void RenderOptions::TakeLevels(const std::string& form) {
    const std::map<std::string, LevelForm> forms{
        {"auto", LevelForm::Auto}, {"linear", LevelForm::Linear}, {"db", LevelForm::Decibels}};
    const auto found = forms.find(Host::Lower(form));
    if (found == forms.end())
        throw CLI::ValidationError("--picture-levels", Host::Quoted(form) +
                                                           " is no form of the outlines. Write "
                                                           "auto, linear or db.");
    settings.pictureLevels = found->second;
}

void RenderOptions::AddSound() {
    app.add_option("--preset", settings.preset,
                   "Factory preset or preset file (default: init). \"tesserae presets\" lists them")
        ->type_name("FILE|NAME");
    app.add_option("--set", settings.assignments,
                   "Put a parameter elsewhere: a number from 0 to 1 is a position, anything else a "
                   "value such as \"120 ms\", \"Texture\" or, where there is no unit, \"16\". "
                   "\"tesserae params\" lists the names. May be repeated")
        ->type_name("NAME=POSITION")
        ->allow_extra_args(false);
    app.add_option("--save-preset", settings.savePreset,
                   "Also write the sound that --preset and --set make, as a preset")
        ->type_name("FILE");
    app.add_option("--automation", settings.automation,
                   "CSV or JSON list of time, parameter name, position, and \"linear\" or "
                   "\"exponential\" where it is a ramp; Tempo is one of the names")
        ->type_name("FILE");
    app.add_option("--seed", settings.seed,
                   "Start of all chance: the same seed gives the same file. Without it chance "
                   "chooses, and the summary tells")
        ->transform(WholeNumber())
        ->type_name("N");
}

void RenderOptions::AddTime() {
    app.add_option("--tempo", settings.tempo, "Tempo (default: the preset's, else 120)")
        ->check(NumberFrom(1.0, 999.0))
        ->type_name("BPM");
    CLI::Option* const play = app.add_flag("--play", playing, "The song plays (default)");
    app.add_flag("--stop", stopped, "The song stands still")->excludes(play);
    app.add_option("--start-beat", settings.startBeat,
                   "Song position at the start, in quarter notes; negative in a pre-roll")
        ->check(NumberFrom(-1.0e6, 1.0e6))
        ->type_name("B");
    app.add_option_function<std::string>(
           "--meter",
           [this](const std::string& text) {
               const std::optional<Meter> meter = Meter::Read(text);
               if (!meter)
                   throw CLI::ValidationError("--meter", "\"" + text +
                                                             "\" is no time signature. Write one "
                                                             "such as 3/4");
               settings.meter = *meter;
           },
           "Time signature in which automation and picture count bars (default: 4/4)")
        ->type_name("BEATS/UNIT");
    app.add_option("--tail", settings.tail,
                   "Sound behind the end of the input (default: until it has faded, at most 30)")
        ->check(NumberFrom(0.0, 3600.0))
        ->type_name("SECONDS");
    app.add_option("--tail-fade", settings.tailFade,
                   "Fade at the end of a tail that is still sounding after its 30 seconds, 0 for "
                   "none (default: 2); with --tail a fade over its last seconds")
        ->check(NumberFrom(0.0, 30.0))
        ->type_name("SECONDS");
}

void RenderOptions::AddForm() {
    app.add_option("--rate", settings.rate, "Resample the input first (default: its own rate)")
        ->check(NumberFrom(1000, 768000))
        ->type_name("HZ");
    app.add_option("--format", settings.format,
                   "wav, aiff, flac, ogg, caf, raw; 16, 24, 32, float, vorbis, opus; or both: "
                   "wav-float (default: by the ending, 24 bit, Vorbis in .ogg, float in raw)")
        ->type_name("FORMAT");
    app.add_flag("--mono", settings.mono, "Write one channel");
}

}  // namespace Quorvan::Tools
