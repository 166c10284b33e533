#include "host/instrument/MidiLearner.h"

namespace Quorvan::Host {

std::optional<MidiSource> MidiLearner::Hear(const MidiDecoder::Values& values) {
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
