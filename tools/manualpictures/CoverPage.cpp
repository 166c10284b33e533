#include "tools/manualpictures/Pages.h"
#include "tools/manualpictures/Sounds.h"
#include "tools/picture/GrainPanel.h"
#include "tools/picture/TimeTicks.h"
#include "tools/picture/WaveformPanel.h"
#include "tools/support/AtomicOutput.h"

namespace Quorvan::Tools {

/// The picture of the README: music, the grains that it becomes, and how it comes out. These are
/// the first seconds of the sound that script/manual-pictures renders beside it.
void DrawCover(const std::string& file) {
    constexpr double kSeconds = 4.0, kLeft = 80.0, kAcross = 540.0;
    Take take({}, {}, "pentatonic-choir");
    take.Play(Music(kSeconds));
    const PictureData& data = take.Data();

    Canvas page(858, 590);
    const TimeScale time{Axis(0.0, kSeconds), ClockTicks(0.0, kSeconds, 8), {}};
    const auto draw = [&](double y, const Waveform& wave, const Colour& colour, const char* title) {
        const Panel frame(page, {kLeft, y, kAcross, 72.0}, time, Axis(-0.8, 0.8));
        WaveformPanel(frame, wave, Take::kRate, colour, false).Draw(title);
    };
    draw(36.0, data.input, Palette::kInput, "What goes in");
    draw(150.0, data.output, Palette::kOutput, "What comes out");
    const Panel frame(page, {kLeft, 264.0, kAcross, 270.0}, time,
                      Axis(0.0, GrainPanel::TapeSeconds(data)));
    const GrainPanel grains(frame, data);
    grains.Draw("The grains between, each with its place on the tape");
    grains.DrawLegend(kLeft + kAcross + 34.0);
    AtomicOutput output(file, true);
    page.Save(output);
    output.Commit();
}

}  // namespace Quorvan::Tools
