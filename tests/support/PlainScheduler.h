#pragma once

#include "granular/CaptureBuffer.h"
#include "granular/Grain.h"
#include "granular/GrainScheduler.h"
#include "granular/GranularSettings.h"
#include "support/PlainGrains.h"
#include "support/PlainParts.h"

namespace Quorvan::test {

/// The grain decision written down as one list of steps, with a vector for a pool. Keeps the draws
/// in the order that the sound depends on.
struct PlainScheduler {
    PlainScheduler(uint32_t seed, const dsp::GranularSettings& modes,
                   const dsp::BlockCurves& values, dsp::CaptureBuffer& tape,
                   const std::vector<int32_t>& onsets)
        : x(seed), set(modes), curve(values), capture(tape), markers(onsets) {}

    void Step(uint32_t n, const dsp::GrainScheduler::Clocks& clocks, float stereoX, float stereoY) {
        using dsp::Curve;
        const auto at = [&](Curve which) { return curve[which][n]; };
        const bool texture = set.granularMode == 1;
        const bool beat = set.granularMode == 2;
        const auto w = static_cast<double>(capture.writePosition);
        const double e = capture.length + (capture.writePosition == capture.length ? 1.0 : 0.0);

        float chance = 0.0f;
        if (set.randomDensityArrow == 1)
            chance = std::clamp(1.0f - 0.25f / clocks.hz, 0.25f, 0.95f) * at(Curve::RandomDensity) *
                     (texture ? 0.5f : 1.0f);
        bool skip = U() < chance;
        if (beat)
            skip = skip || clocks.sequence[n] == 0.0f;
        const bool tick = clocks.tick[n] > 0.5f;
        if (beat ? !((tick || pending) && !skip) : !((tick && !skip) || pending))
            return;
        if (capture.quantizationMode == 1 && markers.empty())
            return;
        if (set.triggerMode == 1 && at(Curve::GrainTrigger) <= 0.5f)
            return;
        pending = false;

        jitter = 0.0f;
        if (set.randomDensityArrow == 0) {
            const float u = U();
            jitter = texture || !clocks.mainSynced ? u * 0.6f + 0.2f : 0.8f - 0.8f * u * u + 0.1f;
            jitter *= at(Curve::RandomDensity) * (texture ? 0.5f : 1.0f);
        }
        layers = Layers(T(), at(Curve::TextureDensity), at(Curve::RandomLayers));

        const float rp = PitchArrow(T());
        const float pitchL = Pitch(rp, at(Curve::RandomPitch), at(Curve::Pitch));
        const float rf = T();
        const float fineL = rf * at(Curve::RandomFine);
        const float rs = SprayArrow(T());
        double base = capture.playPosition;
        if (capture.playbackMode == 2) {
            const float m = at(Curve::ManualScanPosition);
            base = (m == 0.0f || m == 1.0f) && e - w < 5.0 ? w : (e - 1.0) * static_cast<double>(m);
            capture.playPosition = base;
        }
        const float size = Size(n, clocks);
        const float dL = SizeOffset(size, at(Curve::RandomSize));
        const double first = static_cast<double>(engine());
        const double second = static_cast<double>(engine());
        const bool reversed = (first + second * 0x1p32) * 0x1p-64 <
                              1.0 - static_cast<double>(at(Curve::RandomDirection));
        float p = 0.0f;
        if (set.spatializerEnabled)
            p = U() * at(Curve::RandomPan) - at(Curve::RandomPan) * 0.5f;
        const float pan = std::clamp((stereoX + 1.0f) * 0.5f + p, 0.0f, 1.0f);
        const float away =
            ((U() * 0.5f - 0.25f) * set.randomDistance + stereoY) * set.distanceRange;
        const float gain = std::pow(std::max(away, 0.0f) + 1.0f, -1.15675f);

        const float wide = at(Curve::Width);
        const float narrow = 1.0f - wide;
        const float rp2 = PitchArrow(T());
        const float pitchR =
            Pitch(rp * narrow + rp2 * wide, at(Curve::RandomPitch), at(Curve::Pitch));
        const float rf2 = T();
        const float fineR = (rf * narrow + rf2 * wide) * at(Curve::RandomFine);
        const float d2 = SizeOffset(size, at(Curve::RandomSize));
        const float dR = d2 * wide + dL * narrow;
        const float rs2 = SprayArrow(T());
        const float spray = at(Curve::Spray);
        const double sprayL = static_cast<double>(rs * spray) * e;
        const double sprayR = static_cast<double>(spray * narrow * rs + spray * wide * rs2) * e;

        if (grains.size() < set.grainLimit) {
            double startL = beat ? Wrap(sprayL + base, e) : base;
            double startR = beat ? Wrap(sprayR + base, e) : base;
            if (capture.quantizationMode == 1)
                startL = startR = Transient(static_cast<int32_t>(startL), e);
            if (capture.quantizationMode == 2)
                startL = startR = Grid(startL, w, e);
            if (!beat) {
                startL = Wrap(startL + sprayL, e);
                startR = Wrap(startR + sprayR, e);
            }
            dsp::Grain grain;
            grain.startFrame = n;
            grain.panGainLeft = 2.0f * (1.0f - pan);
            grain.panGainRight = 2.0f * pan;
            grain.wrapLength = capture.previousLength;
            grain.reversed = reversed;
            Shape(grain, at(Curve::ShapeParam));
            grain.displayed = true;
            grain.outGainLeft = 2.0f * gain;
            Write(grain, startL, pitchL + fineL, size + dL, clocks.sampleRate, w, e);
            grain.displayed = false;
            grain.outGainLeft = 0.0f;
            grain.outGainRight = 2.0f * gain;
            Write(grain, startR, pitchR + fineR, size + dR, clocks.sampleRate, w, e);
            ++started;
        }
        if (grains.size() == set.grainLimit)
            for (size_t i = 0; i < 2 && i < grains.size(); ++i)
                grains[i].releasing = true;
    }

