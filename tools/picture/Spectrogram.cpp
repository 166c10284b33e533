#include "tools/picture/Spectrogram.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <numbers>

namespace Quorvan::Tools {

namespace {

constexpr double kWindowSeconds = 0.085;
constexpr uint64_t kOverlap = 8;  // windows that cover a moment
constexpr size_t kMostColumns = 4096;
constexpr double kHighest = 20000.0;  // hertz
constexpr float kSilence = 1.0e-12f;  // power, -120 dB

size_t WindowLength(double rate) {
    return std::bit_ceil(static_cast<size_t>(std::max(64.0, 0.7 * rate * kWindowSeconds)));
}

}  // namespace

Spectrogram::Spectrogram(double rate)
    : highest(std::min(kHighest, 0.5 * rate)),
      window(WindowLength(rate)),
      hop(window / kOverlap),
      shape(window),
      framed(window),
      bins(window + 2),
      power(window / 2 + 1) {
    fft.Resize(static_cast<int64_t>(window));
    double sum = 0.0;
    for (size_t i = 0; i < window; ++i) {
        const double phase =
            2.0 * std::numbers::pi * static_cast<double>(i) / static_cast<double>(window);
        const double hann = 0.5 - 0.5 * std::cos(phase);
        shape[i] = static_cast<float>(hann);
        sum += hann;
    }
    for (float& weight : shape)
        weight *= static_cast<float>(2.0 / sum);
    MakeBands(rate);
}

void Spectrogram::MakeBands(double rate) {
    const double binsPerHertz = static_cast<double>(window) / rate;
    const double step = std::log(highest / kLowest) / kRows;
    for (size_t row = 0; row < kRows; ++row) {
        const double from = kLowest * std::exp(step * static_cast<double>(row));
        bands.push_back({from * binsPerHertz, from * std::exp(step) * binsPerHertz});
    }
}

void Spectrogram::Add(const SoundPiece& piece) {
    rings.resize(piece.channelCount, std::vector<float>(window, 0.0f));
    for (size_t i = 0; i < piece.frames; ++i) {
        for (uint32_t c = 0; c < piece.channelCount; ++c)
            rings[c][frames % window] = piece.channels[c][i];
        ++frames;
        // The first window is centred on frame 0: half of it lies ahead of the sound.
        if ((frames + window / 2) % hop == 0 && frames >= window / 2)
            AddWindow();
    }
}

void Spectrogram::Finish() {
    const std::vector<float> silence(window / 2, 0.0f);
    const std::vector<const float*> channels(rings.size(), silence.data());
    Add({frames, silence.size(), channels.data(), static_cast<uint32_t>(channels.size())});
}

void Spectrogram::AddWindow() {
    std::fill(power.begin(), power.end(), 0.0f);
    for (const std::vector<float>& ring : rings)
        AddPower(ring);
    Column column(kRows);
    for (size_t row = 0; row < kRows; ++row) {
        const float mean = PowerIn(bands[row]) / static_cast<float>(rings.size());
        column[row] = 10.0f * std::log10(std::max(mean, kSilence));
    }
    AddColumn(column);
}

void Spectrogram::AddPower(const std::vector<float>& ring) {
    for (size_t i = 0; i < window; ++i)
        framed[i] = ring[(frames + i) % window] * shape[i];
    fft.Forward(framed.data(), bins.data());
    for (size_t bin = 0; bin < power.size(); ++bin)
        power[bin] += bins[2 * bin] * bins[2 * bin] + bins[2 * bin + 1] * bins[2 * bin + 1];
}

float Spectrogram::PowerIn(const Band& band) const {
    const auto last = static_cast<double>(power.size() - 1);
    const double from = std::min(band.from, last);
    const double to = std::min(band.to, last);
    const auto first = static_cast<size_t>(std::ceil(from));
    const auto end = static_cast<size_t>(std::floor(to));
    if (first <= end)
        return *std::max_element(power.begin() + static_cast<std::ptrdiff_t>(first),
                                 power.begin() + static_cast<std::ptrdiff_t>(end) + 1);
    const auto below = static_cast<size_t>(from);
    const auto share = static_cast<float>(0.5 * (from + to) - static_cast<double>(below));
    return power[below] + share * (power[std::min(below + 1, power.size() - 1)] - power[below]);
}

void Spectrogram::AddColumn(const Column& column) {
    if (columns.empty() || inLastColumn == joined) {
        if (columns.size() == kMostColumns)
            Halve();
        columns.push_back(column);
        inLastColumn = 1;
        return;
    }
    ++inLastColumn;
    for (size_t row = 0; row < kRows; ++row)
        columns.back()[row] = std::max(columns.back()[row], column[row]);
}

void Spectrogram::Halve() {
    for (size_t i = 0; i < columns.size() / 2; ++i) {
        std::transform(columns[2 * i].begin(), columns[2 * i].end(), columns[2 * i + 1].begin(),
                       columns[i].begin(), [](float a, float b) { return std::max(a, b); });
    }
    columns.resize(columns.size() / 2);
    joined *= 2;
}

}  // namespace Quorvan::Tools
