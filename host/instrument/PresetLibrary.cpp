#include "host/instrument/PresetLibrary.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <set>
#include <system_error>
#include <utility>

#include <nlohmann/json.hpp>

#include "host/instrument/WholeFile.h"
#include "host/parameters/NumberText.h"
#include "host/parameters/Sentence.h"
#include "host/state/JsonDepth.h"
#include "host/state/PresetFormat.h"

namespace Quorvan::Host {

namespace {

namespace fs = std::filesystem;
using Json = nlohmann::json;

constexpr size_t kMostBytes = 4 << 20;
constexpr size_t kMostBytesOfName = 120;   // of a file's name; file systems take 255
constexpr size_t kMostBytesInTrash = 200;  // with room for the time
constexpr const char* kFavourites = "favourites.json";
constexpr const char* kSetList = "set-list.json";

bool IsList(const fs::path& file) {
    return file.filename() == kFavourites || file.filename() == kSetList;
}

/// As many bytes of text as make up whole letters.
std::string Cut(const std::string& text, size_t mostBytes) {
    size_t end = std::min(mostBytes, text.size());
    while (end > 0 && end < text.size() && (static_cast<unsigned char>(text[end]) & 0xc0) == 0x80)
        --end;
    return text.substr(0, end);
}

/// A file's name as that of a preset. What is no UTF-8 in it is replaced.
std::string NameOf(const fs::path& file) {
    return Json::parse(
        Json(file.stem().string()).dump(-1, ' ', false, Json::error_handler_t::replace));
}

/// A name that every file system takes, the same for the same preset.
std::string FileNameOf(const std::string& name) {
    std::string file;
    for (const char letter : Cut(name, kMostBytesOfName)) {
        const bool dislikes = static_cast<unsigned char>(letter) < 0x20 || letter == 0x7f ||
                              std::string_view("/\\:*?\"<>|").find(letter) != std::string::npos;
        file += dislikes ? '-' : letter;
    }
    if (file.starts_with('.'))
        file.front() = '-';
    return file + ".json";
}

bool SameName(const std::string& one, std::string_view other) { return Lower(one) == Lower(other); }

PresetEntry EntryOf(const Parsed<Preset>& read, const std::string& otherName) {
    PresetEntry entry;
    entry.name = otherName;
    if (!read.value) {
        entry.broken = read.issues.empty() ? "" : read.issues.front().text;
        return entry;
    }
    if (!read.value->name.empty())
        entry.name = read.value->name;
    entry.description = read.value->description;
    entry.tags = read.value->tags;
    return entry;
}

}  // namespace

PresetLibrary::PresetLibrary(const ParameterCatalog& parameters,
                             std::span<const FactoryPreset> factoryPresets, fs::path userFolder)
    : catalog(parameters),
      factory(factoryPresets.begin(), factoryPresets.end()),
      folder(std::move(userFolder)) {
    Scan();
}

fs::path PresetLibrary::UsualFolder() {
    const char* const data = std::getenv("XDG_DATA_HOME");
    const char* const home = std::getenv("HOME");
    fs::path root = data != nullptr && *data == '/'
                        ? fs::path(data)
                        : fs::path(home != nullptr ? home : "/tmp") / ".local" / "share";
    return root / "tesserae" / "presets";
}

void PresetLibrary::Scan() {
    entries.clear();
    for (const FactoryPreset& text : factory) {
        entries.push_back(EntryOf(ReadPreset(text.json, catalog), std::string(text.id)));
        entries.back().factoryId = text.id;
    }
    const auto users = static_cast<std::ptrdiff_t>(entries.size());
    std::error_code error;
    for (fs::directory_iterator file(folder, error), end; !error && file != end;
         file.increment(error))
        if (file->path().extension() == ".json" && !IsList(file->path()) &&
            !file->path().filename().string().starts_with('.'))
            ScanFile(file->path());
    const auto byName = [](const PresetEntry& one, const PresetEntry& other) {
        return std::pair(Lower(one.name), one.file) < std::pair(Lower(other.name), other.file);
    };
    std::sort(entries.begin(), entries.begin() + users, byName);
    std::sort(entries.begin() + users, entries.end(), byName);
    ReadLists();
}

void PresetLibrary::ScanFile(const fs::path& file) {
    PresetEntry entry = EntryOf(Read(file, catalog), NameOf(file));
    entry.file = file;
    entries.push_back(std::move(entry));
}

void PresetLibrary::ReadLists() {
    const auto read = [this](const char* file) {
        std::vector<std::string> names;
        std::string problem;
        const auto text = ReadWholeFile(folder / file, kMostBytes, problem);
        const Json root =
            text && !IsNestedTooDeep(*text) ? Json::parse(*text, nullptr, false) : Json();
        if (root.is_object() && root.contains("presets") && root["presets"].is_array())
            for (const Json& name : root["presets"])
                if (name.is_string())
                    names.push_back(name);
        return names;
    };
    favourites = read(kFavourites);
    setList = read(kSetList);
    for (PresetEntry& entry : entries)
        entry.favourite =
            std::find(favourites.begin(), favourites.end(), entry.name) != favourites.end();
}

std::vector<size_t> PresetLibrary::Search(std::string_view text,
                                          std::span<const std::string> tags) const {
    std::vector<size_t> found;
    for (size_t i = 0; i < entries.size(); ++i) {
        const PresetEntry& entry = entries[i];
        std::string all = entry.name + "\n" + entry.description;
        for (const std::string& tag : entry.tags)
            all += "\n" + tag;
        all = Lower(all);
        bool fits = std::all_of(tags.begin(), tags.end(), [&](const std::string& tag) {
            return std::find(entry.tags.begin(), entry.tags.end(), tag) != entry.tags.end();
        });
        std::string_view rest = text;
        while (fits && !(rest = Trim(rest)).empty()) {
            const std::string_view word = rest.substr(0, rest.find(' '));
            fits = all.find(Lower(word)) != std::string::npos;
            rest.remove_prefix(word.size());
        }
        if (fits)
            found.push_back(i);
    }
    return found;
}

std::vector<std::string> PresetLibrary::Tags() const {
    std::set<std::string> tags;
    for (const PresetEntry& entry : entries)
        tags.insert(entry.tags.begin(), entry.tags.end());
    return {tags.begin(), tags.end()};
}

std::optional<size_t> PresetLibrary::Find(std::string_view name) const {
    std::optional<size_t> found;
    for (size_t i = entries.size(); i-- > 0;) {
        if (!SameName(entries[i].name, name))
            continue;
        const bool isNearer = found && entries[i].IsFactory() == entries[*found].IsFactory() &&
                              entries[i].name == name && entries[*found].name != name;
        if (!found || isNearer)
            found = i;
    }
    return found;
}

std::optional<size_t> PresetLibrary::LastLoaded(std::string_view name) const {
    for (size_t i = 0; i < entries.size(); ++i)
        if (lastLoaded && entries[i].IsSame(*lastLoaded) && SameName(entries[i].name, name))
            return i;
    return std::nullopt;
}

std::optional<size_t> PresetLibrary::Beside(std::string_view name, int step) const {
    const auto count = static_cast<std::ptrdiff_t>(entries.size());
    std::optional<size_t> from = LastLoaded(name);
    if (!from)
        from = Find(name);
    auto at = from ? static_cast<std::ptrdiff_t>(*from) : (step > 0 ? -1 : count);
    for (std::ptrdiff_t tried = 0; tried < count; ++tried) {
        at = (at + (step > 0 ? 1 : count - 1)) % count;
        if (entries[static_cast<size_t>(at)].broken.empty())
            return static_cast<size_t>(at);
    }
    return std::nullopt;
}

Parsed<Preset> PresetLibrary::Read(const fs::path& file, const ParameterCatalog& catalog) {
    std::string problem;
    const auto text = ReadWholeFile(file, kMostBytes, problem);
    if (!text)
        return {std::nullopt, {{Issue::Severity::Error, problem}}};
    Parsed<Preset> read = ReadPreset(*text, catalog);
    if (read.value && read.value->name.empty())
        read.value->name = NameOf(file);
    return read;
}

Parsed<Preset> PresetLibrary::Load(size_t number) {
    Parsed<Preset> read = ReadEntry(number);
    if (read.value)
        lastLoaded = entries[number];
    return read;
}

Parsed<Preset> PresetLibrary::LoadProgram(uint32_t program) {
    Scan();
    const auto entry = program < setList.size() ? Find(setList[program]) : std::nullopt;
    if (entry)
        return Load(*entry);
    return {std::nullopt,
            {{Issue::Severity::Error, std::string("Program ") + std::to_string(program + 1) +
                                          " of the set list is empty."}}};
}

Parsed<Preset> PresetLibrary::ReadEntry(size_t number) const {
    if (number < entries.size() && !entries[number].IsFactory())
        return Read(entries[number].file, catalog);
    for (const FactoryPreset& one : factory)
        if (number < entries.size() && one.id == entries[number].factoryId)
            return ReadPreset(one.json, catalog);
    return {std::nullopt, {{Issue::Severity::Error, "There is no such preset any more."}}};
}

std::string PresetLibrary::Save(const Preset& preset, bool replace) {
    if (Trim(preset.name).empty())
        return "A preset needs a name.";
    fs::path file = folder / FileNameOf(preset.name);
    if (IsList(file))
        return Quoted(preset.name) + " is a name that the folder itself uses. Choose another.";
    const auto other = std::find_if(entries.begin(), entries.end(), [&](const PresetEntry& entry) {
        return entry.file == file && entry.broken.empty() && !SameName(entry.name, preset.name);
    });
    if (other != entries.end())
        return Quoted(other->name) + " is kept in " + Quoted(file.filename().string()) +
               ", where this name would go. Choose another.";
    std::error_code error;
    fs::path kept;
    if (fs::exists(file, error)) {
        if (!replace)
            return "There is a preset called " + Quoted(preset.name) +
                   " already. Replace it, or choose another name.";
        if (std::string problem = ToTrash(file, Trash::Copy, kept); !problem.empty())
            return problem;
    }
    std::string problem = WriteWholeFile(file, WritePreset(preset, catalog));
    // What could not be replaced is still in its place.
    if (!problem.empty() && !kept.empty())
        fs::remove(kept, error);
    Scan();
    return problem;
}

std::string PresetLibrary::NotAUsers(size_t number) const {
    if (number >= entries.size())
        return "There is no such preset any more.";
    return entries[number].IsFactory() ? Quoted(entries[number].name) +
                                             " belongs to the factory and stays. Save it under a "
                                             "name of your own."
                                       : "";
}

std::string PresetLibrary::Rename(size_t number, const std::string& name) {
    if (std::string problem = NotAUsers(number); !problem.empty())
        return problem;
    Parsed<Preset> read = ReadEntry(number);
    if (!read.value)
        return read.issues.front().text;
    const fs::path before = entries[number].file;
    const std::string oldName = entries[number].name;
    read.value->name = name;
    const bool sameFile = !Trim(name).empty() && folder / FileNameOf(name) == before;
    if (std::string problem = sameFile ? WriteWholeFile(before, WritePreset(*read.value, catalog))
                                       : Save(*read.value);
        !problem.empty())
        return problem;
    std::error_code error;
    if (!sameFile)
        fs::remove(before, error);
    // Another instance may have changed them; and where another preset still has the old name, its
    // places stay.
    ReadLists();
    const auto others = std::count_if(entries.begin(), entries.end(), [&](const PresetEntry& one) {
        return one.name == oldName && one.file != before;
    });
    if (others > 0 && std::find(favourites.begin(), favourites.end(), oldName) != favourites.end())
        favourites.push_back(name);
    if (others == 0)
        for (std::vector<std::string>* list : {&favourites, &setList})
            std::replace(list->begin(), list->end(), oldName, name);
    WriteList(kFavourites, "tesserae-favourites", favourites);
    WriteList(kSetList, "tesserae-set-list", setList);
    Scan();
    return error ? Quoted(before.string()) + " can't be taken away; both are there now." : "";
}

std::string PresetLibrary::ToTrash(const fs::path& file, Trash way, fs::path& there) const {
    const auto now =
        std::chrono::system_clock::now().time_since_epoch() / std::chrono::microseconds(1);
    const fs::path trash = folder / "trash";
    std::error_code error;
    fs::create_directories(trash, error);
    there = trash /
            (Cut(file.stem().string(), kMostBytesInTrash) + "." + std::to_string(now) + ".json");
    if (!error && way == Trash::Move)
        fs::rename(file, there, error);
    else if (!error)
        fs::copy_file(file, there, error);
    return error ? Quoted(file.string()) + " can't be moved to the trash (" + error.message() +
                       "). Nothing has been changed."
                 : "";
}

std::string PresetLibrary::Delete(size_t number) {
    if (std::string problem = NotAUsers(number); !problem.empty())
        return problem;
    const std::string name = entries[number].name;
    fs::path there;
    std::string problem = ToTrash(entries[number].file, Trash::Move, there);
    Scan();
    // Another preset of that name stays one of the favourites.
    if (!Find(name) && std::erase(favourites, name) > 0)
        problem = WriteList(kFavourites, "tesserae-favourites", favourites);
    return problem;
}

std::string PresetLibrary::WriteList(const char* file, const char* format,
                                     const std::vector<std::string>& names) const {
    const Json root{{"format", format}, {"version", 1}, {"presets", names}};
    return WriteWholeFile(folder / file,
                          root.dump(1, ' ', false, Json::error_handler_t::replace) + "\n");
}

std::string PresetLibrary::SetFavourite(size_t number, bool favourite) {
    if (number >= entries.size())
        return "There is no such preset any more.";
    // Another instance may have changed the list since it was read.
    ReadLists();
    std::erase(favourites, entries[number].name);
    if (favourite)
        favourites.push_back(entries[number].name);
    entries[number].favourite = favourite;
    return WriteList(kFavourites, "tesserae-favourites", favourites);
}

std::string PresetLibrary::SetSetList(std::vector<std::string> names) {
    setList = std::move(names);
    return WriteList(kSetList, "tesserae-set-list", setList);
}

}  // namespace Quorvan::Host
