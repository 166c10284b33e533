#pragma once

#include <array>
#include <cstdint>

#include "primitives/AlignedVector.h"
#include "primitives/RealFft.h"

namespace Quorvan::dsp {

/// Finds onsets in the signal that goes onto the tape, once a block.
///
/// The detection function is the high-frequency content of the last 11.6 ms, squared and set
/// against the energy; an onset is a frame that stands out above the mean and the median of 23
/// frames, the next one among them. Nothing is found below -50 dB, nor within 50 blocks of an
/// onset.
///
/// A block runs BeginBlock, PushSample for each recorded sample, EndBlock. Delay: one block.
class TransientDetector {
public:
    /// blockSize is the distance of two frames; all memory is taken here.
    void Setup(float sampleRate, uint32_t blockSize);
    void Reset();

    /// Makes room for a block; writePosition is where its first sample will be recorded.
    void BeginBlock(int32_t writePosition);
    /// Takes the recorded mono sample n of the block.
    void PushSample(uint32_t n, float sample) {
        // Where a block is longer than a frame, its head is passed over: the place is below 0 and
        // wraps to above the frame.
        const uint32_t place = n + fillOffset - skipped;
        if (place < frameSize)
            frame[place] = sample;
        FollowLevel(sample * sample);
    }
    /// Looks for an onset. sensitivity 0..1 takes up to 0.38 off the threshold.
    bool EndBlock(float sensitivity);

    /// Where the present block began to be recorded: the place of an onset found in it.
    int32_t MarkerPosition() const { return blockStartPosition; }
    uint32_t FrameSize() const { return frameSize; }

private:
    static constexpr uint32_t kHistory = 23;
    /// Square of the level above which the gate opens, 10^-2.5: comparing squares saves a root and
    /// a logarithm for each sample.
    static constexpr float kGateLevelSquared = 9.999999e-06f;

    /// At most one of the two coefficients acts, since no attack step overshoots. A sample that is
    /// no number leaves the level alone.
    void FollowLevel(float e) {
        const float moved = (e - levelEnvelope) * (levelEnvelope < e ? attack : release);
        levelEnvelope += e == e ? moved : 0.0f;
        levelGate = levelEnvelope > kGateLevelSquared ? 1.0f : levelGate;
    }
    float DetectionValue();
    float Smooth(float value);
    float Threshold(float newest, float sensitivity);
    void AdvanceHold();

    uint32_t frameSize = 0;   ///< N, a power of two near 11.6 ms
    uint32_t hopSize = 0;     ///< samples by which the frame moves on with each block
    uint32_t fillOffset = 0;  ///< N - hopSize: where a block's samples go
    uint32_t skipped = 0;     ///< first samples of a block that don't fit the frame; 0 as a rule

    // Coefficients.
    RealFft fft;
    AlignedVector window;
    float b0 = 0.0f, b1 = 0.0f, a1 = 0.0f;  ///< low-pass at 15 Hz on the detection values
    float attack = 0.0f, release = 0.0f;    ///< of the level, 1 ms and 20 ms

    // State.
    AlignedVector frame;                        ///< the last N recorded samples
    AlignedVector windowed;                     ///< scratch
    AlignedVector spectrum;                     ///< interleaved complex bins 0..N/2
    std::array<float, kHistory> history{};      ///< smoothed detection values, oldest first
    std::array<float, kHistory> sorted{};       ///< scratch
    float lastInput = 0.0f, lastOutput = 0.0f;  ///< of the low-pass
    float previousValue = 0.0f;                 ///< newest smoothed detection value
    float thresholded = 0.0f;                   ///< above 0 at a candidate
    float levelEnvelope = 0.0f;                 ///< squared level
    float levelGate = 0.0f;                     ///< 1 where this block has been above -50 dB
    int32_t previousGate = 0;                   ///< the same of the block before
    int32_t holdCount = 0;                      ///< blocks since the last onset
    bool holding = false;
    int32_t blockStartPosition = 0;
};

}  // namespace Quorvan::dsp
