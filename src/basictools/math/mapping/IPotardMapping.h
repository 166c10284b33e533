#pragma once

#include <cstdint>

namespace Quorvan::MappingTools {

/// A knob curve: a pure function from the position 0..1 to a value, and its inverse.
///
/// Threads  curves never change after construction; every operation may run on any thread.
/// The order of the virtual operations is fixed: it is part of the binary contract.
class IPotardMapping {
public:
    virtual ~IPotardMapping() = default;

    /// Forward curve.
    virtual float Map(float position) const = 0;
    /// Inverse curve.
    virtual float Unmap(float value) const = 0;
    /// Forward curve over a block, in place; any count will do, multiples of four run fastest.
    virtual void MapBlock(float* values, uint32_t count) const = 0;
    /// True where the output is the value in its own unit, false where it is a fraction 0..1 of the
    /// parameter's range.
    virtual bool IsAbsolute() const { return false; }

protected:
    IPotardMapping() = default;
    IPotardMapping(const IPotardMapping&) = default;
    IPotardMapping& operator=(const IPotardMapping&) = default;
};

}  // namespace Quorvan::MappingTools
