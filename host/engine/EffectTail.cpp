#include "host/engine/EffectTail.h"

#include <algorithm>
#include <numbers>
#include <string>

#include "effects/NoteValues.h"
#include "effects/TankLengths.h"
#include "host/engine/EffectGain.h"
#include "host/engine/TailMath.h"

namespace Quorvan::Host {

namespace {

constexpr uint32_t kCombFeedback = 3;  // choices of "MultiModeFilter_Mode"
constexpr uint32_t kCombForward = 4;
constexpr double kLongestSynced = 4.0;  // seconds: longer notes are halved or cut to it
constexpr double kShifterSpan = 0.5;    // seconds that a shifted echo sweeps at most
constexpr double kTapeWidening = 1.2;   // how much longer than the left echo the right one can be
constexpr double kTapeWow = 0.05;       // seconds that the tape's speed moves the echo at most
constexpr double kChorusLap = 0.045;    // seconds of the lines of chorus and flanger at most
constexpr double kLookahead = 0.01;     // seconds of a compressor at most
constexpr double kTankRate = dsp::TankLengths::kReferenceRate;

/// Reads the parameters of one slot. Times are in seconds.
class SlotTail {
public:
    SlotTail(const SlotReach& parameters, double tempo, double silenceLeft)
        : slot(parameters), wholeNote(WholeNoteSeconds(tempo)), silence(silenceLeft) {}

    Tail Estimate() const;

private:
    Tail Filter() const;
    Tail Delay() const;
    Tail Octaver() const;
    Tail TapeEcho() const;
    Tail Reverb() const;
    double EchoTime(const char* type, const char* free, const char* synced, uint32_t row) const;

