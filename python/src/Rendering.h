#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <pybind11/numpy.h>

#include "python/src/Sound.h"

namespace Quorvan::Python {

/// What tesserae.render asks for.
struct RenderWish {
    double sampleRate = 0.0;
    std::string preset;  ///< as LoadSound takes it
    Settings set;
    std::optional<uint64_t> seed;
    std::string automation;      ///< a JSON text as the renderer reads it, or empty
    std::string automationFile;  ///< or a file
    std::optional<double> tail, tailFade, tempo;
    bool playing = true;
    double startBeat = 0.0;
    std::string meter = "4/4";
    bool mono = false;
    bool showsModulation = false;
    std::vector<std::string> destinations;
};

/// Tells NumPy the fields of a grain. To be called once, when the module is made.
void RegisterGrains();

/// Renders sound in memory, bit by bit as the renderer does, with a side-chain unless it is None.
/// Answers what came of it by name: "audio", "grains", "modulation" (None where it is not asked
/// for) and plain facts. The lock of the interpreter is not held meanwhile.
pybind11::dict Render(const pybind11::object& sound, const pybind11::object& sideChain,
                      const RenderWish& wish);

}  // namespace Quorvan::Python
