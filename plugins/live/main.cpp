// tesserae-live: the instrument between the ports of a JACK server.

#include <signal.h>
#include <time.h>

#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <functional>
#include <string>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include <CLI/CLI.hpp>

#include "host/instrument/DefaultMidiMap.h"
#include "host/instrument/PresetLibrary.h"
#include "host/instrument/WholeFile.h"
#include "host/parameters/Sentence.h"
#include "host/parameters/SharedCatalog.h"
#include "host/state/PresetFormat.h"
#include "plugins/live/Assign.h"
#include "plugins/live/JackClient.h"
#include "plugins/live/Lessons.h"
#include "plugins/live/LiveOptions.h"
#include "plugins/live/Trouble.h"
#include "plugins/shared/Caretaker.h"
#include "plugins/ui/window/FaceWindow.h"
#include "presets/FactoryPresets.h"

namespace Quorvan::Live {

namespace {

constexpr size_t kMostBytes = 64 << 20;

void Complain(const std::string& sentence) {
    std::fprintf(stderr, "%s\n", Host::Visible(sentence).c_str());
}

void Say(const LiveOptions& options, const std::string& sentence) {
    if (!options.quiet)
        Complain(sentence);
}

std::string Read(const std::string& file) {
    std::string problem;
    const auto text = Host::ReadWholeFile(file, kMostBytes, problem);
    if (!text)
        throw Trouble{kCannotRead, problem};
    return *text;
}

/// What is wrong with a file, which a sentence about reading it names already.
std::string About(const std::string& file, const std::string& sentence) {
    const std::string name = Host::Quoted(file);
    return file.empty() || sentence.starts_with(name) ? sentence : name + ": " + sentence;
}

template <class T>
T Value(Host::Parsed<T> parsed, const std::string& file = {}) {
    if (!parsed.value)
        throw Trouble{kCannotRead, parsed.issues.empty() ? About(file, "It can't be read.")
                                                         : About(file, parsed.issues.front().text)};
    return std::move(*parsed.value);
}

/// The user's presets and the factory's by their names, then files.
Host::Preset FindPreset(const std::string& name) {
    const auto& catalog = Host::SharedCatalog();
    Host::PresetLibrary library(catalog, Host::FactoryPresets(),
                                Host::PresetLibrary::UsualFolder());
    if (const auto entry = library.Find(name))
        return Value(library.Load(*entry), library.Entries()[*entry].file.string());
    if (const Host::FactoryPreset* const preset = Host::FindFactoryPreset(name))
        return Value(Host::ReadPreset(preset->json, catalog));
    if (std::filesystem::exists(name))
        return Value(Host::PresetLibrary::Read(name, catalog), name);
    throw Trouble{kUsage, Host::UnknownFactoryPreset(name)};
}

/// Where the MIDI map is read from and what is learnt goes to.
std::filesystem::path MidiMapFile(const LiveOptions& options) {
    if (options.midiMap)
        return *options.midiMap;
    return Host::DefaultMidiMapFile();
}

/// The presets of the set list, by the names that they have.
std::vector<std::string> FindSetList(const std::vector<std::string>& names) {
    const Host::PresetLibrary library(Host::SharedCatalog(), Host::FactoryPresets(),
                                      Host::PresetLibrary::UsualFolder());
    std::vector<std::string> found;
    found.reserve(names.size());
    for (const std::string& name : names) {
        const auto entry = library.Find(name);
        const Host::FactoryPreset* const preset = Host::FindFactoryPreset(name);
        if (!entry && preset == nullptr)
            throw Trouble{kUsage, std::filesystem::exists(name)
                                      ? Host::Quoted(name) +
                                            " is a file. The set list holds presets by their "
                                            "names: put it into the folder of your presets first."
                                      : Host::UnknownFactoryPreset(name)};
        found.push_back(FindPreset(name).name);
    }
    return found;
}

/// The user's order of presets for program changes, in every instance from then on.
void KeepSetList(std::vector<std::string> names) {
    if (names.empty())
        return;
    Host::PresetLibrary library(Host::SharedCatalog(), Host::FactoryPresets(),
                                Host::PresetLibrary::UsualFolder());
    if (const std::string problem = library.SetSetList(std::move(names)); !problem.empty())
        throw Trouble{kCannotWrite, problem};
}

Host::MidiMap ReadMap(const std::string& file, const LiveOptions& options) {
    auto read = Host::ReadMidiMap(Read(file), Host::SharedCatalog());
    for (const Host::Issue& issue : read.issues) {
        const std::string sentence = About(file, issue.text);
        if (!read.value)
            throw Trouble{kCannotRead, sentence};
        Say(options, sentence);
    }
    return Value(std::move(read));
}

/// What is to be learnt may begin a new file. A state brings a map of its own. What the user has
/// not named does not keep the program from playing; but nothing is written over it.
void TakeMidiMap(Host::Instrument& instrument, const LiveOptions& options) {
    const std::filesystem::path file = MidiMapFile(options);
    std::error_code error;
    const bool isThere = std::filesystem::exists(file, error) || error;
    const bool isNeeded = options.midiMap && options.learn.empty();
    if ((!options.midiMap && options.state && options.learn.empty()) || !(isThere || isNeeded))
        return;
    try {
        Host::MidiMap map = ReadMap(file.string(), options);
        if (options.midiMap || !options.state)
            instrument.SetMidiMap(std::move(map));
    } catch (const Trouble& trouble) {
        if (options.midiMap || !options.learn.empty())
            throw;
        Complain(trouble.sentence + " It is left out.");
    }
}

void SetUp(Host::Instrument& instrument, const LiveOptions& options) {
    const Host::Preset preset = FindPreset(options.preset);
    instrument.LoadPreset(preset);
    if (options.state)
        for (const Host::Issue& issue : instrument.LoadState(Read(*options.state))) {
            if (issue.severity == Host::Issue::Severity::Error)
                throw Trouble{kCannotRead, About(*options.state, issue.text)};
            Say(options, About(*options.state, issue.text));
        }
    if (options.seed)
        instrument.SetSeed(options.seed);
    try {
        Assign(instrument, options.assign);
    } catch (const std::invalid_argument& error) {
        throw Trouble{kUsage, error.what()};
    }
    TakeMidiMap(instrument, options);
    instrument.Song().SetTempo(options.tempo.value_or(preset.tempo.value_or(120.0)));
    instrument.Song().Run(options.run);
}

/// A folder that is not there is more likely a slip than a wish.
void NeedFolderOf(const std::string& file) {
    const std::filesystem::path folder = std::filesystem::path(file).parent_path();
    std::error_code error;
    if (!folder.empty() && !std::filesystem::is_directory(folder, error))
        throw Trouble{kCannotWrite, Host::Quoted(file) + " can't be written: there is no folder " +
                                        Host::Quoted(folder.string()) +
                                        ". Make it first, or choose another one."};
}

void LookForFolders(const LiveOptions& options) {
    if (options.saveState)
        NeedFolderOf(*options.saveState);
    if (options.midiMap && !options.learn.empty())
        NeedFolderOf(*options.midiMap);
}

void KeepState(Host::Instrument& instrument, const LiveOptions& options) {
    if (!options.saveState)
        return;
    const std::string problem = Host::WriteWholeFile(*options.saveState, instrument.SaveState());
    if (!problem.empty())
        throw Trouble{kCannotWrite, problem};
}

/// A file that can't be written now is no reason to stop.
void KeepWhilePlaying(Host::Instrument& instrument, const LiveOptions& options) {
    try {
        KeepState(instrument, options);
    } catch (const Trouble& trouble) {
        Complain(trouble.sentence);
    }
}

/// The signals that end the program, and the one by which session managers have it save. They are
/// waited for, so that nothing is interrupted by them.
class Signals {
public:
    /// Ahead of every other thread, since all of them inherit what is blocked.
    explicit Signals(std::function<void()> toSave) : save(std::move(toSave)) {
        sigemptyset(&set);
        for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGUSR1})
            sigaddset(&set, signal);
        pthread_sigmask(SIG_BLOCK, &set, nullptr);
    }
    /// Waits so long; answers whether the program is to end.
    bool End(long milliseconds) const {
        const timespec wait{milliseconds / 1000, milliseconds % 1000 * 1000000};
        const int signal = sigtimedwait(&set, nullptr, &wait);
        if (signal == SIGUSR1)
            save();
        return signal > 0 && signal != SIGUSR1;
    }

private:
    sigset_t set{};
    std::function<void()> save;
};

