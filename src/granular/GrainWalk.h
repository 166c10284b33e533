#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "granular/Grain.h"
#include "granular/GrainKernels.h"
#include "granular/GrainPool.h"
#include "granular/GrainRuns.h"
#include "primitives/AlignedVector.h"

namespace Quorvan::dsp {

/// Where the read heads of grains stand at every sample of a block, to the last bit.
///
/// A step rounds three times, and where a grain meets samples closely the last bit of its position
/// can decide between two of them. Each step has to wait for the one before, so that the heads of
/// several grains walk side by side.
class GrainWalk {
public:
    static constexpr uint32_t kHeads = GrainKernels::kHeads;

    /// The way of one grain, in steps from its start frame on.
    struct Path {
        const double& Read(uint32_t step) const { return read[size_t{step} * kHeads]; }
        const double& Wrapped(uint32_t step) const { return wrapped[size_t{step} * kHeads]; }

        const double* read = nullptr;     ///< first of one in kHeads
        const double* wrapped = nullptr;  ///< likewise, of the second position
    };

    void Setup(uint32_t blockSize);
    void BeginBlock(uint32_t frames);
    /// The path of the next grain in the pool's order that runs say needs one. It has not been
    /// moved in this block yet.
    const Path& Next(const GrainPool& pool, uint16_t slot, const GrainRuns& runs);

    void UseKernels(const GrainKernels& other) { kernels = &other; }

private:
    void WalkFrom(const GrainPool& pool, uint16_t slot, const GrainRuns& runs);
    uint32_t AddHead(double at, double step, double end);

    const GrainKernels* kernels = &GrainKernels::Best();
    uint32_t numFrames = 0;

    // The batch.
    std::array<double, kHeads> position{}, increment{}, wrap{};
    uint32_t heads = 0;
    std::array<Path, kHeads> paths{};
    uint32_t walked = 0, taken = 0;  ///< grains

    std::vector<double, AlignedAllocator<double>> positions;
};

}  // namespace Quorvan::dsp
