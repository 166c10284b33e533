#include "host/engine/EffectTail.h"

#include <algorithm>
#include <string>

#include "effects/NoteValues.h"
#include "host/engine/TailMath.h"

namespace Quorvan::Host {

namespace {

/// Rows of the matrix for the first slot; those of the second are as many behind as kSlotRows says.
namespace Row {
constexpr uint32_t kDryWet = 35, kDelayTime = 42, kDelayFeedback = 43, kOctaverTime = 46,
                   kOctaverFeedback = 47, kOctaverSpray = 49, kEchoTime = 52, kEchoIntensity = 54,
                   kChorusFeedback = 58, kFlangerFeedback = 60, kReverbDecay = 61, kReverbSize = 62,
                   kPredelay = 63;
}
constexpr uint32_t kSlotRows = 30;

/// The choices of "ModuleType".
enum Effect : uint32_t { kFilter = 1, kDelay = 4, kOctaver, kTapeEcho, kChorus, kFlanger, kReverb };

constexpr double kFineTime = 0.05;      // seconds that fine times reach
constexpr double kWidening = 1.2;       // how much longer than the left echo the right one can be
constexpr double kLongestSynced = 4.0;  // seconds: longer notes are halved until they fit
constexpr double kShifterSpan = 0.5;    // seconds that a shifted echo sweeps at most
constexpr double kTapeLoss = 0.915;     // gain of the tape loop at an intensity of 1
constexpr double kTankLap = 0.36;       // seconds of half the tank of the reverb at size 1
constexpr double kCombRing = 1.0;       // seconds that combs and resonances ring at most
constexpr double kChorusLap = 0.04;     // seconds of the lines of chorus and flanger at most

/// Reads the parameters of one slot.
class SlotTailEstimator {
public:
    SlotTailEstimator(const ParameterReach& parameters, double tempo, uint32_t slot)
        : reach(parameters),
          wholeNote(WholeNoteSeconds(tempo)),
          prefix("FX" + std::to_string(slot) + "_"),
          rowShift((slot - 1) * kSlotRows) {}

    Tail Estimate() const;

private:
    Tail Delay() const;
    Tail Octaver() const;
    Tail TapeEcho() const;
    Tail Chorus(const char* module, uint32_t feedbackRow) const;
    Tail Reverb() const;
    double SyncedTime(const char* name, uint32_t row, uint32_t rateType) const;

    double Value(const char* name) const { return reach.Value(prefix + name); }
    uint32_t Choice(const char* name) const { return reach.Choice(prefix + name); }
    double Highest(const char* name, uint32_t row) const {
        return reach.Highest(prefix + name, row + rowShift);
    }

    const ParameterReach& reach;
    double wholeNote;
    std::string prefix;
    uint32_t rowShift;
};

double SlotTailEstimator::SyncedTime(const char* name, uint32_t row, uint32_t rateType) const {
    const auto choice = static_cast<size_t>(Highest(name, row));
    const double time = static_cast<double>(dsp::kNoteValues[choice]) * wholeNote;
    return std::min(time * RateTypeFactor(rateType), kLongestSynced);
}

/// A ping-pong echo goes through two lines for each pass of the feedback.
Tail SlotTailEstimator::Delay() const {
    const uint32_t type = Choice("Delay_RateType");
    const double time = type == 0 ? 0.001 * Highest("Delay_DelayTimeMs", Row::kDelayTime)
                                  : SyncedTime("Delay_DelayTimeSynced", Row::kDelayTime, type);
    const double lines = Value("Delay_StereoMode") > 0.5 ? 2.0 : 1.0;
    return LoopTail((time + kFineTime) * kWidening * lines,
                    0.01 * Highest("Delay_Feedback", Row::kDelayFeedback));
}

Tail SlotTailEstimator::Octaver() const {
    const uint32_t type = Choice("OctaverDelay_DelayTimeType");
    const double time = type == 0
                            ? 0.001 * Highest("OctaverDelay_DelayTimeMs", Row::kOctaverTime)
                            : SyncedTime("OctaverDelay_DelayTimeSynced", Row::kOctaverTime, type);
    const double spray = 0.001 * Highest("OctaverDelay_Spray", Row::kOctaverSpray);
    return LoopTail(time + spray + kShifterSpan,
                    0.01 * Highest("OctaverDelay_Feedback", Row::kOctaverFeedback));
}

Tail SlotTailEstimator::TapeEcho() const {
    const uint32_t type = Choice("TapeEcho_DelayTimeType");
    const double time = type == 0 ? 0.001 * Highest("TapeEcho_DelayTime", Row::kEchoTime)
                                  : SyncedTime("TapeEcho_DelayTimeSynced", Row::kEchoTime, type);
    const double intensity = 0.01 * Highest("TapeEcho_Intensity", Row::kEchoIntensity);
    return LoopTail((time + kFineTime) * kWidening, kTapeLoss * intensity);
}

Tail SlotTailEstimator::Chorus(const char* module, uint32_t feedbackRow) const {
    const std::string feedback = std::string(module) + "_Feedback";
    return LoopTail(kChorusLap, 0.01 * Highest(feedback.c_str(), feedbackRow));
}

Tail SlotTailEstimator::Reverb() const {
    if (Value("Reverb_Freeze") > 0.5)
        return {0.0, true};
    Tail tail = LoopTail(kTankLap * Highest("Reverb_E_Size", Row::kReverbSize),
                         0.01 * Highest("Reverb_Decay", Row::kReverbDecay));
    tail.seconds += Highest("Reverb_Predelay", Row::kPredelay);
    return tail;
}

Tail SlotTailEstimator::Estimate() const {
    if (Value("Bypass") > 0.5 || Highest("Dry / Wet", Row::kDryWet) <= 0.0)
        return {};
    switch (Choice("ModuleType")) {
        case kFilter:
            return {kCombRing, false};
        case kDelay:
            return Delay();
        case kOctaver:
            return Octaver();
        case kTapeEcho:
            return TapeEcho();
        case kChorus:
            return Chorus("Chorus", Row::kChorusFeedback);
        case kFlanger:
            return Chorus("Flanger_Chorus", Row::kFlangerFeedback);
        case kReverb:
            return Reverb();
        default:
            return {};
    }
}

}  // namespace

Tail EffectTail(const ParameterReach& reach, double tempo, uint32_t slot) {
    return SlotTailEstimator(reach, tempo, slot).Estimate();
}

}  // namespace Quorvan::Host
