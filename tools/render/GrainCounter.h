#pragma once

#include <cstdint>

#include "host/engine/EngineListener.h"

namespace Quorvan::Tools {

/// Counts the grains that start. A trigger starts two, a left and a right one.
class GrainCounter final : public Host::EngineListener {
public:
    void OnGrainStart(const Host::GrainStart&) override { ++count; }
    uint64_t Count() const { return count; }

private:
    uint64_t count = 0;
};

}  // namespace Quorvan::Tools
