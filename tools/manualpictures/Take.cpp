#include "tools/manualpictures/Take.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "host/parameters/ShellIndex.h"
#include "host/state/StateTransfer.h"
#include "tools/render/PositionText.h"
#include "tools/support/ExitCode.h"
#include "tools/support/Failure.h"

namespace Quorvan::Tools {

namespace {

constexpr size_t kPiece = 48;  // frames that go in at a time: a block

SoundChoice Choose(std::vector<std::string> assignments, const std::string& preset,
                   const Host::ParameterCatalog& catalog) {
    const bool isPlain = preset == Take::kPlain;
    if (isPlain)
        assignments.insert(assignments.begin(), {"Dry / Wet=100 %", "Granular Volume=0 dB"});
    std::vector<std::string> warnings;
    return SoundChoice::Make(LoadPreset(isPlain ? "init" : preset, catalog, warnings), assignments,
                             catalog);
}

}  // namespace

Take::Take(const std::vector<std::string>& assignments,
           const std::vector<std::string>& destinations, const std::string& preset)
    : sound(Choose(assignments, preset, catalog)),
      engine(kSeed),
      modulation(FindDestinations(destinations, catalog)) {
    engine.SetTransport({kTempo, 0.0, true});
    engine.Prepare({.sampleRate = kRate});
    Host::ApplyPreset(sound.preset, engine, catalog);
    for (const Host::ParameterValue& lever : sound.levers)
        engine.Write(lever.index, lever.position);
    engine.Write(Host::kGuiVisibleIndex, 1.0f);
    engine.Idle(1);
    data = std::make_unique<PictureData>(engine, PictureData::Section{});
    engine.AddListener(modulation);
    engine.AddListener(*this);
}

Take::~Take() {
    engine.RemoveListener(*this);
    engine.RemoveListener(modulation);
}

void Take::Change(double seconds, const std::string& name, const std::string& text) {
    const Host::PresentSettings settings = sound.Settings(catalog);
    const NamedParameter named = FindWritable(catalog, name, settings);
    if (!named.index)
        throw Failure(ExitCode::Internal, named.problem);
    const Host::TextResult result = ReadPosition(catalog, *named.index, text, settings.Texts());
    if (!result.position)
        throw Failure(ExitCode::Internal, name + ": " + result.problem);
    engine.WriteAt(static_cast<uint64_t>(std::llround(seconds * kRate)), *named.index,
                   *result.position);
}

void Take::Play(const Planes& input) {
    const size_t frames = input.Frames();
    const size_t latency = engine.LatencyFrames();
    output.Resize(2, frames);
    Planes fed(2, kPiece), given(2, kPiece);
    for (size_t start = 0; start < frames + latency; start += kPiece) {
        for (uint32_t c = 0; c < 2; ++c)
            for (size_t i = 0; i < kPiece; ++i)
                fed[c][i] = start + i < frames ? input[c][start + i] : 0.0f;
        engine.Process({.inputs = fed.Pointers(),
                        .outputs = given.Pointers(),
                        .frames = static_cast<uint32_t>(kPiece)});
        data->OnInput({start, kPiece, fed.Pointers(), 2});
        for (uint32_t c = 0; c < 2; ++c)
            for (size_t i = 0; i < kPiece; ++i)
                if (start + i >= latency && start + i - latency < frames)
                    output[c][start + i - latency] = given[c][i];
    }
    data->output.Add({0, frames, output.Pointers(), 2});
}

void Take::OnBlock(const Host::BlockReport& block) {
    placeX.push_back(2.0 * static_cast<double>(block.aux[2][0]) - 1.0);
    placeY.push_back(static_cast<double>(block.aux[3][0]));
}

}  // namespace Quorvan::Tools
