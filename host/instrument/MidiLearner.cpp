#include "host/instrument/MidiLearner.h"

#include <algorithm>

#include "host/instrument/MidiMap.h"

namespace Quorvan::Host {

void MidiLearner::Begin(bool goesOn) {
    coarse.reset();
    if (!goesOn)
        taughtCount = 0;
}

bool MidiLearner::Knows(const MidiDecoder::Values& values) const {
    const size_t count = std::min(taughtCount, kMostTaught);
    for (uint32_t i = 0; i < values.count; ++i)
        for (size_t k = 0; k < count; ++k)
            if (IsSameKnob(taught[k], values.list[i].source))
                return true;
    return false;
}

std::optional<MidiSource> MidiLearner::Hear(const MidiDecoder::Values& values) {
    const std::optional<MidiSource> source = Find(values);
    if (source)
        taught[taughtCount++ % kMostTaught] = *source;
    return source;
}

std::optional<MidiSource> MidiLearner::Find(const MidiDecoder::Values& values) {
    using Kind = MidiSource::Kind;
    // A controller whose LSB has not come yet has been heard already.
    const bool isOld = values.heldFirst && values.list[0].source.kind == Kind::FineController;
    const uint32_t first = isOld ? 1 : 0;
    if (values.count == first)
        return std::nullopt;
    const MidiValue& value = values.list[first];
    if (coarse) {
        const MidiSource wide{Kind::FineController, coarse->channel, coarse->number};
        const bool isFine = values.count == first + 2 && values.list[first + 1].source == wide;
        return isFine ? wide : *coarse;
    }
    // A key that comes up was pressed before anybody asked.
    if (value.source.kind == Kind::Note && value.value == 0.0f)
        return std::nullopt;
    if (value.source.kind == Kind::Controller && value.source.number < 32) {
        coarse = value.source;
        return std::nullopt;
    }
    return value.source;
}

}  // namespace Quorvan::Host
