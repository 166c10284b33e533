#include "host/parameters/ModulationNames.h"
#include "plugins/ui/FaceCore.h"

namespace Quorvan::Ui {

namespace {

MenuItem Item(std::string text, std::function<void()> action = {}, bool startsGroup = false) {
    MenuItem item;
    item.text = std::move(text);
    item.action = std::move(action);
    item.startsGroup = startsGroup;
    return item;
}

bool IsLearnt(const Host::Instrument& instrument, uint32_t index) {
    const Host::MidiMap map = instrument.GetMidiMap();
    return std::any_of(map.begin(), map.end(),
                       [index](const Host::MidiBinding& one) { return one.index == index; });
}

std::vector<MenuItem> Assignments(FaceModel& model, uint32_t index) {
    std::vector<MenuItem> items{Item("Free control for hosts")};
    for (uint32_t number = 0; number < Host::kAssignments; ++number) {
        Host::Instrument& instrument = model.TheInstrument();
        const uint32_t present = instrument.Assignment(number);
        const std::string now =
            present == Host::kUnassigned ? std::string("free") : model.Catalog()[present].title;
        MenuItem item = Item(std::string("Assign ") + std::to_string(number + 1) + ": " + now,
                             [&instrument, number, index, present] {
                                 instrument.EditAssignment(
                                     number, present == index ? Host::kUnassigned : index);
                             });
        item.ticked = present == index;
        items.push_back(std::move(item));
    }
    return items;
}

}  // namespace

/// Behind the right mouse button on a control.
void FaceCore::OpenControlMenu(Control& control, const Rect& anchor) {
    std::vector<MenuItem> items{Item(control.Name() + "   " + control.Text())};
    items.push_back(Item("Type a value\u2026",
                         [this, &control, anchor] { TypeValue(*this, control, anchor); }));
    items.push_back(
        Item("Back to the default", [&control] { control.MoveOnce(control.Default()); }));
    if (control.Row()) {
        const Influence influence = control.Influences();
        for (uint32_t i = 0; i < influence.count; ++i) {
            const uint32_t source = influence.routes[i].source;
            MenuItem item = Item(
                std::string("Take off ") + Host::SourceName(source),
                [&control, source] { control.Unroute(source); }, i == 0);
            item.mark = Theme::Source(source);
            items.push_back(std::move(item));
        }
        items.push_back(Item(
            "Modulate by\u2026",
            [this, &control, anchor] {
                std::vector<MenuItem> sources{Item(std::string("Moves ") + control.Name())};
                for (uint32_t source = 0; source < Host::kModulationSources; ++source) {
                    MenuItem item = Item(Host::SourceName(source),
                                         [&control, source] { control.Route(source, 0.25f); });
                    item.mark = Theme::Source(source);
                    sources.push_back(std::move(item));
                }
                OpenMenu(anchor, std::move(sources));
            },
            influence.count == 0));
    }
    const auto index = control.Index();
    if (index && *index < Host::kProcessorParameters && Host::IsMovable(model.Catalog()[*index])) {
        Host::Instrument& instrument = model.TheInstrument();
        const bool learns = instrument.LearningMidi() == *index;
        items.push_back(Item(
            learns ? "Stop learning" : "Learn MIDI",
            [&instrument, index, learns] {
                instrument.LearnMidi(learns ? Host::kUnassigned : *index);
            },
            true));
        if (IsLearnt(instrument, *index))
            items.push_back(
                Item("Forget MIDI", [&instrument, index] { instrument.ForgetMidi(*index); }));
        items.push_back(Item("Assign to a free control\u2026", [this, index, anchor] {
            OpenMenu(anchor, Assignments(model, *index));
        }));
    }
    OpenMenu(anchor, std::move(items));
}

}  // namespace Quorvan::Ui
