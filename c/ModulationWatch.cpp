#include "c/ModulationWatch.h"

#include "host/parameters/ShellIndex.h"

namespace Quorvan::C {

namespace {

/// A report holds eight moments of each row; the last is the latest.
constexpr size_t kMoments = 8;

}  // namespace

void ModulationWatch::OnBlobChange(uint32_t index, std::span<const uint8_t> data) {
    if (index != Processor::kFeedbackBigChunk ||
        data.size() != (sources.size() + destinations.size()) * kMoments)
        return;
    const auto latest = [&](size_t row) {
        return static_cast<float>(data[row * kMoments + kMoments - 1]);
    };
    for (size_t row = 0; row < sources.size(); ++row)
        sources[row] = latest(row) / 127.5f - 1.0f;
    for (size_t row = 0; row < destinations.size(); ++row)
        destinations[row] = latest(sources.size() + row) / 255.0f;
}

}  // namespace Quorvan::C
