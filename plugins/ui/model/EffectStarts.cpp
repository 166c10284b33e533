#include "plugins/ui/model/EffectStarts.h"

#include <iterator>

namespace Quorvan::Ui {

namespace {

constexpr std::string_view kMix = "Dry / Wet";

constexpr EffectStart kFilter[]{{kMix, "100 %"},
                                {"Filter Cutoff", "1.2 kHz"},
                                {"Filter Comb Frequency", "220 Hz"},
                                {"Filter Resonance", "0.7"}};
constexpr EffectStart kDistortion[]{{kMix, "100 %"}, {"Distortion Drive", "12 dB"}};
constexpr EffectStart kCompressor[]{{kMix, "100 %"},
                                    {"Compressor Threshold", "-20 dB"},
                                    {"Compressor Ratio", "4:1"},
                                    {"Compressor Knee", "6 dB"},
                                    {"Compressor Attack", "10 ms"},
                                    {"Compressor Release", "150 ms"},
                                    {"Compressor Output Gain", "0 dB"}};
constexpr EffectStart kDelay[]{{kMix, "35 %"},
                               {"Delay Time (Free)", "350 ms"},
                               {"Delay Time (Synced)", "1/8"},
                               {"Delay Fine Time", "0 ms"},
                               {"Delay Feedback", "40 %"},
                               {"Delay Ping-Pong Width", "100 %"}};
constexpr EffectStart kOctaver[]{{kMix, "40 %"},
                                 {"Octaver Time (Free)", "250 ms"},
                                 {"Octaver Time (Synced)", "1/8"},
                                 {"Octaver Feedback", "40 %"},
                                 {"Octaver Pitch", "12 st"},
                                 {"Octaver Detune", "0 ct"},
                                 {"Octaver Stereo Offset", "0 ms"}};
constexpr EffectStart kTapeEcho[]{{kMix, "35 %"},
                                  {"Tape Echo Time (Free)", "300 ms"},
                                  {"Tape Echo Time (Synced)", "1/8"},
                                  {"Tape Echo Fine Time", "0 ms"},
                                  {"Tape Echo Intensity", "45 %"},
                                  {"Tape Echo Input Volume", "0 dB"},
                                  {"Tape Echo Ping-Pong Width", "100 %"}};
constexpr EffectStart kChorus[]{{kMix, "50 %"},           {"Chorus Rate (Free)", "0.6 Hz"},
                                {"Chorus Depth", "2 ms"}, {"Chorus Delay", "7 ms"},
                                {"Chorus Voices", "2"},   {"Chorus Channels", "Stereo"}};
constexpr EffectStart kFlanger[]{{kMix, "50 %"},
                                 {"Flanger Rate (Free)", "0.15 Hz"},
                                 {"Flanger Rate (Synced)", "1/1"},
                                 {"Flanger Depth", "2.5 ms"},
                                 {"Flanger Delay", "0.5 ms"},
                                 {"Flanger Feedback", "40 %"},
                                 {"Flanger Channels", "Stereo"}};
constexpr EffectStart kReverb[]{{kMix, "35 %"},
                                {"Reverb Decay", "70 %"},
                                {"Reverb Size", "1 x"},
                                {"Reverb Predelay", "20 ms"},
                                {"Reverb Damping", "30 %"},
                                {"Reverb Early Mix", "30 %"}};
constexpr std::span<const EffectStart> kEffects[]{
    {}, kFilter, kDistortion, kCompressor, kDelay, kOctaver, kTapeEcho, kChorus, kFlanger, kReverb};

}  // namespace

std::span<const EffectStart> EffectStartsOf(uint32_t choice) {
    return choice < std::size(kEffects) ? kEffects[choice] : std::span<const EffectStart>();
}

}  // namespace Quorvan::Ui
