#include "granular/GrainRuns.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace Quorvan::dsp {

namespace {

constexpr float kCrossfadeSeconds = 0.003f;
/// Far more than a position gathers by rounding over a block.
constexpr double kRounding = 1.0e-6;
/// Far more than it gathers over all blocks that LookAhead sees ahead.
constexpr double kDrift = 1.0e-3;
/// As far as LookAhead looks, in samples.
constexpr uint32_t kSight = 1u << 20;
/// Further than any grain has been looked ahead for.
constexpr uint64_t kLeap = uint64_t{1} << 32;
constexpr double kInfinity = std::numeric_limits<double>::infinity();

}  // namespace

uint32_t GrainRuns::Span::Steps(double x, double step, uint32_t most) const {
    if (!Holds(x))
        return 0;
    if (Holds(x + step * (most - 1)))
        return most;
    const double room = step > 0.0 ? (high - x) / step : (x - low) / -step;
    auto count = static_cast<uint32_t>(std::min(room, static_cast<double>(most - 1))) + 1;
    while (!Holds(x + step * (count - 1)))
        --count;
    return count;
}

void GrainRuns::Setup(float sampleRate) {
    crossfadeSamples = static_cast<int32_t>(std::floor(sampleRate * kCrossfadeSeconds));
    capture = nullptr;
}

void GrainRuns::BeginBlock(const CaptureBuffer& tape, uint32_t frames, bool crossfadeOn,
                           bool interpolation) {
    blockEnd += GoesOn(tape, frames) && interpolation == interpolate ? frames : kLeap;
    capture = &tape;
    numFrames = frames;
    crossfade = crossfadeOn;
    interpolate = interpolation;
    loop = tape.EffectiveLength();
    headSpeed = tape.frozen ? 0.0 : 1.0;
    straight = interpolation && loop > frames && UntilHeadWraps(0, frames) == frames;
    headStart = static_cast<double>(HeadAt(0).position);
    headPass = HeadAt(0).pass;
    headEnd = tape.writePosition;
}

bool GrainRuns::GoesOn(const CaptureBuffer& tape, uint32_t frames) const {
    const double moved = tape.frozen ? 0.0 : 1.0;
    const uint32_t from = tape.frozen ? tape.writePosition : tape.writePosition - frames;
    return &tape == capture && moved == headSpeed && from == headEnd &&
           tape.EffectiveLength() == loop;
}

GrainRuns::Head GrainRuns::HeadAt(uint32_t frame) const {
    const auto end = static_cast<int64_t>(capture->writePosition);
    int64_t position = end;
    if (!capture->frozen) {
        position += static_cast<int64_t>(frame) - static_cast<int64_t>(numFrames);
        if (position < 0)
            position += loop;
    }
    // Beyond its final place the head has wrapped since, and wrote the other pass.
    return {position, position > end ? capture->activePass ^ 1u : capture->activePass};
}

/// Without branches, as chance says which of them would be taken.
bool GrainRuns::IsClear(const Grain& grain, uint32_t count) const {
    const double r = grain.readPosition;
    const double v = grain.wrappedPosition;
    if (!straight || (r != v && grain.increment == 1.0))
        return false;
    const double steps = count - 1;
    const double way = grain.increment * steps;
    const double back = std::min(way, 0.0);
    const double ahead = std::max(way, 0.0);
    const double seam = static_cast<double>(std::min(loop, grain.wrapLength)) - 1.0;
    const double lead = r - HeadAtStart(grain);
    const double turn = (grain.increment - headSpeed) * steps;
    const double nearest = lead + std::min(turn, 0.0);
    const double farthest = lead + std::max(turn, 0.0);
    const double zone = static_cast<double>(crossfadeSamples);
    const bool inside =
        bool(int(std::min(r, v) + back >= 0.0) & int(std::max(r, v) + ahead < seam));
    const bool behind = farthest < -zone;
    const bool before =
        bool(int(nearest >= 1.0) & int(farthest < static_cast<double>(loop) - zone));
    return bool(int(inside) & (int(behind) | int(before)));
}

void GrainRuns::LookAhead(Grain& grain) const {
    const uint32_t steps = grain.wasCrossfading || !interpolate ? 0 : ClearSteps(grain);
    grain.clearUntil = steps > 0 ? blockEnd + steps : 0;
}

/// Samples from the block's end on, at most kSight, in which nothing about the grain changes but
/// its positions.
uint32_t GrainRuns::ClearSteps(const Grain& grain) const {
    const double r = grain.readPosition;
    const double v = grain.wrappedPosition;
    if (grain.increment == 1.0 && (r != v || MeetsHeadOnSample(grain, headEnd)))
        return 0;
    const double zone = static_cast<double>(crossfadeSamples);
    const double lead = r - static_cast<double>(headEnd);
    const Span inside{0.0, static_cast<double>(std::min(loop, grain.wrapLength)) - 1.0};
    const Span before = Span{1.0, static_cast<double>(loop) - zone};
    const Span place = lead < 0.0 ? Span{-kInfinity, -zone} : before;
    uint32_t steps = capture->frozen ? kSight : std::min(kSight, loop - std::min(loop, headEnd));
    const auto hold = [&steps](const Span& span, double x, double step) {
        if (steps > 0)
            steps = span.Narrowed(kDrift).Steps(x, step, steps);
    };
    hold(inside, r, grain.increment);
    hold(inside, v, grain.increment);
    hold(place, lead, grain.increment - headSpeed);
    return steps;
}

