#pragma once

#include <memory>
#include <string>
#include <vector>

#include "host/engine/Engine.h"
#include "host/parameters/ParameterCatalog.h"
#include "tools/audio/Planes.h"
#include "tools/picture/PictureData.h"
#include "tools/render/ModulationLog.h"
#include "tools/render/SoundChoice.h"

namespace Quorvan::Tools {

/// A short render for a picture: a factory preset with single settings changed, and what the
/// library tells about it. The song plays at 120 BPM.
class Take final : private Host::EngineListener {
public:
    static constexpr double kRate = 48000.0;
    static constexpr double kTempo = 120.0;
    static constexpr uint64_t kSeed = 7;

    /// "init", all wet.
    static constexpr const char* kPlain = "";

    /// assignments: NAME=POSITION, as "tesserae render --set" takes them. destinations: names of
    /// those that Modulation tells beside the sources. Throws Failure for a name or text that
    /// makes no sense.
    explicit Take(const std::vector<std::string>& assignments,
                  const std::vector<std::string>& destinations = {},
                  const std::string& preset = kPlain);
    ~Take() override;

    /// Puts a parameter elsewhere at a moment of the render; ahead of Play.
    void Change(double seconds, const std::string& name, const std::string& text);
    void Play(const Planes& input);

    /// Frame n belongs to frame n of the input.
    const Planes& Output() const { return output; }
    /// Grains and write head.
    const PictureData& Data() const { return *data; }
    const ModulationLog& Modulation() const { return modulation; }
    /// Where the spatialiser stands at each block: X -1..1 and Y 0..1.
    const std::vector<double>& PlaceX() const { return placeX; }
    const std::vector<double>& PlaceY() const { return placeY; }
    uint32_t LatencyFrames() const { return engine.LatencyFrames(); }

private:
    void OnBlock(const Host::BlockReport& block) override;

    Host::ParameterCatalog catalog;
    SoundChoice sound;
    Host::Engine engine;
    ModulationLog modulation;
    std::unique_ptr<PictureData> data;
    Planes output;
    std::vector<double> placeX, placeY;
};

}  // namespace Quorvan::Tools