    /// The onset that position belongs to.
    double Transient(int32_t position, double e) const {
        const auto [a, b] = PlainNeighbours(markers, position);
        const int32_t first = markers.front(), last = markers.back();
        const auto w = static_cast<int32_t>(capture.writePosition);
        if (a == last && b == first) {
            if (a <= b)
                return position <= w ? a : b;
            int32_t r = position;
            if (w >= last)
                r = position <= w && position >= last ? a : b;
            if (w < first)
                r = r > w && r <= first ? b : a;
            return r;
        }
        const auto around = [e](int32_t d) { return d < 0 ? d + static_cast<int32_t>(e) : d; };
        return around(position - a) <= around(b - position) ? a : b;
    }
    double Grid(double start, double w, double e) const {
        const double cell = e / set.gridSize;
        const double x0 = start * set.gridSize / e;
        const double below = std::floor(x0);
        const bool tie = std::abs(x0 - below - 0.5) < 0.01;
        if ((w - start < 0.0 ? w - start + e : w - start) >= cell)
            return (tie ? below : std::round(x0)) * cell;
        return tie ? below * cell : std::min(std::ceil(x0) * cell, w);
    }

    uint32_t x;  ///< xorshift state
    std::mt19937 engine;
    bool pending = true;
    float jitter = 0.0f, layers = 0.0f;
    uint32_t started = 0;
    std::vector<dsp::Grain> grains;  ///< by age

private:
    float U() { return static_cast<float>(PlainDraw(x)) * 0x1p-32f; }
    float T() {
        const float one = U();
        return one - U();
    }
    static double Wrap(double position, double e) {
        const double turns = (position <= 0.0 ? position + e : position) / e;
        return (turns - std::floor(turns)) * e;
    }
    float PitchArrow(float r) const {
        return std::array{std::abs(r), -std::abs(r), r}.at(size_t(set.randomPitchArrow));
    }
    float SprayArrow(float r) const {
        return std::array{-std::abs(r), std::abs(r), r}.at(size_t(set.sprayDirection));
    }
    float Layers(float r, float t, float depth) const {
        const float more = std::clamp((6.0f - t) * std::abs(r), 0.0f, 5.0f - t) * depth;
        const float fewer = std::clamp((t + 1.0f) * -std::abs(r), -t, 0.0f) * depth;
        if (set.randomLayersArrow == 0)
            return std::floor(more);
        if (set.randomLayersArrow == 1)
            return std::ceil(fewer);
        return std::round(r >= 0.0f ? more : fewer);
    }
    float Pitch(float r, float depth, float pitch) const {
        if (set.scale == 0)
            return std::clamp(std::clamp(37.0f * r, -36.0f, 36.0f) * depth + pitch, -36.0f, 36.0f);
        const auto entries = static_cast<float>(set.scaleTable.size());
        const float h = (entries - 1.0f) / 2.0f;
        const float moved = std::round(std::clamp((h + 1.0f) * r, -h, h) * depth) + pitch;
        return set.scaleTable[static_cast<size_t>(std::clamp(moved, 0.0f, entries - 1.0f))];
    }
    float Size(uint32_t n, const dsp::GrainScheduler::Clocks& clocks) const {
        using dsp::Curve;
        const float type = std::array{1.0f, 1.0f, 0.6666667f, 1.5f}.at(size_t(set.grainSizeMode));
        const auto synced = [&](Curve which) {  // from a 64th note on
            return clocks.wholeNote * std::exp2(curve[which][n] - 6.0f) * type * 1000.0f;
        };
        if (set.granularMode == 1)
            return set.textureSizeMidiSync ? synced(Curve::TextureSizeSynced)
                                           : curve[Curve::TextureSizeAbsolute][n];
        if (set.densitySizeLink) {
            const float hz = clocks.mainSynced
                                 ? 0.004166667f / clocks.mainRate[n] * clocks.mainTempo
                                 : clocks.mainRate[n];
            return std::exp2(curve[Curve::GrainSizeRatio][n] - 4.0f) * 1000.0f / hz;
        }
        return set.grainSizeMode == 0 ? curve[Curve::GrainSizeAbsolute][n]
                                      : synced(Curve::GrainSizeSynced);
    }
    float SizeOffset(float size, float depth) {
        const float u = U();
        const float q = std::array{-u, u, 2.0f * u - 1.0f}.at(size_t(set.randomSizeArrow));
        return q * (q < 0.0f ? size - 10.0f : 1000.0f - size) * depth;
    }
    void Shape(dsp::Grain& grain, float v) const {
        const float c = v * 0.999f + 0.001f;
        grain.shape = set.shape;
        const float rising = 1.0f / (PlainGrains::Pow2(c * 14.42695f) - 1.0f);
        const float falling = 1.0f / (PlainGrains::Pow2(c * -14.42695f) - 1.0f);
        const std::array<float, 8> b{v * 0.998f + 0.001f, c * 0.5f, c * 0.5f, 4.0f / c * (4.0f / c),
                                     v * 0.9f + 0.1f,     rising,   falling,  falling};
        grain.shapeA = set.shape == 2 || set.shape > 4 ? c : v;
        grain.shapeB = b[static_cast<size_t>(set.shape)];
    }

