#pragma once

#include <concepts>
#include <cstdint>
#include <string_view>

#include "framework/ProcessBlock.h"

namespace Quorvan::dsp {

/// Told by a modulation matrix when a cell begins or ceases to carry signal.
class ModulationListener {
public:
    virtual ~ModulationListener() = default;
    virtual void OnConnectionChanged(uint32_t source, uint32_t destination, bool connected) = 0;
};

/// What a modulation matrix takes from its surroundings: how its parameters are named, and how its
/// rows tell their readers that they carry something.
struct DefaultModulationPolicy {
    static constexpr std::string_view kSourceStem = "Src";
    static constexpr std::string_view kDestinationStem = "Dst";
    static constexpr uint32_t kHeadFloats = kRowHeadFloats;
    static constexpr float kConnected = kRowActive;  ///< activity word of a row with a source
    static constexpr float kIdle = 0.0f;             ///< and of one without
};

template <class P>
concept ModulationPolicy = requires {
    { P::kSourceStem } -> std::convertible_to<std::string_view>;
    { P::kDestinationStem } -> std::convertible_to<std::string_view>;
    { P::kHeadFloats } -> std::convertible_to<uint32_t>;
    { P::kConnected } -> std::convertible_to<float>;
    { P::kIdle } -> std::convertible_to<float>;
};

}  // namespace Quorvan::dsp
