#include "plugins/ui/panels/PresetActions.h"

#include <algorithm>
#include <utility>

namespace Quorvan::Ui {

namespace {

constexpr const char* kTagsLabel = "Tags, with commas between them";

std::string Joined(const std::vector<std::string>& tags) {
    std::string all;
    for (const std::string& tag : tags)
        all += (all.empty() ? "" : ", ") + tag;
    return all;
}

std::string Trimmed(const std::string& text) {
    const size_t first = text.find_first_not_of(' ');
    return first == std::string::npos ? std::string()
                                      : text.substr(first, text.find_last_not_of(' ') + 1 - first);
}

/// Words with commas between them.
std::vector<std::string> Split(const std::string& text) {
    std::vector<std::string> tags;
    for (size_t from = 0; from <= text.size();) {
        const size_t end = std::min(text.find(',', from), text.size());
        if (std::string tag = Trimmed(text.substr(from, end - from)); !tag.empty())
            tags.push_back(std::move(tag));
        from = end + 1;
    }
    return tags;
}

/// Where forms stand: wide enough to read, and far enough up to stay on the browser.
Rect Wide(const Rect& anchor) { return {anchor.x, anchor.y - 48.0, 280.0, anchor.height}; }

}  // namespace

PresetActions::PresetActions(FaceModel& faceModel, Stage& face, std::function<void()> whenChanged)
    : model(faceModel), stage(face), changed(std::move(whenChanged)) {}

const Host::PresetEntry* PresetActions::Present() const {
    const auto entry = model.Presets().Find(model.TheInstrument().PresetName());
    return entry ? &model.Presets().Entries()[*entry] : nullptr;
}

bool PresetActions::IsOwn() const {
    const Host::PresetEntry* const entry = Present();
    return entry != nullptr && !entry->IsFactory();
}

void PresetActions::AskSave(const Rect& anchor) {
    refused.clear();
    const Host::PresetEntry* const entry = Present();
    stage.OpenForm(Wide(anchor),
                   {{"Name", model.TheInstrument().PresetName()},
                    {kTagsLabel, entry != nullptr ? Joined(entry->tags) : std::string()}},
                   [this](const std::vector<std::string>& lines) {
                       return Save(Trimmed(lines[0]), lines[1]);
                   });
}

/// One's own present preset is written over, another of one's own where that is said twice.
std::string PresetActions::Save(const std::string& name, const std::string& tags) {
    if (name.empty())
        return "A preset needs a name.";
    Host::Preset preset = model.TheInstrument().GetPreset();
    const Host::PresetEntry* const entry = Present();
    if (entry != nullptr)
        preset.description = entry->description;
    const auto taken = model.Presets().Find(name);
    const bool isOwn = taken && !model.Presets().Entries()[*taken].IsFactory();
    const bool isPresent = entry != nullptr && entry->name == name;
    if (taken && !isOwn)
        return "A factory preset has that name. Choose another one.";
    if (isOwn && !isPresent && std::exchange(refused, name) != name)
        return "You have a preset of that name. Enter again replaces it.";
    refused.clear();
    const bool replaces = isOwn;
    preset.name = name;
    preset.tags = Split(tags);
    std::string problem = model.Presets().Save(preset, replaces);
    if (!problem.empty())
        return problem;
    changed();
    if (const auto saved = model.Presets().Find(name))
        return model.LoadPreset(*saved);
    return {};
}

void PresetActions::AskNewName(const Rect& anchor) {
    if (IsOwn())
        stage.OpenForm(Wide(anchor), {{"New name", Present()->name}},
                       [this](const std::vector<std::string>& lines) { return Rename(lines[0]); });
}

/// A sound that has been changed meanwhile stays as it is.
std::string PresetActions::Rename(const std::string& name) {
    const auto entry = model.Presets().Find(model.TheInstrument().PresetName());
    if (!entry)
        return "It is no preset any more.";
    std::string problem = model.Presets().Rename(*entry, name);
    if (!problem.empty())
        return problem;
    changed();
    const auto renamed = model.Presets().Find(name);
    return renamed && !model.TheInstrument().IsModified() ? model.LoadPreset(*renamed) : "";
}

void PresetActions::AskTags(const Rect& anchor) {
    if (IsOwn())
        stage.OpenForm(
            Wide(anchor), {{kTagsLabel, Joined(Present()->tags)}},
            [this](const std::vector<std::string>& lines) { return SaveTags(lines[0]); });
}

std::string PresetActions::SaveTags(const std::string& text) {
    const auto entry = model.Presets().Find(model.TheInstrument().PresetName());
    if (!entry)
        return "It is no preset any more.";
    auto kept = model.Presets().Load(*entry);
    if (!kept.value)
        return "It can't be read.";
    kept.value->tags = Split(text);
    std::string problem = model.Presets().Save(*kept.value, true);
    changed();
    return problem;
}

/// Moves what stands at a place by way, or takes it out with 0; beyond the end: adds the present.
void PresetActions::PutInSetList(size_t place, int way) {
    std::vector<std::string> names = model.Presets().SetList();
    const size_t other = place + static_cast<size_t>(way);
    if (place >= names.size())
        names.push_back(model.TheInstrument().PresetName());
    else if (way == 0)
        names.erase(names.begin() + static_cast<std::ptrdiff_t>(place));
    else if (other < names.size())
        std::swap(names[place], names[other]);
    const std::string problem = model.Presets().SetSetList(std::move(names));
    if (!problem.empty())
        stage.Say(problem);
}

void PresetActions::OfferSetList(const Rect& anchor) {
    std::vector<MenuItem> items;
    const std::vector<std::string> names = model.Presets().SetList();
    for (size_t i = 0; i < names.size(); ++i) {
        MenuItem item;
        item.text = std::to_string(i) + "   " + names[i];
        item.action = [this, i, anchor, name = names[i]] {
            std::vector<MenuItem> ways(1);
            ways.front().text = name;
            for (const auto& [text, way] :
                 {std::pair("Earlier", -1), std::pair("Later", 1), std::pair("Take out", 0)}) {
                MenuItem step;
                step.text = text;
                step.action = [this, i, by = way] { PutInSetList(i, by); };
                ways.push_back(std::move(step));
            }
            stage.OpenMenu(anchor, std::move(ways));
        };
        items.push_back(std::move(item));
    }
    MenuItem add;
    add.text = std::string("Add ") + model.TheInstrument().PresetName();
    add.startsGroup = !names.empty();
    add.action = [this, last = names.size()] { PutInSetList(last, 0); };
    items.push_back(std::move(add));
    stage.OpenMenu(anchor, std::move(items));
}

void PresetActions::Delete() {
    const auto entry = model.Presets().Find(model.TheInstrument().PresetName());
    if (!entry)
        return;
    const std::string problem = model.Presets().Delete(*entry);
    stage.Say(problem.empty() ? "It is in the trash folder now." : problem);
    changed();
}

}  // namespace Quorvan::Ui
