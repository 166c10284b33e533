#pragma once

#include <array>
#include <atomic>
#include <boost/lockfree/spsc_queue.hpp>
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
    bool Take();
    const DisplayFrame& Latest() const { return latest; }

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
    /// What the audio thread tells of a grain; places and lengths in samples.
    struct ToldGrain {
        uint32_t slot;  ///< in which it lives
        float place, length, elapsed, start, increment;
        float pan, gain, envelope;
        bool reversed;
    };
    struct Picture : DisplayState, DisplayMarkers {
        uint32_t grainCount = 0;
        std::array<ToldGrain, DisplayFrame::kGrainRoom> grains{};
    };
    /// The grain that a slot held last, by what tells it from the next one, and what was worked out
    /// for it.
    struct Known {
        uint64_t number = 0;
        float elapsed = 0.0f;
        float start = 0.0f;
        float increment = 0.0f;
        float semitones = 0.0f;
    };

    void Hear(dsp::PeakHold& peaks, const float* const* channels, uint32_t count, uint32_t frames);
    void WatchStages(Processor::IProcessor_V5& processor, bool on);
    void NoteMoment(const BlockReport& report);
    void ShowLevels(Processor::IProcessor_V5& processor);
    void NoteDestinations(Processor::IProcessor_V5& processor);
    void Publish(const BlockReport& report);
    void FollowTape();
    void ShowTape(Picture& picture);
    void TellGrains(Picture& picture);
    void ShowGrains(const Picture& picture);
    const Known& Recognise(const ToldGrain& grain);

    using Clock = std::chrono::steady_clock;

    // What each block or buffer looks at stands together.
    alignas(64) std::atomic<bool> isWatched{false};
    bool isMeasuring = false;
    uint32_t blocksSince = 0;  ///< the last moment
    uint32_t framesSince = 0;  ///< the last picture
    double unmeasured = 0.0;   ///< seconds of sound since the load was measured
    double sampleRate = 48000.0;
    Processor::IProcessor_V5* watched = nullptr;  ///< whose stages are watched
    const dsp::MoteWeaver* granular = nullptr;    ///< its own
    dsp::PeakHold inputPeaks, outputPeaks;        ///< since the last picture but one

    Clock::time_point workBegan;
    dsp::Parameter* limiterMeter = nullptr;  ///< of the watched one
    dsp::Parameter* beatStep = nullptr;      ///< and this
    DisplayState draft;                      ///< gathers what the next picture shows
    dsp::IndexSet<kModulationDestinations> reachedBefore;
    uint32_t unfollowed = 0;  ///< frames that the outline has not seen
    uint32_t clears = 0;      ///< of the tape, that it knows of
    TapeOutline outline;
    TripleBuffer<Picture> pictures;
    /// Those that find no room are lost: nobody has looked for a second.
    boost::lockfree::spsc_queue<DisplayMoment, boost::lockfree::capacity<256>> moments;

    // The reader's.
    alignas(64) std::array<Known, DisplayFrame::kGrainRoom> known{};
    uint64_t given = 0;  ///< numbers of grains so far
    DisplayFrame latest;
};

}  // namespace Quorvan::Host
