#include <cstddef>
#include <cstdint>

#include "tools/audio/DemoSound.h"
#include "web/engine/Export.h"

/// The piece of music that a page has without any file.

using namespace Quorvan;

namespace {

constexpr double kLowestRate = 8000.0;
constexpr double kHighestRate = 192000.0;

Tools::Planes& Demo() {
    static Tools::Planes demo;
    return demo;
}

}  // namespace

TESSERAE_EXPORT(tesserae_demo) size_t MakeDemo(double sampleRate) {
    if (!(sampleRate >= kLowestRate && sampleRate <= kHighestRate))
        return 0;
    Demo() = Tools::MakeDemoSound(sampleRate, Tools::kDemoSeconds);
    return Demo().Frames();
}

TESSERAE_EXPORT(tesserae_demo_at) const float* DemoAt(uint32_t side) {
    return side < Demo().Channels() ? Demo()[side].data() : nullptr;
}
