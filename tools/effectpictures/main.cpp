// Draws the pictures of docs/effects.md: effect_pictures FOLDER. Everything comes from the library
// itself, so that a change of an effect shows in its picture.
#include <algorithm>
#include <cmath>
#include <complex>
#include <exception>
#include <iostream>
#include <numbers>
#include <string>

#include "tools/effectpictures/EffectRun.h"
#include "tools/effectpictures/Plot.h"

namespace Quorvan::Tools {
namespace {

using Settings = std::vector<Setting>;

/// Puts the pictures into one folder.
class Album {
public:
    explicit Album(std::string to) : folder(std::move(to)) {}

    void Draw() const {
        DrawFilter();
        DrawDistortion();
        DrawCompressor();
        DrawEcho("delay", "Delay", "Delay, ping-pong: impulse response", DelaySettings(), 2.0, 1.0);
        DrawEcho("octaver-delay", "Octaver Delay", "Octaver Delay, an octave up: impulse response",
                 OctaverSettings(), 1.2, 0.4);
        DrawEcho("tape-echo", "Tape Echo", "Tape Echo: impulse response", TapeSettings(), 2.0, 0.2);
        DrawEcho("chorus", "Chorus", "Chorus, three voices: impulse response", ChorusSettings(),
                 0.05, 1.0);
        DrawEcho("flanger", "Flanger", "Flanger: impulse response", FlangerSettings(), 0.03, 1.0);
        DrawEcho("reverb", "Reverb", "Reverb: impulse response", ReverbSettings(), 2.0, 0.02);
    }

private:
    static Settings DelaySettings() {
        return {{"Delay_DelayTimeMs", "250 ms"}, {"Delay_DelayFineMs", "0 ms"},
                {"Delay_Feedback", "60 %"},      {"Delay_StereoMode", "Ping-Pong"},
                {"Delay_StereoWidthPP", "70 %"}, {"Delay_HPFreq", "20 Hz"}};
    }
    static Settings OctaverSettings() {
        return {{"OctaverDelay_DelayTimeMs", "200 ms"}, {"OctaverDelay_Feedback", "50 %"},
                {"OctaverDelay_PitchShift", "12 st"},   {"OctaverDelay_DelayOffset", "10 ms"},
                {"OctaverDelay_Detune", "0 ct"},        {"OctaverDelay_HPFreq", "20 Hz"}};
    }
    static Settings TapeSettings() {
        return {{"TapeEcho_DelayTime", "300 ms"},
                {"TapeEcho_DelayTimeFine", "0 ms"},
                {"TapeEcho_InputVolume", "0 dB"},
                {"TapeEcho_Intensity", "70 %"},
                {"TapeEcho_StereoWidth", "30 %"}};
    }
    static Settings ChorusSettings() {
        return {{"Chorus_Delay", "6 ms"},  {"Chorus_Depth", "3 ms"},
                {"Chorus_Freq", "0.5 Hz"}, {"Chorus_Feedback", "40 %"},
                {"Chorus_Voices", "3"},    {"Chorus_StereoMode", "Stereo"},
                {"Chorus_LPFfc", "20 kHz"}};
    }
    static Settings FlangerSettings() {
        return {{"Flanger_MinDelay", "1 ms"},
                {"Flanger_DepthFlanger", "3 ms"},
                {"Flanger_Chorus_Freq", "0.2 Hz"},
                {"Flanger_Chorus_Feedback", "80 %"},
                {"Flanger_Chorus_StereoMode", "Stereo"}};
    }
    static Settings ReverbSettings() {
        return {{"Reverb_Predelay", "30 ms"},
                {"Reverb_Decay", "75 %"},
                {"Reverb_E_Size", "1 x"},
                {"Reverb_EarlyOn", "On"},
                {"Reverb_EarlyMix", "50 %"}};
    }

    std::string File(const std::string& name) const { return folder + "/" + name + ".png"; }
    void DrawEcho(const std::string& file, const std::string& effect, const std::string& title,
                  const Settings& settings, double seconds, double reach) const;
    void DrawFilter() const;
    void DrawDistortion() const;
    void DrawCompressor() const;

