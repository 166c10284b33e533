#include "host/instrument/DisplayFeed.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "framework/Parameter.h"
#include "granular/MoteWeaver.h"
#include "host/parameters/ShellIndex.h"
#include "processor/IProcessor.h"
#include "processor/ProcessorInternals.h"

namespace Quorvan::Host {

namespace {

constexpr double kPicturesPerSecond = 50.0;
constexpr uint32_t kLimiterMeter = Processor::ModuleIndex::kLimiter + 12;
/// Three clocks stand ahead of the beat mode's sequencer.
constexpr uint32_t kBeatStep = Processor::ModuleIndex::kMoteWeaver +
                               3 * dsp::GranularPhaseHelper::kParameterCount +
                               dsp::StepSequencerGranular::CurrentStep;

}  // namespace

void DisplayFeed::Prepare(double rate) {
    sampleRate = rate;
    watched = nullptr;
    const uint64_t stream = draft.stream + 1;
    draft = {};
    draft.stream = stream;
    draft.sampleRate = rate;
    heard = {};
    outline.Clear();
    known = {};
    framesSince = unfollowed = 0;
}

void DisplayFeed::OnBlock(const BlockReport& report) {
    const bool isOn = IsWatched();
    WatchStages(*report.processor, isOn);
    if (!isOn)
        return;
    draft.pairsStarted += granular->StartedCount();
    framesSince += report.frames;
    unfollowed += report.frames;
    if (++blocksSince < DisplayMoments::kBlocks)
        return;
    blocksSince = 0;
    NoteMoment(report);
    if (limiterMeter != nullptr)
        draft.limiter = std::max(draft.limiter, limiterMeter->GetNormalized());
    // With the moment that comes nearest.
    constexpr uint32_t kHalf = DisplayMoments::kBlocks / 2;
    if ((framesSince + kHalf * report.frames) * kPicturesPerSecond >= sampleRate)
        Publish(report);
}

void DisplayFeed::WatchStages(Processor::IProcessor_V5& processor, bool on) {
    Processor::IProcessor_V5* const wanted = on ? &processor : nullptr;
    if (watched == wanted)
        return;
    Processor::WatchStages(processor, on);
    watched = wanted;
    granular = on ? &Processor::GranularModuleOf(processor) : nullptr;
    limiterMeter = on ? Processor::ParameterRecordOf(processor, kLimiterMeter) : nullptr;
    beatStep = on ? Processor::ParameterRecordOf(processor, kBeatStep) : nullptr;
    outline.LookAgain();
}

void DisplayFeed::NoteMoment(const BlockReport& report) {
    DisplayMoment& moment = heard.kept[draft.moments++ % DisplayMoments::kMoments];
    moment.sources = Processor::SourceValues(*report.processor);
    moment.follower = dsp::LevelKernels::Best().size(report.aux[0], report.frames);
    moment.space = {report.aux[2][0], report.aux[3][0]};
}

/// One channel stands for both sides.
void DisplayFeed::Hear(dsp::PeakHold& peaks, const float* const* channels, uint32_t count,
                       uint32_t frames) {
    if (!IsWatched() || channels == nullptr || count == 0)
        return;
    const float* const left = channels[0];
    const float* const right = channels[count - 1];
    peaks.Take(left, right, left != nullptr && right != nullptr ? frames : 0);
}

void DisplayFeed::ShowLevels(Processor::IProcessor_V5& processor) {
    const Processor::StagePeaks inside = Processor::TakeStagePeaks(processor);
    draft.wet = inside.wet;
    draft.feedback = inside.feedback;
    draft.input = inputPeaks.Release();
    draft.output = outputPeaks.Release();
}

/// Rows that the modulation reaches are read for each picture; the others, which stand where their
/// parameters do, in turn.
void DisplayFeed::NoteDestinations(Processor::IProcessor_V5& processor) {
    const auto read = [&](uint32_t row) {
        draft.destinations[row] = Processor::DestinationValue(processor, row);
    };
    const auto reached = Processor::ReachedDestinations(processor);
    reached.ForEach(read);
    if (draft.number == 0 || reached != reachedBefore)
        for (uint32_t row = 0; row < kModulationDestinations; ++row)
            read(row);
    reachedBefore = reached;
    constexpr uint64_t kSeldom = 8;
    if (draft.number % kSeldom == 0)
        read(static_cast<uint32_t>(draft.number / kSeldom % kModulationDestinations));
}

/// Grains, heads and sources move with each picture; what the eye follows less, with every other.
void DisplayFeed::Publish(const BlockReport& report) {
    draft.time = report.firstFrame + report.frames;
    draft.transport = report.transport;
    const bool isWhole = draft.number % 2 == 0;
    if (isWhole) {
        ShowLevels(*report.processor);
        NoteDestinations(*report.processor);
        FollowTape();
    }
    for (uint32_t i = 0; i < draft.functionPhases.size(); ++i)
        draft.functionPhases[i] = Processor::FunctionPhase(*report.processor, i);
    draft.sequencerStep = Processor::SequencerStep(*report.processor);
    if (beatStep != nullptr)
        draft.beatStep = static_cast<uint32_t>(beatStep->GetValue());
    ++draft.number;
    DisplayFrame& frame = pictures.Writing();
    ShowTape(frame);
    ShowGrains(frame);
    ShowMoments(frame);
    static_cast<DisplayState&>(frame) = draft;
    pictures.Publish();
    draft.limiter = 0.0f;
    framesSince = 0;
}

/// A slot lacks what has come since it was filled last.
void DisplayFeed::ShowMoments(DisplayFrame& frame) const {
    constexpr uint64_t kKept = DisplayMoments::kMoments;
    const bool isOlder = frame.stream == draft.stream && frame.moments + kKept > draft.moments;
    uint64_t moment = isOlder ? frame.moments : draft.moments - std::min(draft.moments, kKept);
    for (; moment < draft.moments; ++moment)
        frame.kept[moment % kKept] = heard.At(moment);
}

void DisplayFeed::FollowTape() {
    const dsp::CaptureBuffer& tape = granular->Capture();
    outline.Follow(tape.mono.data(), tape.length, tape.writePosition, unfollowed);
    unfollowed = 0;
}

void DisplayFeed::ShowTape(DisplayFrame& frame) {
    const dsp::CaptureBuffer& tape = granular->Capture();
    const double length = std::max(1u, tape.length);
    if (std::exchange(clears, tape.clears) != tape.clears)
        outline.Clear();
    outline.CopyTo(frame.tape);
    draft.tapeSeconds = static_cast<float>(length / sampleRate);
    draft.writePlace = static_cast<float>(tape.writePosition / length);
    draft.playPlace = static_cast<float>(std::max(tape.playPosition, 0.0) / length);

    const auto room = DisplayFrame::kMarkerRoom;
    if (tape.quantizationMode == dsp::CaptureBuffer::kTransients) {
        frame.markerCount = std::min(room, granular->Markers().Count());
        for (uint32_t i = 0; i < frame.markerCount; ++i)
            frame.markers[i] = static_cast<float>(granular->Markers()[i] / length);
    } else if (tape.quantizationMode == dsp::CaptureBuffer::kGrid) {
        frame.markerCount = std::min(room, granular->GridSize());
        for (uint32_t i = 0; i < frame.markerCount; ++i)
            frame.markers[i] = static_cast<float>(i) / static_cast<float>(granular->GridSize());
    } else
        frame.markerCount = 0;
}

void DisplayFeed::ShowGrains(DisplayFrame& frame) {
    const double perTape = 1.0 / std::max(1u, granular->Capture().length);
    const dsp::GrainPool& pool = granular->Grains();
    frame.grainCount = 0;
    for (uint16_t slot = pool.First(); slot < pool.Capacity(); slot = pool.Next(slot)) {
        if (frame.grainCount == DisplayFrame::kGrainRoom)
            break;
        const dsp::Grain& grain = pool[slot];
        const Known& seen = Recognise(slot, grain);
        ShownGrain& shown = frame.grains[frame.grainCount++];
        shown.number = seen.number;
        shown.place = static_cast<float>(
            (grain.swapped ? grain.wrappedPosition : grain.readPosition) * perTape);
        shown.length = static_cast<float>(static_cast<double>(grain.length) * perTape);
        shown.progress =
            std::min(static_cast<float>(grain.elapsed) / std::max(1.0f, grain.length), 1.0f);
        shown.semitones = seen.semitones;
        shown.pan = 0.5f * grain.panGainRight;
        shown.gain = 0.5f * (grain.outGainLeft + grain.outGainRight);
        shown.envelope = grain.envelope;
        shown.reversed = grain.reversed;
    }
}

/// A slot holds another grain than before where that starts elsewhere, or is younger.
const DisplayFeed::Known& DisplayFeed::Recognise(uint32_t slot, const dsp::Grain& grain) {
    Known& seen = known[slot];
    if (seen.number == 0 || grain.startPosition != seen.start || grain.elapsed < seen.elapsed)
        seen.number = ++given;
    seen.start = grain.startPosition;
    seen.elapsed = grain.elapsed;
    const double speed = std::abs(grain.increment);
    if (std::exchange(seen.increment, speed) != speed)
        seen.semitones = speed > 0.0 ? static_cast<float>(12.0 * std::log2(speed)) : 0.0f;
    return seen;
}

/// One buffer each tenth of a second is measured: a clock costs as much as the levels of several
/// blocks.
void DisplayFeed::BeginWork() {
    constexpr double kBetween = 0.1;
    isMeasuring = IsWatched() && unmeasured >= kBetween;
    if (isMeasuring)
        workBegan = Clock::now();
}

/// Smoothed over some tenths of a second.
void DisplayFeed::EndWork(uint32_t frames) {
    const double lasts = frames / sampleRate;
    unmeasured += lasts;
    if (!isMeasuring || frames == 0)
        return;
    const double took = std::chrono::duration<double>(Clock::now() - workBegan).count();
    const double share = 1.0 - std::exp(-std::exchange(unmeasured, 0.0) / 0.3);
    draft.load += static_cast<float>(share * (took / lasts - static_cast<double>(draft.load)));
}

}  // namespace Quorvan::Host
