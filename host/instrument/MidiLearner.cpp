#include "host/instrument/MidiLearner.h"

namespace Quorvan::Host {

std::optional<MidiSource> MidiLearner::Hear(const MidiDecoder::Values& values) {
    using Kind = MidiSource::Kind;
    if (values.count == 0)
        return std::nullopt;
    const MidiValue& value = values.list[0];
    if (coarse) {
        const bool isFine = values.count == 2 && values.list[1].source.channel == coarse->channel &&
                            values.list[1].source.number == coarse->number;
        return isFine ? values.list[1].source : *coarse;
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
