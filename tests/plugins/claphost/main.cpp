// claphost PLUGIN.clap [OPTIONS]: tries what hosts do with a CLAP plug-in, and what they should
// not.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <sstream>

#include "plugins/claphost/Check.h"
#include "plugins/claphost/Trap.h"

namespace Quorvan::ClapHost {

namespace {

constexpr const char* kUsage =
    "Usage: claphost PLUGIN.clap [OPTIONS]\n"
    "  --list           print the table of parameters, and check nothing\n"
    "  --check NAME     only this check; may come again\n"
    "  --presets A,B    keys of the plug-in's own presets, to be loaded by\n"
    "  --seed N         start of all that is random (1)\n"
    "  --lives N        how often an instance is made and destroyed (20)\n"
    "  --instances N    how many are made at once (64)\n"
    "  --soak SECONDS   how long the last check goes on (1)\n";

void List(const ClapLibrary& library) {
    const ClapInstance instance(library);
    std::puts(
        "| id | control | group | from | to | at first |\n| --- | --- | --- | --- | --- | --- |");
    for (const clap_param_info_t& info : instance.Parameters())
        std::printf("| %u | %s | %s | %s | %s | %s |\n", info.id, info.name, info.module,
                    instance.Text(info.id, info.min_value).c_str(),
                    instance.Text(info.id, info.max_value).c_str(),
                    instance.Text(info.id, info.default_value).c_str());
}

bool RunOne(const Check& check, Session& session) {
    session.note.clear();
    session.random.seed(session.seed);
    const uint64_t caught = Trap::Caught();
    std::string problem;
    try {
        check.run(session);
        if (Trap::Caught() != caught)
            problem = "The audio thread allocates or locks.";
    } catch (const Failure& failure) {
        problem = failure.what();
    }
    std::printf("%-14s %s  %s", check.name, problem.empty() ? "ok    " : "failed", check.fact);
    std::printf(session.note.empty() ? "%s" : " (%s)", session.note.c_str());
    std::printf(problem.empty() ? "%s\n" : ": %s\n", problem.c_str());
    std::fflush(stdout);
    return problem.empty();
}

int Run(const std::vector<std::string>& arguments) {
    const ClapLibrary library(arguments.at(0));
    Session session{arguments[0], library};
    std::vector<std::string> only;
    for (size_t i = 1; i < arguments.size(); i += 2) {
        const std::string& option = arguments[i];
        if (option == "--list")
            return List(library), 0;
        if (i + 1 == arguments.size())
            return std::fputs(kUsage, stderr), 2;
        const std::string& value = arguments[i + 1];
        const auto number = static_cast<uint32_t>(std::strtoul(value.c_str(), nullptr, 10));
        if (option == "--check")
            only.push_back(value);
        else if (option == "--seed")
            session.seed = number;
        else if (option == "--lives")
            session.lives = std::max(number, 1u);
        else if (option == "--instances")
            session.instances = std::max(number, 1u);
        else if (option == "--soak")
            session.soakSeconds = std::strtod(value.c_str(), nullptr);
        else if (option == "--presets")
            for (std::istringstream keys(value);
                 std::getline(keys, session.presets.emplace_back(), ',');) {
            }
        else
            return std::fputs(kUsage, stderr), 2;
    }
    std::erase(session.presets, "");
    int passed = 0, failed = 0;
    for (const auto checks : {SoundChecks(), ValueChecks(), LifeChecks()})
        for (const Check& check : checks)
            if (only.empty() || std::count(only.begin(), only.end(), check.name) > 0)
                ++(RunOne(check, session) ? passed : failed);
    std::printf("%d passed, %d failed\n", passed, failed);
    return failed == 0 && passed > 0 ? 0 : 1;
}

}  // namespace

}  // namespace Quorvan::ClapHost

int main(int count, char** arguments) {
    using namespace Quorvan::ClapHost;
    try {
        if (count < 2 || std::string(arguments[1]).rfind("--", 0) == 0)
            return std::fputs(kUsage, stderr), 2;
        return Run({arguments + 1, arguments + count});
    } catch (const Failure& failure) {
        return std::fprintf(stderr, "%s\n", failure.what()), 1;
    }
}
