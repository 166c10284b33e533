#include "granular/GrainRenderer.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace Quorvan::dsp {

namespace {

constexpr float kReleasePerSecond = 249.99998f;  // 4 ms from full level to silence
constexpr float kAttackSeconds = 0.0005f;
constexpr float kCrossfadeSeconds = 0.003f;
/// Runs shorter than this cost more to set up than the plain steps do.
constexpr uint32_t kShortestRun = 4;
/// Kernels may write whole vectors past their count.
constexpr uint32_t kVectorSlack = 16;

double WrapPosition(double x, double wrap) {
    if (x <= 0.0)
        x += wrap;
    if (x >= wrap || x < 0.0) {
        const double turns = x / wrap;
        x = (turns - std::floor(turns)) * wrap;
    }
    return x;
}

/// Whole steps of size > 0 that fit into distance, both in samples.
uint32_t StepsWithin(double distance, double size, uint32_t most) {
    if (!(size > 0.0))
        return most;
    const double steps = distance / size;
    return steps < static_cast<double>(most) ? static_cast<uint32_t>(std::max(steps, 0.0)) : most;
}

}  // namespace

void GrainRenderer::Setup(float sampleRate, uint32_t blockSize) {
    releaseStep = kReleasePerSecond / sampleRate;
    attackSamples = sampleRate * kAttackSeconds;
    crossfadeSamples = static_cast<int32_t>(std::floor(sampleRate * kCrossfadeSeconds));
    inverseCrossfade = 1.0f / static_cast<float>(crossfadeSamples);
    const uint32_t stride = (blockSize + 2 * kVectorSlack - 1) / kVectorSlack * kVectorSlack;
    scratch.assign(size_t{3} * stride, 0.0f);
    envelope = scratch.data();
    samples = envelope + stride;
    second = samples + stride;
}

void GrainRenderer::Render(GrainPool& pool, const CaptureBuffer& tape, const Block& block,
                           float* outLeft, float* outRight, std::vector<uint16_t>& ended) {
    capture = &tape;
    now = block;
    loop = tape.EffectiveLength();
    for (uint16_t slot = pool.First(); slot < pool.Capacity(); slot = pool.Next(slot))
        if (RenderGrain(pool[slot], outLeft, outRight))
            ended.push_back(slot);
}

bool GrainRenderer::RenderGrain(Grain& grain, float* outLeft, float* outRight) {
    const uint32_t start = grain.startFrame;
    const uint32_t wanted = now.numFrames - start;
    const uint32_t count = FillEnvelope(grain, wanted);
    const bool finished = grain.released || count < wanted ||
                          grain.elapsed + count * std::abs(grain.increment) >= grain.length;
    // A grain sounds on one side only, so the other side's tape need not be read.
    const bool rightSide = grain.outGainRight != 0.0f;
    ReadTape(grain, rightSide ? capture->right : capture->left, count);
    if (rightSide)
        kernels->mix(envelope, samples, grain.outGainRight * grain.panGainRight, count,
                     outRight + start);
    else
        kernels->mix(envelope, samples, grain.outGainLeft * grain.panGainLeft, count,
                     outLeft + start);
    grain.startFrame = 0;
    return finished;
}

/// Fills the envelope up to the grain's end or count samples, and answers how many there are.
uint32_t GrainRenderer::FillEnvelope(Grain& grain, uint32_t count) {
    count = FramesToEnd(grain, count);
    if (grain.releasing)
        return FillRelease(grain, count);
    const GrainKernels::Envelope shape{grain.shape, grain.shapeA, grain.shapeB, grain.length,
                                       attackSamples};
    kernels->envelope(shape, grain.elapsed, std::abs(grain.increment), count, envelope);
    grain.envelope = envelope[count - 1];
    return count;
}

/// Fades from where the envelope stands to 0; some shapes stand below 0.
uint32_t GrainRenderer::FillRelease(Grain& grain, uint32_t count) {
    float level = grain.envelope;
    uint32_t i = 0;
    while (i < count && !grain.released) {
        if (level > 0.0f) {
            grain.released = level < releaseStep;
            level = grain.released ? 0.0f : level - releaseStep;
        } else {
            grain.released = level > -releaseStep;
            level = grain.released ? 0.0f : level + releaseStep;
        }
        envelope[i++] = level;
    }
    grain.envelope = level;
    return i;
}

/// Samples up to and with the one at which the grain has read its length, at most count. Increments
/// come from single precision, so that sums of them are exact and the order doesn't matter.
uint32_t GrainRenderer::FramesToEnd(const Grain& grain, uint32_t count) const {
    const double step = std::abs(grain.increment);
    const double length = static_cast<double>(grain.length);
    const double steps = std::ceil((length - grain.elapsed) / step);
    uint32_t frames = steps >= static_cast<double>(count)
                          ? count
                          : static_cast<uint32_t>(std::max(steps, 1.0));
    while (frames < count && grain.elapsed + frames * step < length)
        ++frames;
    while (frames > 1 && grain.elapsed + (frames - 1) * step >= length)
        --frames;
    return frames;
}

