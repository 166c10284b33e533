#pragma once

#include <cstdint>

#include "primitives/ZeroedArray.h"

namespace Quorvan::dsp {

/// Ring of samples with fractional reads. Sample loops write and do plain reads on data, size and
/// writeIndex directly. Resize comes before the first read or write.
class DelayLine {
public:
    enum Interpolation : int32_t {
        kNone = 0,
        kLinear = 1,
        kPolynomial = 2,  ///< four points, fifth degree
        kAllpass = 3      ///< one read a sample: the filter has a state
    };

    DelayLine() = default;
    DelayLine(const DelayLine& other) { *this = other; }
    DelayLine& operator=(const DelayLine& other);
    virtual ~DelayLine() = default;

    /// How a line is cleared. BitByBit: a clean one takes its place, which once it has happened is
    /// twice the memory, and the owner calls Wipe.
    enum class Clearing { AtOnce, BitByBit };

    /// Takes the memory for length samples, all zero.
    void Resize(int32_t length, Clearing clearing = Clearing::AtOnce);
    /// Zeroes the content, unless nothing has been written since Resize, and starts over. It comes
    /// ahead of the first write past Write, of which the line knows nothing.
    void Clear();
    /// At least once a block, ahead of its writes: goes on wiping what the last Clear put aside.
    /// Writes come one after the other, at writeIndex.
    void Wipe();
    void Write(float x) {
        isClear = false;
        data[writeIndex] = x;
        ++writeIndex;
        if (writeIndex >= size)
            writeIndex -= size;
    }
    /// A delay of 1 reads the sample written last; fraction 0..1 adds to the delay. Any delay reads
    /// inside the ring.
    float Read(int32_t delay, float fraction, int32_t interpolation) {
        const int64_t i = int64_t{writeIndex} - delay;
        switch (interpolation) {
            case kLinear: {
                const float a = At(i);
                return (At(i - 1) - a) * fraction + a;
            }
            case kPolynomial:
                return Polynomial(PointsAt(i), fraction);
            case kAllpass:
                return ReadAllpass(i, fraction);
            default:
                return At(i);
        }
    }

    /// The samples that kPolynomial reads at a delay, from the newest to the oldest.
    struct Points {
        float p, a, b, q;
    };
    Points PointsAround(int32_t delay) const { return PointsAt(int64_t{writeIndex} - delay); }
    /// kPolynomial between a and b: runs through these two with slope and curvature taken from all
    /// four. Of numbers or of vectors.
    template <class Number>
    static Number Between(Number p, Number a, Number b, Number q, Number x) {
        const Number e = b - a;
        const Number g = q - p;
        Number result = (2.5f * g - 7.5f * e) + (3.0f * e + p - q) * x;
        result = result * x + (4.5f * e - 1.5f * g);
        result = result * x + ((b + p) * 0.5f - a);
        result = result * x + (b - p) * 0.5f;
        return result * x + a;
    }
    static float Polynomial(const Points& points, float x) {
        return Between(points.p, points.a, points.b, points.q, x);
    }

    ZeroedArray storage;
    float* data = nullptr;   ///< start of storage
    bool isClear = false;    ///< all zero still since Resize
    int32_t size = 0;        ///< samples
    int32_t writeIndex = 0;  ///< where the next sample goes
    float allpassState = 0.0f;

private:
    /// The sample at an index brought into the ring. Delays within the ring are one round off at
    /// most; only what lies further out takes a division.
    float At(int64_t index) const {
        if (index < 0)
            index += size;
        else if (index >= size)
            index -= size;
        return index >= 0 && index < size ? data[index] : AtFar(index);
    }
    float AtFar(int64_t index) const;
    Points PointsAt(int64_t index) const {
        if (index >= 2 && index + 1 < size) {
            const float* const at = data + index;
            return {at[1], at[0], at[-1], at[-2]};
        }
        return {At(index + 1), At(index), At(index - 1), At(index - 2)};
    }
    float ReadAllpass(int64_t index, float x);
    void Empty();

    ZeroedArray spare;      ///< waits for the next Clear; only of a line that is cleared bit by bit
    size_t wiped = 0;       ///< samples
    size_t dirty = 0;       ///< end of what is to be wiped
    int32_t lastIndex = 0;  ///< writeIndex at the last Wipe
    bool isWatched = false;   ///< Wipe has been called since the last Clear
    bool hasWrapped = false;  ///< writes have gone round since then, as far as Wipe knows
};

}  // namespace Quorvan::dsp
