#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace Quorvan::Tools {

/// The time signature of a song. Bar 1 begins at its position 0.
struct Meter {
    uint32_t beats = 4;  ///< in a bar
    uint32_t unit = 4;   ///< a beat is one of so many parts of a whole note

    /// Of "3/4" or "6/8"; nothing where text is none. Units are powers of two up to 64.
    static std::optional<Meter> Read(std::string_view text);
    std::string Text() const { return std::to_string(beats) + "/" + std::to_string(unit); }
    bool operator==(const Meter&) const = default;

    /// Lengths in quarter notes.
    double BeatLength() const { return 4.0 / unit; }
    double BarLength() const { return beats * BeatLength(); }
    /// The position, in quarter notes, of "5:3" or "5:3.5": bar and beat, both from 1; bars ahead
    /// of the song count 0, -1 and so on. "5" alone is the bar's first beat. Nothing where text is
    /// no such place, or the bar has no such beat.
    std::optional<double> Position(std::string_view text) const;
};

}  // namespace Quorvan::Tools
