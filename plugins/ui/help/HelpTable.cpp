#include "plugins/ui/help/HelpTable.h"

#include <algorithm>
#include <array>
#include <string>

namespace Quorvan::Ui {

namespace {

constexpr HelpEntry kEntries[]{
    // The tape.
    {"Freeze", "Lifts the write head: the tape stays as it is and the grains go on reading it."},
    {"Clear", "Wipes the tape, each time it is moved."},
    {"Buffer Length", "How long the loop of tape is, in notes: 1/1 is a bar of four quarters."},
    {"Write Head Crossfade", "Fades within 3 ms where a grain meets the write head: no click."},
    {"Persistence", "Share of the old round that stays on the tape when a new one is recorded."},
    {"Play Head Mode",
     "Where grains start. Scan: the head runs by itself. Follow: behind the write head. Manual: "
     "where you put it."},
    {"Start Quantization", "Draws the starts to attacks in the sound, or to a grid of the loop."},
    {"Play Head Offset", "How far the play head follows behind the write head."},
    {"Play Head Offset Sync", "Offset as a time, or in straight, triplet or dotted notes."},
    {"Play Head Offset Sync (Beat)", "Offset in straight, triplet or dotted notes."},
    {"Play Head Speed", "1 x is the speed of the recording, 0 x stands, below 0 goes backward."},
    {"Play Head Position", "Place of the play head on the tape. Drag it on the tape itself."},
    {"Play Head Retrigger", "Sends the play head back to the tape's start with each round."},
    {"Spray", "Scatters the starts around the play head, up to a whole round of the tape."},
    {"Spray Direction", "Whether scattered starts lie before the play head, behind it, or both."},
    {"Grid Size", "Equal cells of the loop that starts are drawn to."},
    {"Transient Sensitivity", "How faint an attack may be to count as one."},
    {"Stereo", "Records left and right apart; off, their sum."},
    {"Mute While Stopped", "Fades the wet sound out while the song stands."},
    // Grains.
    {"Granular Mode",
     "Classic: grains start by a clock. Texture: you say how many sound at once. Beat: they start "
     "on notes, in a pattern."},
    {"Density", "How many grains start in a second, on which notes, or how many layers sound."},
    {"Density Sync", "Starts at a free rate, or on straight, triplet or dotted notes."},
    {"Density Sync (Beat)", "Starts on straight, triplet or dotted notes."},
    {"Random Density", "Jitter hurries starts by chance; Skip leaves some out."},
    {"Random Layers", "Changes the number of layers by chance. Click for the direction."},
    {"Grain Size", "How long each grain lasts."},
    {"Grain Size Sync", "Size as a time, or in straight, triplet or dotted notes."},
    {"Grain Size Sync (Texture)", "Counts the size in notes."},
    {"Random Size", "Makes grains longer or shorter by chance. Click for the direction."},
    {"Size Follows Density",
     "Ties the size to the density: it is a ratio of the time to the next."},
    {"Trigger Mode", "Grains start by density, or only while the trigger is on."},
    {"Grain Trigger", "Lets grains start while it is on. Made for a sequencer or a finger."},
    {"Grain Limit", "Grains that may sound at once. Beyond it the oldest fade out."},
    {"Pitch", "Moves every grain by semitones, or by steps of the scale. Its length stays."},
    {"Random Pitch", "Scatters the pitch of grains, in the scale. Click for the direction."},
    {"Random Fine Pitch", "Detunes each grain by up to a semitone, around any scale."},
    {"Scale", "Holds all pitches to a scale that counts from the recorded pitch."},
    {"Grain Shape", "The curve in which a grain fades in and out."},
    {"Grain Shape Amount", "Bends the shape. Drag the curve itself."},
    {"Lo-Fi", "Takes the grains through an old sampler."},
    {"Forward Grains", "Share of grains that read forward; the others read backward."},
    {"Width", "How far the right grain of a pair goes its own way in what is random."},
    {"Random Pan",
     "Places each pair by chance between left and right, while the spatialiser is on."},
    {"Stereo Position", "Place of the grains between left and right."},
    {"Distance", "How far away the grains are: what is far is quieter."},
    {"Random Distance", "Scatters the distance of each pair."},
    // Levels.
    {"Feedback", "Sends the grains back to the tape. At the bottom the loop is off."},
    {"Granular Volume", "Level of the grains in the mix."},
    {"Dry / Wet", "From your sound to the grains, by equal power."},
    {"Master Volume", "Level of everything."},
    {"Bypass", "Lets the input through, with a fade. The tape runs on behind it."},
    {"Morph", "Every setting on its way from sound A to sound B."},
};

}  // namespace

std::span<const HelpEntry> HelpTable() { return kEntries; }

std::string_view HelpOn(std::string_view name) {
    std::string key(name);
    if (key.starts_with("FX1 ") || key.starts_with("FX2 "))
        key.erase(0, 4);
    if (key.starts_with("Function ") && key.size() > 10)
        key.erase(8, 2);
    const auto found = std::find_if(std::begin(kEntries), std::end(kEntries),
                                    [&](const HelpEntry& entry) { return entry.name == key; });
    return found != std::end(kEntries) ? found->sentence : std::string_view();
}

}  // namespace Quorvan::Ui
