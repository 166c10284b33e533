#include "granular/GrainReader.h"

#include <algorithm>
#include <cmath>

namespace Quorvan::dsp {

void GrainReader::Setup(float sampleRate, uint32_t blockSize) {
    runs.Setup(sampleRate);
    walk.Setup(blockSize);
    inverseZone = 1.0f / static_cast<float>(runs.Zone());
    faded.assign(blockSize + GrainKernels::kMaxLanes, 0.0f);
}

void GrainReader::BeginBlock(const CaptureBuffer& tape, uint32_t frames, bool crossfade,
                             bool interpolation) {
    runs.BeginBlock(tape, frames, crossfade, interpolation);
    walk.BeginBlock(frames);
    channels[0] = tape.left;
    channels[1] = tape.right;
    for (size_t side = 0; side < 2; ++side)
        for (size_t pass = 0; pass < 2; ++pass)
            tapes[side][pass] = channels[side][pass].data();
    numFrames = frames;
    blockSteps = frames;
    loopEnd = runs.Loop();
    interpolate = interpolation;
}

void GrainReader::Read(Grain& grain, uint32_t side, uint32_t count, const GrainWalk::Path* path,
                       float* out) {
    const Channel channel = channels[side];
    uint32_t i = 0;
    while (i < count) {
        const uint32_t frame = grain.startFrame + i;
        const Run run = runs.Plan(grain, frame, count - i, path != nullptr);
        if (run.count < kShortestRun) {
            out[i++] = PlaySample(grain, channel, frame);
            continue;
        }
        if (interpolate)
            PlayRun(grain, channel, run, out + i);
        else
            PickRun(grain, channel, run, *path, i, out + i);
        i += run.count;
        if (path != nullptr) {
            grain.readPosition = path->Read(i);
            grain.wrappedPosition = path->Wrapped(i);
        }
    }
}

void GrainReader::PlayRun(Grain& grain, Channel channel, const Run& run, float* out) {
    TrackCrossfade(grain, run.nearHead);
    // At unit speed exactly on the head the grain reads without interpolation.
    const bool whole = grain.increment == 1.0 && run.side == Side::On;
    const double read = whole ? std::floor(grain.readPosition) : grain.readPosition;
    const double wrapped = grain.wrappedPosition;
    const uint32_t low = PassOf(grain, run);
    const uint32_t high = low ^ (run.side == Side::On ? 1u : 0u);
    kernels->interpolate({.low = channel[low].data(),
                          .high = channel[high].data() + 1,
                          .position = ReadsWrapped(grain) ? wrapped : read,
                          .increment = grain.increment},
                         run.count, out);
    if (run.nearHead && runs.Fades(grain)) {
        const float* const far = channel[FarPassOf(grain, run)].data();
        kernels->interpolate({far, far + 1, wrapped, grain.increment}, run.count, faded.data());
        Fade(run, out);
    }
    Advance(grain, runs.Loop(), run.count);
}

/// The same without interpolation, from that step of the grain's path on.
void GrainReader::PickRun(Grain& grain, Channel channel, const Run& run,
                          const GrainWalk::Path& path, uint32_t step, float* out) {
    const auto pick = [&run](const float* tape, const double* at, float* to) {
        for (uint32_t i = 0; i < run.count; ++i)
            to[i] = tape[static_cast<int32_t>(at[i * GrainWalk::kHeads])];
    };
    const double* const read = &path.Read(step);
    const double* const wrapped = &path.Wrapped(step);
    TrackCrossfade(grain, run.nearHead);
    pick(channel[PassOf(grain, run)].data(), ReadsWrapped(grain) ? wrapped : read, out);
    if (run.nearHead && runs.Fades(grain)) {
        pick(channel[FarPassOf(grain, run)].data(), wrapped, faded.data());
        Fade(run, out);
    }
    grain.elapsed += run.count * std::abs(grain.increment);
}

/// Mixes the crossfade's far side into a run.
void GrainReader::Fade(const Run& run, float* out) const {
    kernels->crossfade(out, faded.data(), static_cast<float>(run.distance) * inverseZone,
                       static_cast<float>(run.slope) * inverseZone, run.count);
}

/// One sample, with every decision taken for itself.
float GrainReader::PlaySample(Grain& grain, Channel channel, uint32_t frame) const {
    const Head head = runs.HeadAt(frame);
    const int64_t size = runs.Loop();
    const int64_t wrap = grain.wrapLength;
    auto i0 = static_cast<int64_t>(grain.readPosition);
    if (i0 >= size)  // where the loop has become shorter
        i0 %= size;
    const int64_t i1 = i0 + 1 < size ? i0 + 1 : 0;
    const auto j0 = static_cast<int64_t>(grain.wrappedPosition);
    const int64_t j1 = j0 + 1 < wrap ? j0 + 1 : 0;
    const bool onHead = i0 == head.position;
    // At unit speed exactly on the head the grain reads without interpolation.
    const bool slow = grain.increment != 1.0;
    const auto f = !onHead || slow ? static_cast<float>(FractionOf(grain.readPosition)) : 0.0f;
    const auto g =
        j0 != head.position || slow ? static_cast<float>(FractionOf(grain.wrappedPosition)) : 0.0f;
    const uint32_t p0 = head.pass ^ (i0 > head.position ? 1u : 0u);
    const uint32_t p1 = head.pass ^ (i1 > head.position ? 1u : 0u);

    double d = static_cast<double>(head.position) - grain.readPosition;
    if (std::abs(d) < GrainRuns::kTouching)
        d = 0.0;
    if (d < 0.0)
        d += static_cast<double>(size);
    const bool nearHead = d <= static_cast<double>(runs.Zone()) || onHead;
    TrackCrossfade(grain, nearHead);

    const auto readPair = [&](uint32_t pa, int64_t a, uint32_t pb, int64_t b, float fraction) {
        return Between(channel[pa][static_cast<size_t>(a)], channel[pb][static_cast<size_t>(b)],
                       fraction);
    };
    const bool second = ReadsWrapped(grain);
    const int64_t a = second ? j0 : i0;
    const int64_t b = second ? j1 : i1;
    const uint32_t flipA = a >= size || (second && i0 >= wrap) ? 1u : 0u;
    const uint32_t flipB = b >= size || (second && i1 >= wrap) ? 1u : 0u;
    float x = readPair(p0 ^ flipA, a, p1 ^ flipB, b, second ? g : f);

    if (nearHead && runs.Fades(grain)) {
        const float c = onHead ? 0.0f : std::clamp(static_cast<float>(d) * inverseZone, 0.0f, 1.0f);
        const bool across = !onHead && (head.position <= i0 || i1 <= head.position);
        const uint32_t ra = p0 ^ 1u ^ (i0 >= wrap ? 1u : 0u);
        const uint32_t rb = p1 ^ (across ? 1u : 0u) ^ (i1 >= wrap ? 1u : 0u);
        x = x * c + (1.0f - c) * readPair(ra, j0, rb, j1, g);
    }
    Advance(grain, runs.Loop(), 1);
    return x;
}

/// The pass that holds the older neighbour of what the grain reads.
uint32_t GrainReader::PassOf(const Grain& grain, const Run& run) const {
    const bool outside = grain.readPosition >= static_cast<double>(grain.wrapLength) ||
                         grain.wrappedPosition >= static_cast<double>(runs.Loop());
    return run.head.pass ^ (run.side == Side::Ahead ? 1u : 0u) ^
           (ReadsWrapped(grain) && outside ? 1u : 0u);
}

/// The pass that holds the crossfade's far side: the other round, as long as both loops have the
/// place.
uint32_t GrainReader::FarPassOf(const Grain& grain, const Run& run) const {
    const bool beyond = grain.readPosition >= static_cast<double>(grain.wrapLength);
    return run.head.pass ^ (run.side == Side::Ahead ? 0u : 1u) ^ (beyond ? 1u : 0u);
}

}  // namespace Quorvan::dsp
