#include "tools/picture/Waveform.h"

#include <algorithm>
#include <cmath>

namespace Quorvan::Tools {

namespace {
constexpr size_t kMostBins = 16384;  // several for each pixel of the picture
}

void Waveform::Bin::Join(const Bin& other) {
    lowest = std::min(lowest, other.lowest);
    highest = std::max(highest, other.highest);
    power += other.power;
    samples += other.samples;
}

float Waveform::Bin::Rms() const {
    return samples == 0 ? 0.0f
                        : static_cast<float>(std::sqrt(power / static_cast<double>(samples)));
}

void Waveform::Add(const SoundPiece& piece) {
    for (size_t i = 0; i < piece.frames; ++i)
        AddFrame(piece, i);
}

void Waveform::AddFrame(const SoundPiece& piece, size_t frame) {
    if (bins.empty() || inLastBin == framesPerBin) {
        if (bins.size() == kMostBins)
            Halve();
        bins.emplace_back();
        inLastBin = 0;
    }
    ++inLastBin;
    Bin& bin = bins.back();
    for (uint32_t c = 0; c < piece.channelCount; ++c) {
        const float sample = piece.channels[c][frame];
        bin.lowest = std::min(bin.lowest, sample);
        bin.highest = std::max(bin.highest, sample);
        bin.power += static_cast<double>(sample) * static_cast<double>(sample);
        ++bin.samples;
    }
}

void Waveform::Halve() {
    for (size_t i = 0; i < bins.size() / 2; ++i) {
        bins[i] = bins[2 * i];
        bins[i].Join(bins[2 * i + 1]);
    }
    bins.resize(bins.size() / 2);
    framesPerBin *= 2;
}

}  // namespace Quorvan::Tools