GrainRuns::Run GrainRuns::Plan(const Grain& grain, uint32_t frame, uint32_t most,
                               bool onPath) const {
    const double margin = onPath ? kRounding : 0.0;
    Run run;
    run.head = HeadAt(frame);
    most = WithinLoops(grain, UntilHeadWraps(frame, most), margin);
    if (most == 0)
        return run;

    const double step = grain.increment - headSpeed;
    const double head = static_cast<double>(run.head.position);
    const double lead = grain.readPosition - head;
    run.slope = -step;
    Span span = PlaceByHead(grain, lead, run);
    if (!interpolate && !Fades(grain) && lead < 1.0)
        span = {-kInfinity, 1.0};  // what is read on the head is of the same round as behind it
    run.count = span.Narrowed(margin).Steps(lead, step, most);
    if (run.count > 0 && interpolate && grain.increment == 1.0 && (Fades(grain) || grain.swapped)) {
        // Where the second position stands on the head it is read without its fraction.
        const double second = grain.wrappedPosition - head;
        const Span side = second < 0.0 ? Span{-kInfinity, 0.0} : Span{1.0, kInfinity};
        run.count = side.Narrowed(margin).Steps(second, step, run.count);
    }
    return run;
}

/// At unit speed interpolation stops on the head, so that a grain on a whole sample repeats one or
/// not as it comes to stand a little below that sample or above it. Others sound the same on both
/// sides.
bool GrainRuns::MeetsHeadOnSample(const Grain& grain, int64_t head) const {
    constexpr double kWhole = 1.0e-4;  // rounding takes no grain that far off its sample
    // The library's rounding is a call; a half here is no matter. NOLINTNEXTLINE
    const auto nearest = static_cast<int64_t>(grain.readPosition + 0.5);
    if (std::abs(grain.readPosition - static_cast<double>(nearest)) > kWhole)
        return false;
    const double lead = grain.readPosition - static_cast<double>(head);
    const double turn = static_cast<double>(loop);
    if (!capture->frozen)  // one sample ahead, also across the seam
        return std::abs((lead < 0.0 ? lead + turn : lead) - 1.0) < 0.5;
    constexpr double kBeyond = 2.0;  // samples in which it has left the head for good
    const double way = kBeyond - lead;
    const double left = static_cast<double>(grain.length) - grain.elapsed;
    return (way < 0.0 ? way + turn : way) <= left + 2.0 * kBeyond;
}

/// Samples from frame on, at most most, that the head goes without a wrap.
uint32_t GrainRuns::UntilHeadWraps(uint32_t frame, uint32_t most) const {
    if (capture->frozen || frame + capture->writePosition >= numFrames)
        return most;
    return std::min(most, numFrames - capture->writePosition - frame);
}

/// Samples in which neither position comes within margin of the end of its own loop or crosses the
/// end of the other's.
uint32_t GrainRuns::WithinLoops(const Grain& grain, uint32_t most, double margin) const {
    if (loop <= numFrames)  // the head may pass any place twice
        return 0;
    const auto piece = [margin](double x, double own, double other) {
        const Span whole =
            x < other ? Span{0.0, std::min(own, other) - 1.0} : Span{other, own - 1.0};
        return whole.Narrowed(margin);
    };
    const double readEnd = static_cast<double>(loop);
    const double wrappedEnd = static_cast<double>(grain.wrapLength);
    const double r = grain.readPosition;
    const double v = grain.wrappedPosition;
    most = piece(r, readEnd, wrappedEnd).Steps(r, grain.increment, most);
    return most == 0 ? 0 : piece(v, wrappedEnd, readEnd).Steps(v, grain.increment, most);
}

/// What the read position's lead over the write head says of a run, and how far it holds.
GrainRuns::Span GrainRuns::PlaceByHead(const Grain& grain, double lead, Run& run) const {
    const double zone = static_cast<double>(crossfadeSamples);
    const double far = static_cast<double>(loop) - zone;  // the zone begins there across the seam
    if (lead >= 0.0 && lead < 1.0) {
        run.side = Side::On;
        run.nearHead = true;
        run.slope = 0.0;
        return {0.0, 1.0};
    }
    run.side = lead < 0.0 ? Side::Behind : Side::Ahead;
    if (!Fades(grain))
        return run.side == Side::Behind ? Span{-kInfinity, 0.0} : Span{1.0, kInfinity};
    if (run.side == Side::Ahead) {
        run.nearHead = lead >= far;
        run.distance = static_cast<double>(loop) - lead;
        return run.nearHead ? Span{std::max(far, 1.0), kInfinity} : Span{1.0, far};
    }
    run.nearHead = lead >= -zone;
    if (lead > -kTouching) {
        run.slope = 0.0;
        return {-kTouching, 0.0};
    }
    run.distance = -lead;
    return run.nearHead ? Span{-zone, -kTouching} : Span{-kInfinity, -zone};
}

}  // namespace Quorvan::dsp
