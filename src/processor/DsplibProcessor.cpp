#include "processor/DsplibProcessor.h"

namespace Quorvan::Processor {

namespace {
constexpr float kDefaultSampleRate = 44100.0f;
constexpr float kBlockGroups = 0.0002494331f;  // groups of four samples in a block, per hertz
}  // namespace

const std::string& PseudoParameterName(uint32_t index) {
    static const std::array<std::string, 2> names{"ToolTipUpdate", "ToolTipText"};
    return names[index - kToolTipUpdateIndex];
}

float ValidSampleRate(float sampleRate) {
    return sampleRate > 0.0f && std::isfinite(sampleRate) ? sampleRate : kDefaultSampleRate;
}

uint32_t BlockSizeAt(float sampleRate) {
    const float rate = std::min(ValidSampleRate(sampleRate), kHighestSampleRate);
    return std::max(4u, 4u * static_cast<uint32_t>(std::round(rate * kBlockGroups)));
}

}  // namespace Quorvan::Processor
