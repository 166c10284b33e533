#include "tools/picture/PictureData.h"

#include "processor/IProcessor.h"

namespace Quorvan::Tools {

namespace {
constexpr size_t kMostHeads = 32768;
}

PictureData::PictureData(Host::Engine& source)
    : rate(source.Format().sampleRate), spectrogram(rate), engine(source) {
    engine.AddListener(grains);
}

PictureData::~PictureData() { engine.RemoveListener(grains); }

void PictureData::OnInput(const SoundPiece& piece) {
    if (!inputHasEnded || piece.frame < inputFrames)
        input.Add(piece);
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

/// Processing may have gone on behind the output's end, to hear whether anything follows.
void PictureData::OnEnd() {
    spectrogram.Finish();
    grains.CutAt(outputFrames);
}

void PictureData::OnOutput(const SoundPiece& piece) {
    output.Add(piece);
    spectrogram.Add(piece);
    outputFrames = piece.frame + piece.frames;
}

}  // namespace Quorvan::Tools
