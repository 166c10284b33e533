#include <algorithm>
#include <cmath>

#include "tools/manualpictures/Diagram.h"
#include "tools/manualpictures/Pages.h"
#include "tools/manualpictures/Sounds.h"
#include "tools/manualpictures/TapeSheet.h"
#include "tools/support/AtomicOutput.h"

/// Tape, play head, modes.
namespace Quorvan::Tools {

namespace {

using Settings = std::vector<std::string>;

/// Plays four bars of music, or less, with these settings.
void AddMusic(TapeSheet& sheet, double seconds, const std::string& title,
              const Settings& settings) {
    Take take(settings);
    take.Play(Music(seconds));
    sheet.Add(title, take);
}

void DrawTape(const std::string& file) {
    Take take({"Buffer Length=1/2", "Play Head Mode=Manual", "Play Head Position=50 %", "Spray=0 %",
               "Density=5 Hz", "Grain Size=160 ms", "Width=0 %"});
    take.Play(Music(3.0));
    TapeSheet sheet(1, 3.0);
    const Panel panel = sheet.Add("The tape goes round", take);
    const auto note = [&](double seconds, double place, const char* text) {
        sheet.Page().Text(panel.X(seconds), panel.Y(place), text, {12.0, false, Palette::kHead});
    };
    note(1.06, 0.85, "above the line: the round before");
    note(2.42, 0.12, "below: this round");
    sheet.Save(file);
}

/// Level of a take in short windows, in dB.
void AddLevel(const Diagram& diagram, const Planes& sound, const Colour& colour) {
    constexpr size_t kWindow = 1600;
    std::vector<double> x, y;
    for (size_t start = 0; start + kWindow <= sound.Frames(); start += kWindow / 2) {
        double sum = 1.0e-12;
        for (size_t i = start; i < start + kWindow; ++i)
            sum += static_cast<double>(sound[0][i]) * static_cast<double>(sound[0][i]);
        const size_t middle = start + kWindow / 2;
        x.push_back(static_cast<double>(middle) / Take::kRate);
        y.push_back(std::max(-80.0, 10.0 * std::log10(sum / kWindow)));
    }
    diagram.Curve(x, y, colour);
}

void DrawPersistence(const std::string& file) {
    Canvas page(860, 300);
    const Diagram diagram(page, {86.0, 40.0, 750.0, 200.0},
                          "What is left of one note, round by round",
                          {"Time (s)", Axis(0.0, 6.0), 6}, {"Level (dB)", Axis(-70.0, -10.0), 6});
    diagram.Key({"Persistence 0 %", "50 %", "80 %"});
    size_t number = 0;
    for (const std::string amount : {"0 %", "50 %", "80 %"}) {
        Take take({"Buffer Length=1/2", "Persistence=" + amount, "Play Head Mode=Follow",
                   "Play Head Offset=250 ms", "Spray=0 %", "Density=30 Hz", "Grain Size=70 ms",
                   "Width=0 %"});
        take.Play(Tone(6.0, 660.0, 0.1, 0.25, 0.5));
        AddLevel(diagram, take.Output(), CurveColour(number++));
    }
    AtomicOutput output(file, true);
    page.Save(output);
    output.Commit();
}

void DrawFreeze(const std::string& file) {
    Take take({"Buffer Length=1/2", "Play Head Mode=Scan", "Play Head Speed=1 x", "Spray=0 %",
               "Density=7 Hz", "Grain Size=200 ms", "Width=0 %"});
    take.Change(1.6, "Freeze", "On");
    take.Change(4.0, "Freeze", "Off");
    take.Play(Music(6.0));
    TapeSheet sheet(1, 6.0);
    const Panel panel = sheet.Add("Freeze", take);
    panel.DrawMoment(1.6, "on", Palette::kQuietInk);
    panel.DrawMoment(4.0, "off", Palette::kQuietInk);
    sheet.Save(file);
}

Settings Bar(const Settings& more) {
    Settings all{"Buffer Length=1/1", "Spray=0 %", "Width=0 %"};
    all.insert(all.end(), more.begin(), more.end());
    return all;
}

void DrawPlayHead(const std::string& file) {
    TapeSheet sheet(3, 6.0);
    AddMusic(sheet, 6.0, "Follow, Play Head Offset 400 ms",
             Bar({"Density=6 Hz", "Play Head Mode=Follow", "Play Head Offset=400 ms"}));
    AddMusic(sheet, 6.0, "Scan, Play Head Speed 0.5 x",
             Bar({"Density=6 Hz", "Play Head Mode=Scan", "Play Head Speed=0.5 x"}));
    Take manual(Bar({"Density=6 Hz", "Play Head Mode=Manual", "Play Head Position=20 %"}));
    for (int step = 0; step <= 60; ++step)
        manual.Change(2.0 + 0.04 * step, "Play Head Position", std::to_string(20 + step) + " %");
    manual.Play(Music(6.0));
    sheet.Add("Manual, Play Head Position from 20 % to 80 % by hand", manual);
    sheet.Save(file);
}

void DrawStarts(const std::string& file) {
    const Settings head{"Play Head Mode=Follow", "Play Head Offset=500 ms", "Density=12 Hz",
                        "Grain Size=70 ms"};
    const auto with = [&](const Settings& more) {
        Settings all = Bar(head);
        all.insert(all.end(), more.begin(), more.end());
        return all;
    };
    TapeSheet sheet(3, 6.0);
    AddMusic(sheet, 6.0, "Free, Spray 25 %", with({"Spray=25 %", "Spray Direction=Both"}));
    AddMusic(sheet, 6.0, "Grid, Grid Size 8", with({"Start Quantization=Grid", "Grid Size=0"}));
    AddMusic(sheet, 6.0, "Transients, Transient Sensitivity 99 %",
             with({"Start Quantization=Transients", "Transient Sensitivity=99 %"}));
    sheet.Save(file);
}

void DrawModes(const std::string& file) {
    TapeSheet sheet(3, 4.0);
    AddMusic(sheet, 4.0, "Classic: Density 10 Hz, Grain Size 120 ms",
             Bar({"Density=10 Hz", "Grain Size=120 ms", "Spray=10 %"}));
    AddMusic(sheet, 4.0, "Texture: Density 4, Grain Size 500 ms",
             Bar({"Granular Mode=Texture", "Density=0.4", "Grain Size=500 ms", "Spray=10 %"}));
    Settings beat =
        Bar({"Granular Mode=Beat", "Beat Sequencer Steps=0.46667", "Size Follows Density=On",
             "Grain Size=1x", "MoteWeaver_GranularPhaseHelper_RateSynced=1/8",
             "Start Quantization=Grid", "Grid Size=0", "Spray=25 %"});
    for (const char* const step : {"1", "2", "4", "5", "7"})
        beat.push_back("MoteWeaver_StepSequencerGranular_StepOnOff" + std::string(step) + "=On");
    beat.push_back("MoteWeaver_StepSequencerGranular_StepVal7=2x");
    AddMusic(sheet, 4.0, "Beat: steps 1, 2, 4, 5 and 7 of 8 play, 7 twice as fast", beat);
    sheet.Save(file);
}

}  // namespace

void DrawTapePages(const std::string& folder) {
    DrawTape(folder + "/tape.png");
    DrawPersistence(folder + "/persistence.png");
    DrawFreeze(folder + "/freeze.png");
    DrawPlayHead(folder + "/play-head.png");
    DrawStarts(folder + "/starts.png");
    DrawModes(folder + "/modes.png");
}

}  // namespace Quorvan::Tools
