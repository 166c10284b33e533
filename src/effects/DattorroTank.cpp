#include "effects/DattorroTank.h"

#include <algorithm>

#include "primitives/RingStretch.h"

namespace Quorvan::dsp {

namespace {

using Lengths = TankLengths;

constexpr int32_t kSpareSamples = 10;  // of each ring
constexpr uint32_t kDiffusers = 4;     // ahead of the branches

/// Rings that taps read: the four lines, then the all-passes at the branches' ends.
enum Source : uint8_t { kLine0, kLine1, kLine2, kLine3, kAllpass5, kAllpass7 };

struct Tap {
    Source source;
    float sign;
};

constexpr std::array<std::array<Tap, Lengths::kTaps>, DattorroTank::kSides> kTapTable = {
    {{{{kLine0, 1.0f},
       {kLine0, 1.0f},
       {kAllpass5, -1.0f},
       {kLine1, 1.0f},
       {kLine2, -1.0f},
       {kAllpass7, -1.0f},
       {kLine3, -1.0f}}},
     {{{kLine2, 1.0f},
       {kLine2, 1.0f},
       {kAllpass7, -1.0f},
       {kLine3, 1.0f},
       {kLine0, -1.0f},
       {kAllpass5, -1.0f},
       {kLine1, -1.0f}}}}};

int32_t Whole(float samples) { return static_cast<int32_t>(samples); }

/// All-pass over a chunk whose delayed samples are known; signal is input and output.
void Diffuse(AllpassDelayLine& allpass, const float* delayed, float* signal, uint32_t count) {
    const float gain = allpass.gain;
    TankChunk stored;
    for (uint32_t n = 0; n < count; ++n) {
        stored[n] = signal[n] - delayed[n] * gain;
        signal[n] = stored[n] * gain + delayed[n];
    }
    WriteToRing(allpass, stored.data(), static_cast<int32_t>(count));
}

}  // namespace

DattorroTank::Course DattorroTank::Course::From(uint32_t frame) const {
    Course later = *this;
    later.input += frame;
    later.decay += frame;
    for (uint32_t side = 0; side < kSides; ++side) {
        later.modulation[side] += frame;
        later.out[side] += frame;
    }
    return later;
}

void DattorroTank::Setup(float rate, float maxSize, float reach) {
    ratio = rate * Lengths::kPerReferenceRate;
    longestReach = rate * reach;
    for (uint32_t i = 0; i < Lengths::kAllpasses; ++i) {
        const auto longest = static_cast<float>(Whole(maxSize * ratio * Lengths::kBase[i]));
        const bool modulated = i == 4 || i == 6;
        allpasses[i].Resize(
            Whole(longest * maxSize) + kSpareSamples + (modulated ? 2 * Whole(longestReach) : 0),
            DelayLine::Clearing::BitByBit);
    }
    for (uint32_t j = 0; j < Lengths::kLines; ++j) {
        const float base = Lengths::kBase[Lengths::kFirstLine + j];
        const auto plain = static_cast<float>(Whole(base * ratio));
        lines[j].Resize(Whole(plain * maxSize) + kSpareSamples, DelayLine::Clearing::BitByBit);
    }
}

void DattorroTank::Clear() {
    damped.fill(0.0f);
    for (AllpassDelayLine& allpass : allpasses)
        allpass.Clear();
    for (DelayLine& line : lines)
        line.Clear();
}

void DattorroTank::Wipe() {
    for (AllpassDelayLine& allpass : allpasses)
        allpass.Wipe();
    for (DelayLine& line : lines)
        line.Wipe();
}

void DattorroTank::UpdateLengths(float size) {
    restScale = size * ratio;
    lengths.Update(restScale);
    for (uint32_t i = 0; i < Lengths::kAllpasses; ++i)
        allpasses[i].baseDelay = lengths.whole[i];
}

void DattorroTank::Run(const Course& course, uint32_t count) {
    const uint32_t chunk = LongestChunk(restScale);
    for (uint32_t from = 0; from < count; from += chunk)
        RunChunk(RestingReads(lengths), course.From(from), std::min(chunk, count - from));
}

void DattorroTank::RunGliding(const Course& course, const float* sizes, uint32_t count) {
    TankChunk scale;
    for (uint32_t from = 0; from < count;) {
        const float smallest = std::min(sizes[from], sizes[count - 1]);
        const uint32_t chunk = std::min(LongestChunk(smallest * ratio), count - from);
        for (uint32_t n = 0; n < chunk; ++n)
            scale[n] = sizes[from + n] * ratio;
        RunChunk(GlidingReads(scale.data()), course.From(from), chunk);
        from += chunk;
    }
}

/// So many frames that nothing read in them has been written in them. The shortest diffuser and the
/// shorter modulated all-pass decide it, the latter where reaches are long. Rings are longer than
/// their taps by more than that.
uint32_t DattorroTank::LongestChunk(float scale) const {
    const float shortest =
        std::min(Lengths::kBase[0] * scale, Lengths::kBase[6] * scale - longestReach - 2.0f);
    return std::clamp(static_cast<uint32_t>(std::max(shortest, 1.0f)), 1u, kTankChunk);
}

template <class Reads>
void DattorroTank::RunChunk(const Reads& reads, const Course& course, uint32_t count) {
    std::copy_n(course.input, count, diffused.data());
    for (uint32_t i = 0; i < kDiffusers; ++i) {
        reads.Read(allpasses[i], allpasses[i].writeIndex, i, count, delayed.data());
        Diffuse(allpasses[i], delayed.data(), diffused.data(), count);
    }
    RunBranches(reads, course, count);
    ReadOutput(reads, course, count);
}

/// A frame's second branch takes its feedback behind the frame's write to the first branch's end,
/// the first branch ahead of its source's write: the one is two samples shorter than its length,
/// the other one.
template <class Reads>
void DattorroTank::RunBranches(const Reads& reads, const Course& course, uint32_t count) {
    const auto frames = static_cast<int32_t>(count);
    reads.Read(lines[3], lines[3].writeIndex + 1, Lengths::kFirstLine + 3, count, branch[0].data());
    reads.Read(lines[1], lines[1].writeIndex + 2, Lengths::kFirstLine + 1, count, branch[1].data());
    for (uint32_t b = 0; b < kSides; ++b) {
        float* const signal = branch[b].data();
        for (uint32_t n = 0; n < count; ++n)
            signal[n] = signal[n] * course.decay[n] + diffused[n];
        const uint32_t i = 4 + 2 * b;
        reads.ReadModulated(allpasses[i], i, course.modulation[b], count, delayed.data());
        Diffuse(allpasses[i], delayed.data(), signal, count);

        DelayLine& line = lines[2 * b];
        reads.Read(line, line.writeIndex, Lengths::kFirstLine + 2 * b, count, delayed.data());
        WriteToRing(line, signal, frames);
        std::copy_n(delayed.data(), count, signal);
    }
    Damp(course.damp, count);
    for (uint32_t b = 0; b < kSides; ++b) {
        float* const signal = branch[b].data();
        const uint32_t i = 5 + 2 * b;
        reads.Read(allpasses[i], allpasses[i].writeIndex, i, count, delayed.data());
        Diffuse(allpasses[i], delayed.data(), signal, count);
        WriteToRing(lines[2 * b + 1], signal, frames);
    }
}

/// Both low-passes in one loop, since each waits for itself.
void DattorroTank::Damp(float damp, uint32_t count) {
    const float pass = 1.0f - damp;
    float first = damped[0], second = damped[1];
    for (uint32_t n = 0; n < count; ++n) {
        first = pass * branch[0][n] + damp * first;
        second = pass * branch[1][n] + damp * second;
        branch[0][n] = first;
        branch[1][n] = second;
    }
    damped = {first, second};
}

template <class Reads>
void DattorroTank::ReadOutput(const Reads& reads, const Course& course, uint32_t count) const {
    const std::array<const DelayLine*, 6> sources = {&lines[0], &lines[1],     &lines[2],
                                                     &lines[3], &allpasses[5], &allpasses[7]};
    TankChunk tapped;
    for (uint32_t side = 0; side < kSides; ++side) {
        float* const out = course.out[side];
        std::fill_n(out, count, 0.0f);
        for (uint32_t t = 0; t < Lengths::kTaps; ++t) {
            const Tap& tap = kTapTable[side][t];
            const DelayLine& ring = *sources[tap.source];
            // The chunk has been written; its first frame read one sample behind its own write.
            const int32_t start = ring.writeIndex - static_cast<int32_t>(count) + 1;
            const uint32_t place = Lengths::kFirstTap + side * Lengths::kTaps + t;
            reads.Read(ring, start, place, count, tapped.data());
            for (uint32_t n = 0; n < count; ++n)
                out[n] += tap.sign * tapped[n];
        }
    }
}

}  // namespace Quorvan::dsp
