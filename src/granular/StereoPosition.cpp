#include "granular/StereoPosition.h"

#include <algorithm>

#include "primitives/Clock.h"
#include "primitives/Xorshift.h"

namespace Quorvan::dsp {

StereoPosition::StereoPosition() : randomB(prims::SeedFromClock()) {}

void StereoPosition::Follow(float center, float amountX, float rowX, float distance, float amountY,
                            float rowY) {
    walkX = center + amountX * rowX;
    stereoX = std::clamp(walkX, -1.0f, 1.0f);
    walkY = distance + amountY * rowY;
    stereoY = std::max(walkY, 0.0f);
}

void StereoPosition::Walk(float rate, float amountX, float amountY) {
    const float draw = static_cast<float>(prims::XorshiftStep(randomB)) * prims::kXorshiftScale;
    const float step = rate * 0.33333334f * 0.1f;
    if (draw >= 0.5f) {
        // A step down pulls a position beyond 1 back to 1; a step up may go on to 2.
        const float s = step * amountX;
        walkX =
            draw <= 0.75f ? std::clamp(walkX - s, -1.0f, 1.0f) : std::clamp(walkX + s, -2.0f, 2.0f);
        stereoX = std::clamp(walkX, -1.0f, 1.0f);
    } else {
        const float s = step * amountY;
        walkY = std::clamp(draw <= 0.25f ? walkY - s : walkY + s, 0.0f, 2.0f);
        stereoY = walkY;
    }
}

void StereoPosition::StartWalk() {
    const auto draw = [this] {
        return static_cast<float>(prims::XorshiftStep(randomB)) * prims::kXorshiftScale;
    };
    walkX = 2.0f * draw() - 1.0f;
    walkY = draw();
}

float StereoPosition::ShownX() const { return std::clamp(walkX, -1.0f, 1.0f); }

float StereoPosition::ShownY() const { return std::clamp(walkY, 0.0f, 1.0f); }

}  // namespace Quorvan::dsp
