#include "effects/ChorusVoice.h"

#include <algorithm>
#include <limits>

#include "primitives/RingStretch.h"

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
        channel.signal.assign(blockSize, 0.0f);
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

bool ChorusVoice::Plan(const Course& course) {
    int32_t nearest = std::numeric_limits<int32_t>::max();
    for (uint32_t c = 0; c < course.channels; ++c) {
        PlanChannel(course, c);
        nearest = std::min(nearest, reads[c].nearest);
    }
    return nearest >= static_cast<int32_t>(std::max(course.count, 1u));
}

/// Ahead of the sample loop, whose recursions would hold the divisions up.
void ChorusVoice::PlanChannel(const Course& course, uint32_t channel) {
    const uint32_t count = course.count;
    Reads& plan = reads[channel];
    const float* const swing = plan.swing.data();
    const float* const depth = course.depth;
    const float* const middle = course.delay;
    float* const glide = plan.glide.data();
    int32_t* const whole = plan.whole.data();
    const float late = offset, most = longest;
    for (uint32_t i = 0; i < count; ++i) {
        const float delay = swing[i] * depth[i] + middle[i] + late;
        const float held = most < delay ? most : delay;
        // Below 0 this is not the next lower number, but no line is read there.
        const auto samples = static_cast<int32_t>(held);
        const float fraction = held - static_cast<float>(samples);
        whole[i] = samples;
        glide[i] = (1.0f - fraction) / (1.0f + fraction);
    }
    int32_t nearest = std::numeric_limits<int32_t>::max(), farthest = 0;
    for (uint32_t i = 0; i < count; ++i) {
        nearest = whole[i] < nearest ? whole[i] : nearest;
        farthest = whole[i] > farthest ? whole[i] : farthest;
    }
    plan.nearest = nearest;
    plan.farthest = farthest;
}

void ChorusVoice::Gather(const Course& course, ChorusLanes& lanes, uint32_t lane) {
    for (uint32_t c = 0; c < course.channels; ++c) {
        Reads& plan = reads[c];
        const uint32_t count = course.count;
        ReadPairs(lines[c], plan, count);
        float* const signal = plan.signal.data();
        const float* const older = plan.swing.data();
        const float* const glide = plan.glide.data();
        for (uint32_t i = 0; i < count; ++i)
            signal[i] = glide[i] * signal[i] + older[i];
        lanes[lane + c] = {
            signal, glide, {lines[c].allpassState, memories[c].lowPass, memories[c].highPass}};
    }
}

/// The samples whole and whole + 1 back, into signal and swing.
void ChorusVoice::ReadPairs(const DelayLine& line, Reads& plan, uint32_t count) {
    const float* const data = line.data;
    const int32_t size = line.size;
    const int32_t write = line.writeIndex;
    const int32_t* const whole = plan.whole.data();
    float* const newer = plan.signal.data();
    float* const older = plan.swing.data();
    if (write > plan.farthest) {  // no read goes round the ring's end
        for (uint32_t i = 0; i < count; ++i) {
            const float* const at = data + (write + static_cast<int32_t>(i) - whole[i]);
            newer[i] = at[0];
            older[i] = at[-1];
        }
        return;
    }
    for (uint32_t i = 0; i < count; ++i) {
        int32_t place = write + static_cast<int32_t>(i) - whole[i];
        place += place < 0 ? size : 0;
        newer[i] = data[place];
        older[i] = data[place == 0 ? size - 1 : place - 1];
    }
}

void ChorusVoice::Give(const Course& course, ChorusLanes& lanes, uint32_t lane) {
    const uint32_t count = course.count;
    for (uint32_t c = 0; c < course.channels; ++c) {
        float* const y = reads[c].signal.data();
        float* const out = course.out[c];
        const float* const in = course.in[c];
        const float* const gain = course.gain;
        const float* const feedback = course.feedback;
        for (uint32_t i = 0; i < count; ++i)
            out[i] += gain[i] * y[i];
        for (uint32_t i = 0; i < count; ++i)
            y[i] = in[i] - y[i] * feedback[i];
        WriteToRing(lines[c], y, static_cast<int32_t>(count));
        const ChorusLanes::Memory& memory = lanes[lane + c].memory;
        lines[c].allpassState = memory.allpass;
        memories[c] = {memory.lowPass, memory.highPass};
    }
}

/// Sample by sample, for lines that are read within the block.
void ChorusVoice::Run(const Course& course) {
    if (course.channels == kChannels)
        RunTaps<kChannels>(course);
    else
        RunTaps<1>(course);
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
