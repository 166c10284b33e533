#include "plugins/live/Lessons.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "host/instrument/WholeFile.h"
#include "host/parameters/PresentSettings.h"
#include "plugins/live/Trouble.h"

namespace Quorvan::Live {

Lessons::Lessons(Host::Instrument& taught, const std::vector<std::string>& names,
                 std::filesystem::path mapFile, Saying speaker)
    : instrument(taught), file(std::move(mapFile)), say(std::move(speaker)) {
    const Host::ParameterCatalog& catalog = instrument.Catalog();
    const Host::PresentSettings settings(
        catalog, [this](uint32_t index) { return instrument.Position(index); });
    for (const std::string& name : names) {
        const auto index = catalog.Resolve(name, settings);
        if (!index)
            throw std::invalid_argument(catalog.UnknownName(name));
        if (!Host::IsMovable(catalog[*index]))
            throw std::invalid_argument("\"" + name + "\" holds no position that MIDI could move.");
        waiting.push_back(*index);
    }
    std::reverse(waiting.begin(), waiting.end());
}

void Lessons::Look() {
    if (waiting.empty())
        return;
    if (!begun)
        return Begin();
    // The map changes a moment after the instrument has stopped listening.
    const Host::MidiMap map = instrument.GetMidiMap();
    const auto learnt = std::find_if(map.begin(), map.end(), [&](const Host::MidiBinding& binding) {
        return binding.index == waiting.back();
    });
    if (instrument.LearningMidi() != Host::kUnassigned || learnt == map.end())
        return;
    say(instrument.Catalog()[learnt->index].label + " follows " + Host::SourceText(learnt->source) +
        " from now on.");
    waiting.pop_back();
    Keep();
    if (!waiting.empty())
        Begin();
}

void Lessons::Begin() {
    begun = true;
    const uint32_t index = waiting.back();
    Host::MidiMap others = instrument.GetMidiMap();
    std::erase_if(others, [&](const Host::MidiBinding& one) { return one.index == index; });
    instrument.SetMidiMap(others);
    instrument.LearnMidi(index);
    say("Move the MIDI control for " + instrument.Catalog()[index].label + ".");
}

void Lessons::Keep() {
    const std::string problem = Host::WriteWholeFile(
        file, Host::WriteMidiMap(instrument.GetMidiMap(), instrument.Catalog()));
    if (!problem.empty())
        throw Trouble{kCannotWrite, problem};
}

}  // namespace Quorvan::Live
