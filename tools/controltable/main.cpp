// Writes tables into a page, between the two markers of each; with --check only tells whether they
// stand there already:  control_table FILE [--check]

#include <cstdio>
#include <cstring>
#include <string>

#include "host/instrument/WholeFile.h"
#include "tools/controltable/Tables.h"

namespace Quorvan {

namespace {

struct Section {
    const char* name;
    std::string (*table)();
};

constexpr Section kSections[]{{"controls", ControlTable},
                              {"help on controls", HelpOnControls},
                              {"help on the window", HelpOnTheWindow}};

/// The page with its tables as they have to be; empty where it has none.
std::string Renewed(std::string page) {
    bool hasOne = false;
    for (const Section& section : kSections) {
        const std::string name(section.name);
        const std::string first = "<!-- " + name + ": script/control-table -->\n";
        const size_t begin = page.find(first);
        const size_t end = page.find("<!-- end of " + name + " -->\n");
        if (begin == std::string::npos || end == std::string::npos)
            continue;
        hasOne = true;
        const size_t start = begin + first.size();
        page.replace(start, end - start, section.table());
    }
    return hasOne ? page : std::string();
}

int Main(const char* file, bool checks) {
    std::string problem;
    const auto page = Host::ReadWholeFile(file, 1 << 20, problem);
    const std::string wanted = page ? Renewed(*page) : std::string();
    if (wanted.empty()) {
        std::fprintf(stderr, "%s\n", page ? "The page has no markers." : problem.c_str());
        return 2;
    }
    if (wanted == *page)
        return 0;
    if (checks) {
        std::fprintf(stderr, "%s: a table is out of date; script/control-table.\n", file);
        return 1;
    }
    problem = Host::WriteWholeFile(file, wanted);
    std::fprintf(stderr, "%s\n", problem.empty() ? "The tables are new." : problem.c_str());
    return problem.empty() ? 0 : 2;
}

}  // namespace

}  // namespace Quorvan

int main(int argc, char** argv) {
    const bool checks = argc > 2 && std::strcmp(argv[2], "--check") == 0;
    return Quorvan::Main(argc > 1 ? argv[1] : "docs/plugin.md", checks);
}
