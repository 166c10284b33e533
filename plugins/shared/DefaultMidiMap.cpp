#include "plugins/shared/DefaultMidiMap.h"

#include <system_error>

#include "host/instrument/PresetLibrary.h"
#include "host/instrument/WholeFile.h"

namespace Quorvan::Plugins {

namespace {

constexpr size_t kMostBytes = 16 << 20;

}  // namespace

std::filesystem::path DefaultMidiMapFile() {
    return Host::PresetLibrary::UsualFolder().parent_path() / "midi-map.json";
}

std::string LoadDefaultMidiMap(Host::Instrument& instrument) {
    const std::filesystem::path file = DefaultMidiMapFile();
    std::error_code ignored;
    if (!std::filesystem::exists(file, ignored))
        return {};
    std::string problem;
    const auto text = Host::ReadWholeFile(file, kMostBytes, problem);
    if (!text)
        return problem;
    auto read = Host::ReadMidiMap(*text, instrument.Catalog());
    if (!read.value)
        return file.string() + ": " +
               (read.issues.empty() ? "it can't be read." : read.issues.front().text);
    instrument.SetMidiMap(std::move(*read.value));
    return {};
}

std::string SaveDefaultMidiMap(const Host::Instrument& instrument) {
    return Host::WriteWholeFile(DefaultMidiMapFile(),
                                Host::WriteMidiMap(instrument.GetMidiMap(), instrument.Catalog()));
}

}  // namespace Quorvan::Plugins
