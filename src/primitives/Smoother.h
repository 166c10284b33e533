#pragma once

#include <algorithm>
#include <cstdint>

namespace Quorvan::dsp {

/// Base of the control-value glides: a value that moves towards a target, one step a tick. State is
/// double precision, values go out in single precision.
///
/// The owner writes time, stepLength and sampleRate and then calls UpdateCoefficients; that takes
/// effect at the next Tick and moves nothing by itself. At rest current equals target exactly.
class Smoother {
public:
    /// seconds: the smoothing time, above 0.
    explicit Smoother(double seconds) : time(seconds) {}
    virtual ~Smoother() = default;

    /// One step; answers the new value.
    virtual float Tick() = 0;
    virtual void SetTarget(float value) { target = static_cast<double>(value); }
    virtual void SetStartAndTarget(float start, float end) {
        target = static_cast<double>(end);
        current = static_cast<double>(start);
    }
    /// Jumps to a value.
    virtual void Reset(float value) { target = current = static_cast<double>(value); }
    virtual void UpdateCoefficients() = 0;

    /// One value a sample. At rest the count is taken down to a multiple of four, as block lengths
    /// are.
    virtual void FillBlock(float* out, uint32_t count) = 0;
    bool IsAtRest() const { return target == current; }
    bool IsAtRestAt(double value) const { return current == value && target == value; }

    double target = 0.0;
    double current = 0.0;
    double time;              ///< seconds
    uint32_t stepLength = 1;  ///< samples that one tick stands for
    double sampleRate = 0.0;  ///< hertz

protected:
    Smoother(const Smoother&) = default;
    Smoother& operator=(const Smoother&) = default;

    /// FillBlock for a class whose Tick is known: no calls, and the state in locals.
    template <class Exact>
    static void FillBlockOf(Exact& smoother, float* out, uint32_t count) {
        if (smoother.IsAtRest()) {
            std::fill_n(out, count / 4 * 4, static_cast<float>(smoother.current));
            return;
        }
        Exact local = smoother;
        for (uint32_t i = 0; i < count; ++i)
            out[i] = local.Exact::Tick();
        smoother = local;
    }
};

}  // namespace Quorvan::dsp
