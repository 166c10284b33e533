#include "host/parameters/ModulationNames.h"
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
        MatrixView::Actions actions;
        actions.amount = [&model](uint32_t source, uint32_t row) {
            return model.Amount(source, row);
        };
        actions.begin = [&model](uint32_t source, uint32_t row) { model.BeginRoute(source, row); };
        actions.end = [&model] { model.EndRoute(); };
        actions.set = [&model](uint32_t source, uint32_t row, float amount) {
            model.Route(source, row, amount);
        };
        actions.clear = [&model](uint32_t source, uint32_t row) { model.Unroute(source, row); };
        actions.rowName = [](uint32_t row) { return ShortName(row); };
        actions.sourceName = [](uint32_t source) { return Host::SourceName(source); };
        actions.sourceMark = MarkOf;
        Add<MatrixView>(At(12.0, 4.0, box.width - 16.0, box.height - 8.0), std::move(actions));
    }
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
