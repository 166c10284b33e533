#include "host/engine/TailEstimator.h"

#include <algorithm>
#include <array>
#include <limits>

#include "host/engine/EffectGain.h"
#include "host/engine/EffectTail.h"
#include "host/engine/Engine.h"
#include "host/engine/GranularTail.h"
#include "host/engine/ParameterReach.h"
#include "host/engine/TailMath.h"
#include "host/parameters/ModulationNames.h"
#include "host/parameters/ShellIndex.h"

namespace Quorvan::Host {

namespace {

/// Smoothers, fades and the feedback delay, which no parameter changes.
constexpr double kSettling = 0.3;  // seconds
constexpr uint32_t kDryWetRow = 0;
/// Destinations that can silence what goes on sounding unheard: mixes and the granular volume.
constexpr std::array<uint32_t, 4> kLevelRows{kDryWetRow, 2, 35, 65};
constexpr std::array<uint32_t, 4> kClocks{1, 2, 3, 4};  ///< functions and step sequencer

/// Puts the stages together in their order: the granular engine with the effects of its loop, those
/// on the wet signal, those behind the mix.
class ChainTail {
public:
    ChainTail(const Engine& engine, const ParameterCatalog& catalog)
        : reach(engine, catalog),
          slots{SlotReach(reach, 1), SlotReach(reach, 2)},
          song(engine.GetTransport()),
          wetIsHeard(reach.Highest("Dry / Wet", kDryWetRow) > 0.0) {}

    Tail Estimate() const;

private:
    bool IsMutedByClocks() const;
    Tail TailAt(SlotPlace place, double silence) const;
    double GainAt(SlotPlace place) const;

    ParameterReach reach;
    std::array<SlotReach, 2> slots;
    Transport song;
    bool wetIsHeard;
};

Tail ChainTail::TailAt(SlotPlace place, double silence) const {
    Tail tail;
    for (const SlotReach& slot : slots)
        if (slot.Place() == place)
            tail = tail + EffectTail(slot, song.tempo, silence);
    return tail;
}

double ChainTail::GainAt(SlotPlace place) const {
    double gain = 1.0;
    for (const SlotReach& slot : slots)
        if (slot.Place() == place)
            gain *= EffectGain(slot);
    return gain;
}

/// What a slow function mutes comes back at its time.
bool ChainTail::IsMutedByClocks() const {
    return std::any_of(kLevelRows.begin(), kLevelRows.end(), [this](uint32_t row) {
        return std::any_of(kClocks.begin(), kClocks.end(),
                           [&](uint32_t source) { return reach.IsRouted(source, row); });
    });
}

/// What raises the level on the way makes the last of a tail audible for longer. An effect that
/// could raise it without end is endless itself.
Tail ChainTail::Estimate() const {
    const double behind = GainAt(SlotPlace::BehindMix);
    const double wet = GainAt(SlotPlace::WetSignal);
    const double loop = GainAt(SlotPlace::Loop);
    const double grains = GranularGain(reach, song.tempo);
    const bool open = FeedbackIsOpen(reach);
    const double raised = behind * (wetIsHeard ? wet * grains * (open ? loop : 1.0) : 1.0);
    const double silence = std::max(kInaudible / raised, std::numeric_limits<double>::min());
    const double hidden = IsMutedByClocks() ? std::numeric_limits<double>::infinity() : kSettling;
    const Tail tail = Tail{kSettling, false, hidden} + TailAt(SlotPlace::BehindMix, silence);
    if (!wetIsHeard)
        return tail;
    // The tape waits for the first beat.
    const double preRoll = song.playing ? std::max(0.0, -60.0 * song.beat / song.tempo) : 0.0;
    return tail + Tail{preRoll, false, preRoll} + TailAt(SlotPlace::WetSignal, silence) +
           GranularTail(reach, song.tempo, silence, TailAt(SlotPlace::Loop, silence), loop);
}

}  // namespace

Tail EstimateTail(Engine& engine, const ParameterCatalog& catalog) {
    if (engine.Position(kBypassIndex) > 0.5f)
        return {};
    Tail tail = ChainTail(engine, catalog).Estimate();
    tail.endless = tail.endless || !(tail.seconds <= kLongestTail);
    if (tail.endless)
        tail.seconds = kEndlessTail;
    return tail;
}

}  // namespace Quorvan::Host
