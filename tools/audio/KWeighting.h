#pragma once

#include <array>
#include <cstddef>

namespace Quorvan::Tools {

/// The weighting of ITU-R BS.1770 ahead of a loudness: a shelf for the head and a high-pass, for
/// two channels side by side, which costs no more than one since each waits for its own past.
///
/// Method  the two analogue filters of the recommendation by the bilinear transform, so that rates
///         other than 48000 Hz have them too; transposed direct form
class KWeighting {
public:
    explicit KWeighting(double rate);

    /// Energy of frames, both channels together. right may be null.
    double Energy(const float* left, const float* right, size_t frames);

private:
    using Pair = std::array<double, 2>;
    struct Stage {
        double b0, b1, b2, a1, a2;
        Pair first{}, second{};  ///< state
        void Run(Pair& x);
        /// What is far below all hearing would become slow to reckon with.
        void Settle();
    };

    static Stage Shelf(double rate);
    static Stage HighPass(double rate);

    Stage shelf, highPass;
};

}  // namespace Quorvan::Tools
