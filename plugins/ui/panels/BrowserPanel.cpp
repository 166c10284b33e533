#include "plugins/ui/panels/BrowserPanel.h"

#include <algorithm>

#include "plugins/ui/widgets/ActionButton.h"
#include "plugins/ui/widgets/DrawnView.h"

namespace Quorvan::Ui {

namespace {

constexpr Rect kPlace{144.0, 40.0, 760.0, 616.0};

}  // namespace

BrowserPanel::BrowserPanel(FaceModel& faceModel, Stage& face, const std::function<void()>& close)
    : Panel(kPlace, "Presets"),
      model(faceModel),
      stage(face),
      actions(faceModel, face, [this] { Rescan(); }) {
    AddLists();
    AddDescription();
    AddButtons(close);
}

void BrowserPanel::DrawGround(Painter& painter) const {
    painter.Round({box.x - 2.0, box.y, box.width + 4.0, box.height + 6.0}, 10.0,
                  {0.0, 0.0, 0.0, 0.6});
    painter.Round(box, 8.0, Theme::kPanel);
    painter.RoundLine(box, 8.0, Theme::kTrack);
    painter.Text(At(24.0, 16.0, 128.0, 24.0), title, {Theme::kHeading, Theme::kText, true});
}

Widget* BrowserPanel::Opened() {
    Rescan();
    search->ChooseAll();
    return search;
}

void BrowserPanel::Rescan() {
    model.Presets().Scan();
    Search();
    presets->Reveal();
}

void BrowserPanel::Load(size_t line) {
    if (line >= found.size())
        return;
    const std::string problem = model.LoadPreset(found[line]);
    if (!problem.empty())
        stage.Say(problem);
}

void BrowserPanel::Search() {
    const std::vector<std::string> wanted(tags.begin(), tags.end());
    found = model.Presets().Search(words, wanted);
    if (onlyFavourites)
        std::erase_if(found,
                      [this](size_t entry) { return !model.Presets().Entries()[entry].favourite; });
}

void BrowserPanel::AddLists() {
    search = &Add<TextField>(At(176.0, 16.0, 400.0, TextField::kHeight), "",
                             "Search names, descriptions and tags");
    search->OnChange([this](const std::string& text) {
        words = text;
        Search();
    });
    search->OnEnter([this] {
        if (!words.empty())
            Load(0);
    });
    AddView<ActionButton>(
        "Favourites", At(584.0, 16.0, 160.0, 24.0),
        [this] {
            return ActionButton::Look{"\u2605 Favourites only", true, onlyFavourites};
        },
        [this](const Rect&) {
            onlyFavourites = !onlyFavourites;
            Search();
        });

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
    AddView<ListView>("Tags", At(16.0, 56.0, 144.0, 504.0), std::move(tagList));

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
    list.none = "No preset has all of these words and tags.";
    list.choose = [this](size_t line) { Load(line); };
    list.star = [this](size_t line) {
        const size_t number = found[line];
        const std::string problem =
            model.Presets().SetFavourite(number, !model.Presets().Entries()[number].favourite);
        if (!problem.empty())
            stage.Say(problem);
        Search();
    };
    presets = &AddView<ListView>("Presets#list", At(176.0, 56.0, 568.0, 456.0), std::move(list));
}

/// What the preset that is heard says of itself.
void BrowserPanel::AddDescription() {
    DrawnView::Actions view;
    const auto seen = std::make_shared<std::string>();
    view.tick = [this, seen](double) {
        const Host::PresetEntry* const entry = actions.Present();
        const std::string now = entry != nullptr ? entry->description : std::string();
        return std::exchange(*seen, now) != now;
    };
    view.draw = [seen](Painter& painter, const Rect& place) {
        painter.Paragraph(place, *seen, {Theme::kBody, Theme::kText}, 18.0);
    };
    Add<DrawnView>(At(176.0, 520.0, 568.0, 48.0), std::move(view));
}

void BrowserPanel::AddOwn(const Rect& place, const char* text,
                          std::function<void(const Rect&)> act) {
    AddView<ActionButton>(
        text, place,
        [this, text] {
            return ActionButton::Look{text, actions.IsOwn(), false};
        },
        std::move(act));
}

void BrowserPanel::AddButtons(const std::function<void()>& close) {
    const double y = box.height - 40.0;
    AddView<ActionButton>(
        "Set list", At(16.0, y, 144.0, 24.0),
        [] {
            return ActionButton::Look{"Set list", true, false};
        },
        [this](const Rect& anchor) { actions.OfferSetList(anchor); });
    AddView<ActionButton>(
        "Save as", At(176.0, y, 104.0, 24.0),
        [] {
            return ActionButton::Look{"Save as\u2026", true, false};
        },
        [this](const Rect& anchor) { actions.AskSave(anchor); });
    AddOwn(At(288.0, y, 104.0, 24.0), "Rename\u2026",
           [this](const Rect& anchor) { actions.AskNewName(anchor); });
    AddOwn(At(400.0, y, 96.0, 24.0), "Tags\u2026",
           [this](const Rect& anchor) { actions.AskTags(anchor); });
    AddOwn(At(504.0, y, 96.0, 24.0), "Delete", [this](const Rect&) { actions.Delete(); });
    AddView<ActionButton>(
        "Close", At(640.0, y, 104.0, 24.0),
        [] {
            return ActionButton::Look{"Close", true, false};
        },
        [close](const Rect&) { close(); });
}

}  // namespace Quorvan::Ui
