#pragma once

#include <string>
#include <vector>

namespace Quorvan::C {

/// A factory preset as C takes it, with zeros at the ends of its texts.
struct FactoryText {
    std::string name;
    std::string json;
};

/// All in the order of FactoryPresets, made at the first call, from any thread.
const std::vector<FactoryText>& FactoryTexts();

}  // namespace Quorvan::C