void GrainRenderer::ReadTape(Grain& grain, const std::vector<float>* channel, uint32_t count) {
    uint32_t i = 0;
    while (i < count) {
        const uint32_t frame = grain.startFrame + i;
        const Run run = PlanRun(grain, frame, count - i);
        if (run.count >= kShortestRun) {
            PlayRun(grain, channel, run, samples + i);
            i += run.count;
            continue;
        }
        if (const uint32_t onHead = PlayOnHead(grain, channel, frame, count - i, samples + i)) {
            i += onHead;
            continue;
        }
        samples[i++] = PlaySample(grain, channel, frame);
    }
}

GrainRenderer::Head GrainRenderer::HeadAt(uint32_t frame) const {
    const auto end = static_cast<int64_t>(capture->writePosition);
    int64_t position = end;
    if (!capture->frozen) {
        position += static_cast<int64_t>(frame) - static_cast<int64_t>(now.numFrames);
        if (position < 0)
            position += loop;
    }
    // Beyond its final place the head has wrapped since, and wrote the other pass.
    const uint32_t pass = position > end ? capture->activePass ^ 1u : capture->activePass;
    return {static_cast<double>(position), pass};
}

/// Steps that the read position, and where it is in use the wrapped one, can go on without a wrap.
uint32_t GrainRenderer::StraightCount(const Grain& grain, uint32_t most) const {
    const double r = grain.readPosition;
    const double step = grain.increment;
    const double edge = static_cast<double>(loop) - 1.0;
    const double wrapEdge = static_cast<double>(grain.wrapLength) - 1.0;
    const bool crossfading = now.crossfade && (grain.crossing || capture->frozen);
    const bool wrapped = ReadsWrapped(grain) || crossfading;
    // The wrapped read set changes its pass where either position leaves the other's loop.
    const double readEdge = wrapped ? std::min(edge, wrapEdge) : edge;
    if (r < 0.0 || r >= readEdge)
        return 0;
    uint32_t count =
        step > 0.0 ? StepsWithin(readEdge - r, step, most) : StepsWithin(r, -step, most);
    if (wrapped) {
        const double v = grain.wrappedPosition;
        const double vEdge = std::min(edge, wrapEdge);
        if (v < 0.0 || v >= vEdge)
            return 0;
        count = std::min(count, step > 0.0 ? StepsWithin(vEdge - v, step, most)
                                           : StepsWithin(v, -step, most));
    }
    return count;
}

GrainRenderer::Run GrainRenderer::PlanRun(const Grain& grain, uint32_t frame,
                                          uint32_t most) const {
    Run run;
    const Head head = HeadAt(frame);
    const double zone = static_cast<double>(crossfadeSamples);
    const double wrap = static_cast<double>(loop);
    const double d = head.position - grain.readPosition;
    run.slope = (capture->frozen ? 0.0 : 1.0) - grain.increment;
    if (!capture->frozen && head.position > static_cast<double>(capture->writePosition))
        most = std::min(most, now.numFrames - capture->writePosition - frame);

    // On one side of the head: strictly behind it, or at least one sample ahead.
    uint32_t count = StraightCount(grain, most);
    if (d > 0.0) {
        run.distance = d;
        run.pass = head.pass;
        count = std::min(count, StepsWithin(d, -run.slope, most));
    } else if (d <= -1.0) {
        run.distance = d + wrap;
        run.pass = head.pass ^ 1u;
        count = std::min(count, StepsWithin(-1.0 - d, run.slope, most));
    } else {
        return run;
    }
    if (now.crossfade && (grain.crossing || capture->frozen)) {
        run.near = run.distance <= zone;
        count = std::min(count, run.near ? StepsWithin(zone - run.distance, run.slope, most)
                                         : StepsWithin(run.distance - zone, -run.slope, most));
    }
    run.count = count;
    return run;
}

void GrainRenderer::TrackCrossfade(Grain& grain, bool nearHead) const {
    const bool active = nearHead && grain.crossing && now.crossfade;
    if (grain.wasCrossfading && !active)
        grain.swapped = true;
    grain.wasCrossfading = active;
}

void GrainRenderer::PlayRun(Grain& grain, const std::vector<float>* channel, const Run& run,
                            float* out) {
    const bool wasSwapped = grain.swapped;
    TrackCrossfade(grain, run.near);
    if (grain.swapped && !wasSwapped && StraightCount(grain, run.count) < run.count) {
        // The wrapped position has come into use at a place where it cannot run straight: the
        // plain step takes over.
        for (uint32_t i = 0; i < run.count; ++i)
            out[i] = PlaySample(grain, channel,
                                static_cast<uint32_t>(out + i - samples) + grain.startFrame);
        return;
    }
    const auto read = now.interpolate ? kernels->interpolate : kernels->pick;
    const double first = ReadsWrapped(grain) ? grain.wrappedPosition : grain.readPosition;
    read(channel[run.pass].data(), first, grain.increment, run.count, out);
    if (run.near) {
        // The zone's far side: the old round at the place that doesn't meet the head.
        read(channel[run.pass ^ 1u].data(), grain.wrappedPosition, grain.increment, run.count,
             second);
        kernels->crossfade(out, second, static_cast<float>(run.distance) * inverseCrossfade,
                           static_cast<float>(run.slope) * inverseCrossfade, run.count);
    }
    Advance(grain, run.count);
}

