#pragma once

#include <functional>
#include <set>

#include "plugins/ui/model/FaceModel.h"
#include "plugins/ui/panels/Panel.h"
#include "plugins/ui/panels/PresetActions.h"
#include "plugins/ui/widgets/ListView.h"
#include "plugins/ui/widgets/Stage.h"
#include "plugins/ui/widgets/TextField.h"

namespace Quorvan::Ui {

/// All presets over the rest of the face: tags, search, favourites, saving. A preset that is chosen
/// is heard at once.
class BrowserPanel final : public Panel {
public:
    BrowserPanel(FaceModel& faceModel, Stage& face, const std::function<void()>& close);

    void DrawGround(Painter& painter) const override;
    /// Looks at the folder again; answers what takes the keys first.
    Widget* Opened();

private:
    void AddLists();
    void AddDescription();
    void AddButtons(const std::function<void()>& close);
    /// A button that works while a preset of the user's is heard.
    void AddOwn(const Rect& place, const char* text, std::function<void(const Rect&)> act);
    void Rescan();
    void Search();
    /// A line of the list.
    void Load(size_t line);

    FaceModel& model;
    Stage& stage;
    PresetActions actions;
    TextField* search = nullptr;
    ListView* presets = nullptr;
    std::string words;
    std::set<std::string> tags;
    bool onlyFavourites = false;
    std::vector<size_t> found;  ///< numbers of entries
};

}  // namespace Quorvan::Ui