    std::string folder;
};

/// Left and right against time, wet signal only.
void Album::DrawEcho(const std::string& file, const std::string& effect, const std::string& title,
                     const Settings& settings, double seconds, double reach) const {
    const bool isShort = seconds < 0.1;
    const double unit = isShort ? 1000.0 : 1.0;
    Plot plot(title, {isShort ? "Time (ms)" : "Time (s)", Axis(0.0, seconds * unit)},
              {"Amplitude", Axis(-reach, reach)});
    const EffectRun::Stereo response = EffectRun(effect, settings).ImpulseResponse(seconds);
    for (size_t c = 0; c < 2; ++c) {
        Curve curve{c == 0 ? "left" : "right", {}, {}};
        for (size_t i = 0; i < response[c].size(); ++i) {
            curve.x.push_back(unit * static_cast<double>(i) / EffectRun::kRate);
            curve.y.push_back(static_cast<double>(response[c][i]));
        }
        plot.Add(std::move(curve));
    }
    plot.Save(File(file));
}

/// Gain of an impulse response at a frequency, in dB.
double GainDb(const std::vector<float>& response, double hertz) {
    std::complex<double> sum = 0.0, turn = 1.0;
    const auto step = std::polar(1.0, -2.0 * std::numbers::pi * hertz / EffectRun::kRate);
    for (const float sample : response) {
        sum += static_cast<double>(sample) * turn;
        turn *= step;
    }
    return 20.0 * std::log10(std::max(std::abs(sum), 1.0e-9));
}

void Album::DrawFilter() const {
    constexpr int kPoints = 300;
    Plot plot("Filter: frequency response",
              {"Frequency (Hz)", Axis(20.0, 20000.0, Axis::Scale::Logarithmic)},
              {"Gain (dB)", Axis(-80.0, 20.0)});
    for (const std::string slope : {"12", "24", "36"}) {
        const EffectRun filter("Filter", {{"MultiModeFilter_Mode", "Low-Pass"},
                                          {"MultiModeFilter_Freq", "1 kHz"},
                                          {"MultiModeFilter_Q", "3"},
                                          {"MultiModeFilter_Slope", slope + " dB/oct"}});
        const std::vector<float> response = filter.ImpulseResponse(0.25)[0];
        Curve curve{slope + " dB/oct", {}, {}};
        for (int i = 0; i <= kPoints; ++i) {
            const double hertz = 20.0 * std::pow(1000.0, static_cast<double>(i) / kPoints);
            curve.x.push_back(hertz);
            curve.y.push_back(GainDb(response, hertz));
        }
        plot.Add(std::move(curve));
    }
    plot.Save(File("filter"));
}

/// Output against input, from a slow sine. A second for settling goes ahead of the turn drawn.
void Album::DrawDistortion() const {
    constexpr double kHertz = 20.0;
    Plot plot("Distortion, drive 18 dB: transfer curves", {"Input", Axis(-1.0, 1.0)},
              {"Output", Axis(-1.0, 1.0)});
    std::vector<float> input;
    for (size_t i = 0; i < static_cast<size_t>(1.1 * EffectRun::kRate); ++i)
        input.push_back(static_cast<float>(
            std::sin(2.0 * std::numbers::pi * kHertz * static_cast<double>(i) / EffectRun::kRate)));
    // From a trough to the next peak.
    const auto from = static_cast<size_t>((1.0 + 0.75 / kHertz) * EffectRun::kRate);
    const auto to = static_cast<size_t>((1.0 + 1.25 / kHertz) * EffectRun::kRate);
    for (const std::string name : {"Soft", "Hard Clip", "Tube", "Fold"}) {
        const EffectRun distortion("Distortion",
                                   {{"MultiDist_DistType", name}, {"MultiDist_Drive", "18 dB"}});
        const EffectRun::Stereo output = distortion.Play(input);
        Curve curve{name, {}, {}};
        for (size_t i = from; i <= to; ++i) {
            curve.x.push_back(static_cast<double>(input[i]));
            curve.y.push_back(static_cast<double>(output[0][i]));
        }
        plot.Add(std::move(curve));
    }
    plot.Save(File("distortion"));
}

/// Level of a settled sine behind the effect against its level ahead of it.
double SettledLevelDb(const EffectRun& effect, double inputDb) {
    const double amplitude = std::pow(10.0, inputDb / 20.0);
    std::vector<float> input;
    for (size_t i = 0; i < 48000; ++i)
        input.push_back(
            static_cast<float>(amplitude * std::sin(2.0 * std::numbers::pi * 1000.0 *
                                                    static_cast<double>(i) / EffectRun::kRate)));
    const std::vector<float> output = effect.Play(input)[0];
    double peak = 0.0;
    for (size_t i = 43200; i < output.size(); ++i)
        peak = std::max(peak, std::abs(static_cast<double>(output[i])));
    return 20.0 * std::log10(std::max(peak, 1.0e-9));
}

void Album::DrawCompressor() const {
    Plot plot("Compressor: transfer curves", {"Input (dB)", Axis(-60.0, 0.0)},
              {"Output (dB)", Axis(-60.0, 0.0)});
    for (const std::string ratio : {"1", "2", "4", "100"}) {
        const EffectRun compressor("Compressor", {{"Compressor_Threshold", "-10 dB"},
                                                  {"Compressor_Ratio", ratio},
                                                  {"Compressor_KneeWidth", "6 dB"},
                                                  {"Compressor_OutputGain", "0 dB"},
                                                  {"Compressor_Attack", "5 ms"},
                                                  {"Compressor_Release", "200 ms"}});
        Curve curve{ratio + ":1", {}, {}};
        for (int step = -30; step <= 0; ++step) {
            const double level = 2.0 * step;
            curve.x.push_back(level);
            curve.y.push_back(SettledLevelDb(compressor, level));
        }
        plot.Add(std::move(curve));
    }
    plot.Save(File("compressor"));
}

}  // namespace
}  // namespace Quorvan::Tools

int main(int count, char** arguments) {
    if (count != 2) {
        std::cerr << "Usage: effect_pictures FOLDER\n";
        return 2;
    }
    try {
        Quorvan::Tools::Album(arguments[1]).Draw();
    } catch (const std::exception& problem) {
        std::cerr << "effect_pictures: " << problem.what() << "\n";
        return 1;
    }
    return 0;
}
