#include "granular/GrainScheduler.h"

#include <algorithm>
#include <cmath>

#include "granular/GranularTables.h"
#include "granular/StartQuantizer.h"
#include "primitives/Clock.h"

namespace Quorvan::dsp {

namespace {

constexpr float kHighestPitch = 36.0f;  // semitones
constexpr float kShortestMs = 10.0f;
constexpr float kLongestMs = 1000.0f;
/// Rolloff of a grain's level with its distance.
constexpr float kDistanceExponent = -1.15675f;
/// Rate of a note length in whole notes, times the tempo.
constexpr float kHertzPerWholeNoteBpm = 0.004166667f;

float ByPitchArrow(float draw, int32_t arrow) {
    return arrow == 0 ? std::abs(draw) : arrow == 1 ? -std::abs(draw) : draw;
}

float BySprayArrow(float draw, int32_t arrow) {
    return arrow == 0 ? -std::abs(draw) : arrow == 1 ? std::abs(draw) : draw;
}

/// Loops x into 0..wrap, where x is above -wrap.
double WrapInto(double x, double wrap) {
    if (x <= 0.0)
        x += wrap;
    const double turns = x / wrap;
    return (turns - std::floor(turns)) * wrap;
}

/// Without a jump in the loop, so that it runs in vectors.
bool AnyAboveHalf(const float* values, uint32_t count) {
    uint32_t above = 0;
    for (uint32_t i = 0; i < count; ++i)
        above += values[i] > 0.5f ? 1 : 0;
    return above != 0;
}

uint32_t IndexAt(const BlockCurves& curves, Curve curve, uint32_t n) {
    return static_cast<uint32_t>(curves.At(curve, n));
}

}  // namespace

GrainScheduler::GrainScheduler(GrainPool& pool, CaptureBuffer& tape, MarkerRing& ring,
                               const GranularSettings& modes, const BlockCurves& values,
                               const StereoPosition& place, GatePulse& pulse)
    : grains(pool),
      capture(tape),
      markers(ring),
      settings(modes),
      curves(values),
      position(place),
      gate(pulse),
      randomA(prims::SeedFromClock()) {}

uint32_t GrainScheduler::PassTo(uint32_t n, uint32_t end) {
    constexpr uint32_t kLeap = 16;
    for (; n + kLeap <= end && !AnyMayStart(n, kLeap); n += kLeap)
        randomA = prims::XorshiftLeap<kLeap>::From(randomA);
    for (; n < end && !MayStart(n); ++n)
        prims::XorshiftStep(randomA);
    return n;
}

/// True also where trigger and gate are open at different samples only.
bool GrainScheduler::AnyMayStart(uint32_t first, uint32_t count) const {
    const float* const doors = curves[Curve::GrainTrigger] + first;
    return (settings.triggerMode != 1 || AnyAboveHalf(doors, count)) &&
           (pendingTrigger || AnyAboveHalf(clocks.tick + first, count));
}

/// Of a sample that may start a grain.
bool GrainScheduler::Decide(uint32_t n, uint32_t draw) const {
    const bool beat = settings.granularMode == GranularSettings::kBeat;
    float skipChance = 0.0f;
    if (settings.randomDensityArrow == 1) {
        const float ceiling = std::clamp(1.0f - 0.25f / clocks.hz, 0.25f, 0.95f);
        skipChance = ceiling * curves.At(Curve::RandomDensity, n);
        if (settings.granularMode == GranularSettings::kTexture)
            skipChance *= 0.5f;
    }
    bool skip = static_cast<float>(draw) * prims::kXorshiftScale < skipChance;
    if (beat && clocks.sequence[n] == 0.0f)
        skip = true;
    const bool tick = clocks.tick[n] > 0.5f;
    const bool wanted =
        beat ? (tick || pendingTrigger) && !skip : (tick && !skip) || pendingTrigger;
    if (!wanted)
        return false;
    return capture.quantizationMode != CaptureBuffer::kTransients || markers.Count() != 0;
}

void GrainScheduler::Start(uint32_t n) {
    pendingTrigger = false;
    gate.Trigger(GatePulse::kGrains);
    DrawJitter(n);
    DrawLayerOffset(n);

    Side l;
    l.pitchDraw = ByPitchArrow(Triangular(), settings.randomPitchArrow);
    l.pitch = PitchOf(l.pitchDraw, n);
    l.fineDraw = Triangular();
    l.fine = l.fineDraw * curves.At(Curve::RandomFine, n);
    l.sprayDraw = BySprayArrow(Triangular(), settings.sprayDirection);
    l.spray = l.sprayDraw * curves.At(Curve::Spray, n);

    Pair pair;
    pair.loop = static_cast<double>(capture.EffectiveLength());
    pair.base = BasePosition(n);
    l.start = pair.base;
    pair.sizeMs = GrainSizeMs(n);
    l.sizeOffset = DrawSizeOffset(pair.sizeMs, n);
    DrawShared(pair, n);
    Side r;
    DrawRight(l, r, pair, n);

    if (grains.Count() < settings.grainLimit) {
        PlaceStarts(l, r, pair);
        AddGrain(l, pair, n, false);
        AddGrain(r, pair, n, true);
        ++startedCount;
    }
    if (grains.Count() == settings.grainLimit)
        ReleaseOldest(2);
}

void GrainScheduler::DrawJitter(uint32_t n) {
    if (settings.randomDensityArrow == 1) {
        densityJitter = 0.0f;
        return;
    }
    if (settings.randomDensityArrow != 0)
        return;
    const float depth = curves.At(Curve::RandomDensity, n);
    const bool texture = settings.granularMode == GranularSettings::kTexture;
    if (!clocks.mainSynced || texture) {
        densityJitter = (Uniform() * 0.6f + 0.2f) * depth;
        if (texture)
            densityJitter *= 0.5f;
    } else {
        const float q = Uniform();
        densityJitter = (0.8f - 0.8f * q * q + 0.1f) * depth;
    }
}

void GrainScheduler::DrawLayerOffset(uint32_t n) {
    constexpr float kSteps = static_cast<float>(kTextureLayers.size());
    const float draw = Triangular();
    const float depth = curves.At(Curve::RandomLayers, n);
    const float t = curves.At(Curve::TextureDensity, n);
    const float above = kSteps - t;
    if (settings.randomLayersArrow == 0) {
        layerOffset = std::floor(std::clamp(above * std::abs(draw), 0.0f, above - 1.0f) * depth);
    } else if (settings.randomLayersArrow == 1) {
        layerOffset = std::ceil(std::clamp(-std::abs(draw) * (t + 1.0f), -t, 0.0f) * depth);
    } else {
        const float v = draw >= 0.0f ? std::clamp(above * draw, 0.0f, above - 1.0f)
                                     : std::clamp((t + 1.0f) * draw, -t, 0.0f);
        layerOffset = std::round(v * depth);
    }
}

float GrainScheduler::PitchOf(float draw, uint32_t n) const {
    const float depth = curves.At(Curve::RandomPitch, n);
    const float pitch = curves.At(Curve::Pitch, n);
    if (settings.scale == 0) {
        const float offset =
            std::clamp((kHighestPitch + 1.0f) * draw, -kHighestPitch, kHighestPitch);
        return std::clamp(offset * depth + pitch, -kHighestPitch, kHighestPitch);
    }
    // The pitch is an index here, and the offset moves in steps of the scale.
    const float last = static_cast<float>(settings.scaleTable.size() - 1);
    const float half = last * 0.5f;
    const float offset = std::clamp((half + 1.0f) * draw, -half, half);
    const float index = std::clamp(std::round(offset * depth) + pitch, 0.0f, last);
    return settings.scaleTable[static_cast<size_t>(index)];
}

double GrainScheduler::BasePosition(uint32_t n) {
    if (capture.playbackMode != CaptureBuffer::kManual)
        return capture.playPosition;
    const float manual = curves.At(Curve::ManualScanPosition, n);
    const uint32_t loop = capture.EffectiveLength();
    // At either end of the knob a head about to wrap counts as being there already.
    if ((manual == 0.0f || manual == 1.0f) && loop < capture.writePosition + 5u)
        capture.playPosition = static_cast<double>(capture.writePosition);
    else
        capture.playPosition = static_cast<double>(loop - 1u) * static_cast<double>(manual);
    return capture.playPosition;
}

float GrainScheduler::GrainSizeMs(uint32_t n) const {
    const float noteMs = clocks.wholeNote;
    const float type = TimeTypeFactor(settings.grainSizeMode);
    if (settings.granularMode == GranularSettings::kTexture) {
        if (!settings.textureSizeMidiSync)
            return curves.At(Curve::TextureSizeAbsolute, n);
        return noteMs * kSyncedSizes[IndexAt(curves, Curve::TextureSizeSynced, n)] * type * 1000.0f;
    }
    if (!settings.densitySizeLink) {
        if (settings.grainSizeMode == 0)
            return curves.At(Curve::GrainSizeAbsolute, n);
        return noteMs * kSyncedSizes[IndexAt(curves, Curve::GrainSizeSynced, n)] * type * 1000.0f;
    }
    const float rate = clocks.mainRate[n];
    const float hz = clocks.mainSynced ? kHertzPerWholeNoteBpm / rate * clocks.mainTempo : rate;
    return kSizeRatios[IndexAt(curves, Curve::GrainSizeRatio, n)] * 1000.0f / hz;
}

float GrainScheduler::DrawSizeOffset(float sizeMs, uint32_t n) {
    const float u = Uniform();
    const float q = settings.randomSizeArrow == 0   ? -u
                    : settings.randomSizeArrow == 1 ? u
                                                    : 2.0f * u - 1.0f;
    if (q == 0.0f)
        return 0.0f;
    const float span = q < 0.0f ? sizeMs - kShortestMs : kLongestMs - sizeMs;
    return q * span * curves.At(Curve::RandomSize, n);
}

void GrainScheduler::DrawShared(Pair& pair, uint32_t n) {
    directionChance = 1.0 - static_cast<double>(curves.At(Curve::RandomDirection, n));
    const double low = static_cast<double>(directionEngine());
    const double high = static_cast<double>(directionEngine());
    pair.reversed = (low + high * 4294967296.0) / 18446744073709551616.0 < directionChance;

    float offset = 0.0f;
    if (settings.spatializerEnabled) {
        const float width = curves.At(Curve::RandomPan, n);
        offset = Uniform() * width - width * 0.5f;
    }
    pair.pan = std::clamp((position.X() + 1.0f) * 0.5f + offset, 0.0f, 1.0f);
    const float scatter = (Uniform() * 0.5f - 0.25f) * settings.randomDistance;
    const float distance = (scatter + position.Y()) * settings.distanceRange;
    pair.distanceGain = std::pow(std::max(distance, 0.0f) + 1.0f, kDistanceExponent);
    pair.shape = GrainShape::Of(settings.shape, curves.At(Curve::ShapeParam, n));
}

void GrainScheduler::DrawRight(const Side& l, Side& r, const Pair& pair, uint32_t n) {
    const float width = curves.At(Curve::Width, n);
    const float shared = 1.0f - width;
    const float pitchDraw = ByPitchArrow(Triangular(), settings.randomPitchArrow);
    r.pitch = PitchOf(l.pitchDraw * shared + pitchDraw * width, n);
    const float fineDraw = Triangular();
    r.fine = (l.fineDraw * shared + fineDraw * width) * curves.At(Curve::RandomFine, n);
    const float sizeOffset = DrawSizeOffset(pair.sizeMs, n);
    r.sizeOffset = sizeOffset * width + l.sizeOffset * shared;
    const float sprayDraw = BySprayArrow(Triangular(), settings.sprayDirection);
    const float spray = curves.At(Curve::Spray, n);
    r.spray = spray * shared * l.sprayDraw + spray * width * sprayDraw;
    r.start = pair.base;
}

void GrainScheduler::PlaceStarts(Side& l, Side& r, const Pair& pair) const {
    const auto scatter = [&pair](Side& side) {
        side.start = WrapInto(static_cast<double>(side.spray) * pair.loop + side.start, pair.loop);
    };
    const bool beat = settings.granularMode == GranularSettings::kBeat;
    if (beat) {
        scatter(l);
        scatter(r);
    }
    if (capture.quantizationMode == CaptureBuffer::kTransients)
        l.start = r.start = StartQuantizer::ToTransient(l.start, capture, markers);
    else if (capture.quantizationMode == CaptureBuffer::kGrid)
        l.start = r.start = StartQuantizer::ToGrid(l.start, capture, settings.gridSize);
    if (!beat) {
        scatter(l);
        scatter(r);
    }
}

void GrainScheduler::AddGrain(const Side& side, const Pair& pair, uint32_t n, bool rightSide) {
    const GrainLength::Loop loop{.effectiveLength = pair.loop,
                                 .writePosition = static_cast<double>(capture.writePosition),
                                 .sampleRate = clocks.sampleRate,
                                 .lengthMs = capture.lengthMs,
                                 .beat = settings.granularMode == GranularSettings::kBeat};
    const float ratio = std::pow(2.0f, (side.pitch + side.fine) * 0.083333336f);
    const float sizeMs = pair.sizeMs + side.sizeOffset;
    const float length = pair.reversed ? GrainLength::Reversed(loop, side.start, ratio, sizeMs)
                                       : GrainLength::Forward(loop, side.start, ratio, sizeMs);
    if (!(length > 0.0f))
        return;

    Grain grain{};
    grain.startPosition = static_cast<float>(side.start);
    grain.readPosition = side.start;
    grain.increment = static_cast<double>(pair.reversed ? -ratio : ratio);
    grain.startFrame = n;
    grain.length = length;
    grain.panGainLeft = 2.0f * (1.0f - pair.pan);
    grain.panGainRight = 2.0f * pair.pan;
    grain.outGainLeft = rightSide ? 0.0f : 2.0f * pair.distanceGain;
    grain.outGainRight = rightSide ? 2.0f * pair.distanceGain : 0.0f;
    grain.crossing = !pair.reversed && GrainLength::Crosses(loop, side.start, ratio, length);
    grain.displayed = !rightSide;
    grain.wrapLength = capture.previousLength;
    const double turns = side.start / static_cast<double>(capture.previousLength);
    grain.wrappedPosition =
        (turns - std::floor(turns)) * static_cast<double>(capture.previousLength);
    grain.reversed = pair.reversed;
    grain.shape = settings.shape;
    grain.shapeA = pair.shape.a;
    grain.shapeB = pair.shape.b;
    grains.Add(grain);
    if (listener != nullptr)
        listener->OnGrainStart(grain);
}

void GrainScheduler::ReleaseOldest(uint32_t count) {
    uint16_t slot = grains.Oldest();
    for (uint32_t i = 0; i < count && slot != GrainPool::kNone; ++i) {
        grains[slot].releasing = true;
        slot = grains.NextByAge(slot);
    }
}

void GrainScheduler::EnforceLimit() {
    const uint32_t count = grains.Count();
    if (count <= settings.grainLimit)
        return;
    uint32_t excess = count - settings.grainLimit;
    excess += excess & 1u;
    ReleaseOldest(std::min(excess, count));
}

}  // namespace Quorvan::dsp
