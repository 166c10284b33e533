#include "effects/PitchTaps.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "primitives/LinearReads.h"
#include "primitives/RingStretch.h"
#include "primitives/SmootherLPFPair.h"
#include "primitives/Xorshift.h"

namespace Quorvan::dsp {

namespace {

constexpr float kRingSeconds = 2.0f;
// Tap A starts in the middle of its span.
constexpr float kStartPhase = 0.49990001f;
constexpr float kStartSweep = 0.00019997358f;
/// Shift in semitones at which spray is half in.
constexpr float kSprayShift = 0.01f;

float Truncated(float x) { return static_cast<float>(static_cast<int32_t>(x)); }

/// The fractional part with the sign of x, for |x| below 2: without a conversion in the recursion.
float SignedFraction(float x) {
    if (x >= 1.0f)
        return x - 1.0f;
    return x <= -1.0f ? x + 1.0f : x;
}

/// Way of a tap, falling from 1 to -1 over the cycle.
float FallingSaw(float cycle) { return 1.0f - 2.0f * (cycle - Truncated(cycle)); }

/// Without a reference, so that loops become vector code.
float HeldToUnit(float x) {
    const float low = x < 0.0f ? 0.0f : x;
    return low > 1.0f ? 1.0f : low;
}

float UnitOf(float saw) { return HeldToUnit((saw + 1.0f) / 2.0f); }

/// Whether tap A jumps back, as 0 or 1: where its sweep turns against its direction.
uint32_t JumpsA(float sweep, float before, bool up) {
    return static_cast<uint32_t>(up ? before < sweep : before > sweep);
}

/// Where tap A passes the middle, tap B does.
uint32_t JumpsB(float sweep, float before, bool up) {
    return static_cast<uint32_t>(up ? sweep <= 0.5f && before > 0.5f
                                    : sweep >= 0.5f && before < 0.5f);
}

}  // namespace

void PitchTaps::Setup(float rate) {
    sampleRate = rate;
    ring.Resize(static_cast<int32_t>(std::ceil(kRingSeconds * rate)),
                DelayLine::Clearing::BitByBit);
    for (SmootherLPF* smoother :
         {&pitchSmoother, &spanSmoother, &compensationSmoother, &overlapSmoother}) {
        smoother->stepLength = 1;
        smoother->sampleRate = static_cast<double>(rate);
        smoother->UpdateCoefficients();
    }
}

void PitchTaps::Reset() {
    ring.Clear();
    sprayA = sprayB = 0.0f;
    phase = kStartPhase;
    lastSweep = kStartSweep;
}

void PitchTaps::Snap(float pitch) {
    TapSweep sweep;
    sweep.Fill(&pitch, 1);
    pitchSmoother.Reset(pitch);
    overlapSmoother.Reset(sweep.overlap[0]);
    spanSmoother.Reset(sweep.span[0] * sampleRate);
    compensationSmoother.Reset(sweep.span[0] * sampleRate);
    cycleStep = sweep.rate[0] / sampleRate;
    appliedPitch = pitch;
}

void PitchTaps::Advance(const Two& taps, const Spray& spray, TapWindow window,
                        const TwoCourses& courses, uint32_t count) {
    TwoMotions motions;
    if (taps[0]->IsAtRest() && taps[1]->IsAtRest()) {
        for (size_t c = 0; c < 2; ++c)
            taps[c]->Rest(motions[c], *courses[c]);
    } else {
        GlidePitch(taps, motions, count);
        GlideSweep(taps, motions, courses, count);
    }
    Turn(taps, motions, count);

    const size_t channels = taps[0] == taps[1] ? 1 : 2;
    for (size_t c = 0; c < channels; ++c) {
        const Motion& motion = motions[c];
        taps[c]->PlaceTaps(motion, spray, *courses[c], count);
        Samples position;
        for (const auto& [tap, shift] : {std::pair{&courses[c]->a, 1.0f}, {&courses[c]->b, 1.5f}}) {
            for (uint32_t i = 0; i < count; ++i) {
                const float x = motion.overlap[i];
                position[i] = HeldToUnit((1.0f - x) * FallingSaw(motion.cycle[i] + shift) + x);
            }
            FillTapGains(window, position.data(), motion.overlap.data(), tap->gain.data(), count);
        }
    }
}

bool PitchTaps::IsAtRest() const {
    return pitchSmoother.IsAtRest() && spanSmoother.IsAtRest() && overlapSmoother.IsAtRest() &&
           compensationSmoother.IsAtRest() &&
           static_cast<float>(pitchSmoother.current) == appliedPitch;
}

void PitchTaps::Rest(Motion& motion, Course& course) const {
    motion.pitch.fill(appliedPitch);
    motion.span.fill(static_cast<float>(spanSmoother.current));
    motion.overlap.fill(static_cast<float>(overlapSmoother.current));
    motion.step.fill(cycleStep);
    course.span.fill(static_cast<float>(compensationSmoother.current));
    course.spanMoves.fill(false);
}

/// The pitch, and what follows from it at once.
void PitchTaps::GlidePitch(const Two& taps, TwoMotions& motions, uint32_t count) {
    SmootherLPFPair pitch(taps[0]->pitchSmoother, taps[1]->pitchSmoother);
    for (uint32_t i = 0; i < count; ++i) {
        pitch.Tick();
        motions[0].pitch[i] = pitch.Value(0);
        motions[1].pitch[i] = pitch.Value(1);
    }
    pitch.Store(taps[0]->pitchSmoother, taps[1]->pitchSmoother);
    for (size_t c = 0; c < 2; ++c) {
        Motion& motion = motions[c];
        const float rate = taps[c]->sampleRate;
        // Without detuning both channels have one shift.
        const float* const shifts = motion.pitch.data();
        if (c > 0 && std::equal(shifts, shifts + count, motions[0].pitch.data())) {
            motion.goal = motions[0].goal;
            motion.step = motions[0].step;
            taps[c]->appliedPitch = taps[0]->appliedPitch;
            taps[c]->cycleStep = taps[0]->cycleStep;
            continue;
        }
        motion.goal.Fill(motion.pitch.data(), count);
        for (uint32_t i = 0; i < count; ++i) {
            motion.step[i] = motion.goal.rate[i] / rate;
            motion.goal.span[i] *= rate;
        }
        taps[c]->appliedPitch = motion.pitch[count - 1];
        taps[c]->cycleStep = motion.step[count - 1];
    }
}

/// What glides behind the pitch.
void PitchTaps::GlideSweep(const Two& taps, TwoMotions& motions, const TwoCourses& courses,
                           uint32_t count) {
    SmootherLPFPair overlap(taps[0]->overlapSmoother, taps[1]->overlapSmoother);
    SmootherLPFPair left(taps[0]->spanSmoother, taps[0]->compensationSmoother);
    SmootherLPFPair right(taps[1]->spanSmoother, taps[1]->compensationSmoother);
    const auto glide = [](SmootherLPFPair& span, Motion& motion, Course& course, uint32_t i) {
        span.SetTargets(motion.goal.span[i], motion.goal.span[i]);
        span.Tick();
        motion.span[i] = span.Value(0);
        course.span[i] = span.Value(1);
        course.spanMoves[i] = !span.IsAtRest(1);
    };
    for (uint32_t i = 0; i < count; ++i) {
        overlap.SetTargets(motions[0].goal.overlap[i], motions[1].goal.overlap[i]);
        overlap.Tick();
        motions[0].overlap[i] = overlap.Value(0);
        motions[1].overlap[i] = overlap.Value(1);
        glide(left, motions[0], *courses[0], i);
        glide(right, motions[1], *courses[1], i);
    }
    overlap.Store(taps[0]->overlapSmoother, taps[1]->overlapSmoother);
    left.Store(taps[0]->spanSmoother, taps[0]->compensationSmoother);
    right.Store(taps[1]->spanSmoother, taps[1]->compensationSmoother);
}

/// The phases. Chunks in which none comes to a whole cycle are the most by far, and are done with
/// sums alone.
void PitchTaps::Turn(const Two& taps, TwoMotions& motions, uint32_t count) {
    for (size_t c = 0; c < 2; ++c) {
        Motion& motion = motions[c];
        float sum = taps[c]->phase;
        for (uint32_t i = 0; i < count; ++i) {
            sum = motion.step[i] + sum;
            motion.cycle[i] = sum;
        }
        uint32_t wholes = 0;
        for (uint32_t i = 0; i < count; ++i)
            wholes |= std::abs(motion.cycle[i]) >= 1.0f ? 1 : 0;
        sum = taps[c]->phase;
        for (uint32_t i = 0; wholes != 0 && i < count; ++i) {
            sum = SignedFraction(motion.step[i] + sum);
            motion.cycle[i] = sum;
        }
        for (uint32_t i = 0; i < count; ++i) {
            motion.sweepA[i] = UnitOf(FallingSaw(motion.cycle[i] + 1.0f));
            motion.sweepB[i] = UnitOf(FallingSaw(motion.cycle[i] + 1.5f));
        }
    }
    for (size_t c = 0; c < 2; ++c)
        taps[c]->phase = motions[c].cycle[count - 1];
}

/// Delays of the taps.
void PitchTaps::PlaceTaps(const Motion& motion, const Spray& spray, Course& course,
                          uint32_t count) {
    Samples before;
    before[0] = lastSweep;
    std::copy_n(motion.sweepA.begin(), count - 1, before.begin() + 1);
    uint32_t jumps = 0;
    for (uint32_t i = 0; i < count; ++i) {
        const float sweep = motion.sweepA[i];
        const bool up = motion.pitch[i] >= 0.0f;
        jumps |= JumpsA(sweep, before[i], up) | JumpsB(sweep, before[i], up);
    }
    if (jumps != 0)
        DrawDelays(motion, spray, course, count);
    else
        for (uint32_t i = 0; i < count; ++i) {
            course.a.delay[i] = motion.span[i] * motion.sweepA[i] + sprayA + 1.0f;
            course.b.delay[i] = motion.span[i] * motion.sweepB[i] + sprayB + 1.0f;
        }
    lastSweep = motion.sweepA[count - 1];
}

/// Delays of a chunk in which a tap jumps back.
void PitchTaps::DrawDelays(const Motion& motion, const Spray& spray, Course& course,
                           uint32_t count) {
    float before = lastSweep;
    for (uint32_t i = 0; i < count; ++i) {
        const float sweep = motion.sweepA[i];
        const bool up = motion.pitch[i] >= 0.0f;
        const float shift = std::abs(motion.pitch[i]);
        if (JumpsA(sweep, before, up) != 0)
            sprayA = spray.DrawA(i) * spray.samples * shift / (shift + kSprayShift);
        if (JumpsB(sweep, before, up) != 0)
            sprayB = spray.DrawB(i) * spray.samples * shift / (shift + kSprayShift);
        before = sweep;
        course.a.delay[i] = motion.span[i] * sweep + sprayA + 1.0f;
        course.b.delay[i] = motion.span[i] * motion.sweepB[i] + sprayB + 1.0f;
    }
}

float PitchTaps::Spray::Draw(uint32_t number) const {
    uint32_t moved = state;
    for (uint32_t step = 1; step < number; ++step)
        prims::XorshiftStep(moved);
    return prims::XorshiftUniform(moved);
}

void PitchTaps::Push(const float* samples, uint32_t count) {
    WriteToRing(ring, samples, static_cast<int32_t>(count));
}

void PitchTaps::Read(const Course& course, float* out, uint32_t count) const {
    Samples a, b;
    ReadTap(course.a, a.data(), count);
    ReadTap(course.b, b.data(), count);
    for (uint32_t i = 0; i < count; ++i)
        out[i] = a[i] * course.a.gain[i] + b[i] * course.b.gain[i];
}

/// Linear reads, each as it was when its sample was next to be pushed. Delays from 1 on, and held
/// so short that what has been pushed since lies outside.
void PitchTaps::ReadTap(const Tap& tap, float* out, uint32_t count) const {
    const auto longest = static_cast<float>(ring.size - static_cast<int32_t>(kChunk) - 2);
    const int32_t start = ring.writeIndex - static_cast<int32_t>(count);
    std::array<int32_t, kChunk> places;
    Samples fractions;
    for (uint32_t i = 0; i < count; ++i) {
        const float delay = tap.delay[i] < longest ? tap.delay[i] : longest;
        const auto whole = static_cast<int32_t>(delay);
        fractions[i] = delay - static_cast<float>(whole);
        places[i] = start + static_cast<int32_t>(i) - whole;
    }
    LinearReads(ring.data, ring.size).Read(places.data(), fractions.data(), count, out);
}

}  // namespace Quorvan::dsp
