#include "tools/render/ModulationLog.h"

#include <utility>

#include "host/parameters/ModulationNames.h"
#include "processor/ProcessorIndex.h"
#include "tools/support/Failure.h"
#include "tools/support/Numbers.h"

namespace Quorvan::Tools {

namespace {

constexpr uint32_t kSlices = 8;  // samples in a chunk
constexpr uint32_t kBlocksPerSlice = 4;
constexpr uint32_t kLastBlock = kSlices * kBlocksPerSlice - 1;  // in which a chunk is sent
constexpr size_t kChunkBytes = (Host::kModulationSources + Host::kModulationDestinations) * kSlices;
constexpr int kDecimals = 4;

}  // namespace

ModulationLog::ModulationLog(std::vector<uint32_t> destinations) : rows(std::move(destinations)) {}

void ModulationLog::OnBlock(const Host::BlockReport& block) {
    blockStart = block.firstFrame;
    blockFrames = block.frames;
}

void ModulationLog::OnBlobChange(uint32_t index, std::span<const uint8_t> data) {
    if (index != Processor::kFeedbackBigChunk || data.size() != kChunkBytes)
        return;
    for (uint32_t slice = 0; slice < kSlices; ++slice) {
        const uint64_t ago = uint64_t{kLastBlock - kBlocksPerSlice * slice} * blockFrames;
        if (ago > blockStart)
            continue;  // from ahead of the render, when the preset was put in
        frames.push_back(blockStart - ago);
        for (uint32_t source = 0; source < Host::kModulationSources; ++source)
            bytes.push_back(data[source * kSlices + slice]);
        for (const uint32_t row : rows)
            bytes.push_back(data[(Host::kModulationSources + row) * kSlices + slice]);
    }
}

size_t ModulationLog::Columns() const { return Host::kModulationSources + rows.size(); }

const std::string& ModulationLog::Name(size_t column) const {
    if (column < Host::kModulationSources)
        return Host::SourceName(static_cast<uint32_t>(column));
    return Host::DestinationName(rows[column - Host::kModulationSources]);
}

double ModulationLog::Value(size_t sample, size_t column) const {
    const double byte = bytes[sample * Columns() + column];
    return column < Host::kModulationSources ? byte / 127.5 - 1.0 : byte / 255.0;
}

std::string ModulationLog::Csv(double rate, uint64_t endFrame) const {
    std::string text = "seconds";
    for (size_t column = 0; column < Columns(); ++column)
        text.append(",").append(Name(column));
    text += "\n";
    for (size_t sample = 0; sample < Samples() && frames[sample] < endFrame; ++sample) {
        text += Fixed(static_cast<double>(frames[sample]) / rate, kDecimals);
        for (size_t column = 0; column < Columns(); ++column)
            text.append(",").append(Fixed(Value(sample, column), kDecimals));
        text += "\n";
    }
    return text;
}

std::vector<uint32_t> FindDestinations(const std::vector<std::string>& names,
                                       const Host::ParameterCatalog& catalog) {
    std::vector<uint32_t> rows;
    for (const std::string& name : names) {
        const std::optional<uint32_t> row = catalog.FindDestination(name);
        if (!row)
            throw Failure(ExitCode::Usage, Host::UnknownDestination(name) +
                                               " \"tesserae destinations\" lists them all.");
        rows.push_back(*row);
    }
    return rows;
}

std::vector<uint32_t> RoutedSources(const Host::Engine& engine) {
    std::vector<uint32_t> routed;
    for (uint32_t source = 0; source < Host::kModulationSources; ++source) {
        for (uint32_t row = 0; row < Host::kModulationDestinations; ++row) {
            if (Host::AmountOfPosition(engine.Position(Host::AmountIndex(source, row))) == 0.0f ||
                engine.Position(Host::ActivatedIndex(source, row)) <= 0.5f)
                continue;
            routed.push_back(source);
            break;
        }
    }
    return routed;
}

}  // namespace Quorvan::Tools
