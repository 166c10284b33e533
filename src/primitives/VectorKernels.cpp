#include "primitives/VectorKernels.h"

#include <algorithm>
#include <complex>
#include <kissfft/kissfft.hh>
#include <new>

namespace Quorvan::prims {

namespace {

constexpr std::align_val_t kAlignment{64};

void* AllocateBytes(size_t bytes) { return ::operator new(bytes, kAlignment, std::nothrow); }

}  // namespace

/// A real FFT of N samples is a complex one of N/2.
struct IppsFFTSpec_R_32f {
    explicit IppsFFTSpec_R_32f(size_t length) : half(length / 2), complexFft(half, false) {}

    size_t half;
    kissfft<float> complexFft;
};

float* ippsMalloc_32f(int count) {
    return static_cast<float*>(AllocateBytes(static_cast<size_t>(count) * sizeof(float)));
}

uint8_t* ippsMalloc_8u(int count) {
    return static_cast<uint8_t*>(AllocateBytes(static_cast<size_t>(count)));
}

void ippsFree(void* memory) { ::operator delete(memory, kAlignment); }

int ippsZero_32f(float* dst, int count) { return ippsSet_32f(0.0f, dst, count); }

int ippsSet_32f(float value, float* dst, int count) {
    std::fill_n(dst, count, value);
    return 0;
}

int ippsFFTGetSize_R_32f(int, int, int, int* specSize, int* initSize, int* workSize) {
    *specSize = static_cast<int>(sizeof(IppsFFTSpec_R_32f));
    *initSize = 0;
    *workSize = 0;
    return 0;
}

int ippsFFTInit_R_32f(IppsFFTSpec_R_32f** spec, int order, int, int, uint8_t* specMemory,
                      uint8_t*) {
    *spec = new (specMemory) IppsFFTSpec_R_32f(size_t{1} << order);
    return 0;
}

int ippsFFTFwd_RToCCS_32f(const float* src, float* dst, const IppsFFTSpec_R_32f* spec, uint8_t*) {
    auto* const bins = reinterpret_cast<std::complex<float>*>(dst);
    spec->complexFft.transform_real(src, bins);
    // The last bin, which is real, comes in the imaginary part of the first.
    bins[spec->half] = {bins[0].imag(), 0.0f};
    bins[0] = {bins[0].real(), 0.0f};
    return 0;
}

void ippsFFTRelease_R_32f(IppsFFTSpec_R_32f* spec) { spec->~IppsFFTSpec_R_32f(); }

}  // namespace Quorvan::prims
