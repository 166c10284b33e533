#pragma once

#include "granular/Grain.h"

namespace Quorvan::dsp {

/// Told of every grain as it starts, on the audio thread. For tools that draw or count.
struct GrainListener {
    virtual void OnGrainStart(const Grain& grain) = 0;

protected:
    ~GrainListener() = default;
};

}  // namespace Quorvan::dsp
