#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Quorvan::Processor {
class IProcessor;
}

namespace Quorvan::Host {

inline constexpr uint32_t kModulationSources = 7;
inline constexpr uint32_t kModulationDestinations = 95;

/// Readable names of what modulates and what is modulated. Rows count from 0, as the matrix does;
/// finding ignores case.

/// "Envelope Follower", "Function 1" .. "Function 3", "Step Sequencer", "Macro 1", "Macro 2".
const std::string& SourceName(uint32_t source);
/// "Pitch", "Grain Size", "FX1 Filter Freq", ...
const std::string& DestinationName(uint32_t destination);
std::optional<uint32_t> FindSource(std::string_view name);
std::optional<uint32_t> FindDestination(std::string_view name);
/// The sentences for names that the two do not know, with suggestions.
std::string UnknownSource(std::string_view name);
std::string UnknownDestination(std::string_view name);

/// Index of the parameter that holds how far a source moves a destination. Its position 0.5 is not
/// at all, 0 and 1 the whole travel down and up.
uint32_t AmountIndex(uint32_t source, uint32_t destination);
/// Index of the parameter that switches that routing on and off.
uint32_t ActivatedIndex(uint32_t source, uint32_t destination);
/// Position of an amount -1..1, and back.
float AmountPosition(float amount);
float AmountOfPosition(float position);

/// Index of the parameter that a destination moves now. Where several share it, such as the free
/// and the synced rate of one clock, the processor's present modes decide.
uint32_t TargetOfDestination(Processor::IProcessor& processor, uint32_t destination);

}  // namespace Quorvan::Host
