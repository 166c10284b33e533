#pragma once

#include <cstdint>
#include <random>

#include "granular/CaptureBuffer.h"
#include "granular/Grain.h"
#include "granular/GrainLength.h"
#include "granular/GrainListener.h"
#include "granular/GrainPool.h"
#include "granular/GrainShape.h"
#include "granular/GranularSettings.h"
#include "granular/MarkerRing.h"
#include "granular/StereoPosition.h"
#include "primitives/Xorshift.h"

namespace Quorvan::dsp {

/// Decides sample by sample whether a pair of grains starts, and draws everything about it: pitch,
/// length, direction, start, pan and distance, each from its parameter and a random depth.
///
/// The order of the draws is part of the sound: one draw more or less changes all that follow.
class GrainScheduler {
public:
    /// What one block of the clocks gives.
    struct Clocks {
        const float* tick = nullptr;      ///< above 0.5: a trigger of the clock in force
        float hz = 0.0f;                  ///< its trigger rate at the block's first sample
        const float* mainRate = nullptr;  ///< rate of the main clock: hertz, or a note length
        bool mainSynced = false;
        float mainTempo = 120.0f;
        const float* sequence = nullptr;  ///< step values; 0 is a silent step
        float wholeNote = 2.0f;           ///< seconds
        float sampleRate = 44100.0f;
    };

    GrainScheduler(GrainPool& pool, CaptureBuffer& tape, MarkerRing& ring,
                   const GranularSettings& modes, const BlockCurves& values,
                   const StereoPosition& place, GatePulse& pulse);

    /// The next eligible sample starts a grain whatever the clocks say.
    void ArmTrigger() { pendingTrigger = true; }
    void BeginBlock(const Clocks& blockClocks) {
        clocks = blockClocks;
        startedCount = 0;
    }
    /// The decision of sample n, ahead of its recording. Where a grain starts, catchUp is called
    /// first: from then on the heads have to stand where they are at n.
    template <class CatchUp>
    void Step(uint32_t n, CatchUp&& catchUp) {
        // Every sample draws, and hardly any can start a grain.
        const uint32_t draw = prims::XorshiftStep(randomA);
        if (!MayStart(n) || !Decide(n, draw))
            return;
        catchUp();
        Start(n);
    }
    void Step(uint32_t n) {
        Step(n, [] {});
    }
    /// Step for all samples from n to the first one that may start a grain, which is answered and
    /// still to be stepped; end where there is none ahead of it.
    uint32_t PassTo(uint32_t n, uint32_t end);
    /// Lets the oldest count grains fade out.
    void ReleaseOldest(uint32_t count);
    /// Releases what the pool holds above the limit, in pairs.
    void EnforceLimit();

    /// Rate offset drawn at the last start, in normalised rate units.
    float DensityJitter() const { return densityJitter; }
    /// Texture layer offset drawn at the last start, in steps of the layer table.
    float LayerOffset() const { return layerOffset; }
    uint32_t StartedCount() const { return startedCount; }
    /// Told of every grain that starts; null for nobody.
    void SetListener(GrainListener* who) { listener = who; }
    void ClearStartedCount() { startedCount = 0; }

private:
    /// The draws of one side, kept for the blend with the other.
    struct Side {
        float pitchDraw = 0.0f;
        float pitch = 0.0f;  ///< semitones
        float fineDraw = 0.0f;
        float fine = 0.0f;        ///< semitones
        float sprayDraw = 0.0f;   ///< by the arrow
        float sizeOffset = 0.0f;  ///< milliseconds
        double start = 0.0;       ///< samples
        float spray = 0.0f;       ///< fraction of the loop
    };
    /// What both grains of a pair share.
    struct Pair {
        float sizeMs = 0.0f;
        double base = 0.0;  ///< start ahead of spray and quantisation
        double loop = 0.0;  ///< effective loop length
        bool reversed = false;
        float pan = 0.5f;
        float distanceGain = 1.0f;
        GrainShape shape;
    };

    bool MayStart(uint32_t n) const {
        return (pendingTrigger || clocks.tick[n] > 0.5f) &&
               (settings.triggerMode != 1 || curves.At(Curve::GrainTrigger, n) > 0.5f);
    }
    bool AnyMayStart(uint32_t first, uint32_t count) const;
    bool Decide(uint32_t n, uint32_t draw) const;
    void Start(uint32_t n);
    void DrawJitter(uint32_t n);
    void DrawLayerOffset(uint32_t n);
    float PitchOf(float draw, uint32_t n) const;
    double BasePosition(uint32_t n);
    float GrainSizeMs(uint32_t n) const;
    float DrawSizeOffset(float sizeMs, uint32_t n);
    void DrawShared(Pair& pair, uint32_t n);
    void DrawRight(const Side& leftSide, Side& rightSide, const Pair& pair, uint32_t n);
    void PlaceStarts(Side& leftSide, Side& rightSide, const Pair& pair) const;
    void AddGrain(const Side& side, const Pair& pair, uint32_t n, bool rightSide);

    float Uniform() { return prims::XorshiftUniform(randomA); }
    float Triangular() {
        const float a = Uniform();
        return a - Uniform();
    }

    GrainPool& grains;
    CaptureBuffer& capture;
    MarkerRing& markers;
    const GranularSettings& settings;
    const BlockCurves& curves;
    const StereoPosition& position;
    GatePulse& gate;

    Clocks clocks;
    uint32_t randomA;              ///< xorshift state of all draws but the direction's
    std::mt19937 directionEngine;  ///< default seed 5489
    double directionChance = 0.5;  ///< of a reversed grain
    float densityJitter = 0.0f;
    float layerOffset = 0.0f;
    bool pendingTrigger = true;
    uint32_t startedCount = 0;
    GrainListener* listener = nullptr;
};

}  // namespace Quorvan::dsp
