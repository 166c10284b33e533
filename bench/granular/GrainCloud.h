#pragma once

#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

#include "granular/CaptureBuffer.h"
#include "granular/GrainLength.h"
#include "granular/GrainPool.h"
#include "granular/GrainShape.h"
#include "primitives/Xorshift.h"

namespace Quorvan::test {

/// A full tape and a pool that is kept filled with random grains, for benchmarks of whatever plays
/// them. Grains are drawn as the scheduler draws them at wide random settings.
struct GrainCloud {
    struct Style {
        uint32_t grains = 257;
        int32_t shape = 0;
        bool frozen = false;
        float octaves = 1.0f;  ///< pitches spread this far to both sides; 0 is unison
        float scatter = 1.0f;  ///< starts lie in this fraction of the loop behind the head
        float reversedShare = 0.3f;
        bool onSamples = false;  ///< grains start on whole samples
        float rate = 48000.0f;
        float loopSeconds = 8.0f;
    };

    explicit GrainCloud(const Style& wanted) : style(wanted), random(5) {
        tape.Setup(style.rate);
        tape.SetLength(style.loopSeconds, 1.0f);
        uint32_t noise = 1;
        const auto sample = [&noise] { return 0.2f * prims::XorshiftUniform(noise) - 0.1f; };
        for (uint32_t i = 0; i < 2 * tape.length + tape.length / 3; ++i) {
            tape.Write(sample(), sample(), 0.0f);
            tape.AdvanceFree();
        }
        tape.frozen = style.frozen;
        pool.Resize(258);
        ended.reserve(258);
        Refill();
    }

    /// Moves the write head on by a block and replaces the grains that have ended.
    void NextBlock(uint32_t frames) {
        for (size_t i = ended.size(); i-- > 0;)
            pool.Erase(ended[i]);
        ended.clear();
        Refill();
        for (uint32_t i = 0; i < frames && !tape.frozen; ++i)
            tape.AdvanceFree();
    }

    Style style;
    dsp::CaptureBuffer tape;
    dsp::GrainPool pool;
    std::vector<uint16_t> ended;

private:
    float Draw(float from, float to) {
        return from + (to - from) * static_cast<float>(random()) * 2.3283064e-10f;
    }
    void Refill() {
        while (pool.Count() < style.grains)
            pool.Add(NewGrain(pool.Count() % 2 == 1));
    }
    dsp::Grain NewGrain(bool rightSide) {
        const dsp::GrainLength::Loop loop{static_cast<double>(tape.EffectiveLength()),
                                          static_cast<double>(tape.writePosition), style.rate,
                                          style.loopSeconds * 1000.0f, false};
        dsp::Grain grain;
        double start = static_cast<double>(tape.writePosition) -
                       static_cast<double>(Draw(0.0f, style.scatter)) * loop.effectiveLength;
        if (start < 0.0)
            start += loop.effectiveLength;
        if (style.onSamples)
            start = std::floor(start);
        const float ratio = std::exp2(Draw(-style.octaves, style.octaves));
        const float sizeMs = Draw(40.0f, 400.0f);
        grain.reversed = Draw(0.0f, 1.0f) < style.reversedShare;
        grain.startPosition = static_cast<float>(start);
        grain.readPosition = grain.wrappedPosition = start;
        grain.increment = static_cast<double>(grain.reversed ? -ratio : ratio);
        grain.length = grain.reversed ? dsp::GrainLength::Reversed(loop, start, ratio, sizeMs)
                                      : dsp::GrainLength::Forward(loop, start, ratio, sizeMs);
        grain.crossing =
            !grain.reversed && dsp::GrainLength::Crosses(loop, start, ratio, grain.length);
        grain.wrapLength = tape.previousLength;
        grain.panGainLeft = grain.panGainRight = 1.0f;
        (rightSide ? grain.outGainRight : grain.outGainLeft) = 1.0f;
        grain.shape = style.shape;
        const auto shape = dsp::GrainShape::Of(style.shape, Draw(0.0f, 1.0f));
        grain.shapeA = shape.a;
        grain.shapeB = shape.b;
        return grain;
    }

    std::mt19937 random;
};

}  // namespace Quorvan::test
