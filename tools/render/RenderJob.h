#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "host/parameters/ParameterCatalog.h"
#include "tools/audio/AudioFormat.h"
#include "tools/audio/AudioReader.h"
#include "tools/audio/SoundShelf.h"
#include "tools/render/ModulationLog.h"
#include "tools/render/PictureJob.h"
#include "tools/render/RenderOutputs.h"
#include "tools/render/RenderRun.h"
#include "tools/render/RenderSettings.h"
#include "tools/render/Summary.h"

namespace Quorvan::Tools {

/// One render from files to files. Everything that can be wrong with the command line or the files
/// is found before the first sample is processed.
class RenderJob {
public:
    RenderJob(RenderSettings wanted, const Host::ParameterCatalog& parameters);
    ~RenderJob();

    /// watch hears the seconds of output that are done, piece by piece; what it throws ends Make.
    void SetWatch(std::function<void(double)> wanted) { watch = std::move(wanted); }
    /// Where the input comes from, which has to outlive Make; else its file is read.
    void SetShelf(SoundShelf& wanted) { shelf = &wanted; }
    /// Make and Finish.
    Summary Run();
    /// Renders, and lets go of the engine. Throws Failure; then no file has been made or touched.
    void Make();
    /// Brings what was made to the disk and to its place, from any thread. Throws Failure as Make.
    Summary Finish();

private:
    void OpenSources();
    void OpenOutputs();
    void PrepareEngine();
    void WritePreset();
    void Render();
    void WritePicture();
    void WriteModulation();
    bool WantsModulation() const { return settings.picture || settings.modulationCsv; }
    SoundTags Tags();
    void Account();
    void WarnOfSource(const std::filesystem::path& path, const AudioReader& reader);
    void WarnOfOutput();
    void LetGo();
    void Warn(std::optional<std::string> sentence);
    std::unique_ptr<AudioSource> OpenSource(const std::filesystem::path& path, double rate,
                                            SoundShelf& files,
                                            std::shared_ptr<const AudioReader>& reader) const;

    std::chrono::steady_clock::time_point start{};
    RenderSettings settings;
    const Host::ParameterCatalog& catalog;
    Summary summary;

    SoundShelf* shelf = nullptr;
    std::shared_ptr<const AudioReader> mainReader, sideReader;
    std::unique_ptr<AudioSource> main, side;
    std::optional<RenderOutputs> outputs;
    AudioFormat format;
    double rate = 0.0;

    std::optional<RenderRun> run;
    std::function<void(double)> watch;
    std::optional<PictureJob> picture;
    std::optional<ModulationLog> modulation;
};

}  // namespace Quorvan::Tools
