#include <stdexcept>
#include <string>

#include "plugins/ui/help/HelpTable.h"

namespace Quorvan::Ui {

namespace {

constexpr HelpEntry kHead[]{
    {"Previous preset", "Loads the preset before this one."},
    {"Presets", "Opens the browser. A dot behind the name: the sound has been changed."},
    {"Next preset", "Loads the preset behind this one."},
    {"Undo (Ctrl-Z)", "Takes the last change back."},
    {"Redo (Ctrl-Shift-Z)", "Makes it again."},
    {"Sound A", "Two sounds to compare: this one is played from now on, the other one is kept."},
    {"Sound B", "Two sounds to compare: this one is played from now on, the other one is kept."},
    {"Copy sound", "Makes the other sound the same as this one."},
    {"Randomise", "Moves the knobs of a group by chance. Undo takes it back."},
    {"Seed",
     "With a seed all chance is the same each time the song starts. Empty: each time another one."},
    {"Song",
     "Tempo, whether the song runs, and how much of one core the sound takes. A click offers a "
     "song of its own, for hosts that have none, the MIDI map for new instances, and the free "
     "controls that hosts see."},
};
constexpr HelpEntry kTape[]{
    {"Tape",
     "The loop that is being recorded, with every grain where it reads: higher in pitch is higher, "
     "louder is brighter, arrows run backward. Drag the yellow head; pull an edge of its band to "
     "spray the starts, low on the tape where it lies on the head."},
};
constexpr HelpEntry kPages[]{
    {"Page", "Shows this page."},
    {"Grains",
     "How many sound now, left and right ones counted singly, and how many pairs start in a "
     "second."},
    {"Beat pattern", "One bar a step: silent, or 1, 2 or 3 times the clock."},
    {"Pitches",
     "Lit keys are what the scale allows; every grain that sounds stands over its key. Click to "
     "set the pitch."},
    {"Shape", "How a grain fades in and out. Drag across to bend it."},
    {"Stereo",
     "The grains that sound, from left to right; the higher, the louder. Drag across to move the "
     "position."},
    {"Road",
     "The sound's way. Drag a slot into the feedback loop, onto the grains alone or behind the "
     "mix."},
    {"Frequency response", "What it lets through: pitch from left to right, level upward."},
    {"Transfer curve", "What comes out, upward, for what goes in, from left to right."},
    {"Transfer curve#compressor",
     "Level that comes out, upward, for the level that goes in; thin: untouched."},
    {"Echoes", "When they come and how loud: left upward, right downward."},
    {"Echoes#octaver", "When they come, how loud, and how many semitones off."},
    {"Delay of the voices", "How late each voice is over one sway; fainter: the right side."},
    {"Delay of the combs", "How late each comb is over one sway; fainter: the right side."},
    {"Decay", "Level over time; thin: the treble. Strokes are the first answers of the walls."},
    {"Space",
     "Where the next pair of grains is born, and where the last ones were. Drag the ring: the "
     "place around which the figure runs."},
    {"Curve",
     "Drag points; double click adds and removes them. Drag between two to bend. Ctrl holds to "
     "the grid, or lets go of it. Page keys choose a point, arrows move it, digits type its "
     "height. Right click: what can be done with a point, shapes, copy."},
    {"Snap", "Holds points that are added or moved to the grid of 16 by 8."},
    {"Shapes", "Curves to start from, and those of the other functions."},
    {"Steps", "Draw over the bars to set the value of each step."},
    {"Follower", "The last three seconds: what it hears, and what it gives."},
    {"Macro", "The last three seconds of it."},
    {"Routes",
     "What this source moves, and how far: drag across. The cross takes a route off. Digits type "
     "an amount."},
    {"Matrix",
     "Drag a cell up or down to say how far the source moves it. A double click empties it, the "
     "right button or digits type an amount."},
};
constexpr HelpEntry kFoot[]{
    {"Level",
     "Peaks from -60 to +6 dB; the mark keeps the highest of the last two seconds. Click to "
     "forget it."},
    {"Limiter",
     "How much the limiter behind the grains takes off. Where it works much, take the grains "
     "down."},
    {"Source",
     "Drag it onto a control to move that; over the name of a page to get there. Click to edit "
     "it."},
};
constexpr HelpEntry kBrowser[]{
    {"Favourites", "Lists favourites only."},
    {"Tags", "Presets that have all chosen tags."},
    {"Presets#list", "A click loads a preset; the star makes it a favourite."},
    {"Set list", "Presets that MIDI programs choose, in their order."},
    {"Save as", "Writes the sound into your folder, under a name and with tags."},
    {"Rename\u2026", "Gives a preset of yours another name."},
    {"Tags\u2026", "Words that a preset of yours is found by."},
    {"Delete", "Moves a preset of yours to the trash folder beside the others."},
    {"Close", "Back to the instrument."},
};

constexpr HelpGroup kGroups[]{
    {"The head of the window", kHead},
    {"The tape", kTape},
    {"Pages", kPages},
    {"Levels and sources", kFoot},
    {"The browser of presets", kBrowser},
};

}  // namespace

std::span<const HelpGroup> HelpOnViews() { return kGroups; }

const HelpEntry& HelpOnView(std::string_view name) {
    for (const HelpGroup& group : kGroups)
        for (const HelpEntry& entry : group.entries)
            if (entry.name == name)
                return entry;
    throw std::logic_error(std::string("No help is given on ") + std::string(name));
}

}  // namespace Quorvan::Ui
