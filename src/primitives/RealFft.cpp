#include "primitives/RealFft.h"

#include <bit>

namespace Quorvan::dsp {

namespace {
constexpr int kDivideInverse = 2;  // flag: only the inverse transform, which is unused, is scaled
constexpr int kFast = 1;           // hint
}  // namespace

void RealFft::Resize(int64_t length) {
    if (length == size)
        return;
    Free();
    size = length;
    if (RadixFourFft::Fits(static_cast<uint32_t>(length))) {
        vectorFft.Resize(static_cast<uint32_t>(length));
        return;
    }
    const int order = std::countr_zero(std::bit_floor(static_cast<uint64_t>(length)));
    int specSize = 0, initSize = 0, workSize = 0;
    prims::ippsFFTGetSize_R_32f(order, kDivideInverse, kFast, &specSize, &initSize, &workSize);
    specMemory = prims::ippsMalloc_8u(specSize);
    uint8_t* const initMemory = initSize > 0 ? prims::ippsMalloc_8u(initSize) : nullptr;
    workMemory = workSize > 0 ? prims::ippsMalloc_8u(workSize) : nullptr;
    prims::ippsFFTInit_R_32f(&spec, order, kDivideInverse, kFast, specMemory, initMemory);
    if (initMemory != nullptr)
        prims::ippsFree(initMemory);
}

void RealFft::Free() {
    if (spec != nullptr)
        prims::ippsFFTRelease_R_32f(spec);
    if (specMemory != nullptr)
        prims::ippsFree(specMemory);
    if (workMemory != nullptr)
        prims::ippsFree(workMemory);
    spec = nullptr;
    specMemory = workMemory = nullptr;
    size = 0;
}

}  // namespace Quorvan::dsp
