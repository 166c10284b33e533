#include "host/engine/GranularTail.h"

#include <algorithm>
#include <cmath>

#include "granular/GranularTables.h"
#include "host/engine/TailMath.h"
#include "host/parameters/ModulationNames.h"

namespace Quorvan::Host {

namespace {

// Destinations that move what a tail depends on, by their rows in the matrix.
namespace Row {
constexpr uint32_t kFeedback = 1, kGrainSize = 9, kRandomSize = 10, kDensity = 11,
                   kTextureDensity = 12, kRandomDensity = 13, kPersistence = 17, kFreeze = 18,
                   kRandomLayers = 25;
}

constexpr const char* kRate = "MoteWeaver_GranularPhaseHelper_RateUnSynced";
constexpr const char* kNotes = "MoteWeaver_GranularPhaseHelper_RateSynced";
constexpr uint32_t kTextureMode = 1;
constexpr uint32_t kBeatMode = 2;
constexpr double kLongestTape = 16.0;      // seconds
constexpr double kSilentFeedback = -70.0;  // dB: at its bottom the loop is open
constexpr double kHighestRate = 250.0;     // hertz of the trigger clock
constexpr double kCentred = 0.01;          // percent
constexpr uint32_t kFirstCrusher = 4;      // choice of "MoteWeaver_BitCrushPreset"
constexpr double kCrusherRounding = 1.5;   // how much louder its steps make the quietest sounds

/// Works through the parameters of the granular engine. Times are in seconds.
class GranularTailEstimator {
public:
    GranularTailEstimator(const ParameterReach& parameters, double tempo)
        : reach(parameters),
          wholeNote(WholeNoteSeconds(tempo)),
          mode(reach.Choice("MoteWeaver_GranularMode")),
          sizeType(reach.Choice("MoteWeaver_GrainSizeMode")) {}

    Tail Estimate(double silence, const Tail& loop, double loopGain) const;
    double Gain() const;

private:
    double TapeLength() const;
    bool IsSynced() const {
        return mode == kBeatMode || reach.Choice("MoteWeaver_DensityType") != 0;
    }
    double NotePeriod(uint32_t choice) const;
    double LongestPeriod() const;
    double PlainGrainSize() const;
    double LongestGrain() const;
    double HighestRate() const;
    double Overlap() const;
    Tail Tape(double silence) const;

