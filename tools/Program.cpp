#include "tools/Program.h"

#include <algorithm>
#include <exception>
#include <iostream>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <CLI/CLI.hpp>

#include "host/parameters/NameDistance.h"
#include "host/parameters/Sentence.h"
#include "tools/commands/BatchCommand.h"
#include "tools/commands/CompleteLineCommand.h"
#include "tools/commands/CompletionsCommand.h"
#include "tools/commands/DemoSoundCommand.h"
#include "tools/commands/DestinationsCommand.h"
#include "tools/commands/DoctorCommand.h"
#include "tools/commands/InfoCommand.h"
#include "tools/commands/ManualCommand.h"
#include "tools/commands/ParamsCommand.h"
#include "tools/commands/PlanCommand.h"
#include "tools/commands/PresetsCommand.h"
#include "tools/commands/RenderCommand.h"
#include "tools/support/Failure.h"
#include "tools/support/StandardStreams.h"
#include "tools/support/TemporaryFiles.h"

namespace Quorvan::Tools {

namespace {

constexpr const char* kExitCodes =
    "Exit codes:\n"
    "  0    done\n"
    "  1    the program or the machine failed, such as no memory\n"
    "  2    the command line asks for something that does not exist\n"
    "  3    a file that is to be read can't be used\n"
    "  4    a file or the results can't be written, or a file exists and --force is missing\n"
    "  5    the doctor found something wrong\n"
    "  6    jobs of a batch failed; the others are done\n"
    "  130  interrupted (Ctrl-C); 129 and 143 after a hang-up or a terminate\n"
    "A run that does not end with 0 leaves no file and changes none, unless it\n"
    "only could not say what it did. A batch keeps the files of the jobs that are\n"
    "done.";

using Commands = std::vector<std::unique_ptr<Command>>;

Commands MakeCommands(CLI::App& program) {
    Commands commands;
    commands.push_back(std::make_unique<RenderCommand>(program));
    commands.push_back(std::make_unique<BatchCommand>(program));
    commands.push_back(std::make_unique<PlanCommand>(program));
    commands.push_back(std::make_unique<ParamsCommand>(program));
    commands.push_back(std::make_unique<DestinationsCommand>(program));
    commands.push_back(std::make_unique<PresetsCommand>(program));
    commands.push_back(std::make_unique<InfoCommand>(program));
    commands.push_back(std::make_unique<DoctorCommand>(program));
    commands.push_back(std::make_unique<DemoSoundCommand>(program));
    commands.push_back(std::make_unique<CompletionsCommand>(program));
    commands.push_back(std::make_unique<ManualCommand>(program));
    commands.push_back(std::make_unique<CompleteLineCommand>(program));
    return commands;
}

ExitCode RunAsked(const Commands& commands) {
    for (const std::unique_ptr<Command>& command : commands) {
        if (command->IsAsked())
            return command->Run();
    }
    return ExitCode::Usage;
}

ExitCode Complain(ExitCode code, const std::string& sentence) {
    std::cout.flush();
    std::cerr << "tesserae: " << sentence << std::endl;
    return code;
}

/// Turns everything that a command throws into a sentence and a code.
template <class Run>
ExitCode Guarded(Run run) {
    try {
        return run();
    } catch (const Failure& failure) {
        return Complain(failure.Code(), failure.what());
    } catch (const std::bad_alloc&) {
        return Complain(ExitCode::Internal,
                        "There is not enough memory. Close other programs or "
                        "render less.");
    } catch (const std::exception& fault) {
        return Complain(ExitCode::Internal, std::string("Something failed inside: ") +
                                                fault.what() + ". Please report this.");
    }
}

/// The library below would only say that a command is missing.
std::optional<std::string> UnknownCommand(const CLI::App& program, std::string_view typed) {
    if (typed.empty() || typed.front() == '-')
        return std::nullopt;
    std::vector<std::string> names;
    for (const CLI::App* command : program.get_subcommands({})) {
        names.push_back(command->get_name());
        if (names.back() == typed)
            return std::nullopt;
    }
    std::string sentence = "There is no command ";
    sentence.append(Host::Quoted(typed)).append(". ");
    sentence += Host::DidYouMean(Host::NearestNames(typed, names, 2));
    return sentence.append(" Run \"tesserae --help\" for a list.");
}

/// A sentence for the first word that looks like an option of the command and is none.
std::optional<std::string> UnknownOption(const CLI::App& command) {
    const std::vector<std::string> rest = command.remaining();
    const auto typed = std::find_if(rest.begin(), rest.end(), [](const std::string& word) {
        return word.size() > 1 && word.front() == '-' && word != "--";
    });
    if (typed == rest.end())
        return std::nullopt;
    std::vector<std::string> names;
    for (const CLI::Option* option : command.get_options())
        for (const std::string& name : option->get_lnames())
            names.push_back("--" + name);
    const std::string name = typed->substr(0, typed->find('='));
    const std::string caller =
        command.get_parent() != nullptr ? "tesserae " + command.get_name() : "tesserae";
    std::string suggestion = Host::DidYouMean(Host::NearestNames(name, names, 2));
    if (!suggestion.empty())
        suggestion += " ";
    return Host::Quoted(caller) + " has no option " + Host::Quoted(name) + ". " + suggestion +
           Host::Quoted(caller + " --help") + " lists all.";
}

ExitCode Explain(const CLI::App& program, const CLI::ParseError& wrong) {
    std::vector<const CLI::App*> asked{&program};
    for (const CLI::App* command : program.get_subcommands())
        asked.push_back(command);
    for (const CLI::App* command : asked)
        if (const auto sentence = UnknownOption(*command); sentence && wrong.get_exit_code() != 0)
            return Complain(ExitCode::Usage, *sentence);
    return program.exit(wrong) == 0 ? ExitCode::Success : ExitCode::Usage;
}

void SetUp(CLI::App& program) {
    program.set_version_flag("--version", TESSERAE_VERSION);
    program.require_subcommand(1);
    program.footer(kExitCodes);
    program.failure_message([](const CLI::App*, const CLI::Error& wrong) {
        std::string message = "tesserae: ";
        message += wrong.what();
        return message.append("\nAdd --help to see what there is.\n");
    });
}

/// What "help" prints: the help of the command behind it, or of the program.
std::string HelpOf(const CLI::App& program, std::string_view topic) {
    for (const CLI::App* command : program.get_subcommands({}))
        if (command->get_name() == topic)
            return command->help(program.get_name());
    return program.help();
}

ExitCode Dispatch(CLI::App& program, const Commands& commands, int count,
                  const char* const* arguments) {
    if (count < 2) {
        std::cerr << program.help();
        return ExitCode::Usage;
    }
    const std::string_view typed = arguments[1];
    const bool isHelp = typed == "help";
    if (typed == "version") {
        std::cout << TESSERAE_VERSION << "\n";
        return ExitCode::Success;
    }
    std::string_view topic = isHelp && count > 2 ? arguments[2] : isHelp ? "" : typed;
    if (isHelp && (topic == "help" || topic == "version"))
        topic = "";
    if (const auto sentence = UnknownCommand(program, topic))
        return Complain(ExitCode::Usage, *sentence);
    if (isHelp) {
        std::cout << HelpOf(program, topic);
        return ExitCode::Success;
    }
    try {
        program.parse(count, arguments);
    } catch (const CLI::ParseError& wrong) {
        return Explain(program, wrong);
    }
    return RunAsked(commands);
}

}  // namespace

int RunProgram(int count, const char* const* arguments) {
    StandardStreams::HoldPlaces();
    TemporaryFiles::InstallHandlers();
    CLI::App program("Tesserae renders sound through its live granular processor.", "tesserae");
    SetUp(program);
    const Commands commands = MakeCommands(program);
    return static_cast<int>(Guarded([&] {
        const ExitCode code = Dispatch(program, commands, count, arguments);
        Command::CheckPrinted();
        return code;
    }));
}

}  // namespace Quorvan::Tools
