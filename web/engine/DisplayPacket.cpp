#include "web/engine/DisplayPacket.h"

#include <algorithm>
#include <iterator>

namespace Quorvan::Web {

namespace {

using Host::DisplayFrame;

constexpr size_t kLevels = 16;
constexpr size_t kTape = kLevels + 8;
constexpr size_t kSources = kTape + 2 * Host::TapeOutline::kColumns;
constexpr size_t kFollower = kSources + Host::kModulationSources * DisplayFrame::kMoments;
constexpr size_t kSpace = kFollower + DisplayFrame::kMoments;
constexpr size_t kDestinations = kSpace + 2 * DisplayFrame::kMoments;
constexpr size_t kMarkers = kDestinations + Host::kModulationDestinations;
constexpr size_t kGrains = kMarkers + DisplayFrame::kMarkerRoom;
constexpr size_t kGrainFields = 10;

}  // namespace

DisplayPacket::DisplayPacket() : numbers(kGrains + DisplayFrame::kGrainRoom * kGrainFields) {}

template <class Row>
void DisplayPacket::Put(size_t at, const Row& row) {
    std::copy(std::begin(row), std::end(row), numbers.begin() + static_cast<std::ptrdiff_t>(at));
}

void DisplayPacket::Fill(const DisplayFrame& frame) {
    const auto number = [](auto count) { return static_cast<float>(count); };
    Put(0,
        std::array{number(frame.number), number(static_cast<double>(frame.time) / frame.sampleRate),
                   number(frame.transport.tempo), number(frame.transport.beat),
                   frame.transport.playing ? 1.0f : 0.0f, frame.tapeSeconds, frame.writePlace,
                   frame.playPlace, number(frame.pairsStarted), number(frame.moments),
                   frame.limiter, number(frame.grainCount), number(frame.markerCount)});
    Put(kLevels, frame.input);
    Put(kLevels + 2, frame.wet);
    Put(kLevels + 4, frame.feedback);
    Put(kLevels + 6, frame.output);
    Put(kTape, frame.tape.lowest);
    Put(kTape + Host::TapeOutline::kColumns, frame.tape.highest);
    FillScopes(frame);
    Put(kDestinations, frame.destinations);
    Put(kMarkers, frame.markers);
    FillGrains(frame);
}

void DisplayPacket::FillScopes(const DisplayFrame& frame) {
    constexpr size_t kMoments = DisplayFrame::kMoments;
    for (size_t m = 0; m < kMoments; ++m) {
        const Host::DisplayMoment& moment = frame.kept[m];
        for (size_t source = 0; source < moment.sources.size(); ++source)
            numbers[kSources + source * kMoments + m] = moment.sources[source];
        numbers[kFollower + m] = moment.follower;
        numbers[kSpace + m] = moment.space[0];
        numbers[kSpace + kMoments + m] = moment.space[1];
    }
}

void DisplayPacket::FillGrains(const DisplayFrame& frame) {
    for (uint32_t g = 0; g < frame.grainCount; ++g) {
        const Host::ShownGrain& grain = frame.grains[g];
        Put(kGrains + g * kGrainFields,
            std::array{static_cast<float>(grain.number), grain.place, grain.length, grain.progress,
                       grain.semitones, grain.pan, grain.gain, grain.envelope,
                       grain.reversed ? 1.0f : 0.0f});
    }
}

}  // namespace Quorvan::Web
