#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace Quorvan::Ui {

/// A setting of a slot, behind "FX1" or "FX2", and its text.
struct EffectStart {
    std::string_view setting, text;
};

/// Where an effect stands when it first comes into a slot, by its choice of "Effect": heard at
/// once, and of use with most sounds. The first is that of the slot's mix.
std::span<const EffectStart> EffectStartsOf(uint32_t choice);

}  // namespace Quorvan::Ui
