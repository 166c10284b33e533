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

bool DisplayFeed::Take() {
    if (!pictures.Take())
        return false;
    const Picture& picture = pictures.Reading();
    static_cast<DisplayState&>(latest) = picture;
    static_cast<DisplayMarkers&>(latest) = picture;
    ShowGrains(picture);
    outline.Take(latest.tape);
    moments.consume_all([this](const DisplayMoment& moment) {
        latest.kept[latest.moments++ % DisplayMoments::kMoments] = moment;
    });
    return true;
}

void DisplayFeed::Prepare(double rate) {
    sampleRate = rate;
    watched = nullptr;
    const uint64_t stream = draft.stream + 1;
    draft = {};
    draft.stream = stream;
    draft.sampleRate = rate;
    outline.Clear();
    framesSince = unfollowed = 0;
}

void DisplayFeed::OnBlock(const BlockReport& report) {
    const bool isOn = IsWatched();
    WatchStages(*report.processor, isOn);
    if (!isOn)
        return;
    draft.pairsStarted += granular->StartedCount();
    framesSince += report.frames;
    if (++blocksSince == DisplayMoments::kBlocks) {
        blocksSince = 0;
        NoteMoment(report);
    }
    // With the block that comes nearest.
    if ((framesSince + 0.5 * report.frames) * kPicturesPerSecond >= sampleRate)
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
    DisplayMoment moment;
    moment.sources = Processor::SourceValues(*report.processor);
    moment.follower = dsp::LevelKernels::Best().size(report.aux[0], report.frames);
    moment.space = {report.aux[2][0], report.aux[3][0]};
    moments.push(moment);
    if (limiterMeter != nullptr)
        draft.limiter = std::max(draft.limiter, limiterMeter->GetNormalized());
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
    unfollowed += framesSince;
    if (draft.number % 2 == 0) {
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
    Picture& picture = pictures.Writing();
    ShowTape(picture);
    TellGrains(picture);
    static_cast<DisplayState&>(picture) = draft;
    pictures.Publish();
    draft.limiter = 0.0f;
    framesSince = 0;
}

void DisplayFeed::FollowTape() {
    const dsp::CaptureBuffer& tape = granular->Capture();
    if (std::exchange(clears, tape.clears) != tape.clears)
        outline.Clear();
    outline.Follow(tape.mono.data(), tape.length, tape.writePosition, std::exchange(unfollowed, 0));
}

void DisplayFeed::ShowTape(Picture& picture) {
    const dsp::CaptureBuffer& tape = granular->Capture();
    const double length = std::max(1u, tape.length);
    draft.tapeSeconds = static_cast<float>(length / sampleRate);
    draft.writePlace = static_cast<float>(tape.writePosition / length);
    draft.playPlace = static_cast<float>(std::max(tape.playPosition, 0.0) / length);

    const auto room = Picture::kMarkerRoom;
    if (tape.quantizationMode == dsp::CaptureBuffer::kTransients) {
        picture.markerCount = std::min(room, granular->Markers().Count());
        for (uint32_t i = 0; i < picture.markerCount; ++i)
            picture.markers[i] = static_cast<float>(granular->Markers()[i] / length);
    } else if (tape.quantizationMode == dsp::CaptureBuffer::kGrid) {
        picture.markerCount = std::min(room, granular->GridSize());
        for (uint32_t i = 0; i < picture.markerCount; ++i)
            picture.markers[i] = static_cast<float>(i) / static_cast<float>(granular->GridSize());
    } else
        picture.markerCount = 0;
}

/// Only what lies at hand: the reader has time for the rest.
void DisplayFeed::TellGrains(Picture& picture) {
    const dsp::GrainPool& pool = granular->Grains();
    uint32_t count = 0;
    for (uint16_t slot = pool.First(); slot < pool.Capacity(); slot = pool.Next(slot)) {
        if (count == picture.grains.size())
            break;
        const dsp::Grain& grain = pool[slot];
        ToldGrain& told = picture.grains[count++];
        told.slot = slot;
        told.place = static_cast<float>(grain.swapped ? grain.wrappedPosition : grain.readPosition);
        told.length = grain.length;
        told.elapsed = static_cast<float>(grain.elapsed);
        told.start = grain.startPosition;
        told.increment = static_cast<float>(grain.increment);
        told.pan = 0.5f * grain.panGainRight;
        told.gain = 0.5f * (grain.outGainLeft + grain.outGainRight);
        told.envelope = grain.envelope;
        told.reversed = grain.reversed;
    }
    picture.grainCount = count;
}

void DisplayFeed::ShowGrains(const Picture& picture) {
    const auto perTape = static_cast<float>(
        1.0 / std::max(1.0, static_cast<double>(picture.tapeSeconds) * picture.sampleRate));
    latest.grainCount = picture.grainCount;
    for (uint32_t i = 0; i < picture.grainCount; ++i) {
        const ToldGrain& told = picture.grains[i];
        const Known& seen = Recognise(told);
        latest.grains[i] = {seen.number,
                            told.place * perTape,
                            told.length * perTape,
                            std::min(told.elapsed / std::max(1.0f, told.length), 1.0f),
                            seen.semitones,
                            told.pan,
                            told.gain,
                            told.envelope,
                            told.reversed};
    }
}

/// A slot holds another grain than before where that starts elsewhere, or is younger.
const DisplayFeed::Known& DisplayFeed::Recognise(const ToldGrain& grain) {
    Known& seen = known[grain.slot];
    if (seen.number == 0 || grain.start != seen.start || grain.elapsed < seen.elapsed)
        seen.number = ++given;
    seen.start = grain.start;
    seen.elapsed = grain.elapsed;
    const float speed = std::abs(grain.increment);
    if (std::exchange(seen.increment, speed) != speed)
        seen.semitones = speed > 0.0f ? 12.0f * std::log2(speed) : 0.0f;
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
