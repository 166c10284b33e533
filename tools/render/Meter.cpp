#include "tools/render/Meter.h"

#include <bit>
#include <cmath>

#include "tools/render/PositionText.h"

namespace Quorvan::Tools {

namespace {

constexpr uint32_t kMostBeats = 64;

std::optional<uint32_t> WholeUpTo(std::string_view text, uint32_t most) {
    const std::optional<double> number = PlainNumber(text);
    if (!number || !(*number >= 1.0 && *number <= most) || *number != std::floor(*number))
        return std::nullopt;
    return static_cast<uint32_t>(*number);
}

}  // namespace

std::optional<Meter> Meter::Read(std::string_view text) {
    const size_t bar = text.find('/');
    if (bar == std::string_view::npos)
        return std::nullopt;
    const std::optional<uint32_t> beats = WholeUpTo(text.substr(0, bar), kMostBeats);
    const std::optional<uint32_t> unit = WholeUpTo(text.substr(bar + 1), kMostBeats);
    if (!beats || !unit || !std::has_single_bit(*unit))
        return std::nullopt;
    return Meter{*beats, *unit};
}

std::optional<double> Meter::Position(std::string_view text) const {
    const size_t colon = text.find(':');
    const std::optional<double> bar = PlainNumber(text.substr(0, colon));
    const std::optional<double> beat =
        colon == std::string_view::npos ? 1.0 : PlainNumber(text.substr(colon + 1));
    constexpr double kMostBars = 1.0e6;
    if (!bar || !beat || *bar != std::floor(*bar) || std::abs(*bar) > kMostBars || *beat < 1.0 ||
        *beat >= beats + 1.0)
        return std::nullopt;
    return (*bar - 1.0) * BarLength() + (*beat - 1.0) * BeatLength();
}

}  // namespace Quorvan::Tools
