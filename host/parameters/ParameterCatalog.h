#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/parameters/ParameterInfo.h"

namespace Quorvan::Processor {
class IProcessor;
}

namespace Quorvan::Host {

struct LabelFamily;
class PresentSettings;

/// State of a processor that the text of a parameter depends on: "MoteWeaver_Pitch" counts steps of
/// a scale while "MoteWeaver_Scale" chooses one.
struct TextContext {
    uint32_t scale = 0;  ///< choice of "MoteWeaver_Scale"

    static TextContext Of(Processor::IProcessor& processor);
};

/// A position, or a sentence that says why there is none and what would do.
struct TextResult {
    std::optional<float> position;
    std::string problem;
};

/// Every parameter of the processor: what it is called, how it moves, and its position as a text
/// and back. Made once and only read after that, from any thread. Holds no processor.
///
/// Names, whatever their case, count in this order:
/// 1. Full names: "FX1_Reverb_Decay", "Dry / Wet". What has a "_" in it is nothing else.
/// 2. Group and label, with any blanks and signs between their letters: "FX1 Reverb Decay".
/// 3. The label alone, where one parameter that can be set has it: "Persistence". Among several the
///    granular group goes first ("Pitch", "Spray"), then the main one ("Bypass"); other labels that
///    several share, such as "Decay", are refused.
/// 4. Destinations of modulation (ModulationNames.h): "FX1 Filter Freq".
/// 5. Parameters of effects without their slot: "Reverb Decay". They, and labels of 3 that only
///    effects have, mean the one whose slot holds its effect; where both or none do, they are
///    refused.
/// In 2 to 5 a few names stand for several parameters: "Grain Size", "Texture Size", "Density",
/// "Play Head", "Play Head Offset", every "Rate" and "Time", "Frequency" of filters and "Width" of
/// echoes. They mean the one that present settings put in force. Each of those has a label of its
/// own as well: "Grain Size (Texture, Free)".
///
/// Texts look like "1.25 kHz", "-6.0 dB", "Texture", "1/8" or "On". Reading takes what Text wrote,
/// in any case and with or without the unit; the start of a choice's name where no other choice
/// starts so; and "@0.25" as a bare position of any parameter.
class ParameterCatalog {
public:
    ParameterCatalog();
    ~ParameterCatalog();
    ParameterCatalog(const ParameterCatalog&) = delete;
    ParameterCatalog& operator=(const ParameterCatalog&) = delete;

    uint32_t Count() const;
    /// index below Count.
    const ParameterInfo& operator[](uint32_t index) const;
    /// All in index order.
    const std::vector<ParameterInfo>& All() const;

    /// Index of a full name, whatever the case of its letters.
    std::optional<uint32_t> Find(std::string_view name) const;
    /// Index of the parameter that any kind of name means with these settings. Nothing where nobody
    /// has the name, or several have: UnknownName tells which.
    std::optional<uint32_t> Resolve(std::string_view name, const PresentSettings& settings) const;
    /// Whether a parameter decides what names or texts of others mean. What sets several reads
    /// those first.
    bool Decides(uint32_t index) const;
    /// The name that a parameter shares with others, one of which is in force; empty where it
    /// shares none.
    std::string CommonName(uint32_t index) const;
    bool IsInForce(uint32_t index, const PresentSettings& settings) const;
    /// The parameters that share that name, for the host layer itself; null where it shares none.
    const LabelFamily* FamilyOf(uint32_t index) const;
    /// Row of the modulation that moves what has the name, which is that of a row or a parameter.
    std::optional<uint32_t> FindDestination(std::string_view name) const;

    /// The names most like a mistyped one, best first: titles, or full names where it looks like
    /// one.
    std::vector<std::string> Nearest(std::string_view name, size_t count = 3) const;
    /// The sentence for a name that means nothing, with suggestions, or more than one thing.
    std::string UnknownName(std::string_view name) const;

    /// What a position shows as. Empty for binary parameters.
    std::string Text(uint32_t index, float position, const TextContext& context = {}) const;
    /// The position that a text asks for. A number outside the range is a problem.
    TextResult Position(uint32_t index, std::string_view text,
                        const TextContext& context = {}) const;
    /// The number behind a text: in the parameter's unit; the index of a choice; 0 or 1 of a
    /// switch.
    double Value(uint32_t index, float position, const TextContext& context = {}) const;
    /// The position of such a number, held to the range.
    float PositionOfValue(uint32_t index, double value, const TextContext& context = {}) const;

private:
    class Implementation;
    std::unique_ptr<const Implementation> implementation;
};

}  // namespace Quorvan::Host
