#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "effects/ChorusLanes.h"
#include "framework/ProcessBlock.h"
#include "modulation/LFO.h"
#include "primitives/AlignedVector.h"
#include "primitives/DelayLine.h"
#include "primitives/OnePole.h"

namespace Quorvan::dsp {

/// One voice of a chorus: an oscillator that moves the delay of one or two lines, which are read
/// through a first-order all-pass, the filters of the wet signal, and feedback into the lines.
///
/// A delay under one sample passes the input on. A channel that does not run keeps its line as it
/// is.
class ChorusVoice {
public:
    static constexpr uint32_t kChannels = 2;

    /// A block as all voices see it, one entry a sample.
    struct Course {
        uint32_t count = 0;
        uint32_t channels = kChannels;
        std::array<const float*, kChannels> in{};
        std::array<float*, kChannels> out{};  ///< the voices add to it
        const float* delay = nullptr;         ///< middle, samples
        const float* depth = nullptr;         ///< excursion to either side, samples
        const float* feedback = nullptr;      ///< taken off the line's input
        const float* gain = nullptr;          ///< of the voice in out
        const OnePole* lowPass = nullptr;     ///< null where it is off
        const OnePole* highPass = nullptr;    ///< likewise
    };

    /// lateSamples: how much later than the course says the voice is. length: of its lines.
    void Setup(float rate, uint32_t blockSize, int32_t length, int32_t lateSamples);
    void Reset(bool hard);
    /// The oscillator's step, ahead of Plan. rateRow: modulation of its rate, or null.
    void RunLfo(const ProcessBlock& block, float* rateRow);
    /// Where the lines are to be read. True if all reads lie ahead of the block: then Gather, the
    /// lanes' run and Give are the voice's work, else Run alone.
    bool Plan(const Course& course);
    void Run(const Course& course);
    /// Reads the lines into the lanes from lane on, one for each channel.
    void Gather(const Course& course, ChorusLanes& lanes, uint32_t lane);
    /// Adds what the lanes have made of it to the output, and feeds it back.
    void Give(const Course& course, ChorusLanes& lanes, uint32_t lane);

    LFO lfo{"LFO"};

private:
    /// What a channel keeps between samples.
    struct Memory {
        float lowPass = 0.0f;
        float highPass = 0.0f;
    };
    /// Where and how a channel's line is read in a block, one entry a sample.
    struct Reads {
        AlignedVector swing;                ///< -1..1, from the oscillator; then the older samples
        AlignedVector glide;                ///< coefficient of the all-pass
        AlignedVector signal;               ///< of the lane; then the line's input
        std::vector<int32_t> whole;         ///< samples back
        int32_t nearest = 0, farthest = 0;  ///< samples back
    };
    struct Tap;

    void PlanChannel(const Course& course, uint32_t channel);
    static void ReadPairs(const DelayLine& line, Reads& plan, uint32_t count);
    template <uint32_t kActive>
    void RunTaps(const Course& course);

    // Coefficients.
    float offset = 0.0f;   ///< samples
    float longest = 0.0f;  ///< that the lines can be read back, samples

    // State.
    std::array<DelayLine, kChannels> lines;
    std::array<Memory, kChannels> memories{};

    // Buffers of one block.
    std::array<Reads, kChannels> reads;
};

}  // namespace Quorvan::dsp
