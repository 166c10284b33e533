#pragma once

#include <cstdint>
#include <limits>
#include <vector>

#include "tools/render/HeldSound.h"
#include "tools/render/RenderSink.h"
#include "tools/render/TailPlan.h"

namespace Quorvan::Tools {

/// Passes a render on, but for the silence at the end of its tail: output behind the input's end
/// waits until something above -90 dB follows it. What reaches the plan's limit fades out there;
/// from the start of that fade on everything waits, since only the end shows whether it is needed.
class TailTrimmer final : public RenderSink {
public:
    explicit TailTrimmer(const TailPlan& wanted = {}) : plan(wanted) {}
    void AddSink(RenderSink& sink) { sinks.push_back(&sink); }

    void OnInput(const SoundPiece& piece) override;
    void OnOutput(const SoundPiece& piece) override;
    void OnInputEnd(uint64_t frame) override;
    void OnEnd() override;

    /// Frames of silence behind the input, the last audible frame and the last change of the sound;
    /// 0 while there is none yet.
    uint64_t QuietFrames() const;
    /// Frames passed on.
    uint64_t Frames() const { return passed; }
    /// Known behind OnEnd.
    TailEnd End() const { return end; }

private:
    static constexpr uint64_t kUnknown = std::numeric_limits<uint64_t>::max();

    /// The frame so many ahead of the limit.
    uint64_t AheadOfLimit(uint64_t frames) const;
    void PassOn(const SoundPiece& piece);
    void LetGo(uint64_t frames);
    void FinishAsAsked();
    void FinishBySound();

    std::vector<RenderSink*> sinks;
    TailPlan plan;
    uint64_t inputEnd = kUnknown;
    uint64_t passed = 0;
    uint64_t audibleEnd = 0;  ///< the frame behind the last audible one
    HeldSound held;           ///< frames behind those that were passed on
    TailEnd end = TailEnd::Silence;
};

}  // namespace Quorvan::Tools
