#pragma once

#include "plugins/ui/model/FaceModel.h"
#include "plugins/ui/widgets/Control.h"

namespace Quorvan::Ui {

/// How far a source moves a destination, as a control: from -100 % over nothing to 100 %.
class RouteControl final : public Control {
public:
    RouteControl(FaceModel& model, uint32_t source, uint32_t row);

    float Position() const override;
    float Default() const override;
    std::string Name() const override;
    std::string Text() const override;
    std::string Help() const override;
    void Begin() override { model.BeginRoute(source, row); }
    void Move(float position) override;
    void End() override { model.EndRoute(); }
    std::string Type(std::string_view text) override;

private:
    FaceModel& model;
    uint32_t source, row;
};

}  // namespace Quorvan::Ui
