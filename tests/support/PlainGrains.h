#pragma once

#include "granular/CaptureBuffer.h"
#include "granular/Grain.h"
#include "granular/GrainPool.h"
#include "support/TestSignals.h"

namespace Quorvan::test {

/// Grain playback in its plainest form: one sample of one grain after the other, with every
/// decision taken anew and both channels read. Slow; what the renderer is held against.
class PlainGrains {
public:
    struct Block {
        uint32_t numFrames = 0;
        bool crossfade = false;
        bool interpolate = true;
    };

    PlainGrains(float rate, uint32_t blockSize)
        : releaseStep(249.99998f / rate),
          attackSamples(rate * 0.0005f),
          crossfadeSamples(static_cast<int32_t>(rate * 0.003f)),
          inverseCrossfade(1.0f / static_cast<float>(crossfadeSamples)),
          envelope(blockSize),
          left(blockSize),
          right(blockSize) {}

    void Render(dsp::GrainPool& pool, const dsp::CaptureBuffer& tape, const Block& block,
                float* outLeft, float* outRight, std::vector<uint16_t>& ended) {
        capture = &tape;
        now = block;
        loop = tape.length + (tape.writePosition == tape.length ? 1u : 0u);
        for (uint16_t slot = pool.First(); slot < pool.Capacity(); slot = pool.Next(slot)) {
            dsp::Grain& grain = pool[slot];
            if (Play(grain))
                ended.push_back(slot);
            const float gainLeft = grain.outGainLeft * grain.panGainLeft;
            const float gainRight = grain.outGainRight * grain.panGainRight;
            for (uint32_t i = 0; i < now.numFrames; ++i) {
                outLeft[i] += gainLeft * envelope[i] * left[i];
                outRight[i] += gainRight * envelope[i] * right[i];
            }
            grain.startFrame = 0;
        }
    }

    static float Pow2(float x) {
        const float v = std::max(x, -126.0f);
        float f = v - static_cast<float>(static_cast<int32_t>(v));
        if (x < 0.0f)
            f += 1.0f;
        const float bits = 27.728024f / (4.8425255f - f) + v + 121.274055f - 1.4901291f * f;
        return std::bit_cast<float>(static_cast<int32_t>(bits * 8388608.0f));
    }

private:
    static double Frac(double x) { return x - static_cast<double>(static_cast<int64_t>(x)); }
    static float Exp(float x) { return Pow2(x * 1.442695f); }
    /// Parabola over one turn; turn isn't negative.
    static float Sine(float turn) {
        float a = (turn - static_cast<float>(static_cast<int32_t>(turn))) * 6.2831855f;
        if (a > 3.1415927f)
            a -= 6.2831855f;
        return (1.2732395f - 0.40528473f * std::abs(a)) * a;
    }
    static float RaisedEdge(float x, float p, float q) {
        if (x >= q && 1.0f - x >= q)
            return 1.0f;
        const float y = Sine((x < q ? x : 1.0f - x) / p + 0.75f);
        return 0.5f * y + 0.1125f * (std::abs(y) * y - y) + 0.5f;
    }

    bool Play(dsp::Grain& grain) {
        for (auto* values : {&envelope, &left, &right})
            std::fill(values->begin(), values->end(), 0.0f);
        for (uint32_t i = grain.startFrame; i < now.numFrames; ++i) {
            Read(grain, i);
            const bool faded = grain.releasing && Fade(grain);
            if (!grain.releasing)
                grain.envelope = ShapeAt(grain, static_cast<float>(grain.elapsed / grain.length));
            envelope[i] = grain.envelope;
            Advance(grain);
            if (faded || grain.elapsed >= grain.length)
                return true;
        }
        return false;
    }

