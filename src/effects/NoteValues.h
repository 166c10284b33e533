#pragma once

#include <array>

namespace Quorvan::dsp {

/// Lengths that the tempo-synced echoes choose from, in whole notes.
inline constexpr std::array<float, 9> kNoteValues{0.03125f, 0.0625f, 0.125f, 0.25f, 0.5f,
                                                  1.0f,     2.0f,    4.0f,   8.0f};

}  // namespace Quorvan::dsp
