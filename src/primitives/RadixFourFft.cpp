#include "primitives/RadixFourFft.h"

#include <bit>
#include <cmath>
#include <complex>

#include "primitives/FloatLanes.h"

namespace Quorvan::dsp {

namespace {

constexpr uint32_t kRadix = 4;
constexpr uint32_t kLanes = 4;

}  // namespace

/// Four complex numbers.
struct RadixFourFft::Complex {
    FloatLanes re, im;

    static Complex Load(const float* re, const float* im) { return {LoadLanes(re), LoadLanes(im)}; }
    void Store(float* toRe, float* toIm) const {
        StoreLanes(toRe, re);
        StoreLanes(toIm, im);
    }
    Complex operator+(Complex y) const { return {re + y.re, im + y.im}; }
    Complex operator-(Complex y) const { return {re - y.re, im - y.im}; }
    Complex operator*(Complex y) const { return {re * y.re - im * y.im, re * y.im + im * y.re}; }

    /// Of four values, turned already, their transform.
    static void Butterfly(Complex (&x)[kRadix]) {
        const Complex difference = x[0] - x[2];
        const Complex sum = x[0] + x[2];
        const Complex odd = x[1] + x[3];
        const Complex turned = x[1] - x[3];
        const Complex quarter{turned.im, -turned.re};
        x[0] = sum + odd;
        x[1] = difference + quarter;
        x[2] = sum - odd;
        x[3] = difference - quarter;
    }
};

bool RadixFourFft::Fits(uint32_t length) {
    return std::has_single_bit(length) && length >= 2 * kRadix * kLanes &&
           std::countr_zero(length / 2) % 2 == 0;
}

void RadixFourFft::Resize(uint32_t length) {
    half = length / 2;
    re.assign(half, 0.0f);
    im.assign(half, 0.0f);
    MakePlaces();
    MakeTwiddles();
}

/// The digits of the index, of base four, the other way round.
void RadixFourFft::MakePlaces() {
    places.assign(half / kRadix, 0);
    for (uint32_t r = 0; r < places.size(); ++r) {
        uint32_t step = half / kRadix;
        for (uint32_t digits = r; digits != 0; digits /= kRadix, step /= kRadix)
            places[r] += digits % kRadix * step;
    }
}

void RadixFourFft::MakeTwiddles() {
    const float turn = -2 * std::acos(-1.0f) / static_cast<float>(half);
    std::vector<std::complex<float>> circle(half);
    for (uint32_t i = 0; i < half; ++i)
        circle[i] = std::exp(std::complex<float>(0.0f, static_cast<float>(i) * turn));

    stageTwiddles.clear();
    for (uint32_t quarter = kRadix; quarter < half; quarter *= kRadix)
        for (uint32_t k = 0; k < quarter; k += kLanes)
            for (uint32_t q = 1; q < kRadix; ++q)
                for (const bool imaginary : {false, true})
                    for (uint32_t lane = 0; lane < kLanes; ++lane) {
                        const auto w = circle[(k + lane) * q * (half / (kRadix * quarter))];
                        stageTwiddles.push_back(imaginary ? w.imag() : w.real());
                    }

    const float pi = std::acos(-1.0f);
    const auto between = std::exp(std::complex<float>(0.0f, -pi / static_cast<float>(half)));
    binTwiddlesRe.assign(half / 2, 0.0f);
    binTwiddlesIm.assign(half / 2, 0.0f);
    for (uint32_t k = 0; k < half / 2; ++k) {
        const auto w = k % 2 == 0 ? circle[k / 2] : circle[k / 2] * between;
        binTwiddlesRe[k] = w.real();
        binTwiddlesIm[k] = w.imag();
    }
}

void RadixFourFft::Forward(const float* src, float* dst) {
    RunFirstStage(src);
    const float* twiddles = stageTwiddles.data();
    for (uint32_t quarter = kRadix; quarter < half; quarter *= kRadix) {
        RunStage(quarter, twiddles);
        twiddles += 2 * (kRadix - 1) * quarter;
    }
    WriteBins(dst);
}

/// Butterflies over values that lie a quarter apart and are turned by nothing. Each of the four
/// lanes goes to a place of its own.
void RadixFourFft::RunFirstStage(const float* src) {
    const uint32_t quarter = half / kRadix;
    for (uint32_t r = 0; r < quarter; r += kLanes) {
        Complex x[kRadix];
        for (uint32_t q = 0; q < kRadix; ++q) {
            const float* const from = src + 2 * (r + q * quarter);
            const FloatLanes a = LoadLanes(from), b = LoadLanes(from + kLanes);
            x[q] = {EvenLanes(a, b), OddLanes(a, b)};
        }
        Complex::Butterfly(x);
        const auto scatter = [&](float* to, FloatLanes a, FloatLanes b, FloatLanes c,
                                 FloatLanes d) {
            const FloatLanes ab = ZipLower(a, b), cd = ZipLower(c, d);
            const FloatLanes abUpper = ZipUpper(a, b), cdUpper = ZipUpper(c, d);
            StoreLanes(to + places[r], LowerPairs(ab, cd));
            StoreLanes(to + places[r + 1], UpperPairs(ab, cd));
            StoreLanes(to + places[r + 2], LowerPairs(abUpper, cdUpper));
            StoreLanes(to + places[r + 3], UpperPairs(abUpper, cdUpper));
        };
        scatter(re.data(), x[0].re, x[1].re, x[2].re, x[3].re);
        scatter(im.data(), x[0].im, x[1].im, x[2].im, x[3].im);
    }
}

/// Joins four transforms of quarter values each to one, everywhere.
void RadixFourFft::RunStage(uint32_t quarter, const float* twiddles) {
    for (uint32_t base = 0; base < half; base += kRadix * quarter) {
        const float* w = twiddles;
        for (uint32_t k = base; k < base + quarter; k += kLanes) {
            float* const atRe = re.data() + k;
            float* const atIm = im.data() + k;
            Complex x[kRadix];
            x[0] = Complex::Load(atRe, atIm);
            for (uint32_t q = 1; q < kRadix; ++q, w += 2 * kLanes)
                x[q] = Complex::Load(atRe + q * quarter, atIm + q * quarter) *
                       Complex::Load(w, w + kLanes);
            Complex::Butterfly(x);
            for (uint32_t q = 0; q < kRadix; ++q)
                x[q].Store(atRe + q * quarter, atIm + q * quarter);
        }
    }
}

/// Bins of the real signal, from those of its even and its odd samples as one complex signal.
void RadixFourFft::WriteBins(float* dst) const {
    for (uint32_t k = 1; k + kLanes <= half / 2; k += kLanes)
        WritePair(k, dst);
    WritePair(half / 2 - kLanes, dst);  // some of them again
    dst[0] = re[0] + im[0];
    dst[1] = 0.0f;
    dst[half] = re[half / 2];
    dst[half + 1] = -im[half / 2];
    dst[2 * half] = re[0] - im[0];
    dst[2 * half + 1] = 0.0f;
}

/// Bins from k upwards, and those from half - k downwards.
void RadixFourFft::WritePair(uint32_t k, float* dst) const {
    const uint32_t opposite = half - k - (kLanes - 1);
    const Complex a = Complex::Load(re.data() + k, im.data() + k);
    const Complex b{ReverseLanes(LoadLanes(re.data() + opposite)),
                    ReverseLanes(LoadLanes(im.data() + opposite))};
    const Complex w{0.5f * (a.re + b.re), 0.5f * (a.im - b.im)};
    const Complex z{0.5f * (a.im + b.im), 0.5f * (-a.re + b.re)};
    const Complex turned = Complex::Load(binTwiddlesRe.data() + k, binTwiddlesIm.data() + k) * z;
    const auto store = [](float* to, Complex x) {
        StoreLanes(to, ZipLower(x.re, x.im));
        StoreLanes(to + kLanes, ZipUpper(x.re, x.im));
    };
    const Complex lower = w + turned;
    const Complex upper = w - turned;
    store(dst + 2 * k, lower);
    store(dst + 2 * opposite, {ReverseLanes(upper.re), -ReverseLanes(upper.im)});
}

}  // namespace Quorvan::dsp
