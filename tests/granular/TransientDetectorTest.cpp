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

// The blocks of the onsets, as the whole method gives them in double precision, on the definition
// of the Fourier transform and with the gate in decibels.
TEST(TransientDetectorTest, FindsWhatTheMethodFinds) {
    std::vector<float> music = Clicks(26000, {3000, 9001, 11000, 16000, 20000, 20700});
    const std::vector<float> tone = Sine(700.0, 44100.0, 26000, 0.2f);
    for (size_t i = 6000; i < music.size(); ++i)
        music[i] += tone[i];
    const auto clicks = [](float peak) { return Clicks(26000, {4000, 5200, 12000, 14700}, peak); };
    using Blocks = std::vector<int32_t>;
    const struct {
        std::vector<float> signal;
        std::array<Blocks, 3> onsets;  ///< at each sensitivity
    } cases[] = {
        {music, {{{74, 210, 260, 369, 460}, {73, 209, 259, 369, 459}, {71, 208, 258, 367, 458}}}},
        {Bursts(4, 26000, 0.7f),
         {{{38, 267, 358, 467}, {38, 142, 266, 356, 467}, {3, 140, 210, 264, 353, 451, 568}}}},
        {clicks(0.12f), {{{}, {}, {94, 276, 339}}}},  // the second is within fifty blocks
        {clicks(0.003f), {}}};                        // below -50 dB
    for (const auto& [signal, onsets] : cases)
        for (size_t i = 0; i < 3; ++i) {
            Blocks found = Onsets(signal, std::array{0.0f, 0.6f, 1.0f}[i]);
            for (int32_t& place : found)
                place /= int32_t{kBlock};
            EXPECT_EQ(found, onsets[i]) << i;
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
