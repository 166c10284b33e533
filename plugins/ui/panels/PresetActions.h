#pragma once

#include <functional>
#include <string>
#include <vector>

#include "plugins/ui/model/FaceModel.h"
#include "plugins/ui/widgets/Stage.h"

namespace Quorvan::Ui {

/// What is done to the user's presets and set list, with the questions that it takes.
class PresetActions {
public:
    /// changed is told when the library is another one.
    PresetActions(FaceModel& faceModel, Stage& face, std::function<void()> whenChanged);

    /// The entry of the preset that is heard; null where there is none.
    const Host::PresetEntry* Present() const;
    /// Whether it is one of the user's.
    bool IsOwn() const;

    void AskSave(const Rect& anchor);
    void AskNewName(const Rect& anchor);
    void AskTags(const Rect& anchor);
    void Delete();
    void OfferSetList(const Rect& anchor);

private:
    std::string Save(const std::string& name, const std::string& tags);
    std::string Rename(const std::string& name);
    std::string SaveTags(const std::string& text);
    void PutInSetList(size_t place, int way);

    FaceModel& model;
    Stage& stage;
    std::function<void()> changed;
    std::string refused;  ///< the name that was taken at the last try
};

}  // namespace Quorvan::Ui
