#include "plugins/ui/model/RouteControl.h"

#include "host/parameters/ModulationNames.h"
#include "plugins/ui/help/HelpTable.h"

namespace Quorvan::Ui {

RouteControl::RouteControl(FaceModel& faceModel, uint32_t itsSource, uint32_t itsRow)
    : model(faceModel), source(itsSource), row(itsRow) {}

float RouteControl::Position() const { return Host::AmountPosition(model.Amount(source, row)); }

float RouteControl::Default() const { return Host::AmountPosition(0.0f); }

std::string RouteControl::Name() const {
    return Host::SourceName(source) + " \u2192 " + Host::DestinationName(row);
}

std::string RouteControl::Text() const {
    return model.Catalog().Text(Host::AmountIndex(source, row), Position(), model.Texts());
}

std::string RouteControl::Help() const { return std::string(HelpOnView("Matrix").sentence); }

void RouteControl::Move(float position) {
    model.Route(source, row, Host::AmountOfPosition(position));
}

std::string RouteControl::Type(std::string_view text) {
    Host::TextResult result =
        model.Catalog().Position(Host::AmountIndex(source, row), text, model.Texts());
    if (!result.position)
        return std::move(result.problem);
    MoveOnce(*result.position);
    return {};
}

}  // namespace Quorvan::Ui
