#include "host/instrument/DefaultMidiMap.h"

#include <system_error>

#include "host/instrument/PresetLibrary.h"
#include "host/instrument/WholeFile.h"

namespace Quorvan::Host {

namespace {

constexpr size_t kMostBytes = 16 << 20;

}  // namespace

std::filesystem::path DefaultMidiMapFile() {
    return PresetLibrary::UsualFolder().parent_path() / "midi-map.json";
}

std::string LoadDefaultMidiMap(Instrument& instrument) {
    const std::filesystem::path file = DefaultMidiMapFile();
    std::error_code ignored;
    if (!std::filesystem::exists(file, ignored))
        return {};
    std::string problem;
    const auto text = ReadWholeFile(file, kMostBytes, problem);
    if (!text)
        return problem;
    auto read = ReadMidiMap(*text, instrument.Catalog());
    if (!read.value)
        return file.string() + ": " +
               (read.issues.empty() ? "it can't be read." : read.issues.front().text);
    instrument.SetMidiMap(std::move(*read.value));
    return {};
}

std::string SaveDefaultMidiMap(const Instrument& instrument) {
    return WriteWholeFile(DefaultMidiMapFile(),
                          WriteMidiMap(instrument.GetMidiMap(), instrument.Catalog()));
}

}  // namespace Quorvan::Host