void Introduce(const LiveOptions& options, const JackClient& client, uint32_t latency, int wires) {
    char text[256];
    std::snprintf(
        text, sizeof text,
        "\"%s\" plays at %.0f Hz in buffers of %u frames; latency %.1f ms.%s Ctrl-C ends.",
        client.Name().c_str(), client.Rate(), client.BufferFrames(),
        1000.0 * latency / client.Rate(),
        options.connect && wires == 0 ? " There was nothing to connect to." : "");
    Say(options, text);
}

Lessons Teach(Host::Instrument& instrument, const LiveOptions& options) {
    try {
        return Lessons(instrument, options.learn, MidiMapFile(options),
                       [&options](const std::string& sentence) { Say(options, sentence); });
    } catch (const std::invalid_argument& error) {
        throw Trouble{kUsage, error.what()};
    }
}

/// The window, unless nobody wants one or there is no display for it.
class Screen {
public:
    Screen(Host::Instrument& instrument, const LiveOptions& options) {
        if (options.headless)
            return;
        if (!Ui::FaceWindow::HasDisplay()) {
            Say(options, "There is no display, so that no window opens.");
            return;
        }
        window = std::make_unique<Ui::FaceWindow>(instrument, 0, 1.0,
                                                  Ui::FaceWindow::FirstSize(instrument, 1.0));
        window->Show();
    }

