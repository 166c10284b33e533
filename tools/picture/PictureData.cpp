#include "tools/picture/PictureData.h"

#include <algorithm>

#include "processor/IProcessor.h"

namespace Quorvan::Tools {

namespace {
constexpr size_t kMostHeads = 32768;
constexpr size_t kSilentFrames = 1024;  // at a time
}  // namespace

PictureData::PictureData(Host::Engine& source, const Section& shown)
    : rate(source.Format().sampleRate), section(shown), spectrogram(rate), engine(source) {
    grains.KeepWithin(section.from, section.to);
    engine.AddListener(grains);
}

PictureData::~PictureData() { engine.RemoveListener(grains); }

void PictureData::OnInput(const SoundPiece& piece) {
    if (!inputHasEnded || piece.frame < inputFrames) {
        input.Add(Inside(piece));
        inputShown = piece.frame + piece.frames;
    }
    if (piece.frame + piece.frames < section.from || piece.frame > section.to)
        return;
    if (pieces++ % headStride != 0 || !snapshot.Read(engine.GetProcessor(), false))
        return;
    heads.push_back({piece.frame + piece.frames, snapshot.writePosition, snapshot.tapeLength});
    if (heads.size() == kMostHeads)
        ThinHeads();
}

SoundPiece PictureData::Inside(const SoundPiece& piece) {
    const uint64_t from = std::clamp(section.from, piece.frame, piece.frame + piece.frames);
    const uint64_t to = std::clamp(section.to, from, piece.frame + piece.frames);
    for (uint32_t c = 0; c < piece.channelCount; ++c)
        inside[c] = piece.channels[c] + (from - piece.frame);
    return {from, static_cast<size_t>(to - from), inside.data(), piece.channelCount};
}

void PictureData::ThinHeads() {
    for (size_t i = 0; i < heads.size() / 2; ++i)
        heads[i] = heads[2 * i];
    heads.resize(heads.size() / 2);
    headStride *= 2;
}

void PictureData::OnInputEnd(uint64_t frame) {
    inputFrames = frame;
    inputHasEnded = true;
}

/// Processing may have gone on behind the output's end, to hear whether anything follows: the input
/// shows silence up to there.
void PictureData::OnEnd() {
    const std::vector<float> silence(kSilentFrames);
    const float* const channel = silence.data();
    for (; inputShown < outputFrames; inputShown += kSilentFrames)
        input.Add(Inside(
            {inputShown, std::min<size_t>(kSilentFrames, outputFrames - inputShown), &channel, 1}));
    spectrogram.Finish();
    grains.CutAt(outputFrames);
}

void PictureData::OnOutput(const SoundPiece& piece) {
    const SoundPiece part = Inside(piece);
    output.Add(part);
    spectrogram.Add(part);
    outputFrames = piece.frame + piece.frames;
}

}  // namespace Quorvan::Tools