/// A grain at unit speed that sits on the write head goes on sitting there: its samples are the
/// ones just recorded. Answers how many were played.
uint32_t GrainRenderer::PlayOnHead(Grain& grain, const std::vector<float>* channel, uint32_t frame,
                                   uint32_t most, float* out) const {
    if (grain.increment != 1.0 || capture->frozen || ReadsWrapped(grain) ||
        grain.readPosition < 0.0)
        return 0;
    const Head head = HeadAt(frame);
    if (std::floor(grain.readPosition) != head.position || grain.crossing)
        return 0;
    if (head.position > static_cast<double>(capture->writePosition))
        most = std::min(most, now.numFrames - capture->writePosition - frame);
    const auto at = static_cast<uint32_t>(head.position);
    const uint32_t count = std::min(most, loop > at ? loop - at : 0u);
    TrackCrossfade(grain, true);
    std::copy_n(channel[head.pass].data() + at, count, out);
    Advance(grain, count);
    return count;
}

float GrainRenderer::PlaySample(Grain& grain, const std::vector<float>* channel,
                                uint32_t frame) const {
    const Head head = HeadAt(frame);
    const auto wp = static_cast<uint32_t>(head.position);
    const uint32_t i0 = static_cast<uint32_t>(grain.readPosition) % loop;
    const uint32_t i1 = (i0 + 1) % loop;
    const auto j0 = static_cast<uint32_t>(grain.wrappedPosition);
    const uint32_t j1 = (j0 + 1) % grain.wrapLength;
    const bool onHead = i0 == wp;
    // At unit speed exactly on the head the grain reads without interpolation.
    const bool between = !onHead || grain.increment != 1.0;
    const auto f = between ? static_cast<float>(grain.readPosition - std::floor(grain.readPosition))
                           : 0.0f;
    const auto g =
        between ? static_cast<float>(grain.wrappedPosition - std::floor(grain.wrappedPosition))
                : 0.0f;
    const uint32_t p0 = i0 > wp ? head.pass ^ 1u : head.pass;
    const uint32_t p1 = i1 > wp ? head.pass ^ 1u : head.pass;

    double d = head.position - grain.readPosition;
    if (std::abs(d) < 0.01)
        d = 0.0;
    if (d < 0.0)
        d += static_cast<double>(loop);
    const bool nearHead = d <= static_cast<double>(crossfadeSamples) || onHead;
    TrackCrossfade(grain, nearHead);

    const auto readPair = [&](uint32_t pa, uint32_t a, uint32_t pb, uint32_t b, float fraction) {
        const float x = channel[pa][a];
        return now.interpolate ? x + (channel[pb][b] - x) * fraction : x;
    };
    const bool wrapped = ReadsWrapped(grain);
    const uint32_t a = wrapped ? j0 : i0;
    const uint32_t b = wrapped ? j1 : i1;
    const uint32_t flipA = a >= loop || (wrapped && i0 >= grain.wrapLength) ? 1u : 0u;
    const uint32_t flipB = b >= loop || (wrapped && i1 >= grain.wrapLength) ? 1u : 0u;
    float x = readPair(p0 ^ flipA, a, p1 ^ flipB, b, wrapped ? g : f);

    if (nearHead && (grain.crossing || capture->frozen) && now.crossfade) {
        const float c =
            onHead ? 0.0f : std::clamp(static_cast<float>(d) * inverseCrossfade, 0.0f, 1.0f);
        uint32_t ra = p0 ^ 1u;
        uint32_t rb = p1;
        if (!onHead && (wp <= i0 || i1 <= wp))
            rb ^= 1u;
        if (i0 >= grain.wrapLength)
            ra ^= 1u;
        if (i1 >= grain.wrapLength)
            rb ^= 1u;
        x = x * c + (1.0f - c) * readPair(ra, j0, rb, j1, g);
    }
    Advance(grain, 1);
    return x;
}

void GrainRenderer::Advance(Grain& grain, uint32_t count) const {
    const double moved = grain.increment * count;
    grain.readPosition = WrapPosition(grain.readPosition + moved, static_cast<double>(loop));
    grain.wrappedPosition =
        WrapPosition(grain.wrappedPosition + moved, static_cast<double>(grain.wrapLength));
    grain.elapsed += std::abs(moved);
}

}  // namespace Quorvan::dsp
