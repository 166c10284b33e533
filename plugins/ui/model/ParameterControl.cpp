#include "plugins/ui/model/ParameterControl.h"

#include <stdexcept>

#include "plugins/ui/help/HelpTable.h"

namespace Quorvan::Ui {

ParameterControl::ParameterControl(FaceModel& faceModel, std::string itsName)
    : model(faceModel), name(std::move(itsName)) {
    if (!model.Find(name))
        throw std::logic_error(std::string("No parameter is called ") + name);
}

const ParameterControl::Meaning& ParameterControl::Now() const {
    if (meaning.revision != model.Revision()) {
        meaning.revision = model.Revision();
        if (const auto index = model.Find(name)) {
            meaning.index = *index;
            const Host::ParameterCatalog& catalog = model.Catalog();
            meaning.row = catalog.FindDestination(catalog[*index].name);
            // A slot's mix is moved by way of another parameter, under its own name.
            if (!meaning.row)
                meaning.row = catalog.FindDestination(name);
        }
    }
    return meaning;
}

float ParameterControl::Default() const { return model.Default(Now().index); }

uint32_t ParameterControl::Steps() const { return model.Catalog()[Now().index].StepCount(); }

std::span<const std::string> ParameterControl::Choices() const {
    return model.Catalog()[Now().index].choices;
}

std::string ParameterControl::Help() const { return std::string(HelpOn(name)); }

void ParameterControl::Begin() {
    held = Now().index;
    model.Begin(*held);
}

void ParameterControl::End() {
    if (held)
        model.End(*held);
    held.reset();
}

Influence ParameterControl::Influences() const {
    const Meaning& now = Now();
    if (now.row)
        return model.InfluenceOn(*now.row, now.index);
    Influence none;
    none.present = model.Position(now.index);
    return none;
}

void ParameterControl::Route(uint32_t source, float amount) {
    if (const auto row = Row())
        model.Route(source, *row, amount);
}

void ParameterControl::BeginRoute(uint32_t source) {
    if (const auto row = Row())
        model.BeginRoute(source, *row);
}

void ParameterControl::Unroute(uint32_t source) {
    if (const auto row = Row())
        model.Unroute(source, *row);
}

}  // namespace Quorvan::Ui
