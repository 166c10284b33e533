#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "host/engine/Engine.h"
#include "host/parameters/ParameterCatalog.h"

namespace Quorvan::Tools {

/// The modulation of a render as a user interface gets it: the seven sources and some destinations,
/// a sample every four blocks, from the feedback chunks that the processor sends.
///
/// Needs    an engine that sends feedback, with "GUI Visible" up
/// Time     of a sample: the first frame of its block, on the clock of Engine::FramesIn. A chunk
///          comes whole every 32 blocks: what is sampled behind the last one is not told.
/// Columns  the sources first, -1..1 in steps of 1/127; behind them the destinations as asked for,
///          positions 0..1 in steps of 1/255, such as a knob shows them
class ModulationLog final : public Host::EngineListener {
public:
    /// destinations: rows of the matrix, in the order of the columns.
    explicit ModulationLog(std::vector<uint32_t> destinations);

    void OnBlock(const Host::BlockReport& block) override;
    void OnBlobChange(uint32_t index, std::span<const uint8_t> data) override;

    size_t Columns() const;
    /// Readable name of a column.
    const std::string& Name(size_t column) const;
    size_t Samples() const { return frames.size(); }
    uint64_t Frame(size_t sample) const { return frames[sample]; }
    double Value(size_t sample, size_t column) const;

    /// All samples ahead of a frame as a CSV table of seconds and columns.
    std::string Csv(double rate, uint64_t endFrame) const;

private:
    std::vector<uint32_t> rows;    ///< destinations of the columns behind the sources
    std::vector<uint64_t> frames;  ///< of each sample
    std::vector<uint8_t> bytes;    ///< sample by sample, as they came
    uint64_t blockStart = 0;       ///< of the block that is being told about
    uint32_t blockFrames = 0;
};

/// Rows of the matrix by their readable names. Throws Failure for a name that there is not.
std::vector<uint32_t> FindDestinations(const std::vector<std::string>& names,
                                       const Host::ParameterCatalog& catalog);
/// Sources that reach any destination at present.
std::vector<uint32_t> RoutedSources(const Host::Engine& engine);

}  // namespace Quorvan::Tools
