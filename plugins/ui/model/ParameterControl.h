#pragma once

#include "plugins/ui/model/FaceModel.h"
#include "plugins/ui/widgets/Control.h"

namespace Quorvan::Ui {

/// A parameter of the instrument as a control. Its name may mean several, such as "Grain Size": it
/// is always the one in force.
class ParameterControl final : public Control {
public:
    /// The catalog has to know the name.
    ParameterControl(FaceModel& model, std::string name);

    float Position() const override { return model.Position(Now().index); }
    float Default() const override;
    uint32_t Steps() const override;
    std::span<const std::string> Choices() const override;
    std::string Name() const override { return name; }
    std::string Text() const override { return model.Text(Now().index); }
    std::string Help() const override;
    void Begin() override;
    void Move(float position) override { model.Edit(held.value_or(Now().index), position); }
    void End() override;
    std::string Type(std::string_view text) override { return model.Type(Now().index, text); }
    std::optional<uint32_t> Row() const override { return Now().row; }
    Influence Influences() const override;
    void Route(uint32_t source, float amount) override;
    void BeginRoute(uint32_t source) override;
    void EndRoute() override { model.EndRoute(); }
    void Unroute(uint32_t source) override;
    std::optional<uint32_t> Index() const override { return Now().index; }

private:
    struct Meaning {
        uint64_t revision = 0;
        uint32_t index = 0;
        std::optional<uint32_t> row;
    };
    const Meaning& Now() const;

    FaceModel& model;
    std::string name;
    mutable Meaning meaning;       ///< kept as long as names mean the same
    std::optional<uint32_t> held;  ///< index of the open gesture
};

}  // namespace Quorvan::Ui
