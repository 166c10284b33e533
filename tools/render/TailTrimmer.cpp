#include "tools/render/TailTrimmer.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace Quorvan::Tools {

namespace {

constexpr float kAudible = 3.1622776e-5f;  // -90 dB

/// Number of frames of piece up to the last audible one.
size_t AudibleFrames(const SoundPiece& piece) {
    size_t count = piece.frames;
    const auto isQuiet = [&](size_t frame) {
        for (uint32_t c = 0; c < piece.channelCount; ++c) {
            if (std::abs(piece.channels[c][frame]) > kAudible)
                return false;
        }
        return true;
    };
    while (count > 0 && isQuiet(count - 1))
        --count;
    return count;
}

}  // namespace

void TailTrimmer::OnInput(const SoundPiece& piece) {
    for (RenderSink* sink : sinks)
        sink->OnInput(piece);
}

void TailTrimmer::OnOutput(const SoundPiece& piece) {
    held.resize(piece.channelCount);
    size_t count = AudibleFrames(piece);
    if (piece.frame < inputEnd)
        count = std::max<size_t>(count, std::min<uint64_t>(piece.frames, inputEnd - piece.frame));
    if (count > 0) {
        LetGo();
        PassOn(piece, 0, count);
    }
    Hold(piece, count);
}

void TailTrimmer::PassOn(const SoundPiece& piece, size_t from, size_t count) {
    std::array<const float*, 2> channels{};
    for (uint32_t c = 0; c < piece.channelCount; ++c)
        channels[c] = piece.channels[c] + from;
    const SoundPiece part{passed, count, channels.data(), piece.channelCount};
    for (RenderSink* sink : sinks)
        sink->OnOutput(part);
    passed += count;
}

void TailTrimmer::Hold(const SoundPiece& piece, size_t from) {
    for (uint32_t c = 0; c < piece.channelCount; ++c)
        held[c].insert(held[c].end(), piece.channels[c] + from, piece.channels[c] + piece.frames);
}

void TailTrimmer::LetGo() {
    if (held.empty() || held.front().empty())
        return;
    std::array<const float*, 2> channels{};
    for (size_t c = 0; c < held.size(); ++c)
        channels[c] = held[c].data();
    const SoundPiece quiet{passed, held.front().size(), channels.data(),
                           static_cast<uint32_t>(held.size())};
    PassOn(quiet, 0, quiet.frames);
    for (std::vector<float>& channel : held)
        channel.clear();
}

void TailTrimmer::OnInputEnd(uint64_t frame) {
    inputEnd = frame;
    for (RenderSink* sink : sinks)
        sink->OnInputEnd(frame);
}

void TailTrimmer::OnEnd() {
    for (RenderSink* sink : sinks)
        sink->OnEnd();
}

}  // namespace Quorvan::Tools
