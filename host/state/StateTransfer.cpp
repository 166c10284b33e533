#include "host/state/StateTransfer.h"

#include <optional>
#include <vector>

#include "host/parameters/ModulationNames.h"
#include "host/parameters/ShellIndex.h"
#include "host/state/ParameterReader.h"

namespace Quorvan::Host {

namespace {

/// By index; empty where a parameter is left alone.
using Positions = std::vector<std::optional<float>>;

/// Every setting as a new processor has it.
Positions InitialSettings(const ParameterCatalog& catalog) {
    Positions positions(catalog.Count());
    for (const ParameterInfo& info : catalog.All()) {
        if (IsStored(info, ParameterScope::Sound))
            positions[info.index] = info.defaultPosition;
    }
    return positions;
}

void Overlay(Positions& positions, const std::vector<ParameterValue>& values,
             const ParameterCatalog& catalog, ParameterScope scope) {
    for (const ParameterValue& value : values) {
        if (value.index < catalog.Count() && IsStored(catalog[value.index], scope))
            positions[value.index] = value.position;
    }
}

void Restore(Engine& engine, const Positions& positions) {
    std::vector<ParameterValue> values;
    values.reserve(positions.size());
    for (uint32_t index = 0; index < positions.size(); ++index)
        if (positions[index])
            values.push_back({index, *positions[index]});
    engine.Restore(values);
}

/// Whether a cell of the matrix is at work, and so is told as a routing.
bool IsRouted(const Engine& engine, uint32_t source, uint32_t destination) {
    return AmountOfPosition(engine.Position(AmountIndex(source, destination))) != 0.0f &&
           engine.Position(ActivatedIndex(source, destination)) > 0.5f;
}

std::vector<Routing> CaptureRoutings(const Engine& engine) {
    std::vector<Routing> routings;
    for (uint32_t d = 0; d < kModulationDestinations; ++d) {
        for (uint32_t s = 0; s < kModulationSources; ++s) {
            if (IsRouted(engine, s, d))
                routings.push_back({s, d, AmountOfPosition(engine.Position(AmountIndex(s, d)))});
        }
    }
    return routings;
}

}  // namespace

void ApplyPreset(const Preset& preset, Engine& engine, const ParameterCatalog& catalog) {
    Positions positions = InitialSettings(catalog);
    Overlay(positions, preset.parameters, catalog, ParameterScope::Sound);
    for (const Routing& routing : preset.routings) {
        positions[AmountIndex(routing.source, routing.destination)] =
            AmountPosition(routing.amount);
        positions[ActivatedIndex(routing.source, routing.destination)] = 1.0f;
    }
    Restore(engine, positions);
}

void ApplyState(const State& state, Engine& engine, const ParameterCatalog& catalog) {
    Positions positions = InitialSettings(catalog);
    Overlay(positions, state.parameters, catalog, ParameterScope::Project);
    Restore(engine, positions);
}

Preset CapturePreset(const Engine& engine, const ParameterCatalog& catalog) {
    Preset preset;
    preset.routings = CaptureRoutings(engine);
    Positions positions(catalog.Count());
    for (const ParameterInfo& info : catalog.All()) {
        if (!IsStored(info, ParameterScope::Sound))
            continue;
        if (const float position = engine.Position(info.index); position != info.defaultPosition)
            positions[info.index] = position;
    }
    for (const Routing& routing : preset.routings)
        positions[AmountIndex(routing.source, routing.destination)].reset();
    for (uint32_t index = 0; index < positions.size(); ++index)
        if (positions[index])
            preset.parameters.push_back({index, *positions[index]});
    return preset;
}

State CaptureState(const Engine& engine, const ParameterCatalog& catalog) {
    State state;
    for (const ParameterInfo& info : catalog.All()) {
        if (IsStored(info, ParameterScope::Sound) || info.index == kBypassIndex)
            state.parameters.push_back({info.index, engine.Position(info.index)});
    }
    return state;
}

}  // namespace Quorvan::Host
