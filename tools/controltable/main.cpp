// Writes the table of host controls into a page, between its two markers; with --check only tells
// whether it stands there already:  control_table FILE [--check]

#include <cstdio>
#include <cstring>
#include <string>

#include "host/instrument/Instrument.h"
#include "host/instrument/WholeFile.h"
#include "host/parameters/SharedCatalog.h"
#include "host/state/PresetFormat.h"
#include "presets/FactoryPresets.h"

namespace Quorvan {

namespace {

constexpr const char* kBegin = "<!-- controls: script/control-table -->\n";
constexpr const char* kEnd = "<!-- end of controls -->\n";

/// As a new plug-in has them.
std::string Table() {
    Host::Instrument instrument(Host::SharedCatalog());
    instrument.LoadPreset(
        *Host::ReadPreset(Host::FactoryPresets().front().json, Host::SharedCatalog()).value);
    std::string table =
        "| id | control | group | from | to | at first |\n| --- | --- | --- | --- | --- | --- |\n";
    for (const Host::HostControl& control : Host::HostControls()) {
        const auto text = [&](float position) {
            return instrument.ControlText(control.id, position);
        };
        table += "| " + std::to_string(control.id);
        for (const std::string& cell :
             {std::string(control.name), std::string(control.group), text(0.0f), text(1.0f),
              text(instrument.ControlPosition(control.id))})
            table += " | " + cell;
        table += " |\n";
    }
    return table;
}

int Main(const char* file, bool checks) {
    std::string problem;
    const auto page = Host::ReadWholeFile(file, 1 << 20, problem);
    const size_t begin = page ? page->find(kBegin) : std::string::npos;
    const size_t end = page ? page->find(kEnd) : std::string::npos;
    if (begin == std::string::npos || end == std::string::npos) {
        std::fprintf(stderr, "%s\n", page ? "The page has no markers." : problem.c_str());
        return 2;
    }
    const size_t start = begin + std::strlen(kBegin);
    const std::string wanted = page->substr(0, start) + Table() + page->substr(end);
    if (wanted == *page)
        return 0;
    if (checks) {
        std::fprintf(stderr, "%s: the table of controls is out of date; script/control-table.\n",
                     file);
        return 1;
    }
    problem = Host::WriteWholeFile(file, wanted);
    std::fprintf(stderr, "%s\n", problem.empty() ? "The table is new." : problem.c_str());
    return problem.empty() ? 0 : 2;
}

}  // namespace

}  // namespace Quorvan

int main(int argc, char** argv) {
    const bool checks = argc > 2 && std::strcmp(argv[2], "--check") == 0;
    return Quorvan::Main(argc > 1 ? argv[1] : "docs/plugin.md", checks);
}
