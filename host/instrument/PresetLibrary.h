#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "host/parameters/ParameterCatalog.h"
#include "host/state/FactoryPreset.h"
#include "host/state/Issue.h"
#include "host/state/Preset.h"

namespace Quorvan::Host {

/// A preset as a browser lists it.
struct PresetEntry {
    std::string name;
    std::string description;
    std::vector<std::string> tags;
    std::filesystem::path file;  ///< empty: a factory preset
    std::string factoryId;       ///< empty: one of the user's
    std::string broken;          ///< why the file cannot be used; empty where it can
    bool favourite = false;

    bool IsFactory() const { return file.empty(); }
    /// Several may have one name.
    bool IsSame(const PresetEntry& other) const {
        return file == other.file && factoryId == other.factoryId;
    }
};

/// The presets that there are: those of the factory and those in the user's folder, with favourites
/// and the set list that MIDI programs choose from. The only part of the host layer that touches
/// files: they are written beside their places and renamed when they are whole, and nothing is
/// deleted but moved to the trash folder.
///
/// Folder   presets as *.json, "favourites.json", "set-list.json", and "trash/".
/// Names    of files follow those of the presets, with characters that file systems dislike as "-".
/// Errors   of the file system come back as sentences, never as exceptions.
/// Threads  not on the audio thread; calls in turn. Several instances may share a folder: each sees
///          the others' presets after Scan.
class PresetLibrary {
public:
    PresetLibrary(const ParameterCatalog& parameters, std::span<const FactoryPreset> factory,
                  std::filesystem::path userFolder);

    /// "$XDG_DATA_HOME/tesserae/presets", or "~/.local/share/tesserae/presets".
    static std::filesystem::path UsualFolder();
    const std::filesystem::path& Folder() const { return folder; }

    /// Looks at the folder again: new, changed and vanished files.
    void Scan();
    /// Factory presets first, then the user's, each in the order of their names.
    const std::vector<PresetEntry>& Entries() const { return entries; }
    /// Numbers of the entries whose name, description or tags hold all words of text, in any case,
    /// and that have all tags.
    std::vector<size_t> Search(std::string_view text, std::span<const std::string> tags = {}) const;
    /// All tags in use, in order.
    std::vector<std::string> Tags() const;
    /// Number of the entry of that name in any case, the user's before the factory's; among
    /// several, one that has it letter by letter.
    std::optional<size_t> Find(std::string_view name) const;
    /// The usable entry behind or ahead of one of that name, round the ends; none where there is
    /// none. Of several that have the name, the one that was loaded last counts. An unknown name
    /// starts at the first.
    std::optional<size_t> Beside(std::string_view name, int step) const;

    /// Reads a file that need not be in the folder; likewise.
    static Parsed<Preset> Read(const std::filesystem::path& file, const ParameterCatalog& catalog);
    /// Reads one, to be played. Where there is no value, an error says why.
    Parsed<Preset> Load(size_t entry);
    /// The same for the preset at a place of the set list, from 0, as MIDI's program change names
    /// it. Looks at the folder anew: other instances and programs may have changed it since.
    Parsed<Preset> LoadProgram(uint32_t program);
    /// Writes a preset of the user's. The answer is empty, or a sentence why it did not work; a
    /// name that is taken is refused unless replace is set, and what was there goes to the trash.
    /// Where it did not work, what was there stays.
    std::string Save(const Preset& preset, bool replace = false);
    std::string Rename(size_t entry, const std::string& name);
    /// Moves the file to the trash folder; it is none of the favourites any more.
    std::string Delete(size_t entry);

    std::string SetFavourite(size_t entry, bool favourite);
    /// Names of presets; program n loads the n-th.
    const std::vector<std::string>& SetList() const { return setList; }
    std::string SetSetList(std::vector<std::string> names);

private:
    void ScanFile(const std::filesystem::path& file);
    void ReadLists();
    Parsed<Preset> ReadEntry(size_t entry) const;
    std::optional<size_t> LastLoaded(std::string_view name) const;
    std::string WriteList(const char* file, const char* format,
                          const std::vector<std::string>& names) const;
    enum class Trash : uint8_t { Move, Copy };
    /// there is the file's place in the trash from then on.
    std::string ToTrash(const std::filesystem::path& file, Trash way,
                        std::filesystem::path& there) const;
    std::string NotAUsers(size_t entry) const;

    const ParameterCatalog& catalog;
    std::vector<FactoryPreset> factory;
    std::filesystem::path folder;
    std::vector<PresetEntry> entries;
    std::optional<PresetEntry> lastLoaded;
    std::vector<std::string> favourites;
    std::vector<std::string> setList;
};

}  // namespace Quorvan::Host