    /// Whether the program is to end, by a signal or because the window was closed; waits so long
    /// for that.
    bool Ends(const Signals& signals, long milliseconds) {
        constexpr long kFrame = 16;
        if (window == nullptr)
            return signals.End(milliseconds);
        for (long waited = 0; waited < milliseconds; waited += kFrame)
            if (signals.End(kFrame) || !window->Idle())
                return true;
        return false;
    }

private:
    std::unique_ptr<Ui::FaceWindow> window;
};

/// Plays until a signal comes, also where the server goes and comes back.
void Play(Host::Instrument& instrument, const LiveOptions& options, const Signals& signals,
          Lessons& lessons) {
    jack_set_error_function([](const char*) {});
    jack_set_info_function([](const char*) {});
    bool refused = false;
    std::unique_ptr<JackClient> client = JackClient::Open(instrument, options.name, refused);
    if (refused)
        throw Trouble{kNoServer, "The JACK server refuses a client of the name " +
                                     Host::Quoted(options.name) + ". A name has at most " +
                                     std::to_string(jack_client_name_size() - 1) + " letters."};
    if (client == nullptr)
        throw Trouble{kNoServer,
                      "No JACK server runs. Start one (jackd -d alsa, or qjackctl), or with "
                      "PipeWire put pw-jack in front of this command."};
    const Plugins::Caretaker caretaker(
        instrument, [&options](const std::string& problem) { Say(options, problem); });
    Screen screen(instrument, options);
    std::string preset = instrument.PresetName();
    for (bool ends = false; !ends;) {
        const int wires = options.connect ? client->ConnectToMachine() : 0;
        Introduce(options, *client, instrument.LatencyFrames(), wires);
        while (!ends && !client->IsLost() && !client->IsOutOfRate()) {
            ends = screen.Ends(signals, 100);
            lessons.Look();
            if (instrument.PresetName() != std::exchange(preset, instrument.PresetName()))
                Say(options, "Preset " + Host::Quoted(preset) + ".");
        }
        if (ends)
            break;
        Say(options, client->IsLost() ? "The JACK server has gone; waiting for it to come back."
                                      : "The JACK server has changed its rate.");
        client.reset();
        while (!ends && client == nullptr) {
            ends = screen.Ends(signals, 500);
            if (!ends)
                client = JackClient::Open(instrument, options.name, refused);
        }
    }
}

