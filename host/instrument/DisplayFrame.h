#pragma once

#include <algorithm>
#include <array>
#include <cstdint>

#include "host/engine/Transport.h"
#include "host/instrument/TapeOutline.h"
#include "host/parameters/ModulationNames.h"

namespace Quorvan::Host {

/// A grain as it sounds. Places are on the tape, 0..1 of its length.
struct ShownGrain {
    uint64_t number = 0;     ///< of its own, as long as it sounds; counts up from 1
    float place = 0.0f;      ///< where it reads
    float length = 0.0f;     ///< stretch of tape that it reads in all
    float progress = 0.0f;   ///< share of that which it has read
    float semitones = 0.0f;  ///< 0 is the recorded pitch
    float pan = 0.5f;        ///< 0 left, 0.5 centre, 1 right
    float gain = 1.0f;       ///< what its distance leaves
    float envelope = 0.0f;   ///< present value, 0..1
    bool reversed = false;
};

/// What the scopes show of a block.
struct DisplayMoment {
    std::array<float, kModulationSources> sources{};  ///< -1..1
    float follower = 0.0f;                            ///< level that the follower hears
    std::array<float, 2> space{};                     ///< X and Y, 0..1
};

/// A moment each eighth block, round and round: moment m is at m % kMoments.
struct DisplayMoments {
    static constexpr uint32_t kMoments = 64;
    static constexpr uint32_t kBlocks = 8;

    const DisplayMoment& At(uint64_t moment) const { return kept[moment % kMoments]; }
    /// The first one that can still be read by who has taken this many.
    uint64_t FirstToTake(uint64_t taken) const {
        return std::max(taken, moments - std::min<uint64_t>(moments, kMoments));
    }

    uint64_t moments = 0;  ///< so far
    std::array<DisplayMoment, kMoments> kept{};
};

/// Single numbers of a picture.
struct DisplayState {
    uint64_t number = 0;  ///< of frames; 0: none has come yet
    uint64_t stream = 0;  ///< counts up where an engine's first sound begins
    uint64_t time = 0;    ///< in audio frames, since then
    double sampleRate = 0.0;
    Transport transport;
    float load = 0.0f;  ///< share of the time that the audio lasts which it took to work out

    float tapeSeconds = 0.0f;
    float writePlace = 0.0f, playPlace = 0.0f;
    uint64_t pairsStarted = 0;  ///< since somebody watches

    std::array<float, 3> functionPhases{};  ///< places on the drawn curves, 0..1
    uint32_t sequencerStep = 0;             ///< that the step sequencer plays, from 0
    uint32_t beatStep = 0;                  ///< the same of the beat mode's pattern
    std::array<float, kModulationDestinations> destinations{};  ///< positions, modulation included

    /// Highest levels since the frame before, linear, by side.
    std::array<float, 2> input{}, wet{}, feedback{}, output{};
    float limiter = 0.0f;  ///< "Limiter_OutGainReduction": 0..1, 0.5 at about 19 dB of reduction
};

/// Transients or grid lines.
struct DisplayMarkers {
    static constexpr uint32_t kMarkerRoom = 200;

    uint32_t markerCount = 0;
    std::array<float, kMarkerRoom> markers{};  ///< their places
};

/// What an instrument does at one moment, and what it has done lately.
struct DisplayFrame : DisplayState, DisplayMarkers, DisplayMoments {
    static constexpr uint32_t kGrainRoom = 258;

    TapeOutline::Columns tape;
    uint32_t grainCount = 0;
    std::array<ShownGrain, kGrainRoom> grains{};  ///< grainCount of them
};

}  // namespace Quorvan::Host