    const ParameterReach& reach;
    double wholeNote;
    uint32_t mode;
    uint32_t sizeType;
};

double GranularTailEstimator::TapeLength() const {
    const double notes =
        static_cast<double>(dsp::kBufferLengths[reach.Choice("MoteWeaver_BufferLengthSynced")]);
    return std::min(notes * wholeNote * RateTypeFactor(sizeType), kLongestTape);
}

double GranularTailEstimator::NotePeriod(uint32_t choice) const {
    const double factor = mode == kBeatMode
                              ? NoteTypeFactor(reach.Choice("MoteWeaver_BeatDensityType"))
                              : RateTypeFactor(reach.Choice("MoteWeaver_DensityType"));
    return static_cast<double>(dsp::kMainRates[choice]) * wholeNote * factor;
}

/// From a trigger to the next at the slow end.
double GranularTailEstimator::LongestPeriod() const {
    return IsSynced() ? NotePeriod(static_cast<uint32_t>(reach.Lowest(kNotes, Row::kDensity)))
                      : 1.0 / reach.Lowest(kRate, Row::kDensity);
}

double GranularTailEstimator::PlainGrainSize() const {
    const auto synced = [this](const char* name) {
        const uint32_t choice = reach.HighestChoice(name, Row::kGrainSize);
        return static_cast<double>(dsp::kSyncedSizes[choice]) * wholeNote *
               RateTypeFactor(sizeType);
    };
    if (mode == kTextureMode)
        return reach.IsOn("MoteWeaver_TextureSizeMidiSync")
                   ? synced("MoteWeaver_TextureSizeSynced")
                   : 0.001 * reach.Highest("MoteWeaver_TextureSizeAbsolute", Row::kGrainSize);
    if (mode == kBeatMode || reach.IsOn("MoteWeaver_DensitySizeLink"))
        return LongestPeriod() * static_cast<double>(dsp::kSizeRatios[reach.HighestChoice(
                                     "MoteWeaver_GrainSizeRatio", Row::kGrainSize)]);
    return sizeType == 0 ? 0.001 * reach.Highest("MoteWeaver_GrainSizeAbsolute", Row::kGrainSize)
                         : synced("MoteWeaver_GrainSizeSynced");
}

/// Random sizes reach up to a second.
double GranularTailEstimator::LongestGrain() const {
    const double size = PlainGrainSize();
    const bool onlyShorter = reach.Choice("MoteWeaver_RandomSizeArrow") == 0;
    const double random = 0.01 * reach.Highest("MoteWeaver_RandomSize", Row::kRandomSize);
    return onlyShorter ? size : std::max(size, size + (1.0 - size) * random);
}

/// Triggers in a second. Jitter moves the rate as modulation does, steps of the beat mode repeat.
double GranularTailEstimator::HighestRate() const {
    if (IsSynced())
        return (mode == kBeatMode ? static_cast<double>(dsp::kStepValues.back()) : 1.0) /
               NotePeriod(reach.HighestChoice(kNotes, Row::kDensity));
    const bool jitters = reach.Choice("MoteWeaver_RandomDensityArrow") == 0 &&
                         reach.Highest("MoteWeaver_RandomDensity", Row::kRandomDensity) > 0.0;
    return jitters ? kHighestRate : reach.Highest(kRate, Row::kDensity);
}

/// Grains of one side that sound at the same time at most.
double GranularTailEstimator::Overlap() const {
    const double most =
        0.5 * static_cast<double>(dsp::kGrainLimits[reach.Choice("MoteWeaver_MaxGrains")]) + 1.0;
    if (mode != kTextureMode)
        return std::min(most, std::ceil(LongestGrain() * HighestRate()));
    const bool fewerOnly = reach.Choice("MoteWeaver_RandomLayersArrow") == 1;
    if (!fewerOnly && reach.Highest("MoteWeaver_RandomLayers", Row::kRandomLayers) > 0.0)
        return std::min(most, static_cast<double>(dsp::kTextureLayers.back()));
    return std::min(most, static_cast<double>(dsp::kTextureLayers[reach.HighestChoice(
                              "MoteWeaver_TextureDensity", Row::kTextureDensity)]));
}

/// Grains of one place add up in full. A grain in the middle is twice as loud as what it reads, one
/// at a side four times.
double GranularTailEstimator::Gain() const {
    const bool centred = std::abs(reach.Value("MoteWeaver_CenterStereo")) < kCentred &&
                         !reach.IsOn("Spatializer Enable");
    const bool crushed = reach.Choice("MoteWeaver_BitCrushPreset") >= kFirstCrusher;
    return (centred ? 2.0 : 4.0) * std::max(1.0, Overlap()) * (crushed ? kCrusherRounding : 1.0);
}

/// The laps that the tape needs to forget. Grains that are faster than the recording reach into the
/// lap before, wherever the play head is, so one lap is the least; after a leap of the song it is
/// two until all is overwritten.
Tail GranularTailEstimator::Tape(double silence) const {
    if (reach.Highest("MoteWeaver_BufferFreeze", Row::kFreeze) > 0.5)
        return HeldTail();
    const double persistence =
        0.01 * reach.Highest("MoteWeaver_BufferPersistence", Row::kPersistence);
    Tail tail = LoopTail(TapeLength(), persistence, silence);
    tail.memory = tail.seconds + TapeLength();
    return tail;
}

Tail GranularTailEstimator::Estimate(double silence, const Tail& loop, double loopGain) const {
    const double grain = LongestGrain();
    const Tail once = Tape(silence) + Tail{grain, false, grain};
    if (!FeedbackIsOpen(reach))
        return once;
    const double gain = DecibelGain(reach.Highest("Feedback", Row::kFeedback)) * Gain() * loopGain;
    const Tail round = once + loop;
    const Tail all = LoopTail(round.seconds, gain, silence);
    return {once.seconds + all.seconds, round.endless || all.endless, once.memory + round.memory};
}

}  // namespace

double GranularGain(const ParameterReach& reach, double tempo) {
    return GranularTailEstimator(reach, tempo).Gain();
}

Tail GranularTail(const ParameterReach& reach, double tempo, double silence, const Tail& loop,
                  double loopGain) {
    return GranularTailEstimator(reach, tempo).Estimate(silence, loop, loopGain);
}

bool FeedbackIsOpen(const ParameterReach& reach) {
    return reach.Highest("Feedback", Row::kFeedback) > kSilentFeedback;
}

}  // namespace Quorvan::Host
