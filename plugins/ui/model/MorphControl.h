#pragma once

#include "plugins/ui/help/HelpTable.h"
#include "plugins/ui/model/FaceModel.h"
#include "plugins/ui/widgets/Control.h"

namespace Quorvan::Ui {

/// The way from sound A to sound B.
class MorphControl final : public Control {
public:
    explicit MorphControl(FaceModel& faceModel) : model(faceModel) {}

    float Position() const override { return model.Position(kIndex); }
    std::string Name() const override { return "Morph"; }
    std::string Text() const override {
        return model.TheInstrument().ControlText(Host::kMorphControl, Position());
    }
    std::string Help() const override { return std::string(HelpOn("Morph")); }
    void Begin() override { model.Begin(kIndex); }
    void Move(float position) override { model.Edit(kIndex, position); }
    void End() override { model.End(kIndex); }
    std::string Type(std::string_view text) override {
        Host::TextResult result =
            model.TheInstrument().ControlPositionOf(Host::kMorphControl, text);
        if (!result.position)
            return std::move(result.problem);
        MoveOnce(*result.position);
        return {};
    }

private:
    static constexpr uint32_t kIndex = Host::PositionBoard::kMorphIndex;
    FaceModel& model;
};

}  // namespace Quorvan::Ui
