#include "tools/picture/PictureData.h"

#include <algorithm>

#include "processor/IProcessor.h"

namespace Quorvan::Tools {

namespace {
constexpr size_t kMostHeads = 32768;
constexpr size_t kSilentFrames = 1024;  // at a time
}  // namespace

PictureData::PictureData(Host::Engine& source)
    : rate(source.Format().sampleRate), spectrogram(rate), engine(source) {
    engine.AddListener(grains);
}

PictureData::~PictureData() { engine.RemoveListener(grains); }

void PictureData::OnInput(const SoundPiece& piece) {
    if (!inputHasEnded || piece.frame < inputFrames) {
        input.Add(piece);
        inputShown = piece.frame + piece.frames;
    }
    if (pieces++ % headStride != 0 || !snapshot.Read(engine.GetProcessor(), false))
        return;
    heads.push_back({piece.frame + piece.frames, snapshot.writePosition, snapshot.tapeLength});
    if (heads.size() == kMostHeads)
        ThinHeads();
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
        input.Add(
            {inputShown, std::min<size_t>(kSilentFrames, outputFrames - inputShown), &channel, 1});
    spectrogram.Finish();
    grains.CutAt(outputFrames);
}

void PictureData::OnOutput(const SoundPiece& piece) {
    output.Add(piece);
    spectrogram.Add(piece);
    outputFrames = piece.frame + piece.frames;
}

}  // namespace Quorvan::Tools
