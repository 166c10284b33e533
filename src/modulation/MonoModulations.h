#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>

#include "modulation/ModulationsBase.h"
#include "primitives/AlignedVector.h"

namespace Quorvan::dsp {

/// Modulation matrix with one channel: holds the source rows and the destination rows and sums the
/// one into the other, without clipping; a reader clamps the position that it moves.
///
/// A destination row has a head of its own, whose last float tells readers whether any source
/// reaches the row. Rows are aligned for vectors of four as long as block sizes are multiples of 4.
template <uint32_t NumSources, uint32_t NumDestinations, uint32_t Channels, ModulationPolicy Policy>
class MonoModulations : public ModulationsBase<NumSources, NumDestinations, Policy> {
    static_assert(Channels == 1, "this matrix has one channel");
    using Base = ModulationsBase<NumSources, NumDestinations, Policy>;

public:
    using typename Base::DestinationSet;

    /// As the base. Rows exist from here on, at a small default size.
    MonoModulations(uint32_t alwaysDirtyMask, Parameter mapping, std::string moduleName)
        : Base(alwaysDirtyMask, std::move(mapping), std::move(moduleName)) {
        MonoModulations::OnSetup(44100.0f, 44);
        MonoModulations::OnReset(true);
        this->needsFullUpdate = true;
    }

    void OnSetup(float sampleRate, uint32_t newBlockSize) override;
    bool OnProcess(ProcessBlock& block) override;
    bool IsDestinationConnected(uint32_t destination) override {
        return GetDestinationRow(destination)[-1] == Policy::kConnected;
    }
    void RecomputeDestinations(DestinationSet rows, uint32_t frames) override;
    void UpdateConnectionMarkers(DestinationSet rows) override;

    /// Where source s is written.
    float* GetSourceRow(uint32_t source) { return sources[source]; }
    /// First sample of row d; the activity word is the float ahead of it.
    float* GetDestinationRow(uint32_t destination) {
        return destinationStorage.data() + RowStride() * destination + Policy::kHeadFloats;
    }

private:
    size_t RowStride() const { return size_t{blockSize} + Policy::kHeadFloats; }
    void SumRow(uint32_t destination, uint32_t samples);

    AlignedVector sourceStorage;       ///< one row behind the other
    AlignedVector destinationStorage;  ///< likewise, each row behind its head
    std::array<float*, NumSources> sources{};
    uint32_t blockSize = 0;
};

template <uint32_t NumSources, uint32_t NumDestinations, uint32_t Channels, ModulationPolicy Policy>
void MonoModulations<NumSources, NumDestinations, Channels, Policy>::OnSetup(
    float, uint32_t newBlockSize) {
    blockSize = newBlockSize;
    sourceStorage.assign(size_t{NumSources} * blockSize, 0.0f);
    destinationStorage.assign(RowStride() * (NumDestinations + 1), 0.0f);
    for (uint32_t s = 0; s < NumSources; ++s)
        sources[s] = sourceStorage.data() + size_t{s} * blockSize;
    UpdateConnectionMarkers(DestinationSet::All());
    RecomputeDestinations(DestinationSet::All(), blockSize);
}

/// Rows are also read before their sources have run again, and then by a block that may be longer:
/// behind a short block all rows hold its last sample.
template <uint32_t NumSources, uint32_t NumDestinations, uint32_t Channels, ModulationPolicy Policy>
bool MonoModulations<NumSources, NumDestinations, Channels, Policy>::OnProcess(
    ProcessBlock& block) {
    const bool result = Base::OnProcess(block);
    const uint32_t frames = block.numFrames;
    if (frames == 0 || frames >= blockSize)
        return result;
    const auto hold = [&](float* row) {
        std::fill(row + frames, row + blockSize, row[frames - 1]);
    };
    for (float* const row : sources)
        hold(row);
    for (uint32_t d = 0; d < NumDestinations; ++d)
        hold(GetDestinationRow(d));
    return result;
}

template <uint32_t NumSources, uint32_t NumDestinations, uint32_t Channels, ModulationPolicy Policy>
void MonoModulations<NumSources, NumDestinations, Channels, Policy>::RecomputeDestinations(
    DestinationSet rows, uint32_t frames) {
    const uint32_t samples = frames / 4 * 4;
    rows.ForEach([this, samples](uint32_t destination) { SumRow(destination, samples); });
}

/// Sums in the order of the sources, as if from a cleared row: the first term joins with the zeros.
template <uint32_t NumSources, uint32_t NumDestinations, uint32_t Channels, ModulationPolicy Policy>
void MonoModulations<NumSources, NumDestinations, Channels, Policy>::SumRow(uint32_t destination,
                                                                            uint32_t samples) {
    float* __restrict const row = GetDestinationRow(destination);
    bool cleared = false;
    for (uint32_t s = 0; s < NumSources; ++s) {
        const float amount = this->EffectiveAmount(s, destination);
        if (amount == 0.0f)
            continue;
        const float* __restrict const source = sources[s];
        if (cleared) {
            for (uint32_t j = 0; j < samples; ++j)
                row[j] += amount * source[j];
        } else {
            for (uint32_t j = 0; j < samples; ++j)
                row[j] = 0.0f + amount * source[j];
            cleared = true;
        }
    }
    if (!cleared)
        std::fill_n(row, samples, 0.0f);
}

template <uint32_t NumSources, uint32_t NumDestinations, uint32_t Channels, ModulationPolicy Policy>
void MonoModulations<NumSources, NumDestinations, Channels, Policy>::UpdateConnectionMarkers(
    DestinationSet rows) {
    const DestinationSet reached = this->ReachedDestinations();
    rows.ForEach([&](uint32_t destination) {
        GetDestinationRow(destination)[-1] =
            reached.Contains(destination) ? Policy::kConnected : Policy::kIdle;
    });
}

/// The shape in use, compiled once.
extern template class ModulationsBase<7, 95, DefaultModulationPolicy>;
extern template class MonoModulations<7, 95, 1, DefaultModulationPolicy>;

}  // namespace Quorvan::dsp
