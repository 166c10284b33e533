#include "tools/render/TailTrimmer.h"

#include <algorithm>
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

uint64_t TailTrimmer::AheadOfLimit(uint64_t frames) const {
    if (inputEnd == kUnknown || plan.limit > kUnknown - inputEnd)
        return kUnknown;
    return inputEnd + plan.limit - std::min(frames, plan.limit);
}

uint64_t TailTrimmer::QuietFrames() const {
    const uint64_t from = std::max({inputEnd, audibleEnd, plan.settled});
    const uint64_t reached = passed + held.Frames();
    return reached > from ? reached - from : 0;
}

void TailTrimmer::OnOutput(const SoundPiece& piece) {
    const size_t audible = AudibleFrames(piece);
    if (audible > 0)
        audibleEnd = piece.frame + audible;
    const uint64_t pieceEnd = piece.frame + piece.frames;
    uint64_t wanted = plan.isExact ? pieceEnd : piece.frame + audible;
    wanted = std::max(wanted, std::min(inputEnd, pieceEnd));
    wanted = std::min(wanted, AheadOfLimit(plan.fade));
    const auto count = static_cast<size_t>(wanted > piece.frame ? wanted - piece.frame : 0);
    if (count > 0) {
        LetGo(held.Frames());
        PassOn({piece.frame, count, piece.channels, piece.channelCount});
    }
    if (count < piece.frames)
        held.Add(piece, count);
}

void TailTrimmer::PassOn(const SoundPiece& piece) {
    for (RenderSink* sink : sinks)
        sink->OnOutput(piece);
    passed += piece.frames;
}

void TailTrimmer::LetGo(uint64_t frames) {
    held.Give(passed, frames, [this](const SoundPiece& piece) { PassOn(piece); });
}

void TailTrimmer::OnInputEnd(uint64_t frame) {
    inputEnd = frame;
    for (RenderSink* sink : sinks)
        sink->OnInputEnd(frame);
}

void TailTrimmer::FinishAsAsked() {
    end = TailEnd::Asked;
    held.FadeOut(std::min(plan.fade, plan.limit));
    LetGo(held.Frames());
}

void TailTrimmer::FinishBySound() {
    const uint64_t reached = passed + held.Frames();
    if (reached >= AheadOfLimit(0) && audibleEnd > AheadOfLimit(plan.nearLimit)) {
        end = plan.fade > 0 ? TailEnd::Fade : TailEnd::Cut;
        held.FadeOut(std::min(plan.fade, plan.limit));
    }
    LetGo(std::min(held.Frames(), audibleEnd > passed ? audibleEnd - passed : 0));
}

void TailTrimmer::OnEnd() {
    plan.isExact ? FinishAsAsked() : FinishBySound();
    for (RenderSink* sink : sinks)
        sink->OnEnd();
}

}  // namespace Quorvan::Tools
