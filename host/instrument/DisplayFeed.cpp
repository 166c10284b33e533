#include "host/instrument/DisplayFeed.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "granular/MoteWeaver.h"
#include "host/parameters/ShellIndex.h"
#include "primitives/Extremes.h"
#include "processor/IProcessor.h"
#include "processor/ProcessorInternals.h"

namespace Quorvan::Host {

namespace {

constexpr double kPicturesPerSecond = 60.0;
constexpr uint32_t kLimiterMeter = Processor::ModuleIndex::kLimiter + 12;

void Raise(float& peak, float level) { peak = std::max(peak, level); }

}  // namespace

void DisplayFeed::Prepare(double rate) {
    sampleRate = rate;
    watched = nullptr;
    draft = {};
    draft.sampleRate = rate;
    numbers = {};
    framesSince = 0;
}

void DisplayFeed::OnBlock(const BlockReport& report) {
    const bool isOn = IsWatched();
    WatchStages(*report.processor, isOn);
    if (!isOn)
        return;
    NoteMoment(report);
    NoteLevels(report);
    const dsp::MoteWeaver& granular = Processor::GranularModuleOf(*report.processor);
    draft.pairsStarted += granular.StartedCount();
    framesSince += report.frames;
    if (framesSince * kPicturesPerSecond >= sampleRate)
        Publish(report);
}

void DisplayFeed::WatchStages(Processor::IProcessor_V5& processor, bool on) {
    Processor::IProcessor_V5* const wanted = on ? &processor : nullptr;
    if (watched == wanted)
        return;
    Processor::WatchStages(processor, on);
    watched = wanted;
}

void DisplayFeed::NoteMoment(const BlockReport& report) {
    const size_t at = draft.moments++ % DisplayFrame::kMoments;
    for (uint32_t s = 0; s < kModulationSources; ++s)
        draft.sources[s][at] = Processor::SourceValue(*report.processor, s);
    draft.follower[at] = dsp::Extremes::PeakOf(report.aux[0], report.frames);
    draft.space[0][at] = report.aux[2][0];
    draft.space[1][at] = report.aux[3][0];
}

void DisplayFeed::NoteLevels(const BlockReport& report) {
    const Processor::StagePeaks& inside = Processor::StagePeaksOf(*report.processor);
    const auto peakOf = [&](const auto& channels, uint32_t count, uint32_t side) {
        return count == 0
                   ? 0.0f
                   : dsp::Extremes::PeakOf(channels[std::min(side, count - 1)], report.frames);
    };
    for (uint32_t side = 0; side < 2; ++side) {
        Raise(draft.input[side], peakOf(report.inputs, report.inputCount, side));
        Raise(draft.output[side], peakOf(report.outputs, report.outputCount, side));
        Raise(draft.wet[side], inside.wet[side]);
        Raise(draft.feedback[side], inside.feedback[side]);
    }
    float reduction = 0.0f;
    if (report.processor->GetParameter(kLimiterMeter, &reduction))
        Raise(draft.limiter, reduction);
}

/// Rows that the modulation moves are read for each picture, the others in turn.
void DisplayFeed::NoteDestinations(Processor::IProcessor_V5& processor) {
    constexpr uint64_t kTurn = 4;
    for (uint32_t row = 0; row < kModulationDestinations; ++row) {
        const bool isMoved = Processor::DestinationOffset(processor, row) != 0.0f;
        const bool wasMoved = std::exchange(movedRows[row], isMoved);
        if (isMoved || wasMoved || draft.number == 0 || row % kTurn == draft.number % kTurn)
            draft.destinations[row] = Processor::DestinationValue(processor, row);
    }
}

void DisplayFeed::Publish(const BlockReport& report) {
    const dsp::MoteWeaver& granular = Processor::GranularModuleOf(*report.processor);
    draft.time = report.firstFrame + report.frames;
    draft.transport = report.transport;
    NoteDestinations(*report.processor);
    for (uint32_t i = 0; i < draft.functionPhases.size(); ++i)
        draft.functionPhases[i] = Processor::FunctionPhase(*report.processor, i);
    ++draft.number;
    DisplayFrame& frame = pictures.Writing();
    ShowTape(granular, frame);
    ShowGrains(granular, frame);
    static_cast<DisplayState&>(frame) = draft;
    pictures.Publish();
    draft.input = draft.wet = draft.feedback = draft.output = {};
    draft.limiter = 0.0f;
    framesSince = 0;
}

void DisplayFeed::ShowTape(const dsp::MoteWeaver& granular, DisplayFrame& frame) {
    const dsp::CaptureBuffer& tape = granular.Capture();
    const double length = std::max(1u, tape.length);
    outline.Follow(tape.mono.data(), tape.length, tape.writePosition, framesSince);
    draft.tapeSeconds = static_cast<float>(length / sampleRate);
    draft.writePlace = static_cast<float>(tape.writePosition / length);
    draft.playPlace = static_cast<float>(std::max(tape.playPosition, 0.0) / length);

    const auto room = DisplayFrame::kMarkerRoom;
    if (tape.quantizationMode == dsp::CaptureBuffer::kTransients) {
        frame.markerCount = std::min(room, granular.Markers().Count());
        for (uint32_t i = 0; i < frame.markerCount; ++i)
            frame.markers[i] = static_cast<float>(granular.Markers()[i] / length);
    } else if (tape.quantizationMode == dsp::CaptureBuffer::kGrid) {
        frame.markerCount = std::min(room, granular.GridSize());
        for (uint32_t i = 0; i < frame.markerCount; ++i)
            frame.markers[i] = static_cast<float>(i) / static_cast<float>(granular.GridSize());
    } else
        frame.markerCount = 0;
}

void DisplayFeed::ShowGrains(const dsp::MoteWeaver& granular, DisplayFrame& frame) {
    const double tape = std::max(1u, granular.Capture().length);
    const dsp::GrainPool& pool = granular.Grains();
    frame.grainCount = 0;
    for (uint16_t slot = pool.First(); slot < pool.Capacity(); slot = pool.Next(slot)) {
        if (frame.grainCount == DisplayFrame::kGrainRoom)
            break;
        const dsp::Grain& grain = pool[slot];
        const double speed = std::abs(grain.increment);
        ShownGrain& shown = frame.grains[frame.grainCount++];
        shown.number = NumberOf(slot, grain);
        shown.place =
            static_cast<float>((grain.swapped ? grain.wrappedPosition : grain.readPosition) / tape);
        shown.length = static_cast<float>(static_cast<double>(grain.length) / tape);
        shown.progress = std::clamp(
            static_cast<float>(grain.elapsed / std::max(1.0, static_cast<double>(grain.length))),
            0.0f, 1.0f);
        shown.semitones = speed > 0.0 ? static_cast<float>(12.0 * std::log2(speed)) : 0.0f;
        shown.pan = 0.5f * grain.panGainRight;
        shown.gain = 0.5f * (grain.outGainLeft + grain.outGainRight);
        shown.envelope = grain.envelope;
        shown.reversed = grain.reversed;
    }
}

/// A slot holds another grain than before where that starts elsewhere, or is younger.
uint64_t DisplayFeed::NumberOf(uint32_t slot, const dsp::Grain& grain) {
    Numbered& known = numbers[slot];
    if (known.number == 0 || grain.startPosition != known.start || grain.elapsed < known.elapsed)
        known.number = ++given;
    known.start = grain.startPosition;
    known.elapsed = grain.elapsed;
    return known.number;
}

void DisplayFeed::BeginWork() {
    working = IsWatched();
    if (working)
        workBegan = Clock::now();
}

/// Smoothed over some tenth of a second.
void DisplayFeed::EndWork(uint32_t frames) {
    if (!working || frames == 0)
        return;
    const double lasts = frames / sampleRate;
    const double took = std::chrono::duration<double>(Clock::now() - workBegan).count();
    const double share = 1.0 - std::exp(-lasts / 0.1);
    draft.load += static_cast<float>(share * (took / lasts - static_cast<double>(draft.load)));
}

}  // namespace Quorvan::Host
