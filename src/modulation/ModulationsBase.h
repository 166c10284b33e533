#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <unordered_set>
#include <utility>

#include "framework/Module.h"
#include "framework/Parameter.h"
#include "modulation/IndexSet.h"
#include "modulation/ModulationPolicy.h"

namespace Quorvan::dsp {

/// Routing of a modulation matrix: an amount and a switch for each cell of NumSources sources times
/// NumDestinations destination rows, and the sets that tell which rows need work. Where the rows
/// live and how they are summed is the derived class's business.
///
/// Inputs      none; sources announce themselves by SourceUpdated, or are taken in by Process
/// Outputs     none; rows are read where the derived class keeps them
/// Parameters  cell i = d * NumSources + s of source s and destination d:
///             i                   amount, -1..1 by the mapping given at construction
///             kFirstSwitchId + i  switch, above 0.5 on; an amount outlives its being off
/// Cost        rows that a source reaches are summed when it is announced; what is not routed, and
///             what has not changed, costs nothing
template <uint32_t NumSources, uint32_t NumDestinations, ModulationPolicy Policy>
class ModulationsBase : public Module {
public:
    using SourceSet = IndexSet<NumSources>;
    using DestinationSet = IndexSet<NumDestinations>;

    static constexpr uint32_t kCells = NumSources * NumDestinations;
    static constexpr uint32_t kFirstSwitchId = kCells;
    static constexpr uint32_t kParameterCount = 2 * kCells;

    /// alwaysDirtyMask: bit s set where source s counts as new in each block. mapping: curve and
    /// range of all amounts.
    ModulationsBase(uint32_t alwaysDirtyMask, Parameter mapping, std::string moduleName)
        : Module(std::move(moduleName), 0, 0),
          dirtySources(SourceSet::FromMask(alwaysDirtyMask)),
          alwaysDirty(dirtySources),
          amountMapping(std::move(mapping)) {
        activated.fill(DestinationSet::All());
    }

    bool SetParameterNormalized(uint32_t id, float position) override;
    float GetParameterNormalized(uint32_t id) override;
    void GetParameterName(uint32_t id, ParameterNameSink& out) override;
    bool OnProcess(ProcessBlock& block) override;
    void OnReset(bool) override {}

    /// Whether the row's readers find it active.
    virtual bool IsDestinationConnected(uint32_t destination) = 0;
    /// Told which sources have been taken in.
    virtual void OnSourcesConsumed(SourceSet) {}
    virtual void GetSourceName(uint32_t source, ParameterNameSink& out);
    virtual void GetDestinationName(uint32_t destination, ParameterNameSink& out);
    /// Forms the sums of these rows anew from the sources as they stand.
    virtual void RecomputeDestinations(DestinationSet rows, uint32_t frames) = 0;
    /// Writes the activity words of these rows.
    virtual void UpdateConnectionMarkers(DestinationSet rows) = 0;

    /// cell below kFirstSwitchId, value -1..1.
    void SetAmount(uint32_t cell, float value);
    /// id from kFirstSwitchId on.
    void SetActivated(uint32_t id, bool on);
    /// Source row s holds a block of frames samples: brings the rows that it reaches up to date.
    void SourceUpdated(uint32_t source, uint32_t frames);

    float Amount(uint32_t cell) const { return amounts[cell]; }
    bool IsActivated(uint32_t cell) const {
        return activated[cell % NumSources].Contains(cell / NumSources);
    }

    // Between blocks, as for parameters. The matrix owns no listener.
    void AddListener(ModulationListener* listener) { listeners.insert(listener); }
    void RemoveListener(ModulationListener* listener) { listeners.erase(listener); }

