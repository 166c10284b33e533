#include "tools/audio/DemoSound.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

#include "primitives/Xorshift.h"

namespace Quorvan::Tools {

namespace {

constexpr double kBeat = 60.0 / kDemoTempo;  // seconds
constexpr double kBar = 4.0 * kBeat;
constexpr double kTwoPi = 2.0 * std::numbers::pi;
constexpr float kPeak = 0.70794576f;  // -3 dB

/// Notes as MIDI counts them. The strings play the chord's tones and an octave above.
using Chord = std::array<int, 3>;
constexpr std::array kChords{Chord{57, 60, 64}, Chord{53, 57, 60}, Chord{48, 55, 64},
                             Chord{55, 59, 62}};
/// Which tone of the chord each eighth of a bar plays; -1 is a rest.
constexpr std::array kPattern{0, 2, 1, -1, 2, 0, 1, 2};

double Hertz(int note) { return 440.0 * std::exp2((note - 69) / 12.0); }

class Composer {
public:
    Composer(double sampleRate, double seconds)
        : rate(sampleRate), sound(2, static_cast<size_t>(std::llround(seconds * sampleRate))) {}

    Planes Compose() {
        const double length = static_cast<double>(sound.Frames()) / rate;
        for (int bar = 0; bar * kBar < length; ++bar)
            PlayBar(bar * kBar, kChords[static_cast<size_t>(bar) % kChords.size()]);
        Normalize();
        return std::move(sound);
    }

private:
    void PlayBar(double at, const Chord& chord) {
        for (size_t i = 0; i < chord.size(); ++i)
            Soft(at, Hertz(chord[i]), 0.085);
        for (size_t eighth = 0; eighth < kPattern.size(); ++eighth) {
            const int tone = kPattern[eighth];
            const double start = at + 0.5 * kBeat * static_cast<double>(eighth);
            if (tone >= 0)
                Pluck(start, Hertz(chord[static_cast<size_t>(tone)] + 12),
                      eighth % 2 == 0 ? 0.3 : 0.7, eighth == 0 ? 0.5 : 0.36);
            if (eighth % 2 == 1)
                Hat(start);
        }
        Kick(at);
        Kick(at + 2.5 * kBeat);
        Clap(at + kBeat);
        Clap(at + 3.0 * kBeat);
    }

    /// Adds seconds of a voice from at on; make(time) gives the sample, pan 0 is left.
    template <class Make>
    void Add(double at, double seconds, double pan, Make&& make) {
        const auto first = static_cast<size_t>(std::llround(at * rate));
        const auto count = static_cast<size_t>(seconds * rate);
        const auto left = static_cast<float>(std::cos(pan * 0.5 * std::numbers::pi));
        const auto right = static_cast<float>(std::sin(pan * 0.5 * std::numbers::pi));
        for (size_t i = 0; i < count && first + i < sound.Frames(); ++i) {
            const auto sample = static_cast<float>(make(static_cast<double>(i) / rate));
            sound[0][first + i] += left * sample;
            sound[1][first + i] += right * sample;
        }
    }

    void Soft(double at, double hertz, double level) {
        for (const double side : {0.0, 1.0}) {
            const double tuned = hertz * (1.0 + 0.0015 * (side - 0.5));
            Add(at, kBar, side, [=](double time) {
                const double swell = std::min({1.0, time / 0.35, (kBar - time) / 0.35});
                double sample = 0.0;
                for (int partial = 1; partial <= 5; ++partial)
                    sample += std::sin(kTwoPi * tuned * partial * time) / (partial * partial);
                return level * swell * sample;
            });
        }
    }

    void Pluck(double at, double hertz, double pan, double level) {
        // The loop's filter delays by half a sample.
        const double period = rate / hertz - 0.5;
        std::vector<double> string(static_cast<size_t>(period) + 2);
        for (double& sample : string)
            sample = 2.0 * Chance() - 1.0;
        const double share = period - std::floor(period);
        size_t place = 0;
        double before = 0.0;
        Add(at, 1.2, pan, [&](double time) {
            const double next = string[(place + 1) % string.size()];
            const double read = next + share * (string[place] - next);
            const double sample = 0.5 * 0.996 * (read + before);
            before = read;
            string[place] = sample;
            place = (place + 1) % string.size();
            return level * sample * std::min(1.0, (1.2 - time) / 0.1);
        });
    }

    void Kick(double at) {
        Add(at, 0.22, 0.5, [](double time) {
            const double phase = 48.0 * time + 2.6 * (1.0 - std::exp(-45.0 * time));
            return 0.75 * std::sin(kTwoPi * phase) * std::exp(-14.0 * time) *
                   std::min(1.0, (0.22 - time) / 0.03);
        });
    }

    void Hat(double at) {
        double before = 0.0;
        Add(at, 0.05, 0.62, [&](double time) {
            const double noise = 2.0 * Chance() - 1.0;
            const double sample = 0.12 * (noise - before) * std::exp(-90.0 * time);
            before = noise;
            return sample;
        });
    }

    void Clap(double at) {
        double low = 0.0, slow = 0.0;
        const double fast = 1.0 - std::exp(-kTwoPi * 4000.0 / rate);
        const double lower = 1.0 - std::exp(-kTwoPi * 900.0 / rate);
        Add(at, 0.16, 0.45, [&](double time) {
            low += fast * (2.0 * Chance() - 1.0 - low);
            slow += lower * (low - slow);
            return 0.55 * (low - slow) * std::exp(-30.0 * time);
        });
    }

    double Chance() { return static_cast<double>(prims::XorshiftUniform(random)); }

    void Normalize() {
        float peak = 0.0f;
        for (uint32_t c = 0; c < sound.Channels(); ++c)
            for (const float sample : sound[c])
                peak = std::max(peak, std::abs(sample));
        if (peak == 0.0f)
            return;
        for (uint32_t c = 0; c < sound.Channels(); ++c)
            for (float& sample : sound[c])
                sample *= kPeak / peak;
    }

    double rate;
    Planes sound;
    uint32_t random = 20040513;
};

}  // namespace

Planes MakeDemoSound(double rate, double seconds) { return Composer(rate, seconds).Compose(); }

}  // namespace Quorvan::Tools
