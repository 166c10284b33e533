#pragma once

#include <cstdint>

namespace Quorvan::dsp {

/// Where the cloud stands in the stereo field: X is the pan, -1..1, and Y the distance, from 0 up.
/// It follows a control and a modulation row, or wanders by itself in random steps. One step a
/// block.
class StereoPosition {
public:
    StereoPosition();

    /// Follows the control: center and distance moved by the rows' values times the amounts.
    void Follow(float center, float amountX, float rowX, float distance, float amountY, float rowY);
    /// One random step of at most rate / 30 on one axis, scaled by that axis' amount.
    void Walk(float rate, float amountX, float amountY);
    /// Draws a new place to walk from.
    void StartWalk();

    float X() const { return stereoX; }
    float Y() const { return stereoY; }
    /// What the user interface shows, X in -1..1 and Y in 0..1.
    float ShownX() const;
    float ShownY() const;

private:
    float walkX = 0.0f, walkY = 0.0f;  ///< raw position
    float stereoX = 0.0f, stereoY = 0.0f;
    uint32_t randomB;  ///< xorshift state
};

}  // namespace Quorvan::dsp
