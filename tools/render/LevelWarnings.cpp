#include "tools/render/LevelWarnings.h"

#include <algorithm>
#include <cmath>

#include "host/parameters/Sentence.h"
#include "tools/support/Numbers.h"

namespace Quorvan::Tools {

namespace {

constexpr float kHotInput = 4.0f;  // +12 dB: no mix comes so hot, integers taken as floats do

double Decibels(float level) { return 20.0 * std::log10(static_cast<double>(level)); }

}  // namespace

std::optional<std::string> ClippingWarning(uint64_t clipped, float peak,
                                           const Host::PresentSettings& settings,
                                           const Host::ParameterCatalog& catalog) {
    if (clipped == 0)
        return std::nullopt;
    // Up to the next tenth, and a hair more for the rounding of the knob.
    const double over = std::ceil(10.0 * Decibels(std::max(peak, 1.0f)) + 0.2) / 10.0;
    const uint32_t volume = catalog.Find("Master Volume").value();
    const double present = catalog.Value(volume, settings.Position(volume));
    std::string text = Grouped(clipped) + (clipped == 1 ? " sample was" : " samples were") +
                       " clipped, since the output reaches " + Fixed(Decibels(peak), 1) +
                       " dB above full scale. ";
    if (present - over > catalog[volume].minimum)
        text += "--set " +
                Host::Quoted(catalog[volume].title + "=" + Fixed(present - over, 1) + " dB") +
                ", " + Fixed(over, 1) + " dB less, avoids it; a float file keeps it.";
    else
        text += "An input " + Fixed(over, 1) + " dB quieter avoids it; a float file keeps it.";
    return text;
}

std::optional<std::string> HotInputWarning(const std::string& named, float peak) {
    if (peak < kHotInput)
        return std::nullopt;
    return named + " goes " + Fixed(Decibels(peak), 1) +
           " dB above full scale, much more than a sound does. Were integers stored as floats? "
           "Turn it down by as much first.";
}

std::optional<std::string> BadSamplesWarning(const std::string& named, uint64_t count) {
    if (count == 0)
        return std::nullopt;
    return named + " holds " + Grouped(count) +
           " samples that are no numbers (NaN or infinity). They were taken as 0; export the file "
           "again if it should hold sound.";
}

}  // namespace Quorvan::Tools
