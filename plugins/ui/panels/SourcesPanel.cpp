#include "plugins/ui/panels/SourcesPanel.h"

#include "host/parameters/ModulationNames.h"
#include "plugins/ui/model/ParameterControl.h"
#include "plugins/ui/panels/Layout.h"
#include "plugins/ui/widgets/Slider.h"
#include "plugins/ui/widgets/SourceTile.h"

namespace Quorvan::Ui {

namespace {

constexpr uint32_t kFirstMacro = 5;  ///< macros have a slider on their tiles
constexpr double kWidths[]{176.0, 168.0, 168.0, 168.0, 168.0, 176.0, 176.0};

}  // namespace

SourcesPanel::SourcesPanel(FaceModel& model, Stage& face, const std::function<uint32_t()>& chosen,
                           const std::function<void(uint32_t)>& choose)
    : Panel(Layout::kSources) {
    static_assert(std::size(kWidths) == Host::kModulationSources);
    double x = 0.0;
    for (uint32_t source = 0; source < Host::kModulationSources; ++source) {
        SourceTile::Actions actions;
        actions.listen = [&model, source, heard = uint64_t{0}](std::vector<float>& out) mutable {
            model.Listen(heard, [&](const Host::DisplayMoment& moment) {
                out.push_back(moment.sources[source]);
            });
        };
        actions.routes = [&model, source] { return model.RoutesFrom(source); };
        actions.chosen = [chosen, source] { return chosen() == source; };
        actions.choose = [choose, source] { choose(source); };
        actions.foot = source >= kFirstMacro ? 32.0 : 0.0;
        const Rect place = At(x, 0.0, kWidths[source], box.height);
        x += kWidths[source] + 8.0;
        SourceTile& tile =
            Add<SourceTile>(place, face, source, Host::SourceName(source), std::move(actions));
        tile.Explain(Host::SourceName(source), HelpOnView("Source").sentence);
        if (source >= kFirstMacro)
            Add<Slider>(Rect{place.x + 8.0, place.Bottom() - 32.0, place.width - 16.0, 24.0}, face,
                        std::make_unique<ParameterControl>(model, Host::SourceName(source)), "",
                        Theme::Source(source).Faded(0.35));
    }
}

}  // namespace Quorvan::Ui
