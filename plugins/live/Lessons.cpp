#include "plugins/live/Lessons.h"

#include <algorithm>
#include <utility>

#include "host/instrument/WholeFile.h"
#include "plugins/live/ParameterNamed.h"
#include "plugins/live/Trouble.h"

namespace Quorvan::Live {

Lessons::Lessons(Host::Instrument& taught, const std::vector<std::string>& names,
                 std::filesystem::path mapFile, Saying speaker)
    : instrument(taught), file(std::move(mapFile)), say(std::move(speaker)) {
    for (const std::string& name : names)
        waiting.push_back(ParameterNamed(instrument, name));
    std::reverse(waiting.begin(), waiting.end());
}

void Lessons::Look() {
    if (waiting.empty())
        return;
    if (!begun)
        return Begin();
    const uint32_t learning = instrument.LearningMidi();
    const bool nobodyWaits = learning == Host::kUnassigned;
    interrupted |= !nobodyWaits && learning != waiting.back();
    const bool isOver = instrument.Lessons() != known;
    looksAtNothing = nobodyWaits && !isOver ? looksAtNothing + 1 : 0;
    // What has been learnt is told a little later than that nobody waits for it.
    if (!isOver && looksAtNothing < kLooksToGiveUp)
        return;
    if (interrupted)
        return Begin();
    if (!isOver)
        return GiveUp();
    const Host::MidiMap map = instrument.GetMidiMap();
    const auto learnt = std::find_if(map.begin(), map.end(), [&](const Host::MidiBinding& binding) {
        return binding.index == waiting.back();
    });
    if (learnt == map.end())
        return;
    say(instrument.Catalog()[learnt->index].title + " follows " + Host::SourceText(learnt->source) +
        " from now on.");
    waiting.pop_back();
    Keep(*learnt);
    if (!waiting.empty())
        Begin();
}

void Lessons::GiveUp() {
    say(instrument.Catalog()[waiting.back()].title + " learns nothing: the lesson was ended.");
    waiting.pop_back();
    if (!waiting.empty())
        Begin();
}

void Lessons::Begin() {
    const bool goesOn = std::exchange(begun, true);
    const uint32_t index = waiting.back();
    known = instrument.Lessons();
    interrupted = false;
    looksAtNothing = 0;
    instrument.LearnMidi(index, goesOn);
    say("Move the MIDI control for " + instrument.Catalog()[index].title + ".");
}

/// The map of a state that is played is none of the file's: the file gets what was learnt only.
void Lessons::Keep(const Host::MidiBinding& learnt) {
    constexpr size_t kMostBytes = 16 << 20;
    const Host::ParameterCatalog& catalog = instrument.Catalog();
    std::string problem;
    const auto text = Host::ReadWholeFile(file, kMostBytes, problem);
    auto before = text ? Host::ReadMidiMap(*text, catalog) : Host::Parsed<Host::MidiMap>();
    Host::MidiMap map = before.value ? std::move(*before.value) : Host::MidiMap();
    std::erase_if(map, [&](const Host::MidiBinding& one) {
        return one.index == learnt.index || Host::IsSameKnob(one.source, learnt.source);
    });
    map.push_back(learnt);
    problem = Host::WriteWholeFile(file, Host::WriteMidiMap(map, catalog));
    if (!problem.empty())
        throw Trouble{kCannotWrite, problem};
}

}  // namespace Quorvan::Live
