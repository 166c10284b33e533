#include <deque>

#include "host/parameters/ModulationNames.h"
#include "plugins/ui/model/RouteControl.h"
#include "plugins/ui/panels/Layout.h"
#include "plugins/ui/panels/Pages.h"
#include "plugins/ui/widgets/MatrixView.h"

namespace Quorvan::Ui {

namespace {

/// Short enough to stand beside its cells.
std::string ShortName(uint32_t row) {
    std::string name = Host::DestinationName(row);
    static constexpr std::pair<std::string_view, std::string_view> kShorter[]{
        {"Compressor", "Comp."},  {"Distortion", "Dist."}, {"Step Sequencer", "Steps"},
        {"Spatializer", "Space"}, {"Tape Echo", "Echo"},   {"Sensitivity", "Sens."}};
    for (const auto& [from, to] : kShorter)
        if (const size_t at = name.find(from); at != std::string::npos)
            name.replace(at, from.size(), to);
    return name;
}

/// The number of a function, else the first letter.
std::string MarkOf(uint32_t source) {
    const std::string name = Host::SourceName(source);
    return name.substr(name.starts_with("Function") ? name.size() - 1 : 0, 1);
}

class MatrixPanel final : public Panel {
public:
    explicit MatrixPanel(FaceModel& model) : Panel(Layout::kPage, " ") {
        for (uint32_t source = 0; source < MatrixView::kSources; ++source)
            for (uint32_t row = 0; row < MatrixView::kRows; ++row)
                controls.emplace_back(model, source, row);
        MatrixView::Actions actions;
        actions.amount = [&model](uint32_t source, uint32_t row) {
            return model.Amount(source, row);
        };
        actions.control = [this](uint32_t source, uint32_t row) -> Control& {
            return controls[source * MatrixView::kRows + row];
        };
        actions.rowName = [](uint32_t row) { return ShortName(row); };
        actions.sourceMark = MarkOf;
        AddView<MatrixView>("Matrix", At(16.0, 0.0, box.width - 24.0, 280.0), std::move(actions));
    }

private:
    std::deque<RouteControl> controls;
};

}  // namespace

Panels MakeMatrixPage(FaceModel& model) {
    static_assert(MatrixView::kRows == Host::kModulationDestinations &&
                  MatrixView::kSources == Host::kModulationSources);
    Panels panels;
    panels.push_back(std::make_unique<MatrixPanel>(model));
    return panels;
}

}  // namespace Quorvan::Ui
