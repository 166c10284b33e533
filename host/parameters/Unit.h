#pragma once

#include <cstdint>

namespace Quorvan::Host {

/// What a parameter's number counts, and how its text is written.
enum class Unit : uint8_t {
    None,          ///< a plain number
    Hertz,         ///< "440 Hz", "1.25 kHz"
    Milliseconds,  ///< "12.5 ms", "1.50 s"
    Seconds,       ///< as above; a number without a unit is in seconds
    Decibels,      ///< "-6.0 dB"
    Semitones,     ///< "7.00 st"
    Cents,         ///< "12.0 ct"
    Percent,       ///< "50.0 %"
    Degrees,       ///< "90.0 deg"
    Factor,        ///< "1.50 x"
    Ratio,         ///< "4.00:1"
    Bits           ///< "12.1 bit"
};

/// Short sign of a unit as a list of parameters shows it; empty for plain numbers.
constexpr const char* SignOf(Unit unit) {
    switch (unit) {
        case Unit::None:
            return "";
        case Unit::Hertz:
            return "Hz";
        case Unit::Milliseconds:
            return "ms";
        case Unit::Seconds:
            return "s";
        case Unit::Decibels:
            return "dB";
        case Unit::Semitones:
            return "st";
        case Unit::Cents:
            return "ct";
        case Unit::Percent:
            return "%";
        case Unit::Degrees:
            return "deg";
        case Unit::Factor:
            return "x";
        case Unit::Ratio:
            return ":1";
        case Unit::Bits:
            return "bit";
    }
    return "";
}

}  // namespace Quorvan::Host
