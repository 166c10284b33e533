#pragma once

#include <cstdint>

/// A small layer of vector operations under their customary names: aligned memory, fills and a
/// forward real FFT. Lengths are in elements, float data is single precision; every status is 0.
namespace Quorvan::prims {

/// Prepared FFT of one length.
struct IppsFFTSpec_R_32f;

/// Memory for count floats or bytes on a 64-byte boundary, or null.
float* ippsMalloc_32f(int count);
uint8_t* ippsMalloc_8u(int count);
/// Releases what the two above gave.
void ippsFree(void* memory);

int ippsZero_32f(float* dst, int count);
int ippsSet_32f(float value, float* dst, int count);

/// Bytes of memory that a real FFT of 2^order samples asks for.
int ippsFFTGetSize_R_32f(int order, int flag, int hint, int* specSize, int* initSize,
                         int* workSize);
/// Prepares an FFT in specMemory, which holds what spec points at. Takes memory of its own.
int ippsFFTInit_R_32f(IppsFFTSpec_R_32f** spec, int order, int flag, int hint, uint8_t* specMemory,
                      uint8_t* initMemory);
/// Unscaled forward transform X[k] = sum x[n] e^(-2 pi i k n / N): N samples in, bins 0 .. N/2 as
/// interleaved re, im out, N + 2 floats. Not in place; allocates nothing.
int ippsFFTFwd_RToCCS_32f(const float* src, float* dst, const IppsFFTSpec_R_32f* spec,
                          uint8_t* work);
/// Ends the use of a spec ahead of the release of its memory.
void ippsFFTRelease_R_32f(IppsFFTSpec_R_32f* spec);

}  // namespace Quorvan::prims
