#include "host/instrument/InstrumentPlayer.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "host/state/ParameterReader.h"

namespace Quorvan::Host {

namespace {

/// Frames at a time: what the bypass has to keep.
constexpr uint32_t kPiece = 1024;
/// Writes that may wait in the engine's queue, with room left for all settings at once.
constexpr uint32_t kWaitingWrites = 4096;
/// Seconds that the second half of a 14-bit value has to come in: a cable takes 1 ms for it.
constexpr double kHalfWaits = 0.003;

template <class Sample>
std::array<Sample*, 2> Shifted(Sample* const* channels, uint32_t count, uint32_t frames) {
    std::array<Sample*, 2> shifted{};
    for (uint32_t c = 0; channels != nullptr && c < count; ++c)
        shifted[c] = channels[c] != nullptr ? channels[c] + frames : nullptr;
    return shifted;
}

}  // namespace

InstrumentPlayer::InstrumentPlayer(const ParameterCatalog& parameters, PositionBoard& positionBoard,
                                   ControlBoard& controlBoard)
    : catalog(parameters), positions(positionBoard), controls(controlBoard), offsets(controlBoard) {
    for (const ParameterInfo& info : catalog.All())
        if (IsStored(info, ParameterScope::Sound))
            restored.push_back({info.index, 0.0f});
}

void InstrumentPlayer::SetEngine(std::unique_ptr<Engine> engine) {
    OfferEngine(std::move(engine));
    engines.Take();
    engines.Collect();
    settled = false;
    const Engine& current = *engines.Current();
    tempo.store(current.GetTransport().tempo, std::memory_order_relaxed);
    sendsFeedback = current.Format().sendsFeedback;
    offsets.Clear();
    display.Prepare(current.Format().sampleRate);
    midiClock.Prepare(current.Format().sampleRate);
    heldSince = 0;
    bypass.Aim(positions.Position(kBypassIndex) >= 0.5f);
    bypass.Prepare(current.Format(), current.LatencyFrames(), kPiece);
}

void InstrumentPlayer::Clear() {
    if (Engine* const engine = GetEngine())
        engine->Clear();
    bypass.Reset();
}

void InstrumentPlayer::Process(const InstrumentBuffer& buffer, ControlSink& sink) {
    display.BeginWork();
    host = &sink;
    audio = buffer.audio;
    hostHasSong = buffer.transport.has_value();
    done = 0;
    TakeUp(buffer, sink);
    if (buffer.transport && GetEngine() != nullptr)
        FollowHost(*buffer.transport);
    else
        RunOwnSong();
    for (const InstrumentEvent& event : buffer.events) {
        const uint32_t frame = std::max(done, std::min(event.frame, audio.frames));
        ReleaseHeldMidi(frame);
        if (GetEngine() != nullptr && GetEngine()->WaitingWrites() >= kWaitingWrites)
            RunTo(frame);
        if (!IsOvertaken(&event, buffer.events))
            Handle(event, frame);
    }
    if (audio.frames > 0)
        ReleaseHeldMidi(audio.frames - 1);
    else
        ReleaseFlushedMidi();
    RunTo(audio.frames);
    if (GetEngine() != nullptr)
        tempo.store(GetEngine()->GetTransport().tempo, std::memory_order_relaxed);
    display.EndWork(audio.frames);
}

/// A morph writes hundreds of settings: of those that fall into one block only the last counts.
bool InstrumentPlayer::IsOvertaken(const InstrumentEvent* event,
                                   std::span<const InstrumentEvent> events) const {
    const auto isMorph = [](const InstrumentEvent& one) {
        return one.kind == InstrumentEvent::Kind::Control && one.id == kMorphControl;
    };
    const InstrumentEvent* const next = event + 1;
    if (GetEngine() == nullptr || !isMorph(*event) || next == events.data() + events.size() ||
        !isMorph(*next))
        return false;
    const uint32_t block = GetEngine()->BlockFrames();
    return StreamFrame(event->frame) / block == StreamFrame(next->frame) / block;
}

void InstrumentPlayer::TakeUp(const InstrumentBuffer& buffer, ControlSink& sink) {
    plans.Take();
    midiRoutes.Take();
    FaceMove move{};
    while (faceMoves.pop(move)) {
        if (move.kind == FaceMove::Kind::Move)
            sink.OnControlMove(0, move.id, static_cast<double>(move.position));
        else
            sink.OnGesture(move.id, move.kind == FaceMove::Kind::Begin);
    }
    if (engines.Take())
        settled = false;
    if (GetEngine() != nullptr)
        GetEngine()->SendFeedback(
            sendsFeedback && (display.IsWatched() || !offline.load(std::memory_order_relaxed)));
    if (positions.TakeRestore())
        RestoreAll();
    if (!settled && audio.frames > 0 && GetEngine() != nullptr)
        Settle(buffer.transport);
    positions.TakeMarks([this](uint32_t index) { Apply(0, index); });
}

void InstrumentPlayer::RestoreAll() {
    offsets.FollowTargets([](uint32_t) {});
    bypass.Aim(positions.Position(kBypassIndex) >= 0.5f);
    if (GetEngine() != nullptr && settled)
        RestoreEngine();
}

void InstrumentPlayer::RestoreEngine() {
    for (ParameterValue& value : restored)
        value.position = Effective(value.index);
    GetEngine()->Restore(restored);
}

/// What is as long as a beat takes its length from the tempo of the first block: that has to be the
/// song's, and is known no earlier than with the first frames.
void InstrumentPlayer::Settle(const std::optional<Transport>& place) {
    if (place) {
        Transport standing = *place;
        standing.playing = false;
        GetEngine()->SetTransport(standing);
    }
    RestoreEngine();
    // The first block after that clears what sounds; only then can a start of the song be seen.
    GetEngine()->Idle(1);
    settled = true;
}

void InstrumentPlayer::Handle(const InstrumentEvent& event, uint32_t frame) {
    const auto value = static_cast<float>(event.value);
    switch (event.kind) {
        case InstrumentEvent::Kind::Control:
            Move(frame, controls.TargetOf(event.id), value);
            break;
        case InstrumentEvent::Kind::Offset:
            MoveOffset(frame, event.id, value);
            break;
        case InstrumentEvent::Kind::Parameter:
            Move(frame, event.id, value);
            break;
        case InstrumentEvent::Kind::Transport:
            RunTo(frame);
            if (GetEngine() != nullptr)
                FollowHost(event.place);
            break;
        case InstrumentEvent::Kind::Midi:
            HandleMidi(event.midi, frame);
            break;
    }
}

void InstrumentPlayer::HandleMidi(const std::array<uint8_t, 3>& message, uint32_t frame) {
    constexpr uint8_t kProgramChange = 0xc0;
    constexpr uint8_t kSystem = 0xf0;
    if (message[0] >= kSystem)
        return FollowClock(message, frame);
    if ((message[0] & 0xf0) == kProgramChange) {
        notes.push({Note::Kind::Program, message[1], {}});
        return;
    }
    HearMidi(midi.Decode(message), frame);
    if (midi.IsHolding() && GetEngine() != nullptr)
        heldSince = StreamFrame(frame);
}

/// The first half of a 14-bit value counts alone where the second has not come up to a frame. It
/// waits for a time of its own, so that the buffers' ends are not heard.
void InstrumentPlayer::ReleaseHeldMidi(uint32_t frame) {
    if (!midi.IsHolding())
        return;
    const Engine* const engine = GetEngine();
    if (engine == nullptr)
        return HearMidi(midi.Release(), 0);
    const auto wait = static_cast<uint64_t>(kHalfWaits * engine->Format().sampleRate);
    if (heldSince + wait > StreamFrame(frame))
        return;
    const uint64_t due = heldSince + wait - std::min(heldSince + wait, StreamFrame(0));
    HearMidi(midi.Release(), std::max(std::min(done, frame), static_cast<uint32_t>(due)));
}

/// In a buffer without frames no time passes: what has come in it has come whole.
void InstrumentPlayer::ReleaseFlushedMidi() {
    if (midi.IsHolding() && (GetEngine() == nullptr || heldSince >= StreamFrame(0)))
        HearMidi(midi.Release(), 0);
}

void InstrumentPlayer::HearMidi(const MidiDecoder::Values& values, uint32_t frame) {
    if (IsLesson(values))
        return LearnFrom(values);
    if (midiRoutes.Current() == nullptr)
        return;
    for (uint32_t i = 0; i < values.count; ++i)
        midiRoutes.Current()->Route(
            values.list[i], [this](uint32_t index) { return positions.Position(index); },
            [&](uint32_t index, float position) {
                Move(frame, index, position);
                controls.ForEachOf(index, [&](uint32_t id) {
                    host->OnControlMove(frame, id, static_cast<double>(position));
                });
            });
}

bool InstrumentPlayer::IsLesson(const MidiDecoder::Values& values) {
    const uint32_t index = learning.load(std::memory_order_acquire);
    if (index == kUnassigned)
        return false;
    if (learnt != index) {
        learnt = index;
        learner.Begin(lessonGoesOn.load(std::memory_order_relaxed));
    }
    return !learner.Knows(values);
}

void InstrumentPlayer::LearnFrom(const MidiDecoder::Values& values) {
    if (const auto source = learner.Hear(values)) {
        notes.push({Note::Kind::Learned, learnt, *source});
        learning.compare_exchange_strong(learnt, kUnassigned, std::memory_order_relaxed);
        learnt = kUnassigned;
    }
}

/// A place that differs from the song's by next to nothing is the same.
void InstrumentPlayer::FollowClock(const std::array<uint8_t, 3>& message, uint32_t frame) {
    constexpr double kNear = 0.001;  // quarter notes
    Engine* const engine = GetEngine();
    if (engine == nullptr)
        return;
    const auto place = midiClock.Hear(message, engine->FramesIn() + frame - done);
    if (!place || hostHasSong)
        return;
    RunTo(frame);
    const Transport present = engine->GetTransport();
    if (place->playing != present.playing || place->tempo != present.tempo ||
        std::abs(place->beat - present.beat) > kNear)
        engine->SetTransport(*place);
}

void InstrumentPlayer::FollowHost(const Transport& place) {
    if (place.playing && !GetEngine()->GetTransport().playing && GetEngine()->FramesIn() > 0)
        StartAfresh(place);
    GetEngine()->SetTransport(place);
}

void InstrumentPlayer::StartAfresh(const Transport& place) {
    if (!engines.CanReplace())
        return;
    Engine* const fresh = understudy.exchange(nullptr, std::memory_order_acquire);
    if (fresh == nullptr)
        return;
    engines.Replace(fresh);
    Settle(place);
}

void InstrumentPlayer::RunOwnSong() {
    Engine* const engine = GetEngine();
    if (engine != nullptr && !midiClock.Runs(engine->FramesIn()))
        engine->SetTransport(song.Next(engine->GetTransport()));
}

void InstrumentPlayer::Move(uint32_t frame, uint32_t index, float position) {
    if (index >= PositionBoard::kCount || !std::isfinite(position))
        return;
    positions.Note(index, std::clamp(position, 0.0f, 1.0f));
    Apply(frame, index);
}

/// Carries out where a parameter stands.
void InstrumentPlayer::Apply(uint32_t frame, uint32_t index) {
    if (index == PositionBoard::kMorphIndex)
        Morph(frame, positions.Position(index));
    else if (index == kBypassIndex) {
        RunTo(frame);
        bypass.Aim(positions.Position(index) >= 0.5f);
    } else
        Send(frame, index);
    if (controls.DecidesTargets(index))
        offsets.FollowTargets([&](uint32_t moved) { Send(frame, moved); });
}

void InstrumentPlayer::MoveOffset(uint32_t frame, uint32_t id, float offset) {
    if (!std::isfinite(offset))
        return;
    offsets.Set(id, std::clamp(offset, -1.0f, 1.0f), [&](uint32_t index) { Send(frame, index); });
}

/// The host hears of all controls that this moves.
void InstrumentPlayer::Morph(uint32_t frame, float way) {
    if (plans.Current() == nullptr)
        return;
    const MorphPlan& plan = *plans.Current();
    std::array<float, kHostControlRoom> before{};
    for (const HostControl& control : HostControls())
        before[control.id] = ControlPosition(control.id);
    for (const MorphPlan::Step& step : plan.steps) {
        const float position = plan.At(step, positions.Own(step.index), way);
        if (position == positions.Position(step.index))
            continue;
        positions.Lend(step.index, position);
        Apply(frame, step.index);
    }
    for (const HostControl& control : HostControls())
        if (const float now = ControlPosition(control.id); now != before[control.id])
            host->OnControlMove(frame, control.id, static_cast<double>(now));
}

float InstrumentPlayer::ControlPosition(uint32_t id) const {
    const uint32_t index = controls.TargetOf(id);
    return index < PositionBoard::kCount ? positions.Position(index) : 0.0f;
}

/// What finds no room is marked, and so comes with a later buffer.
void InstrumentPlayer::Send(uint32_t frame, uint32_t index) {
    if (index >= kProcessorParameters || index == kPresetLoadingIndex)
        return;
    if (index == kPanicIndex) {
        const bool asked = positions.Position(index) >= 0.5f;
        positions.Note(index, 0.0f);
        if (asked && GetEngine() != nullptr)
            GetEngine()->Panic();
        return;
    }
    Engine* const engine = GetEngine();
    if (engine != nullptr &&
        !engine->WriteAt(engine->FramesIn() + frame - done, index, Effective(index)))
        positions.Mark(index);
}

float InstrumentPlayer::Effective(uint32_t index) const {
    const float position = positions.Position(index);
    return offsets.InUse() ? std::clamp(position + offsets.Of(index), 0.0f, 1.0f) : position;
}

void InstrumentPlayer::RunTo(uint32_t frame) {
    while (done < frame && GetEngine() != nullptr)
        RunPiece(std::min(frame - done, kPiece));
}

void InstrumentPlayer::RunPiece(uint32_t frames) {
    Engine& engine = *GetEngine();
    const StreamFormat& format = engine.Format();
    const auto inputs = Shifted(audio.inputs, format.inputs, done);
    const auto outputs = Shifted(audio.outputs, format.outputs, done);
    const auto sideChain = Shifted(audio.sideChain, format.sideChainInputs, done);
    AudioBuffers piece;
    piece.inputs = inputs.data();
    piece.outputs = outputs.data();
    piece.sideChain = audio.sideChain != nullptr ? sideChain.data() : nullptr;
    piece.frames = frames;
    display.HearInput(inputs.data(), format.inputs, frames);
    bypass.Take(inputs.data(), 0, frames);
    engine.Process(piece);
    bypass.Mix(outputs.data(), 0, frames);
    display.HearOutput(outputs.data(), format.outputs, frames);
    done += frames;
}

}  // namespace Quorvan::Host