uint64_t SeedFrom(const std::string& text) {
    uint64_t seed = 0;
    const char* const end = text.data() + text.size();
    const auto read = std::from_chars(text.data(), end, seed);
    if (read.ec != std::errc() || read.ptr != end)
        throw CLI::ValidationError(
            "--seed", "The seed has to be a whole number from 0 to 18446744073709551615.");
    return seed;
}

int Main(int argc, char** argv) {
    LiveOptions options;
    CLI::App app(
        "Tesserae, live: a granular processor between the ports of a JACK server. Other "
        "programs connect to its ports, MIDI plays it, and Ctrl-C ends it.");
    app.set_version_flag("--version", TESSERAE_VERSION);
    app.add_option("--preset", options.preset,
                   "A preset's name, the user's or the factory's, or a file")
        ->capture_default_str();
    app.add_option("--state", options.state, "A state as plug-ins save it, instead of a preset");
    app.add_option("--tempo", options.tempo,
                   "Beats per minute where neither JACK nor MIDI clock tell it; without it, the "
                   "preset's")
        ->check(CLI::Range(1.0, 999.0))
        ->check([](const std::string& text) {
            return std::isfinite(std::strtod(text.c_str(), nullptr))
                       ? std::string()
                       : std::string("The tempo has to be a number from 1 to 999.");
        });
    app.add_flag("--run", options.run, "Let the song play where nobody else tells where it is");
    app.add_option_function<std::string>(
           "--seed", [&options](const std::string& text) { options.seed = SeedFrom(text); },
           "Fixed chance: the same playing gives the same sound")
        ->type_name("UINT");
    app.add_option("--midi-map", options.midiMap,
                   "What MIDI moves; without it, midi-map.json beside the user's presets folder");
    app.add_option(
           "--learn", options.learn,
           "Controls of hosts (as \"Mode\") and parameters, by name, that wait, in this order, "
           "for a MIDI control that moves them from then on; kept in the MIDI map's file")
        ->type_name("NAME...");
    app.add_option("--set-list", options.setList,
                   "Presets that program changes choose, in this order; kept for the next times")
        ->type_name("NAME...");
    app.add_option(
           "--assign", options.assign,
           "Points the control \"Assign\" N of hosts at a parameter, which the name of another "
           "control of theirs may stand for; for --save-state")
        ->type_name("N=NAME...");
    app.add_option("--save-state", options.saveState,
                   "Writes the state that plug-ins load to a file, at the start, at the end and "
                   "whenever SIGUSR1 comes");
    app.add_option("--name", options.name, "Name of the JACK client")
        ->capture_default_str()
        ->check([](const std::string& name) {
            return name.empty() ? std::string("The name has to have a letter at least.")
                                : std::string();
        });
    app.add_flag("--connect", options.connect,
                 "Connect to the machine's inputs, outputs and MIDI devices");
    app.add_flag("--headless", options.headless, "Open no window");
    app.add_flag("--quiet", options.quiet, "Say nothing but what went wrong");
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : kUsage;
    }
    std::function<void()> keep;
    const Signals signals([&keep] { keep(); });
    try {
        Host::Instrument instrument(Host::SharedCatalog());
        keep = [&instrument, &options] { KeepWhilePlaying(instrument, options); };
        SetUp(instrument, options);
        Lessons lessons = Teach(instrument, options);
        LookForFolders(options);
        // Nothing is written ahead of a look at all that the command line asks for.
        KeepSetList(FindSetList(options.setList));
        KeepState(instrument, options);
        try {
            Play(instrument, options, signals, lessons);
        } catch (const Trouble& trouble) {
            // What has been played so far is not lost with what could not be learnt.
            if (trouble.code == kCannotWrite)
                KeepState(instrument, options);
            throw;
        }
        KeepState(instrument, options);
        return 0;
    } catch (const Trouble& trouble) {
        Complain(trouble.sentence);
        return trouble.code;
    } catch (const std::exception& error) {
        Complain(error.what());
        return 1;
    }
}

}  // namespace

}  // namespace Quorvan::Live

int main(int argc, char** argv) {
    try {
        return Quorvan::Live::Main(argc, argv);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
