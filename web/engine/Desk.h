#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host/parameters/ParameterCatalog.h"

namespace Quorvan::Web {

/// What lies between the page and the module's functions: numbers and addresses are all that can be
/// handed over, so texts and positions are left here by one side for the other.
class Desk {
public:
    /// The one of this instance.
    static Desk& Get();

    /// Room for what the page hands over, until the next call of this.
    char* MakeRoom(size_t bytes);
    /// What lies there; less where the page says more than there is room.
    std::string_view Room(size_t bytes) const;

    /// For the page to read.
    void Leave(std::string words) { text = std::move(words); }
    const std::string& Text() const { return text; }

    /// One position 0..1 for each parameter, that of a new processor at first.
    std::vector<float>& Positions() { return positions; }
    /// Position of a parameter; where the page left no number, that of a new processor.
    float Position(uint32_t index) const;

private:
    Desk();

    std::string room, text;
    std::vector<float> positions;
};

}  // namespace Quorvan::Web
