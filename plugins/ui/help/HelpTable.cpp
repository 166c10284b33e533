#include "plugins/ui/help/HelpTable.h"

#include <string>

namespace Quorvan::Ui {

namespace {

constexpr HelpEntry kTape[]{
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
};
constexpr HelpEntry kGrains[]{
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
};
constexpr HelpEntry kLevels[]{
    {"Feedback", "Sends the grains back to the tape. At the bottom the loop is off."},
    {"Granular Volume", "Level of the grains in the mix."},
    {"Dry / Wet", "From your sound to the grains, by equal power."},
    {"Master Volume", "Level of everything."},
    {"Bypass", "Lets the input through, with a fade. The tape runs on behind it."},
    {"Morph", "Every setting on its way from sound A to sound B."},
};
constexpr HelpEntry kBeat[]{
    {"Beat Sequencer Steps", "Steps of the pattern."},
    {"Beat Sequencer Step", "How fast the clock runs in this step; 2x and 3x make rolls."},
    {"Beat Sequencer Loop Mode", "Runs the pattern forward, backward, to and fro or at random."},
};
constexpr HelpEntry kSources[]{
    {"Macro 1", "A knob of yours: it moves whatever its tile was dropped on."},
    {"Macro 2", "A knob of yours: it moves whatever its tile was dropped on."},
    {"Envelope Follower Source", "Follows the input, or the sound at the side-chain."},
    {"Envelope Follower Gain", "Lifts quiet sound for the follower."},
    {"Envelope Follower Attack", "How quickly it rises."},
    {"Envelope Follower Release", "How quickly it falls."},
    {"Function Rate", "How often the curve runs, in hertz or in notes."},
    {"Function Rate Sync", "Rate in hertz, or in straight, triplet or dotted notes."},
    {"Function Run Mode", "Free goes round; One Shot runs once; Retrigger starts with its gate."},
    {"Function Scale", "Flattens the curve about its middle, or turns it over."},
    {"Function Smoothing", "Slows its jumps."},
    {"Function Start Phase", "Where on the curve a run begins."},
    {"Function Random Amount", "Moves the points that have a random reach at each run."},
    {"Function Bipolar", "From -100 % to 100 % in place of 0 to 100 %."},
    {"Function Gate In", "Starts the curve in One Shot and Retrigger."},
    {"Function Point", "A corner of the curve: when it comes, and how high it is."},
    {"Step Sequencer Rate", "How fast the steps go, in hertz or in notes."},
    {"Step Sequencer Rate Sync", "Rate in hertz, or in straight, triplet or dotted notes."},
    {"Step Sequencer Steps", "Steps before it begins again."},
    {"Step Sequencer Step", "What it gives in this step."},
    {"Step Sequencer Loop Mode", "Forward, backward, to and fro or at random."},
    {"Step Sequencer Glide", "Slides from step to step."},
    {"Step Sequencer Swing", "Makes every other step longer."},
    {"Step Sequencer Random Amount", "Moves every step by a new chance each time round."},
    {"Step Sequencer Scale", "How much of it arrives."},
    {"Step Sequencer Bipolar", "From -100 % to 100 % in place of 0 to 100 %."},
};
constexpr HelpEntry kSpace[]{
    {"Spatializer On", "Starts the figure that new grains follow through the room."},
    {"Spatializer Trajectory", "The figure."},
    {"Spatializer Rate", "How often the figure is drawn."},
    {"Spatializer Rate Sync", "Rate in hertz, or in straight, triplet or dotted notes."},
    {"Spatializer Invert", "Starts the depth at another point of its round."},
    {"Spatializer Amount", "Reach of the figure to the sides."},
    {"Spatializer Distance", "Reach of the figure into the depth."},
};
constexpr HelpEntry kSlots[]{
    {"Effect", "What this slot holds."},
    {"Position", "Behind the mix, on the grains alone, or inside the feedback loop."},
    {"Bypass#", "Lets the sound pass this effect as it is."},
    {"Dry / Wet#", "From the sound ahead of the effect to the effect."},
    {"Filter Freq", "Where the filter works, or the pitch of the comb."},
    {"Filter Resonance", "Lifts the sound at the cutoff."},
    {"Filter Mode", "What the filter lets through."},
    {"Filter Slope", "How steep it is."},
    {"Distortion Drive", "How far the sound is driven into the curve."},
    {"Distortion Output Gain", "Level behind the curve."},
    {"Distortion Curve", "The shape that the sound is bent by."},
    {"Distortion Level Compensation", "Keeps the level while the drive changes."},
    {"Compressor Threshold", "Level above which it works."},
    {"Compressor Ratio", "How much is left of what goes above the threshold."},
    {"Compressor Knee", "How softly it sets in."},
    {"Compressor Input Gain", "Level ahead of it."},
    {"Compressor Output Gain", "Level behind it."},
    {"Compressor Attack", "How quickly it takes hold."},
    {"Compressor Release", "How quickly it lets go."},
    {"Compressor Makeup Gain", "Gives back the level that it takes."},
    {"Compressor Linked Channels", "Moves left and right by the same amount."},
    {"Delay Time", "Time to the echo."},
    {"Delay Time Sync", "Time in milliseconds, or in straight, triplet or dotted notes."},
    {"Delay Feedback", "How much of an echo echoes again."},
    {"Delay Fine Time", "A little earlier or later than the time."},
    {"Delay Stereo Offset", "How far the right echo is behind the left one."},
    {"Delay Ping-Pong Width", "How far the echoes jump to the sides."},
    {"Delay Stereo Mode", "Both sides alike, or from side to side."},
    {"Delay Low Cut", "Takes the bass from the echoes."},
    {"Delay High Cut", "Takes the treble from the echoes."},
    {"Octaver Time", "Time to the echo."},
    {"Octaver Time Sync", "Time in milliseconds, or in straight, triplet or dotted notes."},
    {"Octaver Feedback", "How much of an echo echoes again, shifted once more."},
    {"Octaver Pitch", "How far each echo is shifted."},
    {"Octaver Detune", "A little more or less than that."},
    {"Octaver Spray", "Scatters the pieces that the shifter is made of."},
    {"Octaver Stereo Offset", "How far the right echo is behind the left one."},
    {"Octaver Mode", "One shifted voice, or one more an octave above or below."},
    {"Octaver Window", "How the pieces of the shifter fade."},
    {"Octaver Low Cut", "Takes the bass from the echoes."},
    {"Octaver High Cut", "Takes the treble from the echoes."},
    {"Tape Echo Time", "Time to the echo. The pitch bends while it moves."},
    {"Tape Echo Time Sync", "Time in milliseconds, or in straight, triplet or dotted notes."},
    {"Tape Echo Intensity", "How much of an echo echoes again; above 100 % it grows."},
    {"Tape Echo Fine Time", "A little earlier or later than the time."},
    {"Tape Echo Input Volume", "Level onto the tape: high levels saturate it."},
    {"Tape Echo Stereo Offset", "How far the right echo is behind the left one."},
    {"Tape Echo Ping-Pong Width", "How far the echoes jump to the sides."},
    {"Tape Echo Stereo Mode", "Both sides alike, or from side to side."},
    {"Tape Echo Low Cut", "Takes the bass from the echoes."},
    {"Tape Echo High Cut", "Takes the treble from the echoes."},
    {"Chorus Rate", "How fast the voices sway."},
    {"Chorus Depth", "How far they sway."},
    {"Chorus Delay", "How late the voices are."},
    {"Chorus Feedback", "Sends the voices through once more."},
    {"Chorus Feedback Polarity", "Sends them through as they are, or upside down."},
    {"Chorus Voices", "How many there are."},
    {"Chorus Waveform", "The curve that they sway by."},
    {"Chorus Channels", "One sway for both sides, or one for each."},
    {"Chorus Low Cut", "Takes the bass from the voices."},
    {"Chorus High Cut", "Takes the treble from the voices."},
    {"Chorus Low Cut On", "Switches the low cut."},
    {"Chorus High Cut On", "Switches the high cut."},
    {"Flanger Rate", "How fast the combs move."},
    {"Flanger Rate Sync", "Rate in hertz, or in straight, triplet or dotted notes."},
    {"Flanger Depth", "How far they move."},
    {"Flanger Delay", "The shortest delay of the comb."},
    {"Flanger Feedback", "Sharpens the comb."},
    {"Flanger Feedback Polarity", "Lifts the even or the odd teeth of the comb."},
    {"Flanger Voices", "How many combs there are."},
    {"Flanger Channels", "One movement for both sides, or one for each."},
    {"Flanger Low Cut", "Takes the bass from the voices."},
    {"Flanger High Cut", "Takes the treble from the voices."},
    {"Flanger Low Cut On", "Switches the low cut."},
    {"Flanger High Cut On", "Switches the high cut."},
    {"Reverb Decay", "How long the room rings."},
    {"Reverb Size", "How large it is."},
    {"Reverb Predelay", "Time before the room answers."},
    {"Reverb Damping", "How soon the treble dies away."},
    {"Reverb Output Gain", "Level of the room."},
    {"Reverb Low Cut", "Takes the bass from the room."},
    {"Reverb High Cut", "Takes the treble from the room."},
    {"Reverb Side Level", "How wide the room is."},
    {"Reverb Early Reflections", "Switches the first answers of the walls."},
    {"Reverb Early Size", "How far the walls are."},
    {"Reverb Early Mix", "From the tail to the first answers."},
    {"Reverb Freeze", "Lets the room ring on for ever."},
};

constexpr HelpGroup kGroups[]{
    {"The tape and the play head", kTape},
    {"Grains", kGrains},
    {"Levels", kLevels},
    {"Beat pattern", kBeat},
    {"Sources of modulation", kSources},
    {"Space", kSpace},
    {"Slots and effects", kSlots},
};

}  // namespace

std::span<const HelpGroup> HelpTable() { return kGroups; }

std::string_view HelpOn(std::string_view name) {
    std::string key(name);
    if (key.starts_with("FX1 ") || key.starts_with("FX2 ")) {
        key.erase(0, 4);
        // Mix and bypass of a slot are not those of the whole.
        if (key == "Dry / Wet" || key == "Bypass")
            key += '#';
    }
    if (key.starts_with("Function ") && key.size() > 10)
        key.erase(8, 2);
    // Points and steps are alike.
    for (const std::string_view one :
         {"Step Sequencer Step ", "Beat Sequencer Step ", "Function Point "})
        if (key.starts_with(one))
            key = one.substr(0, one.size() - 1);
    for (const HelpGroup& group : kGroups)
        for (const HelpEntry& entry : group.entries)
            if (entry.name == key)
                return entry.sentence;
    return {};
}

}  // namespace Quorvan::Ui
