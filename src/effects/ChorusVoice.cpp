#include "effects/ChorusVoice.h"

#include <algorithm>

namespace Quorvan::dsp {

/// A channel at work, held in locals over the block.
struct ChorusVoice::Tap {
    Tap(const DelayLine& line, const Memory& old)
        : data(line.data),
          size(line.size),
          write(line.writeIndex),
          allpass(line.allpassState),
          memory(old) {}

    /// The first-order all-pass between the samples whole and whole + 1 back.
    float Read(int32_t whole, float glide) {
        int32_t newer = write - whole;
        newer += newer < 0 ? size : 0;
        const int32_t older = newer == 0 ? size - 1 : newer - 1;
        allpass = glide * data[newer] + data[older] - glide * allpass;
        return allpass;
    }
    void Write(float x) {
        data[write] = x;
        write = write + 1 == size ? 0 : write + 1;
    }
    void Store(DelayLine& line, Memory& to) const {
        line.writeIndex = write;
        line.allpassState = allpass;
        to = memory;
    }

    float* data;
    int32_t size, write;
    float allpass;
    Memory memory;
};

void ChorusVoice::Setup(float rate, uint32_t blockSize, int32_t length, int32_t lateSamples) {
    lfo.Setup(rate, blockSize);
    offset = static_cast<float>(lateSamples);
    longest = static_cast<float>(length - 1);
    for (DelayLine& line : lines)
        line.Resize(length);
    for (Reads& channel : reads) {
        channel.swing.assign(blockSize, 0.0f);
        channel.glide.assign(blockSize, 0.0f);
        channel.whole.assign(blockSize, 0);
    }
}

void ChorusVoice::Reset(bool hard) {
    lfo.Reset(hard);
    for (DelayLine& line : lines)
        line.Clear();
    memories = {};
}

void ChorusVoice::RunLfo(const ProcessBlock& block, float* rateRow) {
    std::array<float*, 2> inputs{rateRow, nullptr};
    std::array<float*, kChannels> outputs{reads[0].swing.data(), reads[1].swing.data()};
    ProcessBlock inner = block;
    inner.inputs = inputs.data();
    inner.outputs = outputs.data();
    inner.numInputs = static_cast<uint32_t>(inputs.size());
    inner.numOutputs = kChannels;
    lfo.Process(inner);
}

void ChorusVoice::Run(const Course& course) {
    for (uint32_t c = 0; c < course.channels; ++c)
        Plan(course, c);
    if (course.channels == kChannels)
        RunTaps<kChannels>(course);
    else
        RunTaps<1>(course);
}

/// Ahead of the sample loop, whose recursions would hold the divisions up.
void ChorusVoice::Plan(const Course& course, uint32_t channel) {
    Reads& plan = reads[channel];
    for (uint32_t i = 0; i < course.count; ++i) {
        const float delay = plan.swing[i] * course.depth[i] + course.delay[i] + offset;
        const float held = std::min(delay, longest);
        // Below 0 this is not the next lower number, but no line is read there.
        const auto whole = static_cast<int32_t>(held);
        const float fraction = held - static_cast<float>(whole);
        plan.whole[i] = whole;
        plan.glide[i] = (1.0f - fraction) / (1.0f + fraction);
    }
}

/// The channels in step, so that their recursions overlap.
template <uint32_t kActive>
void ChorusVoice::RunTaps(const Course& course) {
    const bool lowPassOn = course.lowPass != nullptr, highPassOn = course.highPass != nullptr;
    const OnePole lowPass = lowPassOn ? *course.lowPass : OnePole{};
    const OnePole highPass = highPassOn ? *course.highPass : OnePole{};
    std::array<Tap, 2> taps{Tap(lines[0], memories[0]), Tap(lines[1], memories[1])};
    for (uint32_t i = 0; i < course.count; ++i) {
        for (uint32_t c = 0; c < kActive; ++c) {
            Tap& tap = taps[c];
            const float x = course.in[c][i];
            const int32_t whole = reads[c].whole[i];
            float y = whole > 0 ? tap.Read(whole, reads[c].glide[i]) : x;
            if (lowPassOn)
                y = lowPass.Tick(y, tap.memory.lowPass);
            if (highPassOn)
                y = highPass.Tick(y, tap.memory.highPass);
            course.out[c][i] += course.gain[i] * y;
            tap.Write(x - y * course.feedback[i]);
        }
    }
    for (uint32_t c = 0; c < kActive; ++c)
        taps[c].Store(lines[c], memories[c]);
}

}  // namespace Quorvan::dsp