    /// Rows that at least one source reaches.
    DestinationSet ReachedDestinations() const {
        DestinationSet reached;
        for (const DestinationSet& rows : reach)
            reached |= rows;
        return reached;
    }

protected:
    float EffectiveAmount(uint32_t source, uint32_t destination) const {
        return effectiveAmounts[destination * NumSources + source];
    }
    uint32_t lastFrames = 0;             ///< numFrames of the last block
    SourceSet dirtySources;              ///< not taken in yet in this block
    SourceSet alwaysDirty;               ///< what dirtySources goes back to behind a block
    DestinationSet changedDestinations;  ///< amounts written since the last block
    std::array<DestinationSet, NumSources> activated;  ///< switches, by source
    std::array<DestinationSet, NumSources> reach;      ///< rows with an effective amount, by source
    Parameter amountMapping;                           ///< curve and range of all amounts
    std::array<float, kCells> amounts{};
    std::array<float, kCells> effectiveAmounts{};  ///< 0 where the switch is off
    std::unordered_set<ModulationListener*> listeners;

private:
    /// An amount or a switch of the cell has been written.
    void UpdateCell(uint32_t cell);
    void UpdateReach(uint32_t source, uint32_t destination);
};

template <uint32_t NumSources, uint32_t NumDestinations, ModulationPolicy Policy>
bool ModulationsBase<NumSources, NumDestinations, Policy>::SetParameterNormalized(uint32_t id,
                                                                                  float position) {
    if (id < kFirstSwitchId)
        SetAmount(id, amountMapping.ValueOf(position));
    else if (id < kParameterCount)
        SetActivated(id, position > 0.5f);
    return true;
}

template <uint32_t NumSources, uint32_t NumDestinations, ModulationPolicy Policy>
float ModulationsBase<NumSources, NumDestinations, Policy>::GetParameterNormalized(uint32_t id) {
    if (id < kFirstSwitchId)
        return amountMapping.PositionOf(amounts[id]);
    return id < kParameterCount && IsActivated(id - kFirstSwitchId) ? 1.0f : 0.0f;
}

template <uint32_t NumSources, uint32_t NumDestinations, ModulationPolicy Policy>
void ModulationsBase<NumSources, NumDestinations, Policy>::GetParameterName(
    uint32_t id, ParameterNameSink& out) {
    if (id >= kParameterCount)
        return;
    const uint32_t cell = id < kFirstSwitchId ? id : id - kFirstSwitchId;
    AppendPath(out);
    GetDestinationName(cell / NumSources, out);
    out.AppendSeparator();
    GetSourceName(cell % NumSources, out);
    out.Append(id < kFirstSwitchId ? "_Amount" : "_Activated");
}

template <uint32_t NumSources, uint32_t NumDestinations, ModulationPolicy Policy>
bool ModulationsBase<NumSources, NumDestinations, Policy>::OnProcess(ProcessBlock& block) {
    DestinationSet rows = changedDestinations;
    if (!rows.IsEmpty())
        UpdateConnectionMarkers(rows);
    dirtySources.ForEach([&](uint32_t source) { rows |= reach[source]; });
    OnSourcesConsumed(dirtySources);
    dirtySources = alwaysDirty;
    changedDestinations = {};
    if (block.numFrames != lastFrames)
        rows = DestinationSet::All();
    RecomputeDestinations(rows, block.numFrames);
    lastFrames = block.numFrames;
    return true;
}

template <uint32_t NumSources, uint32_t NumDestinations, ModulationPolicy Policy>
void ModulationsBase<NumSources, NumDestinations, Policy>::GetSourceName(uint32_t source,
                                                                         ParameterNameSink& out) {
    out.Append(Policy::kSourceStem);
    out.AppendNumber(source + 1);
}

template <uint32_t NumSources, uint32_t NumDestinations, ModulationPolicy Policy>
void ModulationsBase<NumSources, NumDestinations, Policy>::GetDestinationName(
    uint32_t destination, ParameterNameSink& out) {
    out.Append(Policy::kDestinationStem);
    out.AppendNumber(destination + 1);
}

template <uint32_t NumSources, uint32_t NumDestinations, ModulationPolicy Policy>
void ModulationsBase<NumSources, NumDestinations, Policy>::SetAmount(uint32_t cell, float value) {
    if (value == amounts[cell])
        return;
    amounts[cell] = value;
    UpdateCell(cell);
}

template <uint32_t NumSources, uint32_t NumDestinations, ModulationPolicy Policy>
void ModulationsBase<NumSources, NumDestinations, Policy>::SetActivated(uint32_t id, bool on) {
    const uint32_t cell = id - kFirstSwitchId;
    if (IsActivated(cell) == on)
        return;
    activated[cell % NumSources].Put(cell / NumSources, on);
    UpdateCell(cell);
}

template <uint32_t NumSources, uint32_t NumDestinations, ModulationPolicy Policy>
void ModulationsBase<NumSources, NumDestinations, Policy>::UpdateCell(uint32_t cell) {
    effectiveAmounts[cell] = IsActivated(cell) ? amounts[cell] : 0.0f;
    UpdateReach(cell % NumSources, cell / NumSources);
    changedDestinations.Insert(cell / NumSources);
}

template <uint32_t NumSources, uint32_t NumDestinations, ModulationPolicy Policy>
void ModulationsBase<NumSources, NumDestinations, Policy>::UpdateReach(uint32_t source,
                                                                       uint32_t destination) {
    const bool connected = EffectiveAmount(source, destination) != 0.0f;
    if (reach[source].Contains(destination) == connected)
        return;
    reach[source].Put(destination, connected);
    for (ModulationListener* listener : listeners)
        listener->OnConnectionChanged(source, destination, connected);
}

template <uint32_t NumSources, uint32_t NumDestinations, ModulationPolicy Policy>
void ModulationsBase<NumSources, NumDestinations, Policy>::SourceUpdated(uint32_t source,
                                                                         uint32_t frames) {
    if (!dirtySources.Contains(source) && frames == lastFrames)
        return;
    dirtySources.Remove(source);
    OnSourcesConsumed(SourceSet::Of(source));
    RecomputeDestinations(reach[source], frames);
}

}  // namespace Quorvan::dsp
