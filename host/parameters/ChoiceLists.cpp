#include "host/parameters/ChoiceLists.h"

#include <array>
#include <cmath>
#include <string>

#include "effects/NoteValues.h"
#include "granular/GranularTables.h"

namespace Quorvan::Host::Choices {

namespace {

/// A length in whole notes as a fraction: "1/8", "3/2", "4/1". Lengths too short to hear are "0".
std::string NoteName(float wholeNotes) {
    constexpr float kShortest = 0.0001f;
    if (wholeNotes < kShortest)
        return "0";
    int denominator = 1;
    while (wholeNotes != std::round(wholeNotes)) {
        wholeNotes *= 2.0f;
        denominator *= 2;
    }
    return std::to_string(static_cast<int>(wholeNotes)) + "/" + std::to_string(denominator);
}

template <class Table>
ChoiceList NotesOf(const Table& lengths) {
    ChoiceList names;
    for (const float length : lengths)
        names.push_back(NoteName(length));
    return names;
}

template <class Table>
ChoiceList NumbersOf(const Table& numbers, const char* sign = "") {
    ChoiceList names;
    for (const auto number : numbers)
        names.push_back(std::to_string(static_cast<int>(number)) + sign);
    return names;
}

/// Sizes below one as fractions, as the notes, and whole ones as plain numbers.
ChoiceList RatiosOf() {
    ChoiceList names;
    for (const float ratio : dsp::kSizeRatios) {
        names.push_back(ratio < 1.0f ? NoteName(ratio) : std::to_string(static_cast<int>(ratio)));
        names.back() += "x";
    }
    return names;
}

/// Synced rates of a generator that has no table of its own, from the longest on.
constexpr std::array kGeneratorRates{8.0f,  4.0f,   2.0f,    1.0f,    0.5f,
                                     0.25f, 0.125f, 0.0625f, 0.03125f};

}  // namespace

const ChoiceList& Scales() {
    static const ChoiceList names{"Off",
                                  "Chromatic",
                                  "Octaves",
                                  "Root and Fifth",
                                  "Root, Fourth and Fifth",
                                  "Major",
                                  "Natural Minor",
                                  "Major Pentatonic",
                                  "Minor Pentatonic",
                                  "Harmonic Minor",
                                  "Phrygian",
                                  "Phrygian Dominant",
                                  "Lydian",
                                  "Mixolydian",
                                  "Dorian"};
    return names;
}
const ChoiceList& GrainShapes() {
    static const ChoiceList names{
        "Triangle", "Trapezoid",   "Raised Cosine", "Gaussian",
        "Sinc",     "Exponential", "Percussive",    "Reversed Percussive"};
    return names;
}
const ChoiceList& GranularModes() {
    static const ChoiceList names{"Classic", "Texture", "Beat"};
    return names;
}
const ChoiceList& PlaybackModes() {
    static const ChoiceList names{"Scan", "Follow", "Manual"};
    return names;
}
const ChoiceList& StartQuantizers() {
    static const ChoiceList names{"Free", "Transients", "Grid"};
    return names;
}
const ChoiceList& TriggerModes() {
    static const ChoiceList names{"Density", "Gated"};
    return names;
}
const ChoiceList& GateSelections() {
    static const ChoiceList names{"Off", "Grains", "Transients"};
    return names;
}
const ChoiceList& CrushPresets() {
    static const ChoiceList names{"Off",         "Nearest Sample", "8 Bit Log",
                                  "8 Bit Quiet", "12 Bit",         "10 Bit"};
    return names;
}
const ChoiceList& PitchArrows() {
    static const ChoiceList names{"Up", "Down", "Both"};
    return names;
}
const ChoiceList& SizeArrows() {
    static const ChoiceList names{"Shorter", "Longer", "Both"};
    return names;
}
const ChoiceList& DensityArrows() {
    static const ChoiceList names{"Jitter", "Skip"};
    return names;
}
const ChoiceList& LayerArrows() {
    static const ChoiceList names{"More", "Fewer", "Both"};
    return names;
}
const ChoiceList& SprayDirections() {
    static const ChoiceList names{"Backward", "Forward", "Both"};
    return names;
}
const ChoiceList& GrainLimits() {
    static const ChoiceList names = NumbersOf(dsp::kGrainLimits);
    return names;
}
const ChoiceList& GridSizes() {
    static const ChoiceList names = NumbersOf(dsp::kGridSizes);
    return names;
}
const ChoiceList& TextureLayers() {
    static const ChoiceList names = NumbersOf(dsp::kTextureLayers);
    return names;
}
const ChoiceList& SizeRatios() {
    static const ChoiceList names = RatiosOf();
    return names;
}
const ChoiceList& StepMultipliers() {
    static const ChoiceList names = NumbersOf(dsp::kStepValues, "x");
    return names;
}
const ChoiceList& GrainSizes() {
    static const ChoiceList names = NotesOf(dsp::kSyncedSizes);
    return names;
}
const ChoiceList& BufferLengths() {
    static const ChoiceList names = NotesOf(dsp::kBufferLengths);
    return names;
}
const ChoiceList& PlayHeadOffsets() {
    static const ChoiceList names = NotesOf(dsp::kSyncedOffsets);
    return names;
}
const ChoiceList& GrainRates() {
    static const ChoiceList names = NotesOf(dsp::kMainRates);
    return names;
}
const ChoiceList& TextureRates() {
    static const ChoiceList names = NotesOf(dsp::kTextureRates);
    return names;
}

const ChoiceList& RunModes() {
    static const ChoiceList names{"One Shot", "Retrigger", "Free"};
    return names;
}
const ChoiceList& GeneratorRates() {
    static const ChoiceList names = NotesOf(kGeneratorRates);
    return names;
}
const ChoiceList& NoteTypes() {
    static const ChoiceList names{"Straight", "Triplet", "Dotted"};
    return names;
}
const ChoiceList& RateTypes() {
    static const ChoiceList names{"Free", "Straight", "Triplet", "Dotted"};
    return names;
}
const ChoiceList& LoopModes() {
    static const ChoiceList names{"Forward", "Backward", "Back and Forth", "Random"};
    return names;
}
const ChoiceList& Waveforms() {
    static const ChoiceList names{"Sine",       "Triangle", "Falling Saw",
                                  "Rising Saw", "Square",   "Sample and Hold"};
    return names;
}
const ChoiceList& HoldSpreads() {
    static const ChoiceList names{"Spread", "Inverted"};
    return names;
}
const ChoiceList& FollowerSources() {
    static const ChoiceList names{"Input", "Side-Chain"};
    return names;
}
const ChoiceList& Trajectories() {
    static const ChoiceList names{"Pendulum", "Slanted Eight", "Circle",
                                  "Eight",    "Lying Eight",   "Knot",
                                  "Diagonal", "Zigzag",        "Random Walk"};
    return names;
}

const ChoiceList& EffectTypes() {
    static const ChoiceList names{"None",    "Filter",        "Distortion", "Compressor",
                                  "Delay",   "Octaver Delay", "Tape Echo",  "Chorus",
                                  "Flanger", "Reverb"};
    return names;
}
const ChoiceList& SlotPositions() {
    static const ChoiceList names{"After Mix", "Wet Signal", "Feedback Loop"};
    return names;
}
const ChoiceList& FilterModes() {
    static const ChoiceList names{"Low-Pass", "High-Pass", "Band-Pass", "Comb Feedback",
                                  "Comb Feed-Forward"};
    return names;
}
const ChoiceList& FilterSlopes() {
    static const ChoiceList names{"12 dB/oct", "24 dB/oct", "36 dB/oct"};
    return names;
}
const ChoiceList& DistortionCurves() {
    static const ChoiceList names{"Soft",   "Overdrive", "Hard Clip", "Exponential", "Tube",
                                  "Uneven", "Ripple",    "Fold",      "Staircase",   "Notch",
                                  "Knee",   "Plateau",   "Kink"};
    return names;
}
const ChoiceList& EchoTimes() {
    static const ChoiceList names = NotesOf(dsp::kNoteValues);
    return names;
}
const ChoiceList& EchoStereoModes() {
    static const ChoiceList names{"Stereo", "Ping-Pong"};
    return names;
}
const ChoiceList& OctaverModes() {
    static const ChoiceList names{"Single", "Octave Up", "Octave Down"};
    return names;
}
const ChoiceList& TapWindows() {
    static const ChoiceList names{"Raised Cosine", "Quarter Sine", "Linear"};
    return names;
}
const ChoiceList& FeedbackPolarities() {
    static const ChoiceList names{"Negative", "Positive"};
    return names;
}
const ChoiceList& ChannelModes() {
    static const ChoiceList names{"Mono", "Stereo"};
    return names;
}
const ChoiceList& ChorusWaveforms() {
    static const ChoiceList names{"Sine", "Triangle"};
    return names;
}

}  // namespace Quorvan::Host::Choices
