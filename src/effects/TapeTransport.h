#pragma once

#include <array>
#include <cstdint>

#include "effects/TapeFlutter.h"
#include "effects/TapeMotor.h"
#include "primitives/AlignedVector.h"
#include "primitives/Biquad.h"
#include "primitives/DelayLine.h"

namespace Quorvan::dsp {

/// Two tapes of a tape echo with what moves them: a motor each, whose delay follows its target
/// slowly, and a wobble of the speed that both share. The wobble is there when the tape is recorded
/// and, one pass later, when it is played.
///
/// Works in chunks: Play reads what is under the playback heads, then Record writes one sample
/// after the other.
class TapeTransport {
public:
    static constexpr uint32_t kChannels = 2;
    static constexpr uint32_t kChunk = 16;  ///< samples of a chunk at most
    static constexpr float kShortestSeconds = 0.01f, kLongestSeconds = 4.0f;
    using Samples = std::array<float, kChunk>;

    struct Chunk {
        std::array<Samples, kChannels> delay;    ///< between record and playback head, samples
        std::array<Samples, kChannels> seconds;  ///< the same, held to what the gap is given for
        std::array<Samples, kChannels> gap;      ///< half the head's gap as a delay, samples
        std::array<Samples, kChannels> played;   ///< from the tapes
    };

    TapeTransport();
    void Setup(float rate, uint32_t blockSize);
    /// Clears the tapes, whose delays jump to delays, and draws new phases for the wobble.
    void Reset(const std::array<float, kChannels>& delays);
    /// Sets the course for a block of count samples: delays in samples, held to the range.
    void BeginBlock(const std::array<float, kChannels>& delays, uint32_t count);
    /// Samples from on of the block. With rightHasGap off the right head is taken for ideal.
    void Play(Chunk& chunk, uint32_t from, uint32_t count, bool rightHasGap);
    void Record(uint32_t channel, float sample) { tape[channel].Write(sample); }

private:
    void FillWobble(uint32_t from, uint32_t count);
    void MoveMotors(Chunk& chunk, uint32_t count);
    float Milliseconds(float samples) const;
    float Held(float samples) const;

    // Coefficients.
    uint32_t blockFrames = 0;
    float sampleRate = 0.0f, inverseSampleRate = 0.0f;
    float rateScale = 0.0f;  ///< over 48 kHz, at which the wobble's depth is given
    float gapScale = 0.0f;
    std::array<float, kChannels> targets{};  ///< samples
    TapeFlutter::Setting setting;            ///< of this block
    float flutterFrequency = 0.0f;           ///< of the last block
    float flutterStart = 0.0f, flutterStep = 0.0f;
    BiquadCoefficients driftLowPass;

    // State.
    std::array<TapeMotor, kChannels> motors;
    TapeFlutter flutter;
    float lastFlutter = 0.0f;
    BiquadState driftState;
    uint32_t randomState;
    std::array<DelayLine, kChannels> tape;
    std::array<DelayLine, kChannels> wobbleLine;  ///< the wobble that each sample was recorded with

    // Buffers of one chunk.
    Samples flutterBuffer, driftBuffer;           ///< parts of the wobble
    std::array<Samples, kChannels> wobbleBuffer;  ///< samples
};

}  // namespace Quorvan::dsp
