#include "effects/PitchTaps.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "effects/TapSweep.h"

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

float UnitOf(float saw) { return std::clamp((saw + 1.0f) / 2.0f, 0.0f, 1.0f); }

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
    pitchSmoother.Reset(pitch);
    ApplyPitch(pitch, [](SmootherLPF& smoother, float value) { smoother.Reset(value); });
}

template <class Apply>
void PitchTaps::ApplyPitch(float pitch, Apply apply) {
    const TapSweep sweep(pitch);
    apply(overlapSmoother, sweep.overlap);
    apply(spanSmoother, sweep.span * sampleRate);
    apply(compensationSmoother, sweep.span * sampleRate);
    cycleStep = sweep.rate / sampleRate;
    appliedPitch = pitch;
}

void PitchTaps::Advance(const Spray& spray, TapWindow window, Course& course, uint32_t count) {
    Motion motion;
    Glide(motion, course, count);
    Sweep(motion, count);
    PlaceTaps(motion, spray, course, count);

    std::array<float, kChunk> position;
    for (const auto& [tap, shift] : {std::pair{&course.a, 1.0f}, {&course.b, 1.5f}}) {
        for (uint32_t i = 0; i < count; ++i) {
            const float x = motion.overlap[i];
            position[i] =
                std::clamp((1.0f - x) * FallingSaw(motion.cycle[i] + shift) + x, 0.0f, 1.0f);
        }
        FillTapGains(window, position.data(), motion.overlap.data(), tap->gain.data(), count);
    }
}

bool PitchTaps::IsAtRest() const {
    return pitchSmoother.IsAtRest() && spanSmoother.IsAtRest() && overlapSmoother.IsAtRest() &&
           compensationSmoother.IsAtRest();
}

/// Pitch and all that follows it. A new pitch is worked out only where the smoothed one has moved.
void PitchTaps::Glide(Motion& motion, Course& course, uint32_t count) {
    const auto glide = [](SmootherLPF& smoother, float value) { smoother.SetTarget(value); };
    if (IsAtRest() && static_cast<float>(pitchSmoother.current) == appliedPitch) {
        motion.pitch.fill(appliedPitch);
        motion.span.fill(static_cast<float>(spanSmoother.current));
        motion.overlap.fill(static_cast<float>(overlapSmoother.current));
        motion.step.fill(cycleStep);
        course.span.fill(static_cast<float>(compensationSmoother.current));
        course.spanMoves.fill(false);
        return;
    }
    for (uint32_t i = 0; i < count; ++i) {
        const float pitch = pitchSmoother.Tick();
        if (pitch != appliedPitch)
            ApplyPitch(pitch, glide);
        motion.pitch[i] = pitch;
        motion.step[i] = cycleStep;
        motion.span[i] = spanSmoother.Tick();
        motion.overlap[i] = overlapSmoother.Tick();
        course.span[i] = compensationSmoother.Tick();
        course.spanMoves[i] = !compensationSmoother.IsAtRest();
    }
}

void PitchTaps::Sweep(Motion& motion, uint32_t count) {
    for (uint32_t i = 0; i < count; ++i) {
        phase = SignedFraction(motion.step[i] + phase);
        motion.cycle[i] = phase;
    }
    for (uint32_t i = 0; i < count; ++i) {
        motion.sweepA[i] = UnitOf(FallingSaw(motion.cycle[i] + 1.0f));
        motion.sweepB[i] = UnitOf(FallingSaw(motion.cycle[i] + 1.5f));
    }
}

/// Delays of the taps. A tap jumps back where tap A's sweep turns against its direction, and where
/// it passes the middle, which is where tap B's does.
void PitchTaps::PlaceTaps(const Motion& motion, const Spray& spray, Course& course,
                          uint32_t count) {
    for (uint32_t i = 0; i < count; ++i) {
        const float sweep = motion.sweepA[i];
        const bool up = motion.pitch[i] >= 0.0f;
        const bool jumpsA = up ? lastSweep < sweep : lastSweep > sweep;
        const bool jumpsB =
            up ? sweep <= 0.5f && lastSweep > 0.5f : sweep >= 0.5f && lastSweep < 0.5f;
        const float shift = std::abs(motion.pitch[i]);
        if (jumpsA)
            sprayA = spray.a[i] * spray.samples * shift / (shift + kSprayShift);
        if (jumpsB)
            sprayB = spray.b[i] * spray.samples * shift / (shift + kSprayShift);
        lastSweep = sweep;
        course.a.delay[i] = motion.span[i] * sweep + sprayA + 1.0f;
        course.b.delay[i] = motion.span[i] * motion.sweepB[i] + sprayB + 1.0f;
    }
}

void PitchTaps::Push(const float* samples, uint32_t count) {
    ring.Wipe();
    for (uint32_t i = 0; i < count; ++i)
        ring.Write(samples[i]);
}

void PitchTaps::Read(const Course& course, float* out, uint32_t count) const {
    for (uint32_t i = 0; i < count; ++i)
        out[i] = ReadTap(course.a, i, count) * course.a.gain[i] +
                 ReadTap(course.b, i, count) * course.b.gain[i];
}

/// Linear read as it was when sample was next to be pushed. Delays from 1 on, and held so short
/// that what has been pushed since lies outside.
float PitchTaps::ReadTap(const Tap& tap, uint32_t sample, uint32_t count) const {
    const auto longest = static_cast<float>(ring.size - static_cast<int32_t>(kChunk) - 2);
    const float delay = std::min(tap.delay[sample], longest);
    const auto whole = static_cast<int32_t>(delay);
    const float fraction = delay - static_cast<float>(whole);
    int32_t newer = ring.writeIndex - static_cast<int32_t>(count - sample) - whole;
    if (newer < 0)
        newer += ring.size;
    const float from = ring.data[newer];
    const float to = ring.data[newer == 0 ? ring.size - 1 : newer - 1];
    return (to - from) * fraction + from;
}

}  // namespace Quorvan::dsp
