#pragma once

#include <array>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "host/engine/DisplaySnapshot.h"
#include "host/engine/Engine.h"
#include "tools/picture/GrainLog.h"
#include "tools/picture/LevelScale.h"
#include "tools/picture/Spectrogram.h"
#include "tools/picture/Waveform.h"
#include "tools/render/Meter.h"
#include "tools/render/ModulationLog.h"
#include "tools/render/RenderSink.h"
#include "tools/render/TempoMap.h"

namespace Quorvan::Tools {

/// All that the picture of a render shows, gathered while it runs.
class PictureData final : public RenderSink {
public:
    /// Where the write head was at a moment. In frames.
    struct Head {
        uint64_t frame = 0;
        uint64_t writePosition = 0;
        uint64_t tapeLength = 0;
    };

    /// What of the render to show. In frames.
    struct Section {
        uint64_t from = 0;
        uint64_t to = std::numeric_limits<uint64_t>::max();
    };

    /// Listens to the engine, which must outlive it.
    explicit PictureData(Host::Engine& source, const Section& shown);
    ~PictureData() override;
    PictureData(const PictureData&) = delete;
    PictureData& operator=(const PictureData&) = delete;

    void OnInput(const SoundPiece& piece) override;
    void OnOutput(const SoundPiece& piece) override;
    void OnInputEnd(uint64_t frame) override;
    void OnEnd() override;

    std::string inputName, outputName, preset;
    std::string subtitle;  ///< how it came out
    std::string effects;   ///< those of the slots, with their places; empty for none

    double rate = 0.0;
    Section section;
    const TempoMap* song = nullptr;  ///< null where it stands still
    Meter meter;
    LevelForm levels = LevelForm::Auto;
    uint64_t inputFrames = 0;
    uint64_t outputFrames = 0;
    Waveform input, output;
    Spectrogram spectrogram;
    GrainLog grains;
    std::vector<Head> heads;
    const ModulationLog* modulation = nullptr;  ///< of the render, or null
    std::vector<uint32_t> sources;              ///< those of it to show

private:
    /// The part of a piece that is in the section, as a piece of it.
    SoundPiece Inside(const SoundPiece& piece);
    void ThinHeads();

    Host::Engine& engine;
    Host::DisplaySnapshot snapshot;
    bool inputHasEnded = false;
    uint64_t inputShown = 0;  ///< frames that are in its waveform
    uint64_t headStride = 1;  ///< pieces from one kept head to the next
    uint64_t pieces = 0;
    std::array<const float*, 2> inside{};  ///< channels of the last part
};

}  // namespace Quorvan::Tools
