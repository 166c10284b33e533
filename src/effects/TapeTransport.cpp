#include "effects/TapeTransport.h"

#include <algorithm>
#include <cmath>

#include "primitives/Clock.h"
#include "primitives/PolynomialReads.h"
#include "primitives/Xorshift.h"

namespace Quorvan::dsp {

namespace {

constexpr float kShortestMs = 60.0f, kLongestMs = 1000.0f;  // of the wobble's settings
constexpr float kDriftCorner = 16.461945f;                  // radians a second: 2.62 Hz
constexpr float kDriftDepth = 56.101246f;
constexpr float kPassedOn = 0.9f;  // share of a sample's wobble at its recording
constexpr float kShortestGapped = 0.060000002f, kLongestGapped = 0.162f;  // seconds
constexpr float kGapShare = 0.09130434f;                                  // of the delay
/// Tape beyond the longest delay, for the wobble and the interpolation to reach into.
constexpr float kSpareSeconds = 0.01f;

int32_t TapeLength(float rate) {
    return static_cast<int32_t>(std::ceil(TapeTransport::kLongestSeconds * rate) +
                                std::ceil(kSpareSeconds * rate));
}

}  // namespace

TapeTransport::TapeTransport() : setting(kShortestMs), randomState(prims::SeedFromClock()) {}

void TapeTransport::Setup(float rate, uint32_t blockSize) {
    blockFrames = blockSize;
    sampleRate = rate;
    inverseSampleRate = 1.0f / rate;
    rateScale = rate * 2.0833333e-05f;
    gapScale = rate * kGapShare;
    const float w = kDriftCorner * inverseSampleRate;
    driftLowPass = BiquadCoefficients::LowPass(w, BiquadCoefficients::FlatAlpha(w));
    flutter.Setup(rate);
    for (uint32_t c = 0; c < kChannels; ++c) {
        motors[c].Setup(rate);
        tape[c].Resize(TapeLength(rate), DelayLine::Clearing::BitByBit);
        wobbleLine[c].Resize(TapeLength(rate), DelayLine::Clearing::BitByBit);
    }
}

void TapeTransport::Reset(const std::array<float, kChannels>& delays) {
    lastFlutter = flutter.Advance(flutterFrequency, blockFrames);
    flutter.Reset(randomState);
    driftState = {};
    for (uint32_t c = 0; c < kChannels; ++c) {
        motors[c].Jump(Held(delays[c]));
        tape[c].Clear();
        wobbleLine[c].Clear();
    }
}

void TapeTransport::BeginBlock(const std::array<float, kChannels>& delays, uint32_t count) {
    for (uint32_t c = 0; c < kChannels; ++c) {
        tape[c].Wipe();
        wobbleLine[c].Wipe();
        targets[c] = Held(delays[c]);
    }
    setting = TapeFlutter::Setting(Milliseconds(std::max(motors[0].Now(), motors[1].Now())));
    flutterFrequency = setting.frequency;
    flutterStart = lastFlutter;
    if (count == 0)  // no sample to take the flutter on to
        return;
    flutterStep =
        (flutter.Advance(flutterFrequency, blockFrames) - lastFlutter) / static_cast<float>(count);
    lastFlutter = flutterStart + flutterStep * static_cast<float>(count);
}

void TapeTransport::Play(Chunk& chunk, uint32_t from, uint32_t count, bool rightHasGap) {
    FillWobble(from, count);
    MoveMotors(chunk, count);
    for (uint32_t c = 0; c < kChannels; ++c) {
        DelayLine& sent = wobbleLine[c];
        std::array<int32_t, kChunk> back;
        Samples fraction;
        for (uint32_t i = 0; i < count; ++i) {
            const float delay = chunk.delay[c][i];
            const float seconds =
                std::clamp(delay, kShortestGapped * sampleRate, kLongestGapped * sampleRate) *
                inverseSampleRate;
            const float gap = c == 0 || rightHasGap ? seconds * gapScale : 0.0f;
            const float wobble = wobbleBuffer[c][i];
            // All delays are above 0, so that truncation rounds down.
            const float before =
                sent.Read(static_cast<int32_t>(delay - gap), 0.0f, DelayLine::kNone);
            sent.Write(wobble);
            const float readDelay = before * kPassedOn + wobble + delay - gap;
            const auto whole = static_cast<int32_t>(readDelay);
            back[i] = whole - static_cast<int32_t>(i);
            fraction[i] = readDelay - static_cast<float>(whole);
            chunk.seconds[c][i] = seconds;
            chunk.gap[c][i] = gap;
        }
        // The tape still stands at the chunk's start.
        PolynomialReads::Read(tape[c], back.data(), fraction.data(), count, chunk.played[c].data());
    }
}

void TapeTransport::FillWobble(uint32_t from, uint32_t count) {
    for (uint32_t i = 0; i < count; ++i) {
        flutterBuffer[i] = flutterStart + flutterStep * static_cast<float>(from + i + 1);
        const float noise = 4.0f * prims::XorshiftUniform(randomState) - 2.0f;
        driftBuffer[i] = driftState.Tick(driftLowPass, noise) * kDriftDepth;
    }
}

/// Moves both delays on, left ahead of right: the left wobble's depth still sees the right delay of
/// the sample before.
void TapeTransport::MoveMotors(Chunk& chunk, uint32_t count) {
    for (uint32_t i = 0; i < count; ++i) {
        for (uint32_t c = 0; c < kChannels; ++c) {
            chunk.delay[c][i] = motors[c].Step(targets[c]);
            const float longer = std::max(motors[0].Now(), motors[1].Now());
            const float depth = setting.Depth(Milliseconds(longer));
            wobbleBuffer[c][i] = (depth * flutterBuffer[i] + driftBuffer[i]) * rateScale;
        }
    }
}

float TapeTransport::Milliseconds(float samples) const {
    return std::clamp(samples * 1000.0f * inverseSampleRate, kShortestMs, kLongestMs);
}

float TapeTransport::Held(float samples) const {
    return std::clamp(samples, kShortestSeconds * sampleRate, kLongestSeconds * sampleRate);
}

}  // namespace Quorvan::dsp
