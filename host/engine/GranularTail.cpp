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
constexpr uint32_t kDryWet = 0, kFeedback = 1, kGrainSize = 9, kRandomSize = 10, kDensity = 11,
                   kTextureDensity = 12, kPersistence = 17, kFreeze = 18;
}

constexpr uint32_t kTextureMode = 1;
constexpr uint32_t kBeatMode = 2;
constexpr double kLongestTape = 16.0;      // seconds
constexpr double kSilentFeedback = -70.0;  // dB: at its bottom the loop is open

/// Works through the parameters of the granular engine. Times are in seconds.
class GranularTailEstimator {
public:
    GranularTailEstimator(const ParameterReach& parameters, double tempo)
        : reach(parameters),
          wholeNote(WholeNoteSeconds(tempo)),
          mode(reach.Choice("MoteWeaver_GranularMode")),
          sizeType(reach.Choice("MoteWeaver_GrainSizeMode")) {}

    Tail Estimate() const;

private:
    double TapeLength() const;
    double TriggerPeriod() const;
    double PlainGrainSize() const;
    double LongestGrain() const;
    double Overlap() const;
    Tail Persistence() const;

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

double GranularTailEstimator::TriggerPeriod() const {
    constexpr const char* kRate = "MoteWeaver_GranularPhaseHelper_RateUnSynced";
    constexpr const char* kNotes = "MoteWeaver_GranularPhaseHelper_RateSynced";
    const uint32_t type = reach.Choice("MoteWeaver_DensityType");
    if (type == 0 && mode != kBeatMode)
        return 1.0 / reach.Lowest(kRate, Row::kDensity);
    const auto choice = static_cast<size_t>(reach.Lowest(kNotes, Row::kDensity));
    const double factor = mode == kBeatMode
                              ? NoteTypeFactor(reach.Choice("MoteWeaver_BeatDensityType"))
                              : RateTypeFactor(type);
    return static_cast<double>(dsp::kMainRates[choice]) * wholeNote * factor;
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
        return TriggerPeriod() * static_cast<double>(dsp::kSizeRatios[reach.HighestChoice(
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

/// Grains that sound at the same time, on the average.
double GranularTailEstimator::Overlap() const {
    if (mode == kTextureMode)
        return static_cast<double>(dsp::kTextureLayers[reach.HighestChoice(
            "MoteWeaver_TextureDensity", Row::kTextureDensity)]);
    if (mode != kBeatMode && reach.Choice("MoteWeaver_DensityType") == 0)
        return LongestGrain() *
               reach.Highest("MoteWeaver_GranularPhaseHelper_RateUnSynced", Row::kDensity);
    return LongestGrain() / TriggerPeriod();
}

/// The laps that the tape needs to forget. Grains that are faster than the recording reach into the
/// lap before, wherever the play head is, so one lap is the least.
Tail GranularTailEstimator::Persistence() const {
    if (reach.Highest("MoteWeaver_BufferFreeze", Row::kFreeze) > 0.5)
        return {0.0, true};
    const double persistence =
        0.01 * reach.Highest("MoteWeaver_BufferPersistence", Row::kPersistence);
    return LoopTail(TapeLength(), persistence);
}

Tail GranularTailEstimator::Estimate() const {
    if (reach.Highest("Dry / Wet", Row::kDryWet) <= 0.0)
        return {};
    Tail tail = Persistence();
    const double grain = LongestGrain();
    tail.seconds += grain;
    const double feedback = reach.Highest("Feedback", Row::kFeedback);
    if (feedback <= kSilentFeedback)
        return tail;
    // Grains from different places add up in power: that many more of them, that root louder.
    const double gain = std::pow(10.0, 0.05 * feedback) * std::sqrt(std::max(1.0, Overlap()));
    const Tail loop = LoopTail(TapeLength() + grain, gain);
    return {tail.seconds + loop.seconds, tail.endless || loop.endless};
}

}  // namespace

Tail GranularTail(const ParameterReach& reach, double tempo) {
    return GranularTailEstimator(reach, tempo).Estimate();
}

}  // namespace Quorvan::Host
