#pragma once

#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>

#include "host/engine/EngineListener.h"
#include "host/instrument/DisplayFrame.h"
#include "host/instrument/TapeOutline.h"
#include "host/instrument/TripleBuffer.h"
#include "modulation/IndexSet.h"
#include "primitives/PeakHold.h"

namespace Quorvan::dsp {
class MoteWeaver;
class Parameter;
struct Grain;
}  // namespace Quorvan::dsp

namespace Quorvan::Host {

/// Makes pictures of what an engine does, some fifty in a second of sound, for a window on
/// another thread. While nobody watches, it costs one look at a flag in each block.
///
/// Threads  OnBlock, BeginWork, EndWork, HearInput and HearOutput on the audio thread, Take and
///          Latest on one other thread at a time, Watch on any. None waits.
class DisplayFeed final : public EngineListener {
public:
    void Watch(bool on) { isWatched.store(on, std::memory_order_relaxed); }
    bool IsWatched() const { return isWatched.load(std::memory_order_relaxed); }

    /// Answers whether Latest is a newer picture now.
    bool Take() { return pictures.Take(); }
    const DisplayFrame& Latest() const { return pictures.Reading(); }

    /// For an engine at this rate, while the audio stands still.
    void Prepare(double rate);
    void OnBlock(const BlockReport& report) override;
    /// Around the work of a buffer, for the load.
    void BeginWork();
    void EndWork(uint32_t frames);
    /// Around a piece of it, for the levels of 1 or 2 channels; those that are null are silent.
    /// What comes may lie where the sound goes.
    void HearInput(const float* const* channels, uint32_t count, uint32_t frames) {
        Hear(inputPeaks, channels, count, frames);
    }
    void HearOutput(const float* const* channels, uint32_t count, uint32_t frames) {
        Hear(outputPeaks, channels, count, frames);
    }

private:
    /// The grain that a slot held last, by what tells it from the next one, and what was worked out
    /// for it.
    struct Known {
        uint64_t number = 0;
        double elapsed = 0.0;
        double increment = 0.0;
        float start = 0.0f;
        float semitones = 0.0f;
    };

    void Hear(dsp::PeakHold& peaks, const float* const* channels, uint32_t count, uint32_t frames);
    void WatchStages(Processor::IProcessor_V5& processor, bool on);
    void NoteMoment(const BlockReport& report);
    void ShowLevels(Processor::IProcessor_V5& processor);
    void NoteDestinations(Processor::IProcessor_V5& processor);
    void Publish(const BlockReport& report);
    void FollowTape();
    void ShowTape(DisplayFrame& frame);
    void ShowGrains(DisplayFrame& frame);
    void ShowMoments(DisplayFrame& frame) const;
    const Known& Recognise(uint32_t slot, const dsp::Grain& grain);

    using Clock = std::chrono::steady_clock;

    std::atomic<bool> isWatched{false};
    TripleBuffer<DisplayFrame> pictures;
    DisplayState draft;  ///< gathers what the next picture shows
    DisplayMoments heard;
    uint32_t blocksSince = 0;  ///< the last moment
    dsp::IndexSet<kModulationDestinations> reachedBefore;
    TapeOutline outline;
    uint32_t unfollowed = 0;  ///< frames that the outline has not seen
    uint32_t clears = 0;      ///< of the tape, that the outline knows of
    std::array<Known, DisplayFrame::kGrainRoom> known{};
    uint64_t given = 0;  ///< numbers of grains so far
    double sampleRate = 48000.0;
    dsp::PeakHold inputPeaks, outputPeaks;        ///< since the last picture
    uint32_t framesSince = 0;                     ///< that
    Processor::IProcessor_V5* watched = nullptr;  ///< whose stages are watched
    const dsp::MoteWeaver* granular = nullptr;    ///< its own
    dsp::Parameter* limiterMeter = nullptr;       ///< its own as well
    dsp::Parameter* beatStep = nullptr;           ///< and this
    Clock::time_point workBegan;
    double unmeasured = 0.0;  ///< seconds of sound since the load was measured last
    bool isMeasuring = false;
};

}  // namespace Quorvan::Host
