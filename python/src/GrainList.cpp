#include "python/src/GrainList.h"

#include <algorithm>
#include <iterator>

namespace Quorvan::Python {

void GrainList::OnGrainStart(const Host::GrainStart& grain) {
    const auto seconds = [this](double frames) { return static_cast<float>(frames / rate); };
    rows.push_back({.time = static_cast<double>(grain.frame) / rate,
                    .duration = seconds(static_cast<double>(grain.durationFrames)),
                    .tapePosition = seconds(static_cast<double>(grain.tapePosition)),
                    .tapeLength = seconds(grain.tapeLength),
                    .sourceDuration = seconds(static_cast<double>(grain.sourceFrames)),
                    .semitones = grain.semitones,
                    .pan = grain.pan,
                    .gain = grain.gain,
                    .shape = grain.shape,
                    .right = grain.right,
                    .reversed = grain.reversed});
}

std::vector<GrainRow> GrainList::Ahead(uint64_t frame) const {
    const double end = static_cast<double>(frame) / rate;
    std::vector<GrainRow> ahead;
    std::copy_if(rows.begin(), rows.end(), std::back_inserter(ahead),
                 [end](const GrainRow& row) { return row.time < end; });
    return ahead;
}

}  // namespace Quorvan::Python
