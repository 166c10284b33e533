#include "granular/TransientDetector.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <numeric>

#include "primitives/FloatLanes.h"

namespace Quorvan::dsp {

namespace {

constexpr float kFrameSeconds = 0.011609977f;  // 512 samples at 44100 Hz
constexpr uint32_t kSmallestFrame = 16;        // keeps the sums below in groups of four
constexpr float kHannGain = 0.70710677f;       // half of sqrt(2), the window's peak times N
constexpr float kTwoPi = 6.2831855f;
constexpr float kSmoothingCorner = 47.12389f;  // pi * 15 Hz, in frames
constexpr float kLevelAttack = -999.99994f;    // 1 / 1 ms
constexpr float kLevelRelease = -50.0f;        // 1 / 20 ms
constexpr float kConstantThreshold = 0.38f;
constexpr int32_t kHoldBlocks = 50;

/// The power of two nearest to wanted, the lower one of two that are equally near.
uint32_t NearestPowerOfTwo(uint32_t wanted) {
    const uint32_t above = std::bit_ceil(wanted);
    return above - wanted < wanted - above / 2 ? above : above / 2;
}

}  // namespace

void TransientDetector::Setup(float sampleRate, uint32_t blockSize) {
    const auto wanted = static_cast<uint32_t>(sampleRate * kFrameSeconds);
    frameSize = NearestPowerOfTwo(std::max(wanted, kSmallestFrame));
    hopSize = std::min(blockSize, frameSize);
    fillOffset = frameSize - hopSize;
    skipped = blockSize - hopSize;

    fft.Resize(frameSize);
    frame.assign(frameSize, 0.0f);
    windowed.assign(frameSize, 0.0f);
    spectrum.assign(frameSize + 4, 0.0f);
    window.resize(frameSize);
    const auto last = static_cast<float>(frameSize - 1);
    for (uint32_t i = 0; i < frameSize; ++i)
        window[i] = kHannGain / static_cast<float>(frameSize) *
                    (1.0f - std::cos(static_cast<float>(i) * kTwoPi / last));

    attack = 1.0f - std::exp(kLevelAttack / sampleRate);
    release = 1.0f - std::exp(kLevelRelease / sampleRate);
    const float k = std::tan(static_cast<float>(hopSize) * kSmoothingCorner / sampleRate);
    const float c = 1.0f / (1.0f + k);
    b0 = b1 = c * k;
    a1 = (k - 1.0f) * c;
}

void TransientDetector::Reset() {
    std::fill(frame.begin(), frame.end(), 0.0f);
    std::fill(spectrum.begin(), spectrum.end(), 0.0f);
    history.fill(0.0f);
    sorted.fill(0.0f);
    thresholded = 0.0f;
    previousValue = 0.0f;
    levelEnvelope = 0.0f;
    levelGate = 0.0f;
    previousGate = 0;
    holdCount = 0;
    holding = false;
}

void TransientDetector::BeginBlock(int32_t writePosition) {
    std::copy(frame.begin() + static_cast<std::ptrdiff_t>(hopSize), frame.end(), frame.begin());
    blockStartPosition = writePosition;
    levelGate = 0.0f;
}

bool TransientDetector::EndBlock(float sensitivity) {
    const float newest = Smooth(DetectionValue());
    // The frame on trial is the one before the newest, so that it also meets its successor.
    thresholded = previousValue - Threshold(newest, sensitivity);
    previousValue = newest;
    const bool onset = thresholded > 0.0f && !holding && previousGate != 0;
    holding = holding || onset;
    AdvanceHold();
    previousGate = static_cast<int32_t>(levelGate);
    return onset;
}

float TransientDetector::DetectionValue() {
    for (uint32_t i = 0; i < frameSize; ++i)
        windowed[i] = frame[i] * window[i];
    fft.Forward(windowed.data(), spectrum.data());

    // Four partial sums each, for the sake of vectors.
    FloatLanes energies{}, contents{};
    FloatLanes bins{0.0f, 1.0f, 2.0f, 3.0f};
    for (uint32_t at = 0; at < frameSize; at += 8, bins += 4.0f) {
        const FloatLanes a = LoadLanes(spectrum.data() + at);
        const FloatLanes b = LoadLanes(spectrum.data() + at + 4);
        const FloatLanes re = EvenLanes(a, b), im = OddLanes(a, b);
        const FloatLanes m = re * re + im * im;
        energies += m;
        contents += bins * m;
    }
    const auto sum = [](FloatLanes x, float start) { return start + x[0] + x[1] + x[2] + x[3]; };
    const float energy = sum(energies, 1.0f);
    // What the window spreads into bin 1 says nothing of an onset.
    const float lowest = spectrum[2] * spectrum[2] + spectrum[3] * spectrum[3];
    const float content = sum(contents, -lowest);
    const float value = content * content / ((previousValue + 1.0f) * energy);
    // A recorded infinity would stay in the low-pass for ever.
    return std::isfinite(value) ? value : 0.0f;
}

float TransientDetector::Smooth(float value) {
    const float y = b0 * value + b1 * lastInput - a1 * lastOutput;
    lastInput = value;
    lastOutput = y;
    return y;
}

float TransientDetector::Threshold(float newest, float sensitivity) {
    std::copy(history.begin() + 1, history.end(), history.begin());
    history.back() = newest;
    sorted = history;
    const auto middle = sorted.begin() + kHistory / 2;
    std::nth_element(sorted.begin(), middle, sorted.end());
    const float sum = std::accumulate(history.begin(), history.end(), 0.0f);
    return sum / static_cast<float>(kHistory) + *middle + (1.0f - sensitivity) * kConstantThreshold;
}

void TransientDetector::AdvanceHold() {
    if (!holding)
        return;
    if (++holdCount >= kHoldBlocks) {
        holdCount = 0;
        holding = false;
    }
}

}  // namespace Quorvan::dsp
