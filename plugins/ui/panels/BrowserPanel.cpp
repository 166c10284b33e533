#include "plugins/ui/panels/BrowserPanel.h"

#include <algorithm>

#include "plugins/ui/widgets/ActionButton.h"
#include "plugins/ui/widgets/DrawnView.h"
#include "plugins/ui/widgets/ListView.h"

namespace Quorvan::Ui {

namespace {

constexpr Rect kPlace{144.0, 48.0, 760.0, 608.0};

}  // namespace

BrowserPanel::BrowserPanel(FaceModel& faceModel, Stage& face, const std::function<void()>& close)
    : Panel(kPlace, "Presets"), model(faceModel), stage(face) {
    AddLists();
    AddDescription();
    AddButtons(close);
}

void BrowserPanel::DrawGround(Painter& painter) const {
    painter.Round({box.x - 2.0, box.y, box.width + 4.0, box.height + 6.0}, 10.0,
                  {0.0, 0.0, 0.0, 0.6});
    painter.Round(box, 8.0, Theme::kPanel);
    painter.RoundLine(box, 8.0, Theme::kTrack);
}

void BrowserPanel::Opened() {
    model.Presets().Scan();
    Search();
}

const Host::PresetEntry* BrowserPanel::Present() const {
    const auto entry = model.Presets().Find(model.TheInstrument().PresetName());
    return entry ? &model.Presets().Entries()[*entry] : nullptr;
}

void BrowserPanel::Search() {
    const std::vector<std::string> wanted(tags.begin(), tags.end());
    found = model.Presets().Search(words, wanted);
    if (onlyFavourites)
        std::erase_if(found,
                      [this](size_t entry) { return !model.Presets().Entries()[entry].favourite; });
}

void BrowserPanel::AddLists() {
    TextField& search = Add<TextField>(At(176.0, 12.0, 400.0, TextField::kHeight), "", nullptr);
    search.MakeLasting("Search names, descriptions and tags");
    search.OnChange([this](const std::string& text) {
        words = text;
        Search();
    });
    Add<ActionButton>(
        At(584.0, 12.0, 160.0, 26.0),
        [this] {
            return ActionButton::Look{"\u2605 Favourites only", true, onlyFavourites};
        },
        [this](const Rect&) {
            onlyFavourites = !onlyFavourites;
            Search();
        },
        "Favourites", "Lists favourites only.");

    ListView::Actions tagList;
    tagList.lines = [this] {
        std::vector<ListView::Line> lines;
        for (const std::string& tag : model.Presets().Tags())
            lines.push_back({tag, "", tags.contains(tag), -1});
        return lines;
    };
    tagList.choose = [this](size_t line) {
        const std::vector<std::string> all = model.Presets().Tags();
        if (line >= all.size())
            return;
        if (tags.erase(all[line]) == 0)
            tags.insert(all[line]);
        Search();
    };
    Add<ListView>(At(12.0, 48.0, 152.0, 504.0), "Tags", "Presets that have all chosen tags.",
                  std::move(tagList));

    ListView::Actions list;
    list.lines = [this] {
        std::vector<ListView::Line> lines;
        const std::string present = model.TheInstrument().PresetName();
        for (const size_t number : found) {
            const Host::PresetEntry& entry = model.Presets().Entries()[number];
            std::string note = entry.broken.empty() ? std::string() : std::string("broken");
            for (const std::string& tag : entry.tags)
                note += (note.empty() ? "" : ", ") + tag;
            lines.push_back({entry.name, note, entry.name == present, entry.favourite ? 1 : 0});
        }
        return lines;
    };
    list.choose = [this](size_t line) {
        const std::string problem = model.LoadPreset(found[line]);
        if (!problem.empty())
            stage.Say(problem);
    };
    list.star = [this](size_t line) {
        const size_t number = found[line];
        const std::string problem =
            model.Presets().SetFavourite(number, !model.Presets().Entries()[number].favourite);
        if (!problem.empty())
            stage.Say(problem);
        Search();
    };
    Add<ListView>(At(176.0, 48.0, 572.0, 456.0), "Presets",
                  "A click loads a preset; the star makes it a favourite.", std::move(list));
}

/// What the preset that is heard says of itself.
void BrowserPanel::AddDescription() {
    DrawnView::Actions actions;
    const auto seen = std::make_shared<std::string>();
    actions.tick = [this, seen](double) {
        const Host::PresetEntry* const entry = Present();
        const std::string now = entry != nullptr ? entry->description : std::string();
        return std::exchange(*seen, now) != now;
    };
    actions.draw = [seen](Painter& painter, const Rect& place) {
        painter.Paragraph(place, *seen, {Theme::kBody, Theme::kText}, 18.0);
    };
    Add<DrawnView>(At(176.0, 512.0, 572.0, 44.0), "", "", std::move(actions));
}

bool BrowserPanel::IsOwn() const {
    const Host::PresetEntry* const entry = Present();
    return entry != nullptr && !entry->IsFactory();
}

void BrowserPanel::AddOwn(const Rect& place, const char* text, const char* help,
                          std::function<void(const Rect&)> act) {
    Add<ActionButton>(
        place,
        [this, text] {
            return ActionButton::Look{text, IsOwn(), false};
        },
        std::move(act), text, help);
}

void BrowserPanel::AddButtons(const std::function<void()>& close) {
    const double y = box.height - 40.0;
    Add<ActionButton>(
        At(12.0, y, 152.0, 28.0),
        [] {
            return ActionButton::Look{"Set list", true, false};
        },
        [this](const Rect& anchor) { OfferSetList(anchor); }, "Set list",
        "Presets that MIDI programs choose, in their order.");
    Add<ActionButton>(
        At(176.0, y, 104.0, 28.0),
        [] {
            return ActionButton::Look{"Save as\u2026", true, false};
        },
        [this](const Rect& anchor) { AskName(anchor); }, "Save as",
        "Writes the sound into your folder, under a name.");
    AddOwn(At(288.0, y, 104.0, 28.0), "Rename\u2026", "Gives a preset of yours another name.",
           [this](const Rect& anchor) { AskNewName(anchor); });
    AddOwn(At(400.0, y, 96.0, 28.0), "Tags\u2026", "Words that a preset of yours is found by.",
           [this](const Rect& anchor) { AskTags(anchor); });
    AddOwn(At(504.0, y, 96.0, 28.0), "Delete",
           "Moves a preset of yours to the trash folder beside the others.",
           [this](const Rect&) { Delete(); });
    Add<ActionButton>(
        At(644.0, y, 104.0, 28.0),
        [] {
            return ActionButton::Look{"Close", true, false};
        },
        [close](const Rect&) { close(); }, "Close", "Back to the instrument.");
}

void BrowserPanel::AskName(const Rect& anchor) {
    const std::string present = model.TheInstrument().PresetName();
    stage.OpenEntry({anchor.x, anchor.y, 280.0, anchor.height}, present.empty() ? "" : present,
                    [this](const std::string& name) { return Save(name); });
}

/// One's own present preset is written over; any other name that is taken is refused.
std::string BrowserPanel::Save(const std::string& name) {
    if (name.empty())
        return "A preset needs a name.";
    Host::Preset preset = model.TheInstrument().GetPreset();
    const Host::PresetEntry* const entry = Present();
    if (entry != nullptr) {
        preset.description = entry->description;
        preset.tags = entry->tags;
    }
    const bool replaces = entry != nullptr && !entry->IsFactory() && entry->name == name;
    preset.name = name;
    std::string problem = model.Presets().Save(preset, replaces);
    if (!problem.empty())
        return problem;
    Opened();
    if (const auto saved = model.Presets().Find(name))
        return model.LoadPreset(*saved);
    return {};
}

void BrowserPanel::AskNewName(const Rect& anchor) {
    if (IsOwn())
        stage.OpenEntry({anchor.x, anchor.y, 280.0, anchor.height}, Present()->name,
                        [this](const std::string& name) { return Rename(name); });
}

/// A sound that has been changed meanwhile stays as it is.
std::string BrowserPanel::Rename(const std::string& name) {
    const auto entry = model.Presets().Find(model.TheInstrument().PresetName());
    if (!entry)
        return "It is no preset any more.";
    std::string problem = model.Presets().Rename(*entry, name);
    if (!problem.empty())
        return problem;
    Opened();
    const auto renamed = model.Presets().Find(name);
    return renamed && !model.TheInstrument().IsModified() ? model.LoadPreset(*renamed) : "";
}

void BrowserPanel::AskTags(const Rect& anchor) {
    if (!IsOwn())
        return;
    std::string all;
    for (const std::string& tag : Present()->tags)
        all += (all.empty() ? "" : ", ") + tag;
    stage.OpenEntry({anchor.x, anchor.y, 280.0, anchor.height}, all,
                    [this](const std::string& text) { return SaveTags(text); });
}

/// Commas between them.
std::string BrowserPanel::SaveTags(const std::string& text) {
    const auto entry = model.Presets().Find(model.TheInstrument().PresetName());
    if (!entry)
        return "It is no preset any more.";
    auto kept = model.Presets().Load(*entry);
    if (!kept.value)
        return "It can't be read.";
    kept.value->tags.clear();
    for (size_t from = 0; from <= text.size();) {
        const size_t end = std::min(text.find(',', from), text.size());
        const size_t first = text.find_first_not_of(' ', from);
        if (first < end)
            kept.value->tags.push_back(
                text.substr(first, text.find_last_not_of(' ', end - 1) + 1 - first));
        from = end + 1;
    }
    std::string problem = model.Presets().Save(*kept.value, true);
    Opened();
    return problem;
}

/// Moves what stands at a place by way, or takes it out with 0; beyond the end: adds the present.
void BrowserPanel::PutInSetList(size_t place, int way) {
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

void BrowserPanel::OfferSetList(const Rect& anchor) {
    std::vector<MenuItem> items;
    const std::vector<std::string> names = model.Presets().SetList();
    for (size_t i = 0; i < names.size(); ++i) {
        MenuItem item;
        item.text = std::to_string(i) + "   " + names[i];
        item.action = [this, i, anchor] {
            std::vector<MenuItem> ways;
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

void BrowserPanel::Delete() {
    const auto entry = model.Presets().Find(model.TheInstrument().PresetName());
    if (!entry)
        return;
    const std::string problem = model.Presets().Delete(*entry);
    stage.Say(problem.empty() ? "It is in the trash folder now." : problem);
    Opened();
}

}  // namespace Quorvan::Ui
