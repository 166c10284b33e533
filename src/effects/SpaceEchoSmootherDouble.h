#pragma once

#include <cstdint>

namespace Quorvan::dsp {

/// Base of the glides of a tape machine's mechanics, which stay in double precision throughout.
class SpaceEchoSmootherDouble {
public:
    virtual ~SpaceEchoSmootherDouble() = default;

    /// One step; answers the new value.
    virtual double Tick() = 0;
    virtual void SetTarget(double value) { target = value; }
    virtual void UpdateCoefficients() = 0;

    double target = 0.0;
    double current = 0.0;
    double time = 0.0;        ///< seconds
    uint32_t stepLength = 1;  ///< samples that one tick stands for
    double sampleRate = 0.0;  ///< hertz

protected:
    SpaceEchoSmootherDouble() = default;
    SpaceEchoSmootherDouble(const SpaceEchoSmootherDouble&) = default;
    SpaceEchoSmootherDouble& operator=(const SpaceEchoSmootherDouble&) = default;
};

}  // namespace Quorvan::dsp