    void Write(dsp::Grain grain, double start, float semitones, float ms, float rate, double w,
               double e) {
        const bool beat = set.granularMode == 2;
        const float k = rate * 0.001f;
        const float r = std::pow(2.0f, semitones * 0.083333336f);
        float length = beat && r >= 1.0f ? k * ms : r * k * ms;
        length = std::max(length, 10.0f * k);
        const double d = w - start;
        if (grain.reversed) {
            const double room = start - w < 1.0 ? start - w + e : start - w;
            length = std::min({length, static_cast<float>(room) * (r / (r + 1.0f)), 5000.0f * k});
        } else if (r < 1.0f) {
            length = std::min(length, d >= -1.0 ? r * static_cast<float>(e - d) / (1.0f - r)
                                                : r * static_cast<float>(d) / (r - 1.0f));
        } else {
            length = std::min(length, 5.0f * rate);
            if (r > 1.0f)
                length = std::min(
                    length, beat ? capture.lengthMs * k : r / (r - 1.0f) * capture.lengthMs * k);
        }
        if (!(length > 0.0f))
            return;
        if (!grain.reversed && r > 1.0f)
            grain.crossing = length > static_cast<float>(d >= 0.0 ? d : e + d) / (r - 1.0f);
        if (!grain.reversed && r < 1.0f)
            grain.crossing = (d >= 0.0 ? static_cast<float>(e - d) / (1.0f - r)
                                       : static_cast<float>(d) / (r - 1.0f)) > length;
        grain.startPosition = static_cast<float>(start);
        grain.readPosition = start;
        const double turns = start / capture.previousLength;
        grain.wrappedPosition = (turns - std::floor(turns)) * capture.previousLength;
        grain.increment = static_cast<double>(grain.reversed ? -r : r);
        grain.length = length;
        grains.push_back(grain);
    }

    const dsp::GranularSettings& set;
    const dsp::BlockCurves& curve;
    dsp::CaptureBuffer& capture;
    const std::vector<int32_t>& markers;
};

}  // namespace Quorvan::test
