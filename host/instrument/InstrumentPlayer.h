#pragma once

#include <array>
#include <atomic>
#include <boost/lockfree/spsc_queue.hpp>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "host/engine/Engine.h"
#include "host/instrument/BypassFader.h"
#include "host/instrument/ControlBoard.h"
#include "host/instrument/DisplayFeed.h"
#include "host/instrument/HandOver.h"
#include "host/instrument/InstrumentEvent.h"
#include "host/instrument/MidiClock.h"
#include "host/instrument/MidiLearner.h"
#include "host/instrument/MidiMap.h"
#include "host/instrument/MorphPlan.h"
#include "host/instrument/OffsetBank.h"
#include "host/instrument/OwnTransport.h"
#include "host/instrument/PositionBoard.h"

namespace Quorvan::Host {

/// The audio side of an instrument: takes up what the other side has put on the boards, carries out
/// the events of each buffer at their frames, and runs the engine.
///
/// Threads  Process and Clear on the audio thread, or on another while that one stands still; they
///          neither allocate, lock nor wait. OfferEngine, OfferUnderstudy, OfferPlan, OfferRoutes,
///          TellHost and TakeNote from the other side, in turn; Learn and song from any. SetEngine
///          while the audio thread stands still.
class InstrumentPlayer {
public:
    InstrumentPlayer(const ParameterCatalog& parameters, PositionBoard& positionBoard,
                     ControlBoard& controlBoard);
    ~InstrumentPlayer() { delete understudy.load(); }
    InstrumentPlayer(const InstrumentPlayer&) = delete;
    InstrumentPlayer& operator=(const InstrumentPlayer&) = delete;

    /// A prepared engine, for a start from silence; it gets the positions of the board with the
    /// first frames.
    void SetEngine(std::unique_ptr<Engine> engine);
    /// The same while the audio runs, with the format of the present one.
    void OfferEngine(std::unique_ptr<Engine> engine) { engines.Offer(std::move(engine)); }
    /// The engine that takes over, fresh, where the host starts its song; null: none does. It has
    /// the format of the present one.
    void OfferUnderstudy(std::unique_ptr<Engine> engine) {
        engines.Collect();
        delete understudy.exchange(engine.release(), std::memory_order_acq_rel);
    }
    bool HasUnderstudy() const { return understudy.load(std::memory_order_relaxed) != nullptr; }
    void OfferPlan(std::unique_ptr<MorphPlan> plan) { plans.Offer(std::move(plan)); }
    void OfferRoutes(std::unique_ptr<MidiRoutes> routes) { midiRoutes.Offer(std::move(routes)); }

    /// The next MIDI source that is heard is noted as one for this parameter, and does nothing
    /// else; kUnassigned waits for none any more. goesOn: sources that were noted since the last
    /// call without it are not meant, and move what they move.
    void Learn(uint32_t index, bool goesOn) {
        lessonGoesOn.store(goesOn, std::memory_order_relaxed);
        learning.store(index, std::memory_order_release);
    }
    uint32_t Learning() const { return learning.load(std::memory_order_relaxed); }
    /// What MIDI asks of the other side.
    struct Note {
        enum class Kind : uint8_t { Learned, Program } kind = Kind::Learned;
        uint32_t number = 0;  ///< Learned: the parameter; Program: 0..127
        MidiSource source;    ///< Learned
    };
    bool TakeNote(Note& note) { return notes.pop(note); }

    /// What the engines that it is given have to tell of themselves for a window; they are made
    /// with it as a listener.
    DisplayFeed display;

    /// An export without real time, from any thread. Where no window watches it, the processor
    /// makes no feedback; the sound is the same.
    void SetOffline(bool on) { offline.store(on, std::memory_order_relaxed); }

    /// The song where neither host nor MIDI clock have one.
    OwnTransport song;

    /// What the instrument's own face does to a control, for the host to hear with the next buffer.
    struct FaceMove {
        enum class Kind : uint8_t { Begin, Move, End } kind;
        uint32_t id;
        float position;
    };
    /// False where a thousand moves wait already.
    bool TellHost(const FaceMove& move) { return faceMoves.push(move); }

    /// Takes and gives buffer.audio.frames frames; with none of them only the events are taken up.
    /// Before SetEngine no frame is given.
    void Process(const InstrumentBuffer& buffer, ControlSink& sink);
    /// Clears all that sounds.
    void Clear();
    /// Null before SetEngine.
    Engine* GetEngine() const { return engines.Current(); }
    /// Of the song as it was last run, in beats per minute; from any thread.
    double Tempo() const { return tempo.load(std::memory_order_relaxed); }

private:
    void TakeUp(const InstrumentBuffer& buffer, ControlSink& sink);
    bool IsOvertaken(const InstrumentEvent* event, std::span<const InstrumentEvent> events) const;
    void RestoreAll();
    void RestoreEngine();
    void Settle(const std::optional<Transport>& place);
    void Handle(const InstrumentEvent& event, uint32_t frame);
    void HandleMidi(const std::array<uint8_t, 3>& message, uint32_t frame);
    void HearMidi(const MidiDecoder::Values& values, uint32_t frame);
    void ReleaseHeldMidi(uint32_t frame);
    void ReleaseFlushedMidi();
    /// Of a frame of the buffer, counted from the engine's start.
    uint64_t StreamFrame(uint32_t frame) const { return GetEngine()->FramesIn() - done + frame; }
    void FollowClock(const std::array<uint8_t, 3>& message, uint32_t frame);
    bool IsLesson(const MidiDecoder::Values& values);
    void LearnFrom(const MidiDecoder::Values& values);
    void RunOwnSong();
    void FollowHost(const Transport& place);
    void StartAfresh(const Transport& place);
    void Move(uint32_t frame, uint32_t index, float position);
    void Apply(uint32_t frame, uint32_t index);
    float ControlPosition(uint32_t id) const;
    void MoveOffset(uint32_t frame, uint32_t id, float offset);
    void Morph(uint32_t frame, float way);
    void Send(uint32_t frame, uint32_t index);
    void RunTo(uint32_t frame);
    void RunPiece(uint32_t frames);
    float Effective(uint32_t index) const;

    const ParameterCatalog& catalog;
    PositionBoard& positions;
    ControlBoard& controls;
    OffsetBank offsets;
    BypassFader bypass;
    HandOver<Engine> engines;
    std::atomic<Engine*> understudy{nullptr};
    HandOver<MorphPlan> plans;
    HandOver<MidiRoutes> midiRoutes;
    MidiDecoder midi;
    uint64_t heldSince = 0;  ///< frame of the stream at which a held MSB came
    MidiClock midiClock;
    MidiLearner learner;
    uint32_t learnt = kUnassigned;  ///< parameter that the learner listens for
    std::atomic<uint32_t> learning{kUnassigned};
    std::atomic<bool> lessonGoesOn{false};
    boost::lockfree::spsc_queue<Note, boost::lockfree::capacity<64>> notes;
    boost::lockfree::spsc_queue<FaceMove, boost::lockfree::capacity<1024>> faceMoves;
    std::vector<ParameterValue> restored;  ///< room for RestoreAll; the indices stay
    std::atomic<double> tempo{120.0};
    std::atomic<bool> offline{false};
    bool sendsFeedback = true;    ///< where it is neither offline nor without a window
    ControlSink* host = nullptr;  ///< of the present call
    AudioBuffers audio;           ///< likewise
    bool settled = false;         ///< the present engine has its positions
    bool hostHasSong = false;     ///< of the present call
    uint32_t done = 0;            ///< frames of it that have run
};

}  // namespace Quorvan::Host
