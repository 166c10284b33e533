#pragma once

namespace Quorvan::dsp {

/// Limits on how far a grain may read, all in source samples: the count of tape samples that it
/// covers, whatever its speed. A grain is cut before it would be overrun by the write head, or
/// overrun it.
struct GrainLength {
    /// What is the same for both grains of a pair.
    struct Loop {
        double effectiveLength;  ///< samples at which read positions wrap
        double writePosition;
        float sampleRate;
        float lengthMs;  ///< loop length
        bool beat;       ///< beat mode: above unity the length doesn't follow the ratio
    };

    /// Length of a reversed grain of sizeMs milliseconds at start with speed ratio.
    static float Reversed(const Loop& loop, double start, float ratio, float sizeMs);
    /// Length of a forward grain, likewise.
    static float Forward(const Loop& loop, double start, float ratio, float sizeMs);
    /// Whether a forward grain of that length may crossfade where it meets the write head.
    static bool Crosses(const Loop& loop, double start, float ratio, float length);
};

}  // namespace Quorvan::dsp
