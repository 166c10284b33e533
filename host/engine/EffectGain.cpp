#include "host/engine/EffectGain.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

#include "host/engine/TailMath.h"

namespace Quorvan::Host {

namespace {

enum FilterMode : uint32_t { kBandPass = 2, kCombFeedback, kCombForward };

constexpr double kSteepestCurve = 10.0;   // output over input of the distortions' curves at most
constexpr double kLoudestFilter = 16.0;   // peak with the level compensation, at any resonance
constexpr double kMakeupSlope = 0.70711;  // decibels of makeup for each below 0 dB of threshold
constexpr double kTapeRound = 1.19;       // of the tape loop at its loudest frequency, 400 Hz
constexpr double kRecordShelf = 2.0;
constexpr double kTapeFeedback = 0.915;  // of the echo's intensity
constexpr double kTankLevel = 0.26801;   // gain behind the reverb's taps
constexpr double kTankTaps = 7.0;        // on each side

/// What a loop adds up to that goes round with a gain.
double Rounds(double gain) {
    return gain < kLossless ? 1.0 / (1.0 - gain) : std::numeric_limits<double>::infinity();
}

double FilterGain(const SlotReach& slot) {
    const uint32_t mode = slot.Choice("MultiModeFilter_Mode");
    if (mode >= kCombFeedback)
        return mode == kCombForward ? 1.0 + CombLoopGain(slot) : Rounds(CombLoopGain(slot));
    const double q = slot.Highest("MultiModeFilter_Q", SlotRow::kFilterResonance);
    const double sections = 1.0 + slot.Choice("MultiModeFilter_Slope");
    double peak = 2.0 * q;  // the band-pass is raised by 6 dB and more
    if (mode != kBandPass)
        peak = q <= std::numbers::sqrt2 * 0.5 ? 1.0 : q / std::sqrt(1.0 - 0.25 / (q * q));
    return std::min(std::pow(peak, sections), kLoudestFilter);
}

double DistortionGain(const SlotReach& slot) {
    return kSteepestCurve * DecibelGain(slot.Highest("MultiDist_Drive", SlotRow::kDrive) +
                                        slot.Value("MultiDist_OutputGain"));
}

/// A compressor only lowers, but for its gains ahead and behind: what is quiet gets those in full.
double CompressorGain(const SlotReach& slot) {
    double decibels = slot.Value("Compressor_InputGain") + slot.Value("Compressor_OutputGain");
    const double kneeStart = slot.Lowest("Compressor_Threshold", SlotRow::kThreshold) -
                             0.5 * slot.Value("Compressor_KneeWidth");
    if (slot.IsOn("Compressor_Makeup"))
        decibels -= kMakeupSlope * std::min(0.0, kneeStart);
    return DecibelGain(decibels);
}

double ChorusGain(double feedback, double voices) {
    return std::hypot(1.0, std::sqrt(voices) * Rounds(feedback));
}

double ReverbGain(const SlotReach& slot) {
    const double decay = 0.01 * slot.Highest("Reverb_Decay", SlotRow::kReverbDecay);
    return std::hypot(1.0, kTankLevel * kTankTaps * Rounds(decay)) *
           DecibelGain(slot.Value("Reverb_OutputGain"));
}

double GainOf(const SlotReach& slot) {
    switch (slot.Effect()) {
        case SlotEffect::Filter:
            return FilterGain(slot);
        case SlotEffect::Distortion:
            return DistortionGain(slot);
        case SlotEffect::Compressor:
            return CompressorGain(slot);
        case SlotEffect::Delay:
            return 1.0 + Rounds(0.01 * slot.Highest("Delay_Feedback", SlotRow::kDelayFeedback));
        case SlotEffect::Octaver:  // the two stages of its octave modes are heard both
            return 1.0 + 4.0 * Rounds(OctaverLoopGain(slot));
        case SlotEffect::TapeEcho:
            return 1.0 +
                   kRecordShelf * kTapeRound *
                       DecibelGain(slot.Highest("TapeEcho_InputVolume", SlotRow::kEchoInput)) *
                       Rounds(TapeLoopGain(slot));
        case SlotEffect::Chorus:
            return ChorusGain(0.01 * slot.Highest("Chorus_Feedback", SlotRow::kChorusFeedback),
                              1.0 + slot.Choice("Chorus_Voices"));
        case SlotEffect::Flanger:
            return ChorusGain(
                0.01 * slot.Highest("Flanger_Chorus_Feedback", SlotRow::kFlangerFeedback), 1.0);
        case SlotEffect::Reverb:
            return ReverbGain(slot);
        default:
            return 1.0;
    }
}

}  // namespace

double EffectGain(const SlotReach& slot) { return std::max(1.0, GainOf(slot)); }

/// Of the windows that the two taps fade by, the quarter sines add up to more than 1. The octave
/// modes go through two shifters and twice through the feedback.
double OctaverLoopGain(const SlotReach& slot) {
    const double window = slot.Choice("OctaverDelay_Window") == 1 ? std::numbers::sqrt2 : 1.0;
    const double gain =
        window * 0.01 * slot.Highest("OctaverDelay_Feedback", SlotRow::kOctaverFeedback);
    return slot.Choice("OctaverDelay_Mode") == 0 ? gain : gain * gain;
}

double TapeLoopGain(const SlotReach& slot) {
    return kTapeRound * kTapeFeedback * 0.01 *
           slot.Highest("TapeEcho_Intensity", SlotRow::kEchoIntensity);
}

double CombLoopGain(const SlotReach& slot) {
    return 0.99 * slot.HighestPosition("MultiModeFilter_Q", SlotRow::kFilterResonance);
}

}  // namespace Quorvan::Host
