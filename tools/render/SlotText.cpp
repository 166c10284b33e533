#include "tools/render/SlotText.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

#include "host/engine/ParameterReach.h"

namespace Quorvan::Tools {

namespace {

/// Choices of the position of a slot, in words that go behind the name of an effect.
constexpr std::array<std::string_view, 3> kPlaces{"behind the mix", "on the wet signal",
                                                  "in the loop"};
/// Destinations that move the dry/wet of the slots.
constexpr std::array<uint32_t, 2> kDryWetRows{35, 65};

class SlotReader {
public:
    SlotReader(const Host::Engine& readEngine, const Host::ParameterCatalog& readCatalog)
        : engine(readEngine), catalog(readCatalog), reach(readEngine, readCatalog) {}

    /// slot counts from 0.
    std::string Text(uint32_t slot) const {
        const std::string prefix = Prefix(slot);
        if (!IsHeard(slot))
            return "";
        const uint32_t index = catalog.Find(prefix + "ModuleType").value();
        return "FX" + std::to_string(slot + 1) + " " + catalog.Text(index, engine.Position(index)) +
               " " + std::string(kPlaces[Place(slot)]);
    }

private:
    static std::string Prefix(uint32_t slot) { return "FX" + std::to_string(slot + 1) + "_"; }
    uint32_t Place(uint32_t slot) const { return reach.Choice(Prefix(slot) + "Position"); }
    bool IsHeard(uint32_t slot) const {
        const std::string prefix = Prefix(slot);
        return reach.Choice(prefix + "ModuleType") != 0 && !reach.IsOn(prefix + "Bypass") &&
               reach.Highest(prefix + "Dry / Wet", kDryWetRows[slot]) > 0.0;
    }

    const Host::Engine& engine;
    const Host::ParameterCatalog& catalog;
    Host::ParameterReach reach;
};

}  // namespace

std::vector<std::string> SlotTexts(const Host::Engine& engine,
                                   const Host::ParameterCatalog& catalog) {
    const SlotReader reader(engine, catalog);
    std::vector<std::string> texts;
    for (uint32_t slot = 0; slot < 2; ++slot)
        if (std::string text = reader.Text(slot); !text.empty())
            texts.push_back(std::move(text));
    return texts;
}

std::string JoinSlotTexts(const std::vector<std::string>& texts) {
    constexpr size_t kMost = 3;
    std::string line;
    for (size_t i = 0; i < std::min(texts.size(), kMost); ++i)
        line += (i > 0 ? ", " : "") + texts[i];
    if (texts.size() > kMost)
        line += " and " + std::to_string(texts.size() - kMost) + " more";
    return line;
}

}  // namespace Quorvan::Tools
