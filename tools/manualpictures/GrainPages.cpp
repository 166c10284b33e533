#include <functional>

#include "tools/manualpictures/DiagramSheet.h"
#include "tools/manualpictures/Pages.h"
#include "tools/manualpictures/Sounds.h"
#include "tools/manualpictures/TapeSheet.h"

/// Size, density, pitch, pairs, random depths.
namespace Quorvan::Tools {

namespace {

using Settings = std::vector<std::string>;
using Trait = std::function<double(const Host::GrainStart&)>;

double Semitones(const Host::GrainStart& grain) { return static_cast<double>(grain.semitones); }
double Milliseconds(const Host::GrainStart& grain) {
    return static_cast<double>(grain.durationFrames) / Take::kRate * 1000.0;
}
double Pan(const Host::GrainStart& grain) { return 2.0 * static_cast<double>(grain.pan) - 1.0; }

/// A trait of every grain over the time of its start: left halves are left grains.
void AddTraits(const Diagram& diagram, double seconds, const Settings& settings,
               const Trait& trait) {
    Settings all{"Spray=0 %",
                 "Width=0 %",
                 "Density=16 Hz",
                 "Grain Size=200 ms",
                 "Play Head Offset=500 ms",
                 "Buffer Length=2/1"};
    all.insert(all.end(), settings.begin(), settings.end());
    Take take(all);
    take.Play(Silence(seconds));
    for (const Host::GrainStart& grain : take.Data().grains.Kept())
        diagram.HalfDot(static_cast<double>(grain.frame) / Take::kRate, trait(grain), grain.right,
                        CurveColour(grain.right ? 1 : 0), 4.0);
}

const Scale kSeconds{"Time (s)", Axis(0.0, 4.0), 4};

void DrawSizes(const std::string& file) {
    const Settings follow{"Buffer Length=1/1", "Spray=6 %", "Width=0 %", "Play Head Mode=Follow",
                          "Play Head Offset=300 ms"};
    const auto add = [&](TapeSheet& sheet, const std::string& title, const Settings& more) {
        Settings all = follow;
        all.insert(all.end(), more.begin(), more.end());
        Take take(all);
        if (more.size() > 2)
            for (int step = 0; step <= 100; ++step)
                take.Change(0.04 * step, "MoteWeaver_GranularPhaseHelper_RateUnSynced",
                            std::to_string(3.0 * std::pow(10.0, 0.01 * step)) + " Hz");
        take.Play(Music(4.0));
        sheet.Add(title, take);
    };
    TapeSheet sheet(3, 4.0);
    add(sheet, "Density 6 Hz, Grain Size 40 ms", {"Density=6 Hz", "Grain Size=40 ms"});
    add(sheet, "Density 6 Hz, Grain Size 400 ms", {"Density=6 Hz", "Grain Size=400 ms"});
    add(sheet, "Size Follows Density, Grain Size 1/2x, Density from 3 Hz to 30 Hz",
        {"Density=3 Hz", "Size Follows Density=On", "Grain Size=1/2x"});
    sheet.Save(file);
}

void DrawPitch(const std::string& file) {
    const Scale pitch{"Pitch (semitones)", Axis(-12.5, 12.5), 6};
    DiagramSheet sheet(1, 2, 260.0);
    AddTraits(sheet.Add("Scale Off", kSeconds, pitch), 4.0,
              {"Random Pitch=33 %", "Random Pitch Direction=Both"}, Semitones);
    AddTraits(sheet.Add("Scale Minor Pentatonic", kSeconds, pitch), 4.0,
              {"Scale=Minor Pentatonic", "Pitch=0 st", "Random Pitch=33 %",
               "Random Pitch Direction=Both"},
              Semitones);
    sheet.Save(file);
}

void DrawFine(const std::string& file) {
    const Scale pitch{"Pitch (cents)", Axis(-110.0, 110.0), 5};
    const Trait cents = [](const Host::GrainStart& grain) { return 100.0 * Semitones(grain); };
    DiagramSheet sheet(1, 3, 160.0);
    for (const std::string depth : {"0", "10", "100"})
        AddTraits(sheet.Add("Random Fine " + depth + " ct", kSeconds, pitch), 4.0,
                  {"Random Fine Pitch=" + depth + " ct"}, cents);
    sheet.Save(file);
}

void DrawWidth(const std::string& file) {
    const Scale pitch{"Pitch (semitones)", Axis(-12.5, 12.5), 6};
    DiagramSheet sheet(1, 3, 220.0);
    for (const std::string width : {"0 %", "30 %", "100 %"})
        AddTraits(sheet.Add("Width " + width, {"Time (s)", Axis(0.0, 1.5), 4}, pitch), 1.5,
                  {"Width=" + width, "Random Pitch=33 %", "Random Pitch Direction=Both"},
                  Semitones);
    sheet.Save(file);
}

void DrawDepths(const std::string& file) {
    const Scale pitch{"Pitch (semitones)", Axis(-14.0, 14.0), 6};
    const Scale size{"Length (ms)", Axis(0.0, 650.0), 5};
    DiagramSheet sheet(2, 3, 180.0);
    for (const std::string way : {"Up", "Down", "Both"})
        AddTraits(sheet.Add("Pitch: " + way, kSeconds, pitch), 4.0,
                  {"Random Pitch=33 %", "Random Pitch Direction=" + way}, Semitones);
    for (const std::string way : {"Shorter", "Longer", "Both"})
        AddTraits(sheet.Add("Size: " + way, kSeconds, size), 4.0,
                  {"Random Size=50 %", "Random Size Direction=" + way, "Density=12 Hz"},
                  Milliseconds);
    sheet.Save(file);
}

void DrawDensities(const std::string& file) {
    const Scale pan{"Pan, left to right", Axis(-1.0, 1.0), 4};
    DiagramSheet sheet(1, 3, 180.0);
    const Settings wide{"Spatializer On=On", "Random Pan=80 %", "Density=8 Hz"};
    const auto with = [&](const Settings& more) {
        Settings all = wide;
        all.insert(all.end(), more.begin(), more.end());
        return all;
    };
    AddTraits(sheet.Add("Even", kSeconds, pan), 4.0, wide, Pan);
    AddTraits(sheet.Add("Jitter 60 %", kSeconds, pan), 4.0,
              with({"Random Density=60 %", "Random Density Kind=Jitter"}), Pan);
    AddTraits(sheet.Add("Skip 60 %", kSeconds, pan), 4.0,
              with({"Random Density=60 %", "Random Density Kind=Skip"}), Pan);
    sheet.Save(file);
}

/// Where the tutorial starts, and its third step.
void DrawTutorial(const std::string& file) {
    TapeSheet sheet(2, 4.0);
    const auto add = [&](const std::string& title, const Settings& settings) {
        Take take(settings);
        take.Play(Music(4.0));
        sheet.Add(title, take);
    };
    add("start.wav", {});
    add("cloud.wav", {"Granular Mode=Texture", "Density=0.6", "Grain Size=400 ms",
                      "Play Head Offset=450 ms", "Spray=15 %", "Width=90 %"});
    sheet.Save(file);
}

}  // namespace

void DrawGrainPages(const std::string& folder) {
    DrawTutorial(folder + "/tutorial.png");
    DrawSizes(folder + "/size-density.png");
    DrawPitch(folder + "/pitch.png");
    DrawFine(folder + "/fine.png");
    DrawWidth(folder + "/width.png");
    DrawDepths(folder + "/depths.png");
    DrawDensities(folder + "/density.png");
}

}  // namespace Quorvan::Tools