    const SlotReach& slot;
    double wholeNote;
    double silence;
};

double SlotTail::EchoTime(const char* type, const char* free, const char* synced,
                          uint32_t row) const {
    const uint32_t rateType = slot.Choice(type);
    if (rateType == 0)
        return 0.001 * slot.Highest(free, row);
    const auto choice = static_cast<size_t>(slot.Highest(synced, row));
    const double time = static_cast<double>(dsp::kNoteValues[choice]) * wholeNote;
    return std::min(time, kLongestSynced) * RateTypeFactor(rateType);
}

/// Resonances ring by their width, for each of up to three sections in turn.
Tail SlotTail::Filter() const {
    const uint32_t mode = slot.Choice("MultiModeFilter_Mode");
    if (mode == kCombFeedback || mode == kCombForward) {
        const double lap = 1.0 / slot.Lowest("MultiModeFilter_CombFreq", SlotRow::kFilterFrequency);
        return LoopTail(lap, mode == kCombFeedback ? CombLoopGain(slot) : 0.0, silence);
    }
    const double q = slot.Highest("MultiModeFilter_Q", SlotRow::kFilterResonance);
    const double frequency = slot.Lowest("MultiModeFilter_Freq", SlotRow::kFilterFrequency);
    const double sections = 1.0 + slot.Choice("MultiModeFilter_Slope");
    return {-std::log(silence) * sections * q / (std::numbers::pi * frequency), false, 0.0};
}

/// A ping-pong echo goes through two lines for each pass of the feedback.
Tail SlotTail::Delay() const {
    const double time = EchoTime("Delay_RateType", "Delay_DelayTimeMs", "Delay_DelayTimeSynced",
                                 SlotRow::kDelayTime) +
                        0.001 * slot.Highest("Delay_DelayFineMs", SlotRow::kDelayFine);
    const bool pingPong = slot.IsOn("Delay_StereoMode");
    const double lap =
        pingPong ? 2.0 : 1.0 + 0.01 * slot.Highest("Delay_StereoWidth", SlotRow::kDelayWidth);
    return LoopTail(std::max(time, 0.0) * lap,
                    0.01 * slot.Highest("Delay_Feedback", SlotRow::kDelayFeedback), silence);
}

Tail SlotTail::Octaver() const {
    const double time = EchoTime("OctaverDelay_DelayTimeType", "OctaverDelay_DelayTimeMs",
                                 "OctaverDelay_DelayTimeSynced", SlotRow::kOctaverTime) +
                        0.001 * slot.Highest("OctaverDelay_Spray", SlotRow::kOctaverSpray) +
                        kShifterSpan;
    const double stages = slot.Choice("OctaverDelay_Mode") == 0 ? 1.0 : 2.0;
    return LoopTail(time * stages, OctaverLoopGain(slot), silence);
}

Tail SlotTail::TapeEcho() const {
    const double time = EchoTime("TapeEcho_DelayTimeType", "TapeEcho_DelayTime",
                                 "TapeEcho_DelayTimeSynced", SlotRow::kEchoTime) +
                        0.001 * slot.Highest("TapeEcho_DelayTimeFine", SlotRow::kEchoFine);
    const bool pingPong = slot.Choice("TapeEcho_DelayType") != 0;
    return LoopTail(std::max(time, 0.0) * (pingPong ? 2.0 : kTapeWidening) + kTapeWow,
                    TapeLoopGain(slot), silence);
}

/// Each half of the tank is gone through with the gain of the decay; the first half is the slower
/// one. Its all-passes hold a sound longer than they are long, at the worst frequencies by
/// (1 + c) / (1 - c). What a tail fades by lies between that and their length; the middle of both,
/// 1 / (1 - c), has lasted longer than any that was measured.
Tail SlotTail::Reverb() const {
    if (slot.IsOn("Reverb_Freeze"))
        return HeldTail();
    const auto length = [](uint32_t place) {
        return static_cast<double>(dsp::TankLengths::kBase[place]) / kTankRate;
    };
    const auto held = [&length](uint32_t allpass, double coefficient) {
        return coefficient < kLossless ? length(allpass) / (1.0 - coefficient) : kLongestTail;
    };
    const double size = slot.Highest("Reverb_E_Size", SlotRow::kReverbSize);
    const double half = held(4, 0.01 * slot.Value("Reverb_E_Dd1")) +
                        held(5, 0.01 * slot.Value("Reverb_E_Dd2")) + length(8) + length(9);
    const Tail tank =
        LoopTail(half * size, 0.01 * slot.Highest("Reverb_Decay", SlotRow::kReverbDecay), silence);
    const double diffusion = std::max(slot.Value("Reverb_E_Id1"), slot.Value("Reverb_E_Id2"));
    const Tail input =
        LoopTail((length(0) + length(1) + length(2) + length(3)) * size, 0.01 * diffusion, silence);
    const double predelay = slot.Highest("Reverb_Predelay", SlotRow::kPredelay);
    return tank + input + Tail{predelay, false, predelay};
}

Tail SlotTail::Estimate() const {
    switch (slot.Effect()) {
        case SlotEffect::Filter:
            return Filter();
        case SlotEffect::Compressor:
            return {kLookahead, false, kLookahead};
        case SlotEffect::Delay:
            return Delay();
        case SlotEffect::Octaver:
            return Octaver();
        case SlotEffect::TapeEcho:
            return TapeEcho();
        case SlotEffect::Chorus:
            return LoopTail(kChorusLap,
                            0.01 * slot.Highest("Chorus_Feedback", SlotRow::kChorusFeedback),
                            silence);
        case SlotEffect::Flanger:
            return LoopTail(
                kChorusLap,
                0.01 * slot.Highest("Flanger_Chorus_Feedback", SlotRow::kFlangerFeedback), silence);
        case SlotEffect::Reverb:
            return Reverb();
        default:
            return {};
    }
}

}  // namespace

Tail EffectTail(const SlotReach& slot, double tempo, double silence) {
    return SlotTail(slot, tempo, silence).Estimate();
}

}  // namespace Quorvan::Host
