#include "granular/GranularTables.h"

#include <vector>

namespace Quorvan::dsp {

namespace {

constexpr float kLowest = -36.0f;
constexpr float kHighest = 36.0f;

/// Steps in semitones inside one octave, for scales 1 to 14.
const std::vector<std::vector<int>> kOctaveSteps{
    {1},                    // chromatic
    {12},                   // octaves
    {7, 5},                 // root and fifth
    {5, 2, 5},              // root, fourth and fifth
    {2, 2, 1, 2, 2, 2, 1},  // major
    {2, 1, 2, 2, 1, 2, 2},  // natural minor
    {2, 2, 3, 2, 3},        // major pentatonic
    {3, 2, 2, 3, 2},        // minor pentatonic
    {2, 1, 2, 2, 1, 3, 1},  // harmonic minor
    {1, 2, 2, 2, 1, 2, 2},  // Phrygian
    {1, 3, 1, 2, 1, 2, 2},  // Phrygian dominant
    {2, 2, 2, 1, 2, 2, 1},  // Lydian
    {2, 2, 1, 2, 2, 1, 2},  // Mixolydian
    {2, 1, 2, 2, 2, 1, 2},  // Dorian
};

std::vector<std::vector<float>> BuildScales() {
    std::vector<std::vector<float>> scales(1);
    for (const std::vector<int>& steps : kOctaveSteps) {
        std::vector<float>& scale = scales.emplace_back();
        float semitone = kLowest;
        for (size_t i = 0; semitone <= kHighest; ++i) {
            scale.push_back(semitone);
            semitone += static_cast<float>(steps[i % steps.size()]);
        }
    }
    return scales;
}

const std::vector<std::vector<float>> kScales = BuildScales();

}  // namespace

std::span<const float> ScaleSemitones(uint32_t scale) { return kScales[scale]; }

}  // namespace Quorvan::dsp