    void Read(dsp::Grain& grain, uint32_t i) {
        // The write head as it stood at this sample.
        const auto end = static_cast<int32_t>(capture->writePosition);
        const auto size = static_cast<int32_t>(loop);
        const auto wrap = static_cast<int32_t>(grain.wrapLength);
        int32_t wp = end;
        if (!capture->frozen)
            wp += static_cast<int32_t>(i) - static_cast<int32_t>(now.numFrames);
        if (wp < 0)
            wp += size;
        const uint32_t pass = wp > end ? 1u - capture->activePass : capture->activePass;

        const int32_t i0 = static_cast<int32_t>(grain.readPosition) % size;
        const int32_t i1 = (i0 + 1) % size;
        const auto j0 = static_cast<int32_t>(grain.wrappedPosition);
        const int32_t j1 = (j0 + 1) % wrap;
        const bool slow = grain.increment != 1.0;
        const float f = i0 != wp || slow ? static_cast<float>(Frac(grain.readPosition)) : 0.0f;
        const float g = j0 != wp || slow ? static_cast<float>(Frac(grain.wrappedPosition)) : 0.0f;
        const uint32_t p0 = i0 > wp ? 1u - pass : pass;
        const uint32_t p1 = i1 > wp ? 1u - pass : pass;

        double d = wp - grain.readPosition;
        if (std::abs(d) < 0.01)
            d = 0.0;
        if (d < 0.0)
            d += size;
        const bool nearHead = d <= crossfadeSamples || i0 == wp;
        const bool active = nearHead && grain.crossing && now.crossfade;
        if (grain.wasCrossfading && !active)
            grain.swapped = true;
        grain.wasCrossfading = active;

        const bool second = grain.swapped && !grain.reversed;
        const int32_t a = second ? j0 : i0;
        const int32_t b = second ? j1 : i1;
        const uint32_t qa = a >= size || (second && i0 >= wrap) ? 1u - p0 : p0;
        const uint32_t qb = b >= size || (second && i1 >= wrap) ? 1u - p1 : p1;
        const float fraction = second ? g : f;
        float l = Lerp(capture->left, qa, a, qb, b, fraction);
        float r = Lerp(capture->right, qa, a, qb, b, fraction);

        if (nearHead && (grain.crossing || capture->frozen) && now.crossfade) {
            const float c =
                i0 != wp ? std::clamp(static_cast<float>(d) * inverseCrossfade, 0.0f, 1.0f) : 0.0f;
            const uint32_t ra = i0 >= wrap ? p0 : 1u - p0;
            const bool other = i0 != wp && (wp <= i0 || i1 <= wp);
            const uint32_t rb = other != (i1 >= wrap) ? 1u - p1 : p1;
            l = l * c + (1.0f - c) * Lerp(capture->left, ra, j0, rb, j1, g);
            r = r * c + (1.0f - c) * Lerp(capture->right, ra, j0, rb, j1, g);
        }
        left[i] = l;
        right[i] = r;
    }

    float Lerp(const dsp::ZeroedArray* channel, uint32_t pa, int32_t a, uint32_t pb, int32_t b,
               float fraction) const {
        const float x = channel[pa][static_cast<size_t>(a)];
        if (!now.interpolate)
            return x;
        return x + (channel[pb][static_cast<size_t>(b)] - x) * fraction;
    }

    /// Answers whether the fade ends with this sample.
    bool Fade(dsp::Grain& grain) const {
        const bool last = !grain.released && std::abs(grain.envelope) < releaseStep;
        grain.released = grain.released || last;
        grain.envelope -=
            grain.released ? grain.envelope : std::copysign(releaseStep, grain.envelope);
        return last;
    }

    float ShapeAt(const dsp::Grain& grain, float x) const {
        const float a = grain.shapeA, b = grain.shapeB;
        const float length = grain.length, attack = attackSamples, c = attack / length;
        /// The last two shapes are each other's mirror image.
        const auto falling = [&](float from) {
            return 1.0f - (Exp((from - c) * a * (length * -10.0f) / (length - attack)) - 1.0f) * b;
        };
        switch (grain.shape) {
            case 0:
                return x <= b ? x / b : (x - 1.0f) / (b - 1.0f);
            case 1:
                return x < b ? x / b : 1.0f - x < b ? (1.0f - x) / b : 1.0f;
            case 2:
                return RaisedEdge(x, a, b);
            case 3:
                return Exp((x - 0.5f) * b * ((x - 0.5f) * -0.5f));
            case 4: {
                const float y = b * 31.415928f * (x - 0.5f);
                const float z = Sine(y * 0.15915494f + 5.0f);
                const float s = z + 0.225f * (std::abs(z) * z - z);
                // Near the middle the turn has lost y.
                return std::abs(y) < 0x1p-13f ? 1.0f : RaisedEdge(x, 0.2f, 0.1f) * s / y;
            }
            case 5:
                return (Exp(a * 10.0f * (1.0f - x)) - 1.0f) * b;
            case 6:
                return x < c ? length / attack * x : x >= 1.0f ? 0.0f : falling(x);
            default:
                return x >= 1.0f - c ? length / attack * (1.0f - x)
                       : x <= 0.0f   ? 0.0f
                                     : falling(1.0f - x);
        }
    }

    void Advance(dsp::Grain& grain) const {
        const auto move = [&grain](double& position, double wrap) {
            const double moved = position + grain.increment;
            position = Frac((moved <= 0.0 ? moved + wrap : moved) / wrap) * wrap;
        };
        move(grain.readPosition, loop);
        move(grain.wrappedPosition, grain.wrapLength);
        grain.elapsed += std::abs(grain.increment);
    }

    float releaseStep, attackSamples;
    int32_t crossfadeSamples;
    float inverseCrossfade;
    std::vector<float> envelope, left, right;

    const dsp::CaptureBuffer* capture = nullptr;
    Block now;
    uint32_t loop = 1;
};

}  // namespace Quorvan::test
