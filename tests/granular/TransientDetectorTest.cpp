#include "granular/TransientDetector.h"

#include "support/Test.h"

namespace Quorvan::dsp {
namespace {

constexpr float kRate = 44100.0f;
constexpr uint32_t kBlock = 44;

/// Places at which onsets are found in a signal, one entry a block at most.
std::vector<int32_t> Onsets(TransientDetector& detector, const std::vector<float>& signal,
                            float sensitivity = 0.5f, uint32_t block = kBlock) {
    std::vector<int32_t> found;
    for (uint32_t at = 0; at + block <= signal.size(); at += block) {
        detector.BeginBlock(static_cast<int32_t>(at));
        for (uint32_t n = 0; n < block; ++n)
            detector.PushSample(n, signal[at + n]);
        if (detector.EndBlock(sensitivity))
            found.push_back(detector.MarkerPosition());
    }
    return found;
}

std::vector<int32_t> Onsets(const std::vector<float>& signal, float sensitivity = 0.5f,
                            float rate = kRate, uint32_t block = kBlock) {
    TransientDetector detector;
    detector.Setup(rate, block);
    detector.Reset();
    return Onsets(detector, signal, sensitivity, block);
}

/// Clicks of decaying noise at the given places.
std::vector<float> Clicks(size_t length, const std::vector<size_t>& places, float peak = 0.8f) {
    std::vector<float> signal(length);
    const std::vector<float> noise = Noise(17, 2000, peak);
    for (const size_t place : places)
        for (size_t i = 0; i < noise.size() && place + i < length; ++i)
            signal[place + i] += noise[i] * std::exp(-0.005f * static_cast<float>(i));
    return signal;
}

/// The whole method once more in double precision, on the definition of the Fourier transform and
/// with the gate in decibels.
std::vector<int32_t> PlainOnsets(const std::vector<float>& signal, double sensitivity) {
    constexpr size_t n = 512;
    constexpr size_t hop = kBlock;
    constexpr double pi = std::numbers::pi;
    const double rate = static_cast<double>(kRate);
    std::vector<std::complex<double>> turn(n);
    for (size_t i = 0; i < n; ++i)
        turn[i] = std::polar(1.0, -2.0 * pi * static_cast<double>(i) / n);
    std::deque<double> frame(n, 0.0);
    std::deque<double> history(23, 0.0);
    const double k = std::tan(pi * 15.0 * hop / rate);
    double level = 0.0, lastD = 0.0, previous = 0.0;
    bool previousGate = false;
    int hold = 0;
    std::vector<int32_t> found;
    for (size_t at = 0; at + hop <= signal.size(); at += hop) {
        bool gate = false;
        for (size_t i = 0; i < hop; ++i) {
            const auto s = static_cast<double>(signal[at + i]);
            frame.push_back(s);
            frame.pop_front();
            const double ms = s * s > level ? 1.0 : 20.0;
            level += (s * s - level) * (1.0 - std::exp(-1000.0 / ms / rate));
            gate = gate || 20.0 * std::log10(std::sqrt(level) + 1.0e-10) > -50.0;
        }
        std::vector<double> windowed(n);
        for (size_t i = 0; i < n; ++i)
            windowed[i] = frame[i] * std::sqrt(0.5) / n *
                          (1.0 - std::cos(2.0 * pi * static_cast<double>(i) / (n - 1)));
        double energy = 1.0, content = 0.0;
        for (size_t bin = 0; bin < n / 2; ++bin) {
            std::complex<double> sum;
            for (size_t i = 0; i < n; ++i)
                sum += windowed[i] * turn[bin * i % n];
            energy += std::norm(sum);
            content += bin > 1 ? static_cast<double>(bin) * std::norm(sum) : 0.0;
        }
        const double d = content * content / ((previous + 1.0) * energy);
        // (1 + 1/z) k / ((1 + k) + (k - 1)/z)
        const double y = (k * (d + lastD) - (k - 1.0) * history.back()) / (1.0 + k);
        lastD = d;
        history.push_back(y);
        history.pop_front();
        std::vector<double> sorted(history.begin(), history.end());
        std::ranges::sort(sorted);
        double mean = 0.0;
        for (const double value : sorted)
            mean += value / 23.0;
        const bool stands = previous > mean + sorted[11] + (1.0 - sensitivity) * 0.38;
        previous = y;
        if (stands && hold == 0 && previousGate) {
            found.push_back(static_cast<int32_t>(at));
            hold = 50;
        }
        hold = std::max(hold - 1, 0);
        previousGate = gate;
    }
    return found;
}

TEST(TransientDetectorTest, MatchesAPlainModel) {
    const std::vector<size_t> places = {3000, 9001, 11000, 16000, 20000, 20700};
    std::vector<float> music = Clicks(26000, places);
    const std::vector<float> tone = Sine(700.0, 44100.0, 26000, 0.2f);
    for (size_t i = 6000; i < music.size(); ++i)
        music[i] += tone[i];
    const auto clicks = [](float peak) { return Clicks(26000, {4000, 5200, 12000, 14700}, peak); };
    const struct {
        std::vector<float> signal;
        std::array<size_t, 3> fewest;  ///< onsets at each sensitivity
    } cases[] = {{music, {4, 4, 4}},
                 {Bursts(4, 26000, 0.7f), {4, 4, 4}},
                 {clicks(0.12f), {0, 0, 3}},    // the second lies within fifty blocks
                 {clicks(0.003f), {0, 0, 0}}};  // below -50 dB
    for (const auto& [signal, fewest] : cases)
        for (size_t i = 0; i < 3; ++i) {
            const float sensitivity = std::array{0.0f, 0.6f, 1.0f}[i];
            const std::vector<int32_t> found = Onsets(signal, sensitivity);
            EXPECT_GE(found.size(), fewest[i]);
            EXPECT_EQ(found, PlainOnsets(signal, static_cast<double>(sensitivity)));
        }
}

// The places lie as far apart in time at every rate: the refractory time counts blocks.
TEST(TransientDetectorTest, MarksEveryClickWithinAFrame) {
    for (const auto& [rate, block] :
         {std::pair(44100.0f, 44u), {48000.0f, 48u}, {96000.0f, 96u}, {192000.0f, 192u}}) {
        std::vector<size_t> places;
        for (const float seconds : {0.1f, 0.3f, 0.5f, 0.7f})
            places.push_back(static_cast<size_t>(seconds * rate));
        const auto length = static_cast<size_t>(0.9f * rate);
        const std::vector<int32_t> found = Onsets(Clicks(length, places), 0.5f, rate, block);
        ASSERT_EQ(found.size(), places.size()) << rate;
        for (size_t i = 0; i < places.size(); ++i) {
            const auto late = static_cast<float>(found[i] - static_cast<int32_t>(places[i]));
            EXPECT_GE(late, 0.0f);
            EXPECT_LE(late, 0.013f * rate) << rate;
        }
    }
}

TEST(TransientDetectorTest, FrameIsThePowerOfTwoNearestToTwelveMilliseconds) {
    for (const auto& [rate, size] : std::map<float, uint32_t>{{22050.0f, 256},
                                                              {48000.0f, 512},
                                                              {66200.0f, 512},
                                                              {66300.0f, 1024},
                                                              {192000.0f, 2048}}) {
        TransientDetector detector;
        detector.Setup(rate, 64);
        EXPECT_EQ(detector.FrameSize(), size) << rate;
    }
}

TEST(TransientDetectorTest, ResetForgetsTheSignalAndWhatWasNoNumber) {
    const std::vector<float> signal = Clicks(20000, {4000, 12000});
    TransientDetector detector;
    detector.Setup(kRate, kBlock);
    detector.Reset();
    const std::vector<int32_t> first = Onsets(detector, signal);
    EXPECT_EQ(first.size(), 2u);
    Onsets(detector, Noise(3, 4400));
    Onsets(detector, std::vector<float>(44000));  // lets the low-pass run out, which a reset keeps
    Onsets(detector, Noise(3, 44));
    Onsets(detector, std::vector<float>(44 * 30));
    detector.Reset();
    EXPECT_EQ(Onsets(detector, signal), first);
    std::vector<float> broken(4400);
    broken[100] = NAN;
    broken[2000] = INFINITY;
    Onsets(detector, broken);
    detector.Reset();
    EXPECT_EQ(Onsets(detector, signal).size(), 2u);
}

TEST(TransientDetectorTest, BlocksLongerThanAFrameStillWork) {
    for (const uint32_t block : {512u, 516u, 2048u, 8192u}) {
        const std::vector<float> signal = Clicks(size_t{40} * block, {size_t{20} * block - 300});
        EXPECT_EQ(Onsets(signal, 1.0f, kRate, block).size(), 1u) << block;
    }
}

}  // namespace
}  // namespace Quorvan::dsp
