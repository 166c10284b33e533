#include "tools/picture/GrainLog.h"

namespace Quorvan::Tools {

namespace {
constexpr size_t kMost = 24000;  // more would only blacken the picture
}

void GrainLog::OnGrainStart(const Host::GrainStart& grain) {
    ++count;
    // The left grain of a pair comes first.
    if (!grain.right)
        ++pair;
    const double end = static_cast<double>(grain.frame) + static_cast<double>(grain.durationFrames);
    const bool isInside = grain.frame < endFrame && end >= static_cast<double>(firstFrame);
    if (pair % stride != 0 || !isInside)
        return;
    if (kept.size() >= kMost)
        Thin();
    kept.push_back(grain);
    pairs.push_back(pair);
}

void GrainLog::CutAt(uint64_t frame) {
    while (!kept.empty() && kept.back().frame >= frame) {
        kept.pop_back();
        pairs.pop_back();
    }
}

void GrainLog::Thin() {
    stride *= 2;
    size_t to = 0;
    for (size_t from = 0; from < kept.size(); ++from) {
        if (pairs[from] % stride != 0)
            continue;
        kept[to] = kept[from];
        pairs[to++] = pairs[from];
    }
    kept.resize(to);
    pairs.resize(to);
}

}  // namespace Quorvan::Tools
